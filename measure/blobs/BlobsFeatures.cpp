// Features by their numbers: names, types, columns, cells.
#include "measure/blobs/BlobsFrame.h"

#include <cstring>

namespace Tesk {

using namespace blobs;

namespace {

struct FeatureRow
{
    const wchar_t* name;
    PixelTypes type;
};

constexpr FeatureRow features[Blobs::NumPredefinedFeatures] = {
    {L"Class", Int},
    {L"Area", Int},
    {L"Area (World)", Float},
    {L"Perimeter", Int},
    {L"Full Perimeter", Int},
    {L"Perimetric Ratio", Float},
    {L"Filled Area", Int},
    {L"Filling Ratio", Float},
    {L"Convex Area", Int},
    {L"Convex Area Ratio", Float},
    {L"Convex Perimeter", Float},
    {L"Convex Perimetric Ratio", Float},
    {L"Center X", Float},
    {L"Center Y", Float},
    {L"Ellipse Width", Float},
    {L"Ellipse Height", Float},
    {L"Ellipse Angle", Float},
    {L"Eccentricity", Float},
    {L"Mass", Int},
    {L"Average", Float},
    {L"Deviation", Float},
    {L"Median", Int},
    {L"Minimum", Int},
    {L"Maximum", Int},
    {L"Centroid X", Float},
    {L"Centroid Y", Float},
    {L"Ellipsoid Width", Float},
    {L"Ellipsoid Height", Float},
    {L"Ellipsoid Angle", Float},
    {L"Ellipsoid Eccentricity", Float},
    {L"Box X", Int},
    {L"Box Y", Int},
    {L"Box Width", Int},
    {L"Box Height", Int},
    {L"Box X (World)", Float},
    {L"Box Y (World)", Float},
    {L"Box Width (World)", Float},
    {L"Box Height (World)", Float},
    {L"Aspect Ratio", Float},
    {L"Feret Center X", Float},
    {L"Feret Center Y", Float},
    {L"Feret Width", Float},
    {L"Feret Height", Float},
    {L"Feret Angle", Float},
    {L"Feret Ratio", Float},
    {L"Diametral Center X", Float},
    {L"Diametral Center Y", Float},
    {L"Diametral Width", Float},
    {L"Diametral Height", Float},
    {L"Diametral Angle", Float},
    {L"Diametral Ratio", Float},
    {L"Matching Score", Float},
    {L"Matching X", Float},
    {L"Matching Y", Float},
    {L"Matching Scale", Float},
    {L"Matching Angle", Float},
    {L"Outline", Int},
    {L"OutlineEnd", Int},
    {L"Vector", Int},
    {L"VectorEnd", Int},
};

} // namespace

namespace blobs {

int FeatureType(int feature)
{
    return features[feature].type;
}

const wchar_t* FeatureName(int feature)
{
    return features[feature].name;
}

} // namespace blobs

int Blobs::Type(int Feature) const
{
    if (!IsFeature(Feature)) return Undefined;
    return Feature < NumPredefinedFeatures ? FeatureType(Feature) : Record(ColumnOf(Feature)).Type;
}

const wchar_t* Blobs::UnicodeName(int Feature) const
{
    if (!IsFeature(Feature)) return L"";
    return Feature < NumPredefinedFeatures ? FeatureName(Feature) : Record(ColumnOf(Feature)).Name.c_str();
}

int Blobs::WhichFeature(int Column) const
{
    const Entry entry("Tesk::Blobs::WhichFeature");
    constexpr int firstColumn = BlobClass + 2;
    if (NumFeatures <= firstColumn) {
        entry.Refuse(OutOfRange, L"No feature is available");
        return NumPredefinedFeatures;
    }
    if (Column < firstColumn || Column >= NumFeatures) {
        entry.Refuse(OutOfRange, L"The index (%d) must be in range [%d..%d]", Column, firstColumn, NumFeatures - 1);
        return NumPredefinedFeatures;
    }
    for (int feature = 0; IsFeature(feature); feature++)
        if (ColumnOf(feature) == Column) return feature;
    entry.Refuse(OutOfRange, L"Internal error, no such feature index (%d)", Column);
    return NumPredefinedFeatures;
}

const std::uint8_t* Blobs::FeatureCell(int row, int feature) const
{
    return Cell(ColumnOf(feature), row);
}

bool Blobs::IsComputed(int BlobIndex, int Feature) const
{
    const Entry entry("Tesk::Blobs::IsComputed");
    if (!HasColumn(Feature)) return false;
    if (BlobIndex == -1) return true;
    if (RefusesIndex(CheckBlob(BlobIndex))) return false;
    return std::memcmp(FeatureCell(Order[BlobIndex], Feature), &notComputed, sizeof notComputed) != 0;
}

int Blobs::CheckReading(int feature, int type) const
{
    if (!HasColumn(feature))
        return Status::Format(OutOfRange, L"This feature (%ls) has not been computed", UnicodeName(feature));
    const int actual = Type(feature);
    if (actual == type) return NoError;
    return Status::Format(OutOfRange, L"%ls is a %ls feature, not %ls !", UnicodeName(feature),
                          PixelTypeName(static_cast<PixelTypes>(actual)), PixelTypeName(static_cast<PixelTypes>(type)));
}

namespace {

/// What a reference is to after a refusal, for each thread.
template <typename T>
T& Dummy()
{
    thread_local T dummy;
    return dummy = 0;
}

} // namespace

const int& Blobs::IntFeature(int BlobIndex, int Feature) const
{
    const Entry entry("Tesk::Blobs::IntFeature");
    if (RefusesIndex(CheckBlob(BlobIndex)) || entry.Refuses(CheckReading(Feature, Int))) return Dummy<int>();
    return *reinterpret_cast<const int*>(FeatureCell(Order[BlobIndex], Feature));
}

const float& Blobs::FloatFeature(int BlobIndex, int Feature) const
{
    const Entry entry("Tesk::Blobs::FloatFeature");
    if (RefusesIndex(CheckBlob(BlobIndex)) || entry.Refuses(CheckReading(Feature, Float))) return Dummy<float>();
    return *reinterpret_cast<const float*>(FeatureCell(Order[BlobIndex], Feature));
}

int& Blobs::IntFeature(int BlobIndex, int Feature)
{
    const Entry entry("Tesk::Blobs::IntFeature");
    if (RefusesIndex(CheckBlob(BlobIndex)) || entry.Refuses(CheckReading(Feature, Int))) return Dummy<int>();
    std::uint8_t* cell = nullptr;
    const bool own = entry.Guards(noTable, [&] { cell = WriteCell(ColumnOf(Feature), Order[BlobIndex]); });
    return own ? *reinterpret_cast<int*>(cell) : Dummy<int>();
}

float& Blobs::FloatFeature(int BlobIndex, int Feature)
{
    const Entry entry("Tesk::Blobs::FloatFeature");
    if (RefusesIndex(CheckBlob(BlobIndex)) || entry.Refuses(CheckReading(Feature, Float))) return Dummy<float>();
    std::uint8_t* cell = nullptr;
    const bool own = entry.Guards(noTable, [&] { cell = WriteCell(ColumnOf(Feature), Order[BlobIndex]); });
    return own ? *reinterpret_cast<float*>(cell) : Dummy<float>();
}

int Blobs::TrySetFeature(int Position, int Feature, double Value)
{
    const int type = Type(Feature) == Int ? Int : Float;
    if (const int code = CheckReading(Feature, type)) return code;
    return WithMemory(noTable, [&] {
        std::uint8_t* cell = WriteCell(ColumnOf(Feature), Order[Position]);
        if (type == Int)
            *reinterpret_cast<int*>(cell) = static_cast<int>(Value);
        else
            *reinterpret_cast<float*>(cell) = static_cast<float>(Value);
    });
}

} // namespace Tesk
