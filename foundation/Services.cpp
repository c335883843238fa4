// The services that need no screen, and those in force.
#include "foundation/Services.h"

#include "foundation/Status.h"
#include "foundation/text/ErrorStream.h"

#include <utility>

namespace Tesk {

namespace {

class ErrorStreamMessageBox final : public IMessageBox
{
public:
    void Show(const wchar_t* Title, const wchar_t* Text) override
    {
        ToErrorStream(Narrow(Title) + ": " + Narrow(Text) + '\n');
    }
};

class ProcessClipboard final : public IClipboard
{
public:
    void Empty() override { blocks_.clear(); }
    void Put(int Format, std::vector<std::uint8_t> Block) override { blocks_[Format] = std::move(Block); }
    bool Get(int Format, std::vector<std::uint8_t>& Block) override
    {
        const auto found = blocks_.find(Format);
        if (found == blocks_.end()) return false;
        Block = found->second;
        return true;
    }

private:
    std::map<int, std::vector<std::uint8_t>> blocks_;
};

class NoWindowCapture final : public IWindowCapture
{
public:
    bool Capture(void*, int&, int&, std::vector<std::uint8_t>&) override { return false; }
};

class MemorySettings final : public ISettings
{
public:
    std::wstring Read(const std::wstring& Name, const std::wstring& Default) override
    {
        const auto found = values_.find(Name);
        return found == values_.end() ? Default : found->second;
    }
    void Write(const std::wstring& Name, const std::wstring& Value) override { values_[Name] = Value; }

private:
    std::map<std::wstring, std::wstring> values_;
};

/// One service: the installed one, or the default.
template <typename Interface, typename Default>
struct Slot
{
    Default fallback;
    Interface* installed = nullptr;

    Interface& InForce() { return installed ? *installed : fallback; }
};

template <typename Interface, typename Default>
Slot<Interface, Default>& SlotOf()
{
    static Slot<Interface, Default> slot;
    return slot;
}

} // namespace

IMessageBox& Services::MessageBox()
{
    return SlotOf<IMessageBox, ErrorStreamMessageBox>().InForce();
}
IClipboard& Services::Clipboard()
{
    return SlotOf<IClipboard, ProcessClipboard>().InForce();
}
IWindowCapture& Services::WindowCapture()
{
    return SlotOf<IWindowCapture, NoWindowCapture>().InForce();
}
ISettings& Services::Settings()
{
    return SlotOf<ISettings, MemorySettings>().InForce();
}

void Services::Install(IMessageBox* Service)
{
    SlotOf<IMessageBox, ErrorStreamMessageBox>().installed = Service;
}
void Services::Install(IClipboard* Service)
{
    SlotOf<IClipboard, ProcessClipboard>().installed = Service;
}
void Services::Install(IWindowCapture* Service)
{
    SlotOf<IWindowCapture, NoWindowCapture>().installed = Service;
}
void Services::Install(ISettings* Service)
{
    SlotOf<ISettings, MemorySettings>().installed = Service;
}

} // namespace Tesk
