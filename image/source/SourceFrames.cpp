// Frames from lists of image files and from sequence files.
#include "foundation/Entry.h"
#include "image/Source.h"
#include "image/core/Refusals.h"
#include "image/source/SequenceFile.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace Tesk {

using files::Opened;

/// Of one of the two kinds.
struct Source::Names
{
    std::vector<std::string> Ascii;
    std::vector<std::wstring> Unicode;
    int Capacity = 0;
};

namespace {

const wchar_t* ModeName(SourceMode mode)
{
    switch (mode) {
    case Idle:
        return L"Idle";
    case NotIdle:
        return L"NotIdle";
    case AsciiFiles:
        return L"AsciiFiles";
    case UnicodeFiles:
        return L"UnicodeFiles";
    case Sequence:
        return L"Sequence";
    case Camera:
        return L"Camera";
    }
    return L"";
}

constexpr const wchar_t* noMemory = L"Cannot allocate the list of frames";

/// What a narrow name that cannot be opened is told to be.
int Unopened(Opened outcome, const char* name)
{
    constexpr std::size_t longestName = 255;
    std::wstring wide;
    for (const char* c = name ? name : ""; *c && wide.size() < longestName; c++)
        wide += static_cast<wchar_t>(static_cast<unsigned char>(*c));
    const wchar_t* text = wide.c_str();
    switch (outcome) {
    case Opened::NoHandler:
        return Status::Format(UnsupportedFormat,
                              L"Cannot open file \"%ls\", this type of file does not have an AVI handler", text);
    case Opened::Corrupt:
        return Status::Format(UnsupportedFormat, L"Cannot open file \"%ls\", corrupt file or unrecognized format",
                              text);
    case Opened::NoMemory:
        return Status::Format(CannotAllocate, L"Cannot open file \"%ls\", insufficient memory", text);
    case Opened::ReadError:
        return Status::Format(CannotRead, L"Cannot open file \"%ls\", disk error while reading", text);
    default:
        return Status::Format(CannotOpen, L"Cannot open file \"%ls\", disk error while opening", text);
    }
}

/// Rows between those of one field: means of their neighbours.
void FillField(Image& image)
{
    const int bytes = image.Width * (image.Type == Rgb ? 3 : 1);
    for (int y = 0; y + 1 < image.Height; y += 2) {
        const std::uint8_t *above = image.Row(y), *below = y + 2 < image.Height ? image.Row(y + 2) : above;
        std::uint8_t* row = image.Row(y + 1);
        for (int x = 0; x < bytes; x++)
            row[x] = static_cast<std::uint8_t>((above[x] + below[x]) >> 1);
    }
}

} // namespace

template <typename Char>
void Source::Add(const Char* name, SourceMode mode)
{
    if (Mode != Idle && Mode != mode) {
        Status::Raise(Status::Format(IncompatibleMode, L"The source is already opened in the %ls mode", ModeName(Mode)),
                      nullptr);
        return;
    }
    const int code = WithMemory(noMemory, [&] {
        // Copies that share the list keep their names.
        auto names = names_ && names_.use_count() == 1 ? names_ : std::make_shared<Names>(names_ ? *names_ : Names());
        const int needed = NumFrames + 1;
        if constexpr (sizeof(Char) == 1)
            names->Ascii.emplace_back(name ? name : "");
        else
            names->Unicode.emplace_back(name ? name : L"");
        if (needed > names->Capacity) {
            names->Capacity = Max(needed, 2 * names->Capacity);
            Mode = mode;
            FrameRate = 1;
        }
        names_ = std::move(names);
        NumFrames = needed;
        OwnsHandle = true;
        Handle = names_.get();
    });
    Status::Raise(code, nullptr);
}

void Source::AddFile(const char* Name)
{
    Status::Error().Code = NoError;
    Add(Name, AsciiFiles);
}

void Source::AddFile(const wchar_t* Name)
{
    Status::Error().Code = NoError;
    Add(Name, UnicodeFiles);
}

/// Makes a file that was opened the source.
int Source::TakeSequence(std::shared_ptr<files::SequenceFile> sequence, Opened outcome)
{
    Drop();
    NumFrames = 0;
    if (outcome == Opened::NoStream) return Status::Format(CannotOpen, L"Can't open the Avi file (mismatching stream)");
    CurrentFrame = sequence->FirstFrame();
    FrameRate = sequence->FrameRate();
    if (outcome == Opened::NoDecoder)
        return Status::Format(CannotOpen, L"Can't open the Avi file (cannot decompress %ls)",
                              sequence->Compression().c_str());
    NumFrames = sequence->NumFrames();
    // Frames are asked for with 24 bits, whatever the file has.
    PixelType = Rgb;
    Width = sequence->Width();
    Height = sequence->Height();
    sequence_ = std::move(sequence);
    Handle = sequence_.get();
    OwnsHandle = true;
    Mode = Sequence;
    return NoError;
}

/// `describe` makes a code of an outcome without a sequence.
template <typename Describe>
void Source::Open(const std::string& path, Describe describe)
{
    const Entry entry("Tesk::Source::OpenSequenceFile");
    std::shared_ptr<files::SequenceFile> sequence;
    Opened outcome{};
    if (!entry.Guards(noMemory, [&] {
            sequence = std::make_shared<files::SequenceFile>();
            outcome = sequence->Open(path);
        }))
        return;
    if (outcome == Opened::Yes || outcome == Opened::NoStream || outcome == Opened::NoDecoder)
        Status::Raise(TakeSequence(std::move(sequence), outcome), "Tesk::Source::_Open");
    else
        entry.Refuses(describe(outcome));
}

void Source::OpenSequenceFile(const char* Name)
{
    Open(Name ? Name : "", [Name](Opened outcome) { return Unopened(outcome, Name); });
}

void Source::OpenSequenceFile(const wchar_t* Name)
{
    Open(Narrow(Name),
         [Name](Opened) { return Status::Format(CannotOpen, L"Cannot open file \"%ls\"", Name ? Name : L""); });
}

/// The rows of a frame, of which a field has every second one.
int Source::FetchFrame(Image& dst, PixelTypes type)
{
    const auto refuse = [&] {
        return Status::Format(CannotRead, L"Can't read frame %d from the Avi file", CurrentFrame);
    };
    if (!sequence_ || !sequence_->Fetch(CurrentFrame) || !sequence_->Convert()) return refuse();
    PixelType = Rgb;
    Width = sequence_->Width();
    Height = sequence_->Height();
    if (const int code = dst.TrySet(Width, Height, type)) return code;
    dst.DetachIfShared(false);
    const auto width = static_cast<std::size_t>(int(Width));
    for (int y = 0; y < Height; y += FieldMode ? 2 : 1) {
        const std::uint8_t* from = sequence_->Row(Upright ? Height - 1 - y : y);
        std::uint8_t* to = dst.Row(y);
        if (type == Rgb)
            std::memcpy(to, from, 3 * width);
        else
            for (std::size_t x = 0; x < width; x++)
                to[x] = from[3 * x];
    }
    return NoError;
}

bool Source::Grab(Image& Dst, PixelTypes Type)
{
    const Entry entry("Tesk::Source::Grab");
    if (Type == Undefined) Type = PixelType == Rgb || PixelType == Rgba ? Rgb : Gray;
    if (Type != Gray && Type != Rgb)
        return !entry.Refuse(UnsupportedType, L"The image type (%ls) is not supported for this operation",
                             PixelTypeName(Type));
    if (CurrentFrame >= NumFrames || CurrentFrame < 0) CurrentFrame = 0;
    const auto index = static_cast<std::size_t>(CurrentFrame);
    if (Mode == Idle) return !entry.Refuse(VoidObject, L"Ths source has not been opened");
    bool delivered = true;
    if (Mode == Sequence) {
        int code = NoError;
        if (!entry.Guards(noMemory, [&] { code = FetchFrame(Dst, Type); }) || entry.Refuses(code)) return false;
    } else if (Mode == AsciiFiles && names_ && index < names_->Ascii.size()) {
        Dst.Read(names_->Ascii[index].c_str(), Type);
    } else if (Mode == UnicodeFiles && names_ && index < names_->Unicode.size()) {
        Dst.Read(names_->Unicode[index].c_str(), Type);
    } else {
        delivered = false;
    }
    CurrentFrame++;
    if (FieldMode && delivered && Status::Error().Code == NoError) FillField(Dst);
    return CurrentFrame < NumFrames;
}

int Source::SourceIsNotOpened() const
{
    return Mode == Camera ? int{NoError} : Status::Format(CannotRead, L"This source has not been opened");
}

bool Source::Input()
{
    const Entry entry("Tesk::Source::Input");
    entry.Refuses(SourceIsNotOpened());
    return false;
}

void Source::Output()
{
    const Entry entry("Tesk::Source::Output");
    entry.Refuses(SourceIsNotOpened());
}

void Source::Drop()
{
    names_.reset();
    sequence_.reset();
    Handle = nullptr;
    OwnsHandle = false;
    Mode = Idle;
}

void Source::Close()
{
    Status::Error().Code = NoError;
    Drop();
    NumFrames = 0;
    CurrentFrame = 0;
}

void Source::ShallowCopy(const Source& Src, bool KeepPosition)
{
    if (&Src == this) return;
    Width = int(Src.Width);
    Height = int(Src.Height);
    PixelType = PixelTypes(Src.PixelType);
    Mode = Src.Mode;
    FrameRate = Src.FrameRate;
    NumFrames = int(Src.NumFrames);
    names_ = Src.names_;
    sequence_ = Src.sequence_;
    Handle = static_cast<const void*>(Src.Handle);
    OwnsHandle = false;
    if (KeepPosition) CurrentFrame = Src.CurrentFrame;
}

} // namespace Tesk
