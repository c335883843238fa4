// Selecting, sorting and searching the samples of a table.
#include "measure/FeatureTable.h"

#include "foundation/Entry.h"
#include "measure/table/TableFrame.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <span>
#include <type_traits>

namespace Tesk {

using namespace tables;

namespace {

/// What the cell of a value that has not been computed holds.
constexpr std::uint32_t notComputed = 0x80000000u;

/// A column's cells, row by row; without a row there is no buffer to point into.
struct Column
{
    const std::uint8_t* rows;
    std::size_t offset, pitch;

    template <typename T>
    T At(int row) const
    {
        T value;
        std::memcpy(&value, rows + static_cast<std::size_t>(row) * pitch + offset, sizeof value);
        return value;
    }
};

/// Calls `f` with a value of the type of a column's cells.
template <typename F>
void OnType(int type, F f)
{
    switch (type) {
    case Gray:
    case Bool:
        return f(std::uint8_t{});
    case Gray16:
        return f(std::uint16_t{});
    case Int:
        return f(std::int32_t{});
    case Float:
        return f(float{});
    default:
        return f(double{});
    }
}

template <typename T>
bool IsValue(T value)
{
    if constexpr (std::is_same_v<T, float>) {
        std::uint32_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        return bits != notComputed && !std::isnan(value);
    } else if constexpr (std::is_same_v<T, double>) {
        return !std::isnan(value);
    } else if constexpr (std::is_same_v<T, std::int32_t>) {
        return static_cast<std::uint32_t>(value) != notComputed;
    } else {
        return true;
    }
}

/// Keys are sorted apart from the table, as its rows lie far from each other.
template <typename T>
void SortRows(std::span<int> rows, const Column& column, bool increasing)
{
    struct Keyed
    {
        T key;
        int row;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(rows.size());
    for (const int row : rows)
        keyed.push_back({column.At<T>(row), row});
    std::stable_sort(keyed.begin(), keyed.end(), [increasing](const Keyed& a, const Keyed& b) {
        if (!IsValue(a.key) || !IsValue(b.key)) return IsValue(a.key) && !IsValue(b.key);
        return increasing ? a.key < b.key : b.key < a.key;
    });
    std::transform(keyed.begin(), keyed.end(), rows.begin(), [](const Keyed& k) { return k.row; });
}

int CheckRange(int range)
{
    if (range == Inside || range == Outside) return NoError;
    return Status::Format(OutOfRange, L"Use one of Inside or Outside for the range mode");
}

} // namespace

FeatureTable::FeatureTable(const FeatureTable& Other) = default;
FeatureTable& FeatureTable::operator=(const FeatureTable& Other) = default;

void FeatureTable::ShallowCopy(const FeatureTable& Src, bool)
{
    *this = Src;
}

bool FeatureTable::IsWhole(int type)
{
    return type == Int || type == Gray || type == Gray16 || type == Bool;
}

bool FeatureTable::IsReal(int type)
{
    return type == Float || type == Dble;
}

int FeatureTable::CheckSelection(int selection)
{
    if (selection >= Add && selection <= Deselect) return NoError;
    return Status::Format(OutOfRange, L"Use one of Add, Select, Remove or Deselect for the selection mode");
}

std::vector<int>& FeatureTable::WriteOrder()
{
    std::vector<int>& order = order_.Write();
    PlaceOrder();
    return order;
}

void FeatureTable::SelectFirst(int count)
{
    NumSelected = count;
    CountsChanged();
}

void FeatureTable::SamplesAdded()
{
    const int before = static_cast<int>(order_.Read().size());
    std::vector<int>& order = order_.Write();
    // Behind deselected samples none can be selected, unless positions change.
    const bool allSelected = NumSelected == before;
    order.resize(static_cast<std::size_t>(int(NumSamples)));
    std::iota(order.begin() + before, order.end(), before);
    PlaceOrder();
    SelectFirst(allSelected ? int(NumSamples) : int(NumSelected));
}

void FeatureTable::SamplesReplaced()
{
    std::vector<int> rows(static_cast<std::size_t>(int(NumSamples)));
    std::iota(rows.begin(), rows.end(), 0);
    order_.Replace(std::move(rows));
    PlaceOrder();
    SelectFirst(NumSamples);
}

void FeatureTable::SampleSelect(int Sample, SelectionMode Selection)
{
    const Entry entry("Tesk::FeatureTable::SampleSelect");
    if (entry.Refuses(CheckSample(Sample)) || entry.Refuses(CheckSelection(Selection))) return;
    entry.Guards(noMemory, [&] {
        std::vector<int>& order = WriteOrder();
        const bool adds = Selection == Add || Selection == Select;
        int selected = Selection == Select ? 0 : Selection == Deselect ? int(NumSamples) : int(NumSelected);
        if (adds == (Sample < selected)) return;
        const int with = adds ? selected++ : --selected;
        std::swap(order[static_cast<std::size_t>(Sample)], order[static_cast<std::size_t>(with)]);
        SelectFirst(selected);
    });
}

template <typename T>
void FeatureTable::SelectValues(const char* context, int feature, T minimum, T maximum, int range, int selection)
{
    const Entry entry(context);
    if (entry.Refuses(CheckFeature(feature))) return;
    const int type = Record(feature).Type;
    constexpr bool real = std::is_floating_point_v<T>;
    if (real ? !IsReal(type) : !IsWhole(type)) {
        entry.Refuses(RefuseType(feature, real ? Float : Int));
        return;
    }
    if (entry.Refuses(CheckSelection(selection)) || entry.Refuses(CheckRange(range))) return;
    entry.Guards(noMemory, [&] {
        OnType(type, [&](auto zero) {
            using V = decltype(zero);
            const Column column{Rows(), static_cast<std::size_t>(Record(feature).Offset),
                                static_cast<std::size_t>(int(RowPitch))};
            ChangeSelection(static_cast<SelectionMode>(selection), Walk::FromTheEnd, [&](int row) {
                const V value = column.At<V>(row);
                const auto v = static_cast<T>(value);
                return IsValue(value) && (minimum <= v && v <= maximum) == (range == Inside);
            });
        });
    });
}

void FeatureTable::SamplesSelect(int Feature, int Minimum, int Maximum, RangeMode Range, SelectionMode Selection)
{
    SelectValues("Tesk::FeatureTable::SamplesSelect", Feature, Minimum, Maximum, Range, Selection);
}

void FeatureTable::SamplesSelect(int Feature, double Minimum, double Maximum, RangeMode Range, SelectionMode Selection)
{
    SelectValues("Tesk::FeatureTable::SamplesSelect", Feature, Minimum, Maximum, Range, Selection);
}

int FeatureTable::FirstOf(int feature, bool increasing) const
{
    const Column column{Rows(), static_cast<std::size_t>(Record(feature).Offset),
                        static_cast<std::size_t>(int(RowPitch))};
    const int* order = Order;
    int first = 0;
    OnType(Record(feature).Type, [&](auto zero) {
        using V = decltype(zero);
        bool found = false;
        V best{};
        for (int i = 0; i < NumSelected; i++) {
            const V value = column.At<V>(order[i]);
            if (!IsValue(value) || (found && !(increasing ? value < best : best < value))) continue;
            found = true;
            best = value;
            first = i;
        }
    });
    return first;
}

int FeatureTable::SamplesFirst(int Feature, bool Increasing) const
{
    const Entry entry("Tesk::FeatureTable::SamplesFirst");
    if (entry.Refuses(CheckFeature(Feature))) return 0;
    const int type = Record(Feature).Type;
    if (!IsWhole(type) && !IsReal(type)) {
        entry.Refuses(RefuseType(Feature, Int));
        return 0;
    }
    return FirstOf(Feature, Increasing);
}

int FeatureTable::TrySort(int feature, bool increasing)
{
    if (const int code = CheckFeature(feature)) return code;
    const int type = Record(feature).Type;
    if (!IsWhole(type) && !IsReal(type)) return RefuseType(feature, Int);
    return WithMemory(noMemory, [&] {
        const Column column{Rows(), static_cast<std::size_t>(Record(feature).Offset),
                            static_cast<std::size_t>(int(RowPitch))};
        const std::span<int> rows(WriteOrder().data(), static_cast<std::size_t>(int(NumSelected)));
        OnType(type, [&](auto zero) { SortRows<decltype(zero)>(rows, column, increasing); });
    });
}

void FeatureTable::SamplesSort(int Feature, bool Increasing)
{
    const Entry entry("Tesk::FeatureTable::SamplesSort");
    entry.Refuses(TrySort(Feature, Increasing));
}

void FeatureTable::_XYSort(int Feature, bool Increasing)
{
    const Entry entry("Tesk::FeatureTable::_XYSort");
    if (NumSelected < 1)
        entry.Refuse(OutOfRange, L"No sample is selected");
    else
        entry.Refuses(TrySort(Feature, Increasing));
}

bool FeatureTable::IsSelected(int Sample) const
{
    const Entry entry("Tesk::FeatureTable::IsSelected");
    return !entry.Refuses(CheckSample(Sample)) && Sample < NumSelected;
}

} // namespace Tesk
