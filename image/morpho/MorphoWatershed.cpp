// Watershed by immersion: basins grow from the darkest level up, and dams stand where two meet.
#include "image/Morpho.h"

#include "image/core/PixelLoops.h"
#include "image/histogram/NoiseEstimate.h"
#include "image/morpho/MorphoFrame.h"
#include "image/operator/PixelSteps.h"
#include "measure/Blobs.h"
#include "measure/region/RunLists.h"

#include <array>
#include <utility>
#include <vector>

namespace Tesk {

namespace {

using namespace morpho;

using Label = std::int32_t;

constexpr Label freePixel = 0, waiting = 1, dam = 2, firstBasin = 3;

/// The labels of a window, with a border of dams that stops every walk.
class Immersion
{
public:
    Immersion(const Image& relief, bool connexity8)
        : width_(static_cast<std::size_t>(int(relief.Width))), height_(static_cast<std::size_t>(int(relief.Height))),
          pitch_(width_ + 2), levels_(pitch_ * (height_ + 2)), labels_(levels_.size(), dam)
    {
        const auto pitch = static_cast<std::ptrdiff_t>(pitch_);
        around_ = {-pitch, -1, 1, pitch, -pitch - 1, -pitch + 1, pitch - 1, pitch + 1};
        neighbours_ = connexity8 ? 8 : 4;
        for (std::size_t y = 0; y < height_; y++)
            for (std::size_t x = 0; x < width_; x++) {
                levels_[At(x, y)] = relief.Row(static_cast<int>(y))[x];
                labels_[At(x, y)] = freePixel;
            }
    }

    void Flood()
    {
        for (const std::size_t pixel : SortedPixels())
            if (labels_[pixel] == freePixel) FloodPlateau(pixel);
    }

    const Label* Row(int y) const { return &labels_[At(0, static_cast<std::size_t>(y))]; }
    Label End() const { return next_; }

private:
    std::size_t At(std::size_t x, std::size_t y) const { return (y + 1) * pitch_ + x + 1; }

    /// By level, and by rows within a level.
    std::vector<std::size_t> SortedPixels() const
    {
        std::array<std::size_t, 257> starts{};
        const auto each = [&](auto f) {
            for (std::size_t y = 0; y < height_; y++)
                for (std::size_t x = 0; x < width_; x++)
                    f(At(x, y));
        };
        each([&](std::size_t pixel) { starts[levels_[pixel] + 1u]++; });
        for (std::size_t v = 1; v < starts.size(); v++)
            starts[v] += starts[v - 1];
        std::vector<std::size_t> sorted(width_ * height_);
        each([&](std::size_t pixel) { sorted[starts[levels_[pixel]]++] = pixel; });
        return sorted;
    }

    template <typename F>
    void EachNeighbour(std::size_t pixel, F f) const
    {
        for (std::size_t k = 0; k < neighbours_; k++)
            f(pixel + static_cast<std::size_t>(around_[k]));
    }

    /// A plateau belongs to the oldest of the basins that it touches; where it touches another one too, it is a dam.
    /// One that touches nothing is a new basin, one that touches dams only is more of them.
    void FloodPlateau(std::size_t seed)
    {
        const auto level = levels_[seed];
        Label found = 0;
        bool touchesDam = false;
        plateau_.assign(1, seed);
        labels_[seed] = waiting;
        for (std::size_t k = 0; k < plateau_.size(); k++)
            EachNeighbour(plateau_[k], [&](std::size_t n) {
                const Label label = labels_[n];
                if (label >= firstBasin)
                    found = found == 0 ? label : Min(found, label);
                else if (label == dam)
                    touchesDam = touchesDam || IsInside(n);
                else if (label == freePixel && levels_[n] == level) {
                    labels_[n] = waiting;
                    plateau_.push_back(n);
                }
            });
        if (found == 0) found = touchesDam ? dam : next_++;
        for (const std::size_t pixel : plateau_) {
            bool meets = false;
            EachNeighbour(pixel,
                          [&](std::size_t n) { meets = meets || (labels_[n] >= firstBasin && labels_[n] != found); });
            labels_[pixel] = meets ? dam : found;
        }
    }

    bool IsInside(std::size_t pixel) const
    {
        const std::size_t x = pixel % pitch_, y = pixel / pitch_;
        return x > 0 && x <= width_ && y > 0 && y <= height_;
    }

    std::size_t width_, height_, pitch_;
    std::vector<std::uint8_t> levels_;
    std::vector<Label> labels_;
    std::array<std::ptrdiff_t, 8> around_{};
    std::size_t neighbours_;
    std::vector<std::size_t> plateau_;
    Label next_ = firstBasin;
};

/// Makes the relief of an image: gray, and raised to the noise. True if there is none, and that was reported.
bool MakeRelief(const Entry& entry, const Image& grd, int& noise, Image& relief)
{
    if (entry.Refuses(relief.TrySet(grd.Width, grd.Height, Gray))) return true;
    // A gradient whose gain has no conversion writes nothing.
    FillRows(relief, 0);
    if (points::CopyPixels(entry, grd, relief, Gray)) return true;
    // Images too small for the estimate have no noise.
    if (noise == Auto && !Guarded(entry, [&] { noise = static_cast<int>(1.3 * levels::NoiseOf(relief, false)); }))
        return true;
    noise = Clamp(noise, 0, 255);
    ThroughTable(relief, relief, [=](int v) { return Max(v, noise); });
    return false;
}

int CheckRelief(const Image& grd)
{
    return CheckType(grd, {Gray, Grad}, L", Gray or Grad required");
}

/// The frame of all forms: `write` gets the relief and its flooded labels, and says whether it wrote.
template <typename F>
int Immerse(const Entry& entry, bool connexity8, const Image& grd, int noise, F write)
{
    Image relief;
    if (MakeRelief(entry, grd, noise, relief)) return 0;
    bool done = false;
    Guarded(entry, [&] {
        Immersion immersion(relief, connexity8);
        immersion.Flood();
        done = write(relief, immersion);
    });
    return done ? noise : 0;
}

/// The same for an image, which is sized first.
template <typename F>
int Flood(const Entry& entry, bool connexity8, const Image& grd, Image& dst, PixelTypes type, int noise, F write)
{
    return Immerse(entry, connexity8, grd, noise, [&](const Image& relief, const Immersion& immersion) {
        return !RefusesLike(relief, dst, type) && write(immersion);
    });
}

template <typename T, typename F>
bool EachLabel(const Immersion& immersion, Image& dst, F f)
{
    for (int y = 0; y < dst.Height; y++) {
        const Label* labels = immersion.Row(y);
        T* d = dst.Row<T>(y);
        for (int x = 0; x < dst.Width; x++)
            d[x] = static_cast<T>(f(labels[x]));
    }
    return true;
}

int LowByte(Label label)
{
    return label & 255;
}

/// The runs of the basins, whose numbers count in the order of their first pixels. `basins` becomes how many there are.
std::vector<LabeledRun> BasinRuns(const Image& grd, const Immersion& immersion, int& basins)
{
    constexpr Label none = -1;
    std::vector<LabeledRun> runs;
    std::vector<Label> numbers(static_cast<std::size_t>(immersion.End()), none);
    basins = 0;
    const int width = grd.Width;
    for (int y = 0; y < grd.Height; y++) {
        const Label* labels = immersion.Row(y);
        for (int x = 0, end = 0; x < width; x = end) {
            for (end = x + 1; end < width && labels[end] == labels[x];)
                end++;
            if (labels[x] < firstBasin) continue;
            Label& number = numbers[static_cast<std::size_t>(labels[x])];
            if (number == none) number = basins++;
            runs.push_back(regions::MakeRun(x + grd.X, end + grd.X, y + grd.Y, number));
        }
    }
    return runs;
}

/// Sums and counts of pixels, by label.
struct RegionMeans
{
    explicit RegionMeans(std::size_t labels) : sums(labels), counts(labels) {}

    std::vector<std::int64_t> sums, counts;

    void Add(std::size_t label, int value)
    {
        sums[label] += value;
        counts[label]++;
    }
    int Of(std::size_t label) const { return static_cast<int>(sums[label] / Max<std::int64_t>(counts[label], 1)); }
};

} // namespace

int Morpho::Watershed(bool Connexity8, const Image& Grd, Image& Dst, int Noise, bool Binarize)
{
    const Entry entry("Tesk::Morpho::Watershed");
    if (entry.Refuses(CheckRelief(Grd))) return 0;
    return Flood(entry, Connexity8, Grd, Dst, Gray, Noise, [&](const Immersion& immersion) {
        return EachLabel<GrayPixel>(immersion, Dst,
                                    [&](Label label) { return Binarize ? (label == dam ? 255 : 0) : LowByte(label); });
    });
}

int Morpho::Watershed(bool Connexity8, const Image& Grd, const Image& Src, Image& Dst, int Noise, bool Average)
{
    const Entry entry("Tesk::Morpho::Watershed");
    if (entry.Refuses(CheckRelief(Grd)) || entry.Refuses(CheckType(Src, {Gray}, L", Gray required"))) return 0;
    if (Grd.Width != Src.Width || Grd.Height != Src.Height) {
        entry.Refuses(RefuseSizes(Grd, Src));
        return 0;
    }
    Image held;
    held.ShallowCopy(Src, true);
    return Flood(entry, Connexity8, Grd, Dst, Gray, Noise, [&](const Immersion& immersion) {
        if (!Average) return EachLabel<GrayPixel>(immersion, Dst, LowByte);
        if (entry.Refuses(KeepApart(held, Dst, InPlace::Copied))) return false;
        RegionMeans means(static_cast<std::size_t>(immersion.End()));
        for (int y = 0; y < held.Height; y++)
            for (int x = 0; x < held.Width; x++)
                means.Add(static_cast<std::size_t>(immersion.Row(y)[x]), held.Row(y)[x]);
        return EachLabel<GrayPixel>(immersion, Dst, [&](Label label) {
            return label == dam ? 255 : means.Of(static_cast<std::size_t>(label));
        });
    });
}

int Morpho::Watershed(bool Connexity8, const Image& Grd, Blobs& Dst, int Noise)
{
    const Entry entry("Tesk::Morpho::Watershed");
    if (entry.Refuses(CheckRelief(Grd)) || entry.Refuses(regions::CheckReach(Grd))) return 0;
    return Immerse(entry, Connexity8, Grd, Noise, [&](const Image&, const Immersion& immersion) {
        int basins = 0;
        std::vector<LabeledRun> runs = BasinRuns(Grd, immersion, basins);
        return !entry.Refuses(Dst.TryTakeLabeled(runs, basins, Connexity8));
    });
}

int Morpho::_WatershedMap(bool Connexity8, const Image& Grd, Image& Dst, int Noise)
{
    const Entry entry("Tesk::Morpho::_WatershedMap");
    if (entry.Refuses(CheckRelief(Grd))) return 0;
    return Flood(entry, Connexity8, Grd, Dst, Gray32, Noise, [&](const Immersion& immersion) {
        return EachLabel<Gray32Pixel>(immersion, Dst, [](Label label) { return label; });
    });
}

void Morpho::AverageRegions(const Image& Msk, const Image& Src, Image& Dst)
{
    const Entry entry("Tesk::Morpho::AverageRegions");
    if (entry.Refuses(CheckType(Msk, {Gray})) || entry.Refuses(CheckType(Src, {Gray})) ||
        entry.Refuses(CheckImages(Msk, Src)))
        return;
    Sources held;
    if (Prepare(entry, Msk, Src, Dst, Gray, held, InPlace::Copied)) return;
    Guarded(entry, [&] {
        const Image &mask = held.a, &source = held.b;
        const int width = mask.Width, height = mask.Height;
        std::vector<std::pair<int, int>> area;
        std::vector<bool> done(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        const auto take = [&](int x, int y) {
            if (x < 0 || x >= width || y < 0 || y >= height || mask.Row(y)[x] != 0) return;
            auto seen =
                done[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
            if (seen) return;
            seen = true;
            area.emplace_back(x, y);
        };
        CopyRows(mask, Dst);
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++) {
                area.clear();
                take(x, y);
                std::int64_t sum = 0;
                for (std::size_t k = 0; k < area.size(); k++) {
                    const auto [u, v] = area[k];
                    sum += source.Row(v)[u];
                    take(u + 1, v);
                    take(u - 1, v);
                    take(u, v + 1);
                    take(u, v - 1);
                }
                if (area.empty()) continue;
                const auto mean = static_cast<GrayPixel>(sum / static_cast<std::int64_t>(area.size()));
                // 1 is kept for what is being filled, so that no region ends with it.
                for (const auto& [u, v] : area)
                    Dst.Row(v)[u] = mean == 1 ? GrayPixel{0} : mean;
            }
    });
}

} // namespace Tesk
