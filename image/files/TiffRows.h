// The rows of a TIFF file, one by one and sample by sample as they would stand in a file of plain strips, whatever they
// are kept in: strips, tiles, or colours that libtiff has to work out.
#pragma once

#include "image/files/ImageFile.h"

#include <cstddef>
#include <cstdint>
#include <tiffio.h>
#include <vector>

namespace Tesk::files {

/// A blank page under fax coding shrinks further than under any other.
inline constexpr std::int64_t largestTiffRatio = 20000;

int TiffLibraryError(const ImageFile& file);

struct TiffLayout
{
    std::uint32_t width = 0, height = 0;
    std::uint16_t photometric = 0, samples = 1, bits = 1, planar = 1, sampleFormat = SAMPLEFORMAT_UINT,
                  orientation = ORIENTATION_TOPLEFT;
    PixelTypes native = Undefined;

    bool WhiteIsZero() const { return photometric == PHOTOMETRIC_MINISWHITE; }
    bool Planes() const { return samples > 1 && planar == PLANARCONFIG_SEPARATE; }
    /// Rows and columns change places when the picture is turned upright.
    bool Transposed() const { return orientation >= ORIENTATION_LEFTTOP; }
    /// The values are no gray values or colours of this library's kind: libtiff makes them such, 8 bits each.
    bool Derived() const;
};

/// Refuses a file with a code and a message.
int ReadTiffLayout(TIFF* tiff, TiffLayout& layout);

class TiffRows
{
public:
    TiffRows(TIFF* tiff, const ImageFile& file, const TiffLayout& layout) : tiff_(tiff), file_(file), layout_(layout) {}
    TiffRows(const TiffRows&) = delete;
    TiffRows& operator=(const TiffRows&) = delete;
    ~TiffRows();

    int Open();
    /// Row `y` of one of the planes, or of all samples. Rows are asked for in order.
    int Get(int y, int sample, const std::uint8_t*& row);

private:
    int GetLine(int y, int sample, const std::uint8_t*& row);
    int FillFromTiles(int y, int sample);
    int FillDerived(int y);
    int OpenDerived();

    TIFF* tiff_;
    const ImageFile& file_;
    const TiffLayout& layout_;
    bool tiled_ = false, begun_ = false;
    TIFFRGBAImage picture_{};
    /// The rows at hand: `count_` from `first_` on, of `pitch_` bytes each.
    int first_ = 0, count_ = 0, sample_ = -1, bandRows_ = 1;
    std::size_t pitch_ = 0;
    std::vector<std::uint8_t> band_, tile_;
    std::vector<std::uint32_t> raster_;
};

/// Fills the upright picture from one whose rows stand as the file has them.
void TurnUpright(const Image& stored, const TiffLayout& layout, Image& dst);

} // namespace Tesk::files
