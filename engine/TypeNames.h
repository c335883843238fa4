// The names of the data types, by their `parameterType` code. Also the vocabulary of messages and of the list of
// operations.
#pragma once

#include <string_view>

namespace Tesk {

inline constexpr int typeCount = 106;

inline constexpr const wchar_t* typeString[typeCount] = {L"",
                                                         L"AlphaModes",
                                                         L"ArcPath",
                                                         L"ArcSite",
                                                         L"BayerAlignments",
                                                         L"BayerQualities",
                                                         L"Binarization",
                                                         L"BlobSelection",
                                                         L"Blobs",
                                                         L"Callback",
                                                         L"CharReader",
                                                         L"Classifier",
                                                         L"Code1DReader",
                                                         L"Code2DReader",
                                                         L"CodePolarities",
                                                         L"CodeViews",
                                                         L"ColorComponents",
                                                         L"Comparator",
                                                         L"ComparatorMode",
                                                         L"Directions",
                                                         L"DraggingHandles",
                                                         L"Edge",
                                                         L"EdgeArc",
                                                         L"EdgeEllipse",
                                                         L"EdgeLine",
                                                         L"EdgeMap",
                                                         L"EdgePoint",
                                                         L"EdgeRectangle",
                                                         L"EdgeSelection",
                                                         L"ErrorCodes",
                                                         L"FeatureTable",
                                                         L"Features",
                                                         L"FittingModes",
                                                         L"FittingSide",
                                                         L"FontCharImage",
                                                         L"Geometry",
                                                         L"Gradient",
                                                         L"GradientTypes",
                                                         L"Graph",
                                                         L"Gray16Pixel",
                                                         L"Gray32Pixel",
                                                         L"GrayClipping",
                                                         L"GrayPixel",
                                                         L"Histogram",
                                                         L"Image",
                                                         L"Kernel",
                                                         L"LabeledRun",
                                                         L"LayoutModes",
                                                         L"Limits",
                                                         L"Limits*",
                                                         L"Locator",
                                                         L"Metrics",
                                                         L"Morpho",
                                                         L"Operator",
                                                         L"Path",
                                                         L"PixelTypes",
                                                         L"Polarities",
                                                         L"Poly",
                                                         L"Pose",
                                                         L"Pose3",
                                                         L"PredefinedBehaviors",
                                                         L"PredefinedColors",
                                                         L"Profile",
                                                         L"Pyramid",
                                                         L"Quad",
                                                         L"ROITypes",
                                                         L"RangeMode",
                                                         L"Region",
                                                         L"RegistrationModels",
                                                         L"RgbPixel",
                                                         L"RgbaPixel",
                                                         L"SIMDLevels",
                                                         L"SectionType",
                                                         L"SelectionMode",
                                                         L"ShapeMatcher",
                                                         L"Site",
                                                         L"Site*",
                                                         L"Sizes",
                                                         L"Snake",
                                                         L"SnakeGauge",
                                                         L"Source",
                                                         L"SourceMode",
                                                         L"Status",
                                                         L"Symbologies",
                                                         L"TableStore",
                                                         L"XY",
                                                         L"XY*",
                                                         L"bool",
                                                         L"bool*",
                                                         L"byte",
                                                         L"byte*",
                                                         L"char",
                                                         L"char*",
                                                         L"dXYZ",
                                                         L"double",
                                                         L"double*",
                                                         L"float",
                                                         L"int",
                                                         L"int*",
                                                         L"short",
                                                         L"unsigned int",
                                                         L"unsigned short",
                                                         L"void",
                                                         L"void*",
                                                         L"wchar_t",
                                                         L"wchar_t*"};

/// The code of a type; a name that no type has does not compile.
consteval int CodeOf(std::wstring_view Name)
{
    int code = 1;
    while (typeString[code] != Name)
        code++;
    return code;
}

/// A histogram is a profile to everything that reads one.
inline constexpr int profileType = CodeOf(L"Profile"), histogramType = CodeOf(L"Histogram");

/// The first code of the language types; those below are the library's.
inline constexpr int FirstLanguageType = CodeOf(L"bool");

} // namespace Tesk
