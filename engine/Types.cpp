#include "engine/Types.h"

#include "Tesk.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace Tesk {

namespace {

template <typename T>
std::unique_ptr<AnyVariable> Make()
{
    return std::make_unique<Var<T>>();
}

template <typename T, typename Node>
void SetDefault(AnyVariable& Variable, const ArgumentNode& Argument)
{
    auto& value = static_cast<Var<T>&>(Variable).Value;
    const auto* node = dynamic_cast<const Node*>(&Argument);
    if (!node) return;
    if constexpr (std::is_same_v<T, const char*>)
        SetText(static_cast<Var<T>&>(Variable), "");
    else
        value = static_cast<T>(node->Default);
}

template <typename T>
void Share(AnyVariable& Variable, const AnyVariable& Source, bool Keep)
{
    static_cast<Var<T>&>(Variable).Value.ShallowCopy(static_cast<const Var<T>&>(Source).Value, Keep);
}

template <typename T>
void CopyValue(AnyVariable& Variable, const AnyVariable& Source, bool)
{
    static_cast<Var<T>&>(Variable).Value = static_cast<const Var<T>&>(Source).Value;
}

template <typename T>
constexpr TypeRow Shared(int code)
{
    return {code, Make<T>, nullptr, Share<T>};
}

template <typename T>
constexpr TypeRow Plain(int code)
{
    return {code, Make<T>, nullptr, nullptr};
}

template <typename T, typename Node>
constexpr TypeRow Valued(int code)
{
    return {code, Make<T>, SetDefault<T, Node>, nullptr};
}

template <typename T>
constexpr TypeRow Enumeration(int code)
{
    return Valued<T, EnumArgumentNode>(code);
}

constexpr TypeRow rows[] = {Enumeration<AlphaModes>(1),
                            Plain<ArcSite>(3),
                            Enumeration<BayerAlignments>(4),
                            Enumeration<BayerQualities>(5),
                            Enumeration<Binarization>(6),
                            Enumeration<BlobSelection>(7),
                            Plain<void (*)(void*)>(9),
                            Enumeration<CodePolarities>(14),
                            Enumeration<CodeViews>(15),
                            Enumeration<ColorComponents>(16),
                            Enumeration<ComparatorMode>(18),
                            Enumeration<Directions>(19),
                            Enumeration<DraggingHandles>(20),
                            Enumeration<EdgeSelection>(28),
                            Enumeration<ErrorCodes>(29),
                            Enumeration<Features>(31),
                            Enumeration<FittingModes>(32),
                            Enumeration<FittingSide>(33),
                            Plain<Gradient>(36),
                            Enumeration<GradientTypes>(37),
                            Plain<Gray16Pixel>(39),
                            Plain<Gray32Pixel>(40),
                            Enumeration<GrayClipping>(41),
                            Valued<GrayPixel, IntArgumentNode>(42),
                            Shared<Image>(44),
                            Plain<LabeledRun>(46),
                            Enumeration<LayoutModes>(47),
                            Plain<Limits>(48),
                            Plain<Limits*>(49),
                            Enumeration<Metrics>(51),
                            Plain<Operator>(53),
                            Enumeration<PixelTypes>(55),
                            Enumeration<Polarities>(56),
                            Plain<Pose>(58),
                            Plain<Pose3>(59),
                            Enumeration<PredefinedBehaviors>(60),
                            Enumeration<PredefinedColors>(61),
                            Shared<Pyramid>(63),
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
                            Enumeration<SourceMode>(81),
                            Enumeration<Symbologies>(83),
                            {85, Make<XY>, nullptr, CopyValue<XY>},
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
                            Valued<int, IntArgumentNode>(97),
                            Plain<int*>(98),
                            Plain<short>(99),
                            Plain<unsigned int>(100),
                            Plain<unsigned short>(101),
                            Plain<void*>(103),
                            Valued<wchar_t, WcharArgumentNode>(104),
                            Valued<const wchar_t*, WstringArgumentNode>(105)};

} // namespace

const TypeRow* FindType(int Code)
{
    const auto* row = std::lower_bound(std::begin(rows), std::end(rows), Code,
                                       [](const TypeRow& a, int code) { return a.Code < code; });
    return row != std::end(rows) && row->Code == Code ? row : nullptr;
}

} // namespace Tesk
