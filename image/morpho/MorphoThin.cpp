// Thinning of binary images, layer by layer, from the outline inwards.
#include "image/Morpho.h"

#include "image/morpho/MorphoFrame.h"
#include "image/morpho/MorphoThinTables.h"

#include <array>
#include <cstring>
#include <vector>

namespace Tesk {

namespace {

using namespace morpho;

/// Stands for pixels that are no longer foreground, or that already wait, during a sweep.
constexpr GrayPixel mark = 128;

class Thinning
{
public:
    Thinning(Image& image, GrayPixel foreground, ThinTable table)
        : image_(image), foreground_(foreground), background_(static_cast<GrayPixel>(255 - foreground)), table_(table)
    {
        const std::ptrdiff_t pitch = image.Pitch;
        around_ = {1, pitch + 1, pitch, pitch - 1, -1, -pitch - 1, -pitch, -pitch + 1};
    }

    int Run(int maxLayers)
    {
        ClearBorder();
        if (maxLayers < 1 && maxLayers != Auto) return 0;
        FindOutline();
        for (int layers = 1;; layers++) {
            if (!Sweep() || layers == maxLayers) return layers;
        }
    }

private:
    void ClearBorder()
    {
        const int last = image_.Height - 1, width = image_.Width;
        std::memset(image_.Row(0), background_, static_cast<std::size_t>(width));
        std::memset(image_.Row(last), background_, static_cast<std::size_t>(width));
        for (int y = 0; y <= last; y++)
            image_.Row(y)[0] = image_.Row(y)[width - 1] = background_;
    }

    void FindOutline()
    {
        for (int y = 1; y < image_.Height - 1; y++)
            for (int x = 1; x < image_.Width - 1; x++) {
                std::uint8_t* pixel = image_.Row(y) + x;
                if (*pixel != foreground_) continue;
                for (const std::size_t direct : {0u, 2u, 4u, 6u})
                    if (pixel[around_[direct]] == background_) {
                        candidates_.push_back(pixel);
                        break;
                    }
            }
    }

    bool IsRemovable(const std::uint8_t* pixel) const
    {
        std::size_t neighbours = 0;
        for (std::size_t k = 0; k < around_.size(); k++)
            neighbours |= static_cast<std::size_t>(pixel[around_[k]] == foreground_) << k;
        return table_[neighbours] == '1';
    }

    /// One layer; false if nothing was left to remove.
    bool Sweep()
    {
        removed_.clear();
        for (std::uint8_t* pixel : candidates_)
            if (IsRemovable(pixel)) {
                *pixel = mark;
                removed_.push_back(pixel);
            }
        candidates_.clear();
        for (std::uint8_t* pixel : removed_) {
            *pixel = background_;
            for (const std::size_t direct : {0u, 2u, 4u, 6u}) {
                std::uint8_t* neighbour = pixel + around_[direct];
                if (*neighbour != foreground_) continue;
                *neighbour = mark;
                candidates_.push_back(neighbour);
            }
        }
        for (std::uint8_t* pixel : candidates_)
            *pixel = foreground_;
        return !removed_.empty();
    }

    Image& image_;
    GrayPixel foreground_, background_;
    ThinTable table_;
    std::array<std::ptrdiff_t, 8> around_{};
    std::vector<std::uint8_t*> candidates_, removed_;
};

int Thin(const Entry& entry, GrayPixel foreground, const Image& src, Image& dst, int maxLayers, bool keepEnds)
{
    Sources held;
    if (Prepare(entry, src, {Gray}, dst, held)) return 0;
    CopyRows(held.a, dst);
    int layers = 0;
    Guarded(entry, [&] { layers = Thinning(dst, foreground, keepEnds ? thinToLines : thinToCore).Run(maxLayers); });
    return layers;
}

} // namespace

int Morpho::BinaryThin(const Image& Src, Image& Dst, int MaxLayers, bool KeepEnds)
{
    return Thin(Entry("Tesk::Morpho::BinaryThin"), 255, Src, Dst, MaxLayers, KeepEnds);
}

int Morpho::BinaryThick(const Image& Src, Image& Dst, int MaxLayers, bool KeepEnds)
{
    return Thin(Entry("Tesk::Morpho::BinaryThick"), 0, Src, Dst, MaxLayers, KeepEnds);
}

} // namespace Tesk
