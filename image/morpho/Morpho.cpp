// The structuring element, and the operations made of dilation and erosion.
#include "image/Morpho.h"

#include "image/Operator.h"
#include "image/core/PixelLoops.h"
#include "image/filter/GradientVector.h"
#include "image/morpho/MorphoExtremum.h"
#include "image/morpho/MorphoFrame.h"

#include <cstring>

namespace Tesk {

namespace {

using namespace morpho;

/// `dst = f(a, b)`, pixel by pixel, in either type.
template <typename F>
void Combine(const Image& a, const Image& b, Image& dst, F f)
{
    VisitPixels<Gray, Gray16>(dst.Type, [&]<typename T>() { EachPixelPair<T>(a, b, dst, f); });
}

/// The largest difference that a `Gray16` image takes.
constexpr int largestDifference = 32767;

void Difference(const Image& a, const Image& b, Image& dst)
{
    if (dst.Type == Gray)
        EachBytePair(a, b, dst, kernels::BytePair::SubtractSaturated);
    else
        Combine(a, b, dst, [](int p, int q) { return Clamp(p - q, 0, largestDifference); });
}

void HalfWay(const Image& a, const Image& b, Image& dst)
{
    if (dst.Type == Gray)
        EachBytePair(a, b, dst, kernels::BytePair::AddHalved);
    else
        Combine(a, b, dst, [](int p, int q) { return (p + q) >> 1; });
}

/// One operation on a source: its element, its source held apart, its sized destination.
class Run
{
public:
    Run(const Entry& entry, const Morpho& morpho, const Image& src, Image& dst)
        : entry_(entry), refused_(Prepare(entry, src, grayTypes, dst, held_)),
          element_(morpho.Width, morpho.Height, morpho.Diagonal, held_.a), dst_(dst)
    {}

    /// Does the work, unless the source was refused; true if it was done.
    template <typename F>
    bool Do(F work)
    {
        return !refused_ && Guarded(entry_, [&] { work(*this); });
    }

    const Image& Src() const { return held_.a; }
    Image& Dst() const { return dst_; }

    void Apply(Extremum extremum, const Image& src, Image& dst) const { morpho::Apply(extremum, element_, src, dst); }
    void Dilate(Image& dst) const { Apply(Extremum::Maximum, held_.a, dst); }
    void Erode(Image& dst) const { Apply(Extremum::Minimum, held_.a, dst); }
    void Open(Image& dst) const { Twice(Extremum::Minimum, Extremum::Maximum, dst); }
    void Close(Image& dst) const { Twice(Extremum::Maximum, Extremum::Minimum, dst); }

    /// An image like the source to work in.
    void Like(Image& work) const { MakeLike(held_.a, held_.a.Type, work); }

private:
    void Twice(Extremum first, Extremum second, Image& dst) const
    {
        Image work;
        Like(work);
        Apply(first, held_.a, work);
        Apply(second, work, dst);
    }

    const Entry& entry_;
    Sources held_;
    bool refused_;
    Element element_;
    Image& dst_;
};

int CheckSize(const wchar_t* name, int size)
{
    if (size > 0 && size % 2 == 1) return NoError;
    return Status::Format(OutOfRange, L"The filter %ls (%d) must be a positive odd number", name, size);
}

/// A hat that goes through a threshold must be of a type that has one.
bool RefusesBinarize(const Entry& entry, const Image& src, bool binarize)
{
    return binarize && entry.Refuses(CheckType(src, {Gray}));
}

} // namespace

void Morpho::Set(int Width, int Height, int Diagonal)
{
    const Entry entry("Tesk::Morpho::Set");
    if (entry.Refuses(CheckSize(L"Width", Width)) || entry.Refuses(CheckSize(L"Height", Height)) ||
        entry.Refuses(CheckSize(L"Diagonal", Diagonal)))
        return;
    this->Width = Width;
    this->Height = Height;
    this->Diagonal = Diagonal;
}

void Morpho::Box(int Width, int Height)
{
    Set(Width, Height, 1);
}

void Morpho::Square(int Size)
{
    Set(Size, Size, 1);
}

void Morpho::Diamond(int Size)
{
    Set(Size, Size, Size);
}

void Morpho::Octagon(int Size)
{
    Set(Size, Size, Size - (Size >> 2) * 2);
}

void Morpho::Horizontal(int Width)
{
    Set(Width, 1, 1);
}

void Morpho::Vertical(int Height)
{
    Set(1, Height, 1);
}

void Morpho::ShallowCopy(const Morpho& Src, bool KeepView)
{
    const Entry entry("Tesk::Morpho::ShallowCopy");
    if (KeepView) *this = Src;
}

void Morpho::Dilate(const Image& Src, Image& Dst) const
{
    const Entry entry("Tesk::Morpho::Dilate");
    Run(entry, *this, Src, Dst).Do([](const Run& run) { run.Dilate(run.Dst()); });
}

void Morpho::Erode(const Image& Src, Image& Dst) const
{
    const Entry entry("Tesk::Morpho::Erode");
    Run(entry, *this, Src, Dst).Do([](const Run& run) { run.Erode(run.Dst()); });
}

void Morpho::Open(const Image& Src, Image& Dst) const
{
    const Entry entry("Tesk::Morpho::Open");
    Run(entry, *this, Src, Dst).Do([](const Run& run) { run.Open(run.Dst()); });
}

void Morpho::Close(const Image& Src, Image& Dst) const
{
    const Entry entry("Tesk::Morpho::Close");
    Run(entry, *this, Src, Dst).Do([](const Run& run) { run.Close(run.Dst()); });
}

void Morpho::WhiteHat(const Image& Src, Image& Dst, bool Binarize) const
{
    const Entry entry("Tesk::Morpho::WhiteHat");
    if (RefusesBinarize(entry, Src, Binarize)) return;
    const bool done = Run(entry, *this, Src, Dst).Do([](const Run& run) {
        run.Open(run.Dst());
        Difference(run.Src(), run.Dst(), run.Dst());
    });
    if (done && Binarize) Operator::Binarize(Dst, Dst);
}

void Morpho::BlackHat(const Image& Src, Image& Dst, bool Binarize) const
{
    const Entry entry("Tesk::Morpho::BlackHat");
    if (RefusesBinarize(entry, Src, Binarize)) return;
    const bool done = Run(entry, *this, Src, Dst).Do([](const Run& run) {
        run.Close(run.Dst());
        Difference(run.Dst(), run.Src(), run.Dst());
    });
    if (done && Binarize) Operator::Binarize(Dst, Dst);
}

void Morpho::Gradient(const Image& Src, Image& Dst, GradientTypes Type) const
{
    const Entry entry("Tesk::Morpho::Gradient");
    if (entry.Refuses(CheckType(Src, grayTypes))) return;
    if (Type != StandardGradient && Type != ExternalGradient && Type != InternalGradient) {
        entry.Refuse(
            UnsupportedType,
            L"The gradient Type (%ls) is not supported for this operation; use one of Standard/External/Internal",
            gradients::TypeName(Type));
        return;
    }
    Run(entry, *this, Src, Dst).Do([Type](const Run& run) {
        if (Type == InternalGradient) {
            run.Erode(run.Dst());
            Difference(run.Src(), run.Dst(), run.Dst());
            return;
        }
        run.Dilate(run.Dst());
        if (Type == ExternalGradient) {
            Difference(run.Dst(), run.Src(), run.Dst());
            return;
        }
        Image eroded;
        run.Like(eroded);
        run.Erode(eroded);
        Difference(run.Dst(), eroded, run.Dst());
    });
}

void Morpho::MidRange(const Image& Src, Image& Dst) const
{
    const Entry entry("Tesk::Morpho::MidRange");
    Run(entry, *this, Src, Dst).Do([](const Run& run) {
        Image eroded;
        run.Like(eroded);
        run.Erode(eroded);
        run.Dilate(run.Dst());
        HalfWay(run.Dst(), eroded, run.Dst());
    });
}

void Morpho::PseudoMedian(const Image& Src, Image& Dst) const
{
    const Entry entry("Tesk::Morpho::PseudoMedian");
    Run(entry, *this, Src, Dst).Do([](const Run& run) {
        Image opened;
        run.Like(opened);
        run.Open(opened);
        run.Close(run.Dst());
        HalfWay(run.Dst(), opened, run.Dst());
    });
}

void Morpho::Contrast(const Image& Src, Image& Dst) const
{
    const Entry entry("Tesk::Morpho::Contrast");
    Run(entry, *this, Src, Dst).Do([](const Run& run) {
        Image opened;
        run.Like(opened);
        run.Open(opened);
        run.Close(run.Dst());
        Difference(run.Dst(), opened, run.Dst());
    });
}

void RenderMorpho(const Morpho& Element, Image& Dst)
{
    const Entry entry("Tesk::RenderMorpho");
    if (entry.Refuses(CheckImage(Dst, Gray))) return;
    Dst.DetachIfShared(false);
    const int n = Max(int(Element.Width), int(Element.Height)), cell = (Dst.Width - 1) / n,
              margin = (Dst.Width - cell * n + 1) / 2;
    // Cells of one pixel have no inside; larger ones bound the working image by the destination.
    Image shape;
    if (cell > 1) {
        const bool drawn = Guarded(entry, [&] {
            Image seed;
            if (seed.TrySet(n, n, Gray) != NoError) throw std::bad_alloc();
            FillRows(seed, 255);
            seed.Row(n / 2)[n / 2] = 0;
            MakeLike(seed, Gray, shape);
            Apply(Extremum::Minimum, morpho::Element(Element.Width, Element.Height, Element.Diagonal, seed), seed,
                  shape);
        });
        if (!drawn) return;
    }
    FillRows(Dst, 255);
    for (int j = 0; j < shape.Height; j++)
        for (int i = 0; i < shape.Width; i++) {
            if (shape.Row(j)[i] != 0) continue;
            const int left = margin + i * cell, top = margin + j * cell;
            for (int y = top; y < Min(top + cell - 1, int(Dst.Height)); y++)
                std::memset(Dst.Row(y) + left, 0, static_cast<std::size_t>(cell - 1));
        }
}

} // namespace Tesk
