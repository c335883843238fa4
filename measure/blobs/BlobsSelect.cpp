// Selecting and sorting blobs by their features.
#include "measure/blobs/BlobsFrame.h"
#include "measure/blobs/BlobsSelection.h"

#include <cstring>
#include <type_traits>

namespace Tesk {

using namespace blobs;

int Blobs::CheckSelecting(int selection) const
{
    return NumBlobs < 1 ? Status::Format(VoidObject, L"No blob is available") : CheckSelection(selection);
}

int Blobs::TryProvideFor(int feature, const Image& src, int selection)
{
    return TryProvide(feature, src, selection == Add ? AllDeselected : selection == Remove ? AllSelected : All);
}

template <typename T>
void Blobs::SelectByFeature(int feature, const Image& src, T minimum, T maximum, int selection, int range)
{
    constexpr bool whole = std::is_same_v<T, int>;
    const Entry entry("Tesk::Blobs::ByFeatureSelect");
    if (entry.Refuses(CheckSelecting(selection))) return;
    if (range != Inside && range != Outside) {
        entry.Refuse(OutOfRange, L"Use one of Inside or Outside for the range mode");
        return;
    }
    if (IsFeature(feature) && (Type(feature) == Int) != whole) {
        entry.Refuse(OutOfRange,
                     whole ? L"%ls is a Float feature, use float bounds" : L"%ls is an Int feature, use int bounds",
                     UnicodeName(feature));
        return;
    }
    if (entry.Refuses(TryProvideFor(feature, src, selection))) return;
    entry.Refuses(TrySelectWhere(selection, [&](int row) {
        const std::uint8_t* cell = FeatureCell(row, feature);
        if (std::memcmp(cell, &notComputed, sizeof notComputed) == 0) return false;
        T value;
        std::memcpy(&value, cell, sizeof value);
        return range == Inside ? minimum <= value && value <= maximum : value < minimum || value > maximum;
    }));
}

void Blobs::ByFeatureSelect(enum Features Feature, const Image& Src, int Minimum, int Maximum,
                            enum SelectionMode Selection, enum RangeMode Range)
{
    SelectByFeature(Feature, Src, Minimum, Maximum, Selection, Range);
}

void Blobs::ByFeatureSelect(enum Features Feature, const Image& Src, float Minimum, float Maximum,
                            enum SelectionMode Selection, enum RangeMode Range)
{
    SelectByFeature(Feature, Src, Minimum, Maximum, Selection, Range);
}

int Blobs::ByFeatureFirst(enum Features Feature, const Image& Src, bool Increasing)
{
    const Entry entry("Tesk::Blobs::ByFeatureFirst");
    if (entry.Refuses(CheckSelecting(Select)) || entry.Refuses(TryProvide(Feature, Src, AllSelected))) return 0;
    return FirstOf(ColumnOf(Feature), Increasing);
}

void Blobs::ByFeatureSort(enum Features Feature, const Image& Src, bool Increasing)
{
    const Entry entry("Tesk::Blobs::ByFeatureSort");
    if (entry.Refuses(CheckSelecting(Select)) || entry.Refuses(TryProvide(Feature, Src, AllSelected))) return;
    entry.Refuses(TrySort(ColumnOf(Feature), Increasing));
}

} // namespace Tesk
