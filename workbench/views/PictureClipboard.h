// What the windows of pictures put on the clipboard.
#pragma once

#include "image/Image.h"

#include <string>

class QWidget;

namespace TeskPlus {

void CopyText(const std::wstring& Text);
/// The window of an image, as a device-independent bitmap; for `Gray`, `Rgb` and `Rgba`.
void CopyPicture(const Tesk::Image& Picture);
/// What a widget shows.
void CopyScreen(QWidget& Widget);

} // namespace TeskPlus
