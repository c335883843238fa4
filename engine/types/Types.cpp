#include "engine/Types.h"

#include "Tesk.h"
#include "engine/types/TypeRows.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace Tesk {

// Types of the library that have no class in the tree; those that the public header does not define have no variable.
class ArcPath;
class Classifier;
struct Edge;
class FeatureTable;
struct FontCharImage;
class Poly;
class Quad;
class Snake;
class Source;
class TableStore;

namespace {

template <typename T, typename Node>
void SetDefault(AnyVariable& Variable, const ArgumentNode& Argument)
{
    auto& value = static_cast<Var<T>&>(Variable).Value;
    const auto* node = dynamic_cast<const Node*>(&Argument);
    if (!node) return;
    if constexpr (std::is_same_v<T, const char*> || std::is_same_v<T, const wchar_t*>)
        SetText(static_cast<Var<T>&>(Variable), node->Default);
    else
        value = static_cast<T>(node->Default);
}

template <typename T>
void CopyValue(AnyVariable& Variable, const AnyVariable& Source, bool)
{
    static_cast<Var<T>&>(Variable).Value = static_cast<const Var<T>&>(Source).Value;
}

template <typename T>
int ReadInteger(const AnyVariable& Variable)
{
    return static_cast<int>(static_cast<const Var<T>&>(Variable).Value);
}

template <typename T>
void WriteInteger(AnyVariable& Variable, int Value)
{
    static_cast<Var<T>&>(Variable).Value = static_cast<T>(Value);
}

/// A row that is empty until the public header defines the class.
template <typename T, int Code>
constexpr TypeRow Landed()
{
    if constexpr (requires { T(); })
        return ObjectRow<T, Code>();
    else
        return {Code, nullptr, nullptr, nullptr};
}

template <typename T>
constexpr TypeRow Plain(int code)
{
    return {code, MakeVar<T>, nullptr, nullptr};
}

template <typename T, typename Node>
constexpr TypeRow Valued(int code)
{
    return {code, MakeVar<T>, SetDefault<T, Node>, nullptr};
}

template <typename T>
constexpr TypeRow Enumeration(int code)
{
    return {code, MakeVar<T>, SetDefault<T, EnumArgumentNode>, nullptr, ReadInteger<T>, WriteInteger<T>};
}

template <typename T>
constexpr TypeRow Integer(int code)
{
    return {code, MakeVar<T>, SetDefault<T, IntArgumentNode>, nullptr, ReadInteger<T>, WriteInteger<T>};
}

constexpr TypeRow rows[] = {Enumeration<AlphaModes>(1),
                            Landed<ArcPath, 2>(),
                            Plain<ArcSite>(3),
                            Enumeration<BayerAlignments>(4),
                            Enumeration<BayerQualities>(5),
                            Enumeration<Binarization>(6),
                            Enumeration<BlobSelection>(7),
                            Plain<void (*)(void*)>(9),
                            Landed<Classifier, 11>(),
                            Enumeration<CodePolarities>(14),
                            Enumeration<CodeViews>(15),
                            Enumeration<ColorComponents>(16),
                            Enumeration<ComparatorMode>(18),
                            Enumeration<Directions>(19),
                            Enumeration<DraggingHandles>(20),
                            Landed<Edge, 21>(),
                            Enumeration<EdgeSelection>(28),
                            Enumeration<ErrorCodes>(29),
                            Landed<FeatureTable, 30>(),
                            Enumeration<Features>(31),
                            Enumeration<FittingModes>(32),
                            Enumeration<FittingSide>(33),
                            Landed<FontCharImage, 34>(),
                            Plain<Gradient>(36),
                            Enumeration<GradientTypes>(37),
                            Landed<Graph, 38>(),
                            Integer<Gray16Pixel>(39),
                            Integer<Gray32Pixel>(40),
                            Enumeration<GrayClipping>(41),
                            Integer<GrayPixel>(42),
                            Plain<LabeledRun>(46),
                            Enumeration<LayoutModes>(47),
                            Plain<Limits>(48),
                            Plain<Limits*>(49),
                            Enumeration<Metrics>(51),
                            Enumeration<PixelTypes>(55),
                            Enumeration<Polarities>(56),
                            Landed<Poly, 57>(),
                            Plain<Pose>(58),
                            Plain<Pose3>(59),
                            Enumeration<PredefinedBehaviors>(60),
                            Enumeration<PredefinedColors>(61),
                            Landed<Quad, 64>(),
                            Enumeration<ROITypes>(65),
                            Enumeration<RangeMode>(66),
                            Enumeration<RegistrationModels>(68),
                            Valued<RgbPixel, RgbPixelArgumentNode>(69),
                            Valued<RgbaPixel, RgbaPixelArgumentNode>(70),
                            Enumeration<SIMDLevels>(71),
                            Enumeration<SelectionMode>(73),
                            Plain<Site>(75),
                            Plain<Site*>(76),
                            Enumeration<Sizes>(77),
                            Landed<Snake, 78>(),
                            Landed<Source, 80>(),
                            Enumeration<SourceMode>(81),
                            Enumeration<Symbologies>(83),
                            Landed<TableStore, 84>(),
                            {85, MakeVar<XY>, nullptr, CopyValue<XY>},
                            Plain<XY*>(86),
                            Valued<bool, BoolArgumentNode>(87),
                            Plain<bool*>(88),
                            Plain<unsigned char>(89),
                            Plain<unsigned char*>(90),
                            Valued<char, CharArgumentNode>(91),
                            Valued<const char*, StringArgumentNode>(92),
                            Plain<dXYZ>(93),
                            Valued<double, DbleArgumentNode>(94),
                            Plain<double*>(95),
                            Valued<float, FloatArgumentNode>(96),
                            Integer<int>(97),
                            Plain<int*>(98),
                            Integer<short>(99),
                            Plain<unsigned int>(100),
                            Plain<unsigned short>(101),
                            Plain<void*>(103),
                            Valued<wchar_t, WcharArgumentNode>(104),
                            Valued<const wchar_t*, WstringArgumentNode>(105)};

} // namespace

const TypeRow* FindType(int Code)
{
    const auto find = [Code](const TypeRow* from, const TypeRow* to) {
        const auto* row = std::lower_bound(from, to, Code, [](const TypeRow& a, int code) { return a.Code < code; });
        return row != to && row->Code == Code && row->Make ? row : nullptr;
    };
    const TypeRow* row = find(std::begin(rows), std::end(rows));
    return row ? row : find(classTypes, classTypes + numClassTypes);
}

} // namespace Tesk
