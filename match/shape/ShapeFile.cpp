// Trained shapes in ".shm" files.
#include "match/ShapeMatcher.h"

#include "foundation/Angles.h"
#include "foundation/Archive.h"
#include "match/shape/ShapeModel.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Tesk {

using namespace shapes;

namespace {

constexpr ArchiveFormat format = {.Magic = "TSHM",
                                  .Version = 1,
                                  .WrongMagic = nullptr,
                                  .TooHigh = L"The version number (%d) of this Shape matcher is too high",
                                  .WrongMagicCode = CannotPerform,
                                  .VersionCode = UnsupportedFormat};

constexpr int shapeBytes = 16, pointBytes = 4;
/// Pixels of all maps together; a few points can ask for a large map.
constexpr std::int64_t mostPixels = 1 << 27;

struct Record
{
    int classIndex = 0, symmetry = 1, begin = 0, end = 0;
};

} // namespace

void ShapeMatcher::Transfer(Archive& Block)
{
    Block.Header(format);
    double minAngle = ToDegrees(MinAngle), maxAngle = ToDegrees(MaxAngle);
    Block(MaxSimilarity, minAngle, maxAngle, MinScale, MaxScale);
    std::vector<Record> records;
    std::vector<Site> points;
    if (!Block.Reading())
        for (const Shape& shape : shapes_) {
            const int begin = static_cast<int>(points.size());
            points.insert(points.end(), shape->outline.begin(), shape->outline.end());
            records.push_back({shape->classIndex, shape->symmetry, begin, static_cast<int>(points.size())});
        }
    int numShapes = static_cast<int>(records.size()), numPoints = static_cast<int>(points.size());
    Block.Count(numShapes, shapeBytes);
    Block.Count(numPoints, pointBytes);
    if (!Block.Good()) return;
    records.resize(static_cast<std::size_t>(numShapes));
    points.resize(static_cast<std::size_t>(numPoints));
    for (Record& r : records)
        Block(r.classIndex, r.symmetry, r.begin, r.end);
    for (Site& p : points)
        Block(p.X, p.Y);
    if (!Block.Reading() || !Block.Good()) return;
    MinAngle = ToRadians(minAngle);
    MaxAngle = ToRadians(maxAngle);
    shapes_.clear();
    int before = 0;
    std::int64_t pixels = 0;
    for (const Record& r : records) {
        // Outlines follow each other, so that all of them together are no larger than the file.
        if (r.begin < before || r.end < r.begin || r.end > numPoints)
            return Block.Refuse(CannotRead, L"Cannot read file \"%ls\"", Block.Name());
        before = r.end;
        const auto shape = std::make_shared<ShapeModel>();
        shape->classIndex = r.classIndex;
        shape->symmetry = r.symmetry;
        shape->outline.assign(points.begin() + r.begin, points.begin() + r.end);
        if (const int code = shape->Build()) return Block.Refuse(code, L"Cannot allocate the maps of the outline");
        pixels += std::int64_t{shape->distances.Width} * shape->distances.Height;
        if (pixels > mostPixels) return Block.Refuse(CannotAllocate, L"Cannot allocate the maps of the outline");
        shapes_.push_back(shape);
    }
    NumTrained = numShapes;
    Matched = -1;
    matched_.reset();
}

namespace {

/// Reads a copy, so that settings stay as they were on a failure; the shapes then go.
template <typename Character>
void ReadShapes(const Character* pathName, ShapeMatcher& matcher)
{
    ShapeMatcher read(matcher);
    const int code = LoadModel(pathName, ShortFile::Refused, [&](Archive& archive) { read.Transfer(archive); });
    if (code == NoError) {
        matcher = std::move(read);
        return;
    }
    if (code != CannotOpen) matcher.Clear();
    Entry("Tesk::ShapeMatcher::Read").Refuses(code);
}

} // namespace

void ShapeMatcher::Read(const char* PathName)
{
    const Entry entry("Tesk::ShapeMatcher::Read");
    entry.Guards(L"Cannot allocate the shapes", [&] { ReadShapes(PathName, *this); });
}

void ShapeMatcher::Read(const wchar_t* PathName)
{
    const Entry entry("Tesk::ShapeMatcher::Read");
    entry.Guards(L"Cannot allocate the shapes", [&] { ReadShapes(PathName, *this); });
}

void ShapeMatcher::Write(const char* PathName) const
{
    WriteModel("Tesk::ShapeMatcher::Write", PathName, *this);
}

void ShapeMatcher::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::ShapeMatcher::Write", PathName, *this);
}

} // namespace Tesk
