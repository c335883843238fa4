// Text on the clipboard: UTF-16 units, low byte first, with a zero behind them.
#include "measure/table/ClipboardText.h"

#include "foundation/Services.h"

#include <utility>

namespace Tesk::tables {

namespace {

constexpr std::uint32_t supplementary = 0x10000, high = 0xd800, low = 0xdc00, behind = 0xe000;

void PutUnit(std::vector<std::uint8_t>& block, std::uint32_t unit)
{
    block.push_back(static_cast<std::uint8_t>(unit & 0xff));
    block.push_back(static_cast<std::uint8_t>(unit >> 8 & 0xff));
}

} // namespace

void PutClipboardText(const std::wstring& text)
{
    std::vector<std::uint8_t> block;
    block.reserve(2 * text.size() + 2);
    for (const wchar_t character : text) {
        const auto code = static_cast<std::uint32_t>(character);
        if (code < supplementary) {
            PutUnit(block, code);
        } else {
            PutUnit(block, high + ((code - supplementary) >> 10 & 0x3ff));
            PutUnit(block, low + (code & 0x3ff));
        }
    }
    PutUnit(block, 0);
    Services::Clipboard().Empty();
    Services::Clipboard().Put(IClipboard::UnicodeText, std::move(block));
}

bool GetClipboardText(std::wstring& text)
{
    std::vector<std::uint8_t> block;
    if (!Services::Clipboard().Get(IClipboard::UnicodeText, block)) return false;
    text.clear();
    std::uint32_t before = 0;
    for (std::size_t i = 0; i + 1 < block.size(); i += 2) {
        const auto unit = static_cast<std::uint32_t>(block[i] | block[i + 1] << 8);
        if (unit == 0) break;
        const bool pairs = before >= high && before < low && unit >= low && unit < behind;
        if (pairs)
            text.back() = static_cast<wchar_t>(supplementary + ((before & 0x3ff) << 10) + (unit & 0x3ff));
        else
            text.push_back(static_cast<wchar_t>(unit));
        before = pairs ? 0 : unit;
    }
    return true;
}

} // namespace Tesk::tables
