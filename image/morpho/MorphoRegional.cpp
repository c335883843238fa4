// Regional extrema: the places that no neighbour surpasses.
#include "image/Morpho.h"

#include "image/morpho/MorphoExtremum.h"
#include "image/morpho/MorphoFrame.h"
#include "image/morpho/RegionalPeaks.h"
#include "measure/Path.h"

#include <array>
#include <utility>
#include <vector>

namespace Tesk {

namespace {

using namespace morpho;

/// Connected components by flood fill: the first pixel, in row order, of each connected patch of pixels that are at
/// least `least` high and that no neighbour surpasses.
class Peaks
{
public:
    Peaks(Extremum extremum, int least, const Image& src, bool connexity8)
        : extremum_(extremum), least_(least), connexity8_(connexity8), src_(src)
    {
        MakeLike(src, Gray, outer_);
        Apply(extremum, Element(3, 3, connexity8 ? 1 : 3, src), src, outer_);
        open_.resize(static_cast<std::size_t>(int(src.Width)) * static_cast<std::size_t>(int(src.Height)));
        for (int y = 0; y < src.Height; y++)
            for (int x = 0; x < src.Width; x++)
                Open(x, y) = src.Row(y)[x] == outer_.Row(y)[x] && Height(x, y) >= least_;
    }

    template <typename F>
    void Each(F f)
    {
        for (int y = 0; y < src_.Height; y++)
            for (int x = 0; x < src_.Width; x++)
                if (Open(x, y)) {
                    Close(x, y);
                    f(Peak{x, y, Height(x, y)});
                }
    }

private:
    std::uint8_t& Open(int x, int y)
    {
        return open_[static_cast<std::size_t>(y) * static_cast<std::size_t>(int(src_.Width)) +
                     static_cast<std::size_t>(x)];
    }

    int Height(int x, int y) const
    {
        const int gray = src_.Row(y)[x];
        return extremum_ == Extremum::Maximum ? gray : 255 - gray;
    }

    void Close(int x, int y)
    {
        const auto take = [&](int u, int v) {
            if (u < 0 || u >= src_.Width || v < 0 || v >= src_.Height || !Open(u, v)) return;
            Open(u, v) = 0;
            patch_.emplace_back(u, v);
        };
        take(x, y);
        while (!patch_.empty()) {
            const auto [u, v] = patch_.back();
            patch_.pop_back();
            for (int j = -1; j <= 1; j++)
                for (int i = -1; i <= 1; i++)
                    if (connexity8_ || i == 0 || j == 0) take(u + i, v + j);
        }
    }

    Extremum extremum_;
    int least_;
    bool connexity8_;
    const Image& src_;
    Image outer_;
    std::vector<std::uint8_t> open_;
    std::vector<std::pair<int, int>> patch_;
};

/// The highest peaks, those of the same height in the order in which they came. A full list gives up its last peak,
/// unless that one is higher than the new one.
class HighestPeaks
{
public:
    explicit HighestPeaks(std::size_t most) : most_(most) {}

    void Insert(const Peak& peak)
    {
        const auto height = static_cast<std::size_t>(peak.height);
        if (count_ == most_) {
            if (lowest_ > height) return;
            byHeight_[lowest_].pop_back();
            count_--;
        }
        byHeight_[height].push_back(peak);
        count_++;
        lowest_ = Min(lowest_, height);
        while (byHeight_[lowest_].empty())
            lowest_++;
    }

    std::vector<Peak> List() const
    {
        std::vector<Peak> peaks;
        peaks.reserve(count_);
        for (auto alike = byHeight_.rbegin(); alike != byHeight_.rend(); ++alike)
            peaks.insert(peaks.end(), alike->begin(), alike->end());
        return peaks;
    }

private:
    static constexpr std::size_t heights = 256;

    std::size_t most_, count_ = 0, lowest_ = heights - 1;
    std::array<std::vector<Peak>, heights> byHeight_;
};

std::vector<Peak> ListPeaks(Extremum extremum, int least, int most, const Image& src, bool connexity8)
{
    Peaks all(extremum, least, src, connexity8);
    if (most < 1) {
        std::vector<Peak> peaks;
        all.Each([&](const Peak& peak) { peaks.push_back(peak); });
        return peaks;
    }
    HighestPeaks highest(static_cast<std::size_t>(most));
    all.Each([&](const Peak& peak) { highest.Insert(peak); });
    return highest.List();
}

void FindPeaks(const Entry& entry, Extremum extremum, int least, int maxCount, const Image& src, Path& dst,
               bool connexity8)
{
    if (entry.Refuses(CheckType(src, {Gray})) || entry.Refuses(CheckReach(src))) return;
    std::vector<Peak> peaks;
    const bool done = Guarded(entry, [&] { peaks = ListPeaks(extremum, least, maxCount, src, connexity8); });
    if (!done) return;
    dst.Clear();
    dst.OrgX = src.X;
    dst.OrgY = src.Y;
    // A site that is not appended, for lack of memory, was reported as such.
    int length = 0;
    for (const Peak& peak : peaks) {
        dst.Append(peak.x, peak.y);
        if (dst.Length != ++length) return;
    }
}

} // namespace

std::vector<Peak> morpho::FindMaxima(int least, int most, const Image& src, bool connexity8)
{
    return ListPeaks(Extremum::Maximum, least, most, src, connexity8);
}

void Morpho::RegionalMaxima(int MinGray, int MaxCount, const Image& Src, Path& Dst, bool Connexity8)
{
    FindPeaks(Entry("Tesk::Morpho::RegionalMaxima"), Extremum::Maximum, Clamp(MinGray, 0, 255), MaxCount, Src, Dst,
              Connexity8);
}

void Morpho::RegionalMinima(int MaxGray, int MaxCount, const Image& Src, Path& Dst, bool Connexity8)
{
    FindPeaks(Entry("Tesk::Morpho::RegionalMinima"), Extremum::Minimum, 255 - Clamp(MaxGray, 0, 255), MaxCount, Src,
              Dst, Connexity8);
}

} // namespace Tesk
