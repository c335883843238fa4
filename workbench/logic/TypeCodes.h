// The codes of the types that the workbench treats in a way of their own.
#pragma once

#include "engine/TypeNames.h"

namespace TeskPlus {

using Tesk::CodeOf;
using Tesk::histogramType;
using Tesk::profileType;

inline constexpr int geometryType = CodeOf(L"Geometry"), imageType = CodeOf(L"Image"), kernelType = CodeOf(L"Kernel"),
                     morphoType = CodeOf(L"Morpho"), pathType = CodeOf(L"Path"), pyramidType = CodeOf(L"Pyramid"),
                     rgbType = CodeOf(L"RgbPixel"), siteType = CodeOf(L"Site"), xyType = CodeOf(L"XY");
inline constexpr int boolType = CodeOf(L"bool"), characterType = CodeOf(L"char"), doubleType = CodeOf(L"double"),
                     floatType = CodeOf(L"float"), intType = CodeOf(L"int"), textType = CodeOf(L"char*"),
                     wideCharacterType = CodeOf(L"wchar_t"), wideTextType = CodeOf(L"wchar_t*");

} // namespace TeskPlus
