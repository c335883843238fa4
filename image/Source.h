// Where images come from and go to, other than files.
#pragma once

#include "image/Image.h"

namespace Tesk {

/// Each operation refuses for want of memory with `CannotAllocate`.
///
///     Source::CopyToClipboard(image);
///     Image pasted;
///     Source::PasteFromClipboard(pasted);
class Source
{
public:
    /// Puts the window of an image on the clipboard as a device-independent bitmap.
    /// Types: `Gray`, `Rgb`, `Rgba`. Refused: another type (`UnsupportedType`), a void image (`VoidObject`).
    static void CopyToClipboard(const Image& Src);
    /// Puts the window of a profile on the clipboard as text, a line for each sample: its value, or red, green and blue
    /// between tabs. Types: `Gray`, `Rgb`. Refused: another type (`UnsupportedType`), an empty profile (`VoidObject`).
    static void CopyToClipboard(const Profile& Src);
    /// Puts a picture of the client area of a window of the desktop on the clipboard.
    /// Refused: a handle of no window (`CannotPerform`).
    static void CopyToClipboard(void* Window);
    /// Takes a device-independent bitmap from the clipboard: 8 bits a pixel become `Gray`, 24 `Rgb`, 32 `Rgba`.
    /// Refused: no bitmap, or a broken one (`CannotRead`); compression, another depth (`UnsupportedType`).
    static void PasteFromClipboard(Image& Dst);
};

} // namespace Tesk
