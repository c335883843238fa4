// Writes small valid files of every format into FOLDER/FORMAT, for the fuzzers to start from.
#include "foundation/Archive.h"
#include "foundation/Services.h"
#include "gauge/Comparator.h"
#include "gauge/EdgeArc.h"
#include "gauge/EdgeEllipse.h"
#include "gauge/EdgeLine.h"
#include "gauge/EdgePoint.h"
#include "gauge/EdgeRectangle.h"
#include "image/Geometry.h"
#include "image/Image.h"
#include "image/Source.h"
#include "measure/FeatureTable.h"
#include "measure/Path.h"
#include "measure/Poly.h"
#include "measure/Region.h"
#include "read/CharReader.h"
#include "read/Code1DReader.h"
#include "tests/image/source/AviFile.h"
#include "tests/read/linear/Symbols.h"

#include <filesystem>
#include <fstream>
#include <string>

using namespace Tesk;
namespace fs = std::filesystem;

namespace {

void Fill(Image& image, int width, int height, PixelTypes type)
{
    image.Set(width, height, type);
    for (int y = 0; y < height; y++)
        for (int i = 0; i < RowBytes(width, type); i++)
            image.Row(y)[i] = static_cast<std::uint8_t>(37 * i + 91 * y);
}

void Put(const fs::path& path, const std::vector<std::uint8_t>& bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void Put(const fs::path& path, const std::string& text)
{
    Put(path, std::vector<std::uint8_t>(text.begin(), text.end()));
}

template <typename Gauge, typename F>
void PutGauge(const fs::path& folder, F locate)
{
    for (int i = 0; i < 4; i++) {
        Gauge gauge;
        locate(gauge, XY(28 + 3 * i, 24), 12.0 + 4 * i);
        gauge.Breadth = 1 + 2 * i;
        gauge.Smoothing = 1 + i / 2 * 2;
        gauge.MinimumStep = 20;
        std::vector<std::uint8_t> block;
        Archive archive = Archive::IntoMemory(block);
        gauge.Transfer(archive);
        Put(folder / std::to_string(i), block);
    }
}

void PutGauges(const fs::path& root)
{
    PutGauge<EdgePoint>(root / "edgepoint", [](EdgePoint& gauge, XY at, double size) { gauge.Locate(at, size, size); });
    PutGauge<EdgeLine>(root / "edgeline",
                       [](EdgeLine& gauge, XY at, double size) { gauge.Locate(at, size, 5 * size, 16); });
    PutGauge<EdgeArc>(root / "edgearc", [](EdgeArc& gauge, XY at, double size) {
        if (size > 20)
            gauge.Locate(at, size, 10, 200, 12);
        else
            gauge.Locate(at, size, 12);
    });
    PutGauge<EdgeEllipse>(root / "edgeellipse", [](EdgeEllipse& gauge, XY at, double size) {
        if (size > 20)
            gauge.Locate(at, size, size / 2, 30, 10, 200, 12);
        else
            gauge.Locate(at, size, size / 2, 30, 12);
    });
    PutGauge<EdgeRectangle>(root / "edgerectangle", [](EdgeRectangle& gauge, XY at, double size) {
        gauge.Locate(at, XY(size, size / 2), 3 * size, 8);
        gauge.FourSides = size > 20;
    });
}

/// The settings of a reader, and a row of pixels across a symbol.
void PutLinearCodes(const fs::path& folder)
{
    constexpr std::size_t settings = 64;
    const std::string symbols[] = {checks::EAN13Modules("4006381333931"), checks::Modules({1, 2, 3, 2, 1, 2, 3, 2, 1}),
                                   checks::Modules({1, 1, 2, 2, 1, 2, 1, 1, 1, 1, 1, 1, 2, 1, 2, 1, 1, 2, 1, 1, 1})};
    for (int i = 0; i < 6; i++) {
        Code1DReader reader;
        reader.DetectPharmacode = reader.DetectMSI = reader.Detect11 = i % 2 == 1;
        reader.NumDirections = i % 3 == 0 ? int{Auto} : i;
        reader.CheckQuality = i > 3;
        std::vector<std::uint8_t> bytes;
        Archive archive = Archive::IntoMemory(bytes);
        reader.Transfer(archive);
        bytes.resize(settings);
        bytes.insert(bytes.end(), 40, 220);
        for (const char module : symbols[i % 3])
            bytes.insert(bytes.end(), 3, module == '1' ? 30 : 220);
        bytes.insert(bytes.end(), 40, 220);
        Put(folder / std::to_string(i), bytes);
    }
}

void PutComparator(const fs::path& folder)
{
    for (const PixelTypes type : {Gray, Rgb}) {
        Image reference;
        Fill(reference, 140, 150, type);
        Comparator comparator;
        comparator.SetReference(reference, 1, 1, Translation);
        comparator.AlignerSearchRange(-4, -4, 4, 4, 0, 0, 1, 1);
        comparator.TrainAligners();
        if (type == Gray) comparator.StraightTolerancing(5, 1);
        comparator.AppendDetectorROI(Limits(3, 4, 30, 40));
        std::vector<std::uint8_t> block;
        Archive archive = Archive::IntoMemory(block);
        comparator.Transfer(archive);
        Put(folder / std::to_string(type), block);
    }
}

/// The first byte of each tells how it is read.
void PutFonts(const fs::path& folder)
{
    CharReader reader;
    for (int i = 0; i < 6; i++) {
        Image sample;
        Fill(sample, 5 + i, 9, Gray);
        reader.FontCharInsert(sample, static_cast<char>('A' + i), i);
        reader.VariableWidth = i % 2 == 1;
        reader.UseSafeScores = i > 3;
        std::vector<std::uint8_t> block(1, static_cast<std::uint8_t>(i / 2));
        Archive archive = Archive::IntoMemory(block);
        reader.Transfer(archive, i == 5, false);
        Put(folder / std::to_string(i), block);
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) return 1;
    const fs::path root = argv[1];
    Status::ErrorBehavior(IgnoreIt);
    for (const char* format : {"bmp", "jpg", "png", "tif", "pbm", "pgm", "ppm"})
        fs::create_directories(root / format);
    for (const PixelTypes type : {Gray, Gray16, Rgb, Rgba, Gray1}) {
        Image image;
        Fill(image, 9, 5, type);
        const std::string name = std::to_string(type);
        for (const char* format : {"bmp", "jpg", "png", "tif", "pbm", "pgm", "ppm"})
            image.Write((root / format / (name + "." + format)).c_str());
        std::vector<std::uint8_t> block;
        Archive archive = Archive::IntoMemory(block);
        image.Transfer(archive);
        Put(root / "archive" / name, block);
        Source::CopyToClipboard(image);
        if (Status::Error().Code == NoError && Services::Clipboard().Get(IClipboard::Dib, block))
            Put(root / "clipboard" / name, block);
    }
    Put(root / "source" / "frames.avi", avi::Avi(5, 4, 3));
    Put(root / "pbm" / "text.pbm", "P1\n# bits\n4 2\n0 1 0 1\n1 1 0 0\n");
    Put(root / "pgm" / "text.pgm", "P2 3 2\n300\n0 1 2\n298 299 300\n");
    Put(root / "ppm" / "text.ppm", "P3\n2 1\n255\n255 0 0 1 2 3\n");
    std::vector<std::uint8_t> limits;
    Archive archive = Archive::IntoMemory(limits);
    Limits(1, 2, 3, 4).Transfer(archive);
    Put(root / "archive" / "limits", limits);
    for (int model = Translation; model <= Rational; model++) {
        Geometry geometry;
        for (int i = 0; i < 16; i++) {
            const double x = i % 4 * 3.0, y = i / 4 * 2.0, d = 1 + x / 99;
            geometry.Append({x, y}, {(x + 0.01 * x * y) / d, (y - 0.02 * y * y) / d});
        }
        Image image;
        image.Set(9, 5, Gray);
        geometry.ModelFit(static_cast<RegistrationModels>(model), image);
        std::vector<std::uint8_t> block;
        Archive geometries = Archive::IntoMemory(block);
        geometry.Transfer(geometries);
        Put(root / "geometry" / std::to_string(model), block);
    }
    Path path;
    Poly poly;
    for (int i = 0; i < 40; i++) {
        path.Append((i * 37) % 50, (i * i) % 41);
        poly.Append(i * 3.7, i * i / 41.0);
        if (i % 13 != 1) continue;
        path.Closed = !path.Closed;
        std::vector<std::uint8_t> block;
        Archive paths = Archive::IntoMemory(block);
        path.Transfer(paths);
        Put(root / "path" / std::to_string(i), block);
        block.clear();
        Archive polygons = Archive::IntoMemory(block);
        poly.Transfer(polygons);
        Put(root / "poly" / std::to_string(i), block);
    }
    Region region;
    for (int i = 0; i < 6; i++) {
        region.EllipseAppend(XY(9 * i, 7 * i % 20), XY(3 + i, 8 - i), 20 * i);
        region.Sorted = i == 0;
        std::vector<std::uint8_t> block;
        Archive regions = Archive::IntoMemory(block);
        region.Transfer(regions);
        Put(root / "region" / std::to_string(i), block);
    }
    PutGauges(root);
    PutLinearCodes(root / "code1d");
    PutComparator(root / "comparator");
    PutFonts(root / "font");
    FeatureTable table;
    table._AppendFeature(Int, L"Class");
    table._AppendFeature(Dble, L"Length");
    for (int i = 0; i < 5; i++) {
        table.AppendSample();
        table.IntValue(0, i, 3 * i % 5);
        table.DbleValue(1, i, 1.5 * i);
        std::vector<std::uint8_t> block;
        Archive tables = Archive::IntoMemory(block);
        table.Transfer(tables);
        Put(root / "table" / std::to_string(i), block);
    }
    return 0;
}
