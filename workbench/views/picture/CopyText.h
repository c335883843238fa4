// Text on the clipboard.
#pragma once

#include <string>

namespace TeskPlus {

void CopyText(const std::wstring& Text);

} // namespace TeskPlus
