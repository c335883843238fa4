// Training of the font of a character reader, and its characters one by one.
#include "foundation/Entry.h"
#include "image/core/Destination.h"
#include "image/core/Refusals.h"
#include "image/operator/PixelSteps.h"
#include "read/CharReader.h"
#include "read/chars/ReaderState.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Tesk {

using namespace chars;

namespace {

/// Of what stands for a character that is missing.
constexpr int flatLevel = 128;

/// A view of a box, moved into the image where it stands out.
void ViewBox(const CharBox& box, const Image& image, Image& view)
{
    const int width = Clamp(box.Width, 1, +image.Width), height = Clamp(box.Height, 1, +image.Height);
    view.ShallowCopy(image, true);
    view.Window(Clamp(box.X, 0, image.Width - width), Clamp(box.Y, 0, image.Height - height), width, height);
}

int MakeFlat(int width, int height, Image& dst)
{
    if (const int code = dst.Fit(width, height, Gray)) return code;
    images::FillRows(dst, flatLevel);
    return NoError;
}

/// Training keeps 16 bits of a code.
std::uint16_t CodeOf(wchar_t code)
{
    return static_cast<std::uint16_t>(code);
}
std::uint16_t CodeOf(char code)
{
    return static_cast<unsigned char>(code);
}

} // namespace

void CharReader::CountFont()
{
    NumFontChars = state_->font.Count();
    if (HitFontIndex >= NumFontChars) HitFontIndex = -1;
}

template <typename C>
void CharReader::InsertString(const Image& src, const C codes[], int userClass, int index)
{
    const Entry entry("Tesk::CharReader::FontStringInsert");
    if (entry.Refuses(images::CheckType(src, accepted))) return;
    const std::size_t length = codes ? std::char_traits<C>::length(codes) : 0;
    if (length != static_cast<std::size_t>(int(NumChars))) {
        entry.Refuse(OutOfRange, L"The string length (%d) differs from the number of segmented characters (%d)",
                     static_cast<int>(std::min<std::size_t>(length, MaxInt)), int(NumChars));
        return;
    }
    Image upright;
    if (MakeUpright(entry, src, upright)) return;
    int code = NoError;
    for (int i = NumChars - 1; i >= 0 && code == NoError; i--) {
        const CharBox box = state_->BoxAt(i);
        if (box.IsEmpty()) continue;
        Image view;
        ViewBox(box, upright, view);
        code = state_->font.Insert(view, CodeOf(codes[i]), userClass, WhiteOnBlack, index, ThumbnailSizeOf(*this));
    }
    CountFont();
    entry.Refuses(code);
}

void CharReader::FontStringInsert(const Image& Src, const char Codes[], int Class, int FontCharIndex)
{
    InsertString(Src, Codes, Class, FontCharIndex);
}

void CharReader::FontStringInsert(const Image& Src, const wchar_t Codes[], int Class, int FontCharIndex)
{
    InsertString(Src, Codes, Class, FontCharIndex);
}

void CharReader::InsertChar(const Image& sample, wchar_t code, int userClass, int index)
{
    const Entry entry("Tesk::CharReader::FontCharInsert");
    if (entry.Refuses(images::CheckType(sample, accepted))) return;
    Image gray;
    if (points::CopyPixels(entry, sample, gray, Gray)) return;
    const int failure = state_->font.Insert(gray, CodeOf(code), userClass, WhiteOnBlack, index, ThumbnailSizeOf(*this));
    CountFont();
    entry.Refuses(failure);
}

void CharReader::FontCharInsert(const Image& Sample, char Code, int Class, int FontCharIndex)
{
    InsertChar(Sample, CodeOf(Code), Class, FontCharIndex);
}

void CharReader::FontCharInsert(const Image& Sample, wchar_t Code, int Class, int FontCharIndex)
{
    InsertChar(Sample, Code, Class, FontCharIndex);
}

void CharReader::FontCharDelete(int Index)
{
    const Entry entry("Tesk::CharReader::FontCharDelete");
    const int code = state_->font.Delete(Index);
    CountFont();
    entry.Refuses(code);
}

void CharReader::ChooseFontChar(int Index)
{
    const Entry entry("Tesk::CharReader::ChooseFontChar");
    const bool isNone = Index == -1;
    if (!isNone && entry.Refuses(state_->font.CheckIndex(Index))) return;
    HitFontIndex = Index;
    Handle = isNone ? NoHandle : AllHandle;
}

const FontChar& CharReader::FontCharAt(int Index) const
{
    const Entry entry("Tesk::CharReader::FontCharAt");
    static const FontChar none;
    return entry.Refuses(state_->font.CheckIndex(Index)) ? none : state_->font[Index];
}

void CharReader::Optimize(bool Enable)
{
    const Entry entry("Tesk::CharReader::Optimize");
    entry.Refuses(state_->font.Optimize(Enable, GlobalFilter, VariableWidth));
}

int CharReader::MatchingFontChar(int Index) const
{
    const Entry entry("Tesk::CharReader::MatchingFontChar");
    return entry.Refuses(CheckChar(Index)) ? verbatimFontChar : state_->read[static_cast<std::size_t>(Index)].fontChar;
}

wchar_t CharReader::CharCode(int Index) const
{
    const Entry entry("Tesk::CharReader::CharCode");
    if (entry.Refuses(CheckChar(Index)) || state_->shown.empty()) return 0;
    return state_->shown[static_cast<std::size_t>(Index)];
}

double CharReader::CharScore(int Index) const
{
    const Entry entry("Tesk::CharReader::CharScore");
    return entry.Refuses(CheckChar(Index)) ? -1.0 : state_->read[static_cast<std::size_t>(Index)].score;
}

double CharReader::CharContrast(int Index) const
{
    const Entry entry("Tesk::CharReader::CharContrast");
    return entry.Refuses(CheckChar(Index)) ? -1.0 : state_->read[static_cast<std::size_t>(Index)].contrast;
}

int CharReader::CharTrueWidth(int Index) const
{
    const Entry entry("Tesk::CharReader::CharTrueWidth");
    if (entry.Refuses(CheckChar(Index))) return CharWidth;
    const int found = state_->map[static_cast<std::size_t>(Index)];
    return found < 0 ? CharWidth : state_->trueWidths[static_cast<std::size_t>(found)];
}

int CharReader::Separator(int Index) const
{
    const Entry entry("Tesk::CharReader::Separator");
    if (entry.Refuses(CheckChar(Index))) return 0;
    for (const CharString& string : state_->strings)
        if (string.Last == Index + 1) return string.Separator;
    return 0;
}

void CharReader::CharThumbnail(const Image& Src, int Index, Image& Dst, bool Normalized)
{
    const Entry entry("Tesk::CharReader::CharThumbnail");
    if (entry.Refuses(images::CheckType(Src, accepted))) return;
    if (Index < 0 || Index >= NumChars) {
        entry.Refuse(OutOfRange, L"The character index (%d) must be in range [0..%d]", Index, NumChars - 1);
        return;
    }
    const ThumbnailSize size = ThumbnailSizeOf(*this);
    const CharBox box = state_->BoxAt(Index);
    if (box.IsEmpty()) {
        const int width = Clamp(CharWidth, 1, mostPixels), height = Clamp(CharHeight, 1, mostPixels);
        entry.Refuses(Normalized ? MakeFlat(size.WidthOf(width), size.Height(), Dst) : MakeFlat(width, height, Dst));
        return;
    }
    Image upright, view;
    if (MakeUpright(entry, Src, upright)) return;
    ViewBox(box, upright, view);
    const int width = Normalized ? size.WidthOf(view.Width) : int(view.Width);
    if (entry.Refuses(Dst.Fit(width, Normalized ? size.Height() : int(view.Height), Gray))) return;
    entry.Guards(images::noWorkingMemory, [&] {
        Resampler resampler;
        if (Normalized)
            MakeThumbnail(view, Dst, resampler);
        else
            images::CopyRows(view, Dst);
    });
}

} // namespace Tesk
