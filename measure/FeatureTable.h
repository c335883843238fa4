// A table of samples of which some are selected, in an order of their own.
#pragma once

#include "measure/TableStore.h"

#include <utility>
#include <vector>

namespace Tesk {

/// A permutation of the rows goes with the table: its first part is the selected samples. A sample is told by its
/// position in that order, while a cell is told by its row, `Order[position]`: selecting and sorting move positions and
/// leave the rows where they are. A new table's samples are all selected.
///
///     FeatureTable table;
///     table.Read("parts.tbl");
///     table.SamplesSelect(1, 2.0, 3.0, Inside, Select);
///     table.SamplesSort(1, true);
///     float smallest = table.FloatValue(1, table.Order[0]);
class FeatureTable : public TableStore
{
    template <typename T>
    using Field = ReadOnly<T, FeatureTable>;

public:
    Field<int> NumSelected;
    Field<const int*> Order; ///< `NumSamples` rows, the selected ones first

    FeatureTable() = default;
    FeatureTable(const FeatureTable& Other);
    FeatureTable& operator=(const FeatureTable& Other);
    ~FeatureTable() override = default;

    /// Adds a sample to the selected ones or takes it away; `Select` leaves it alone selected, `Deselect` all others.
    /// Refused: a sample that there is not, another mode (`OutOfRange`).
    void SampleSelect(int Sample, SelectionMode Selection);
    /// Adds to the selected samples those whose value is in the range, or with `Outside` those whose value is not, or
    /// takes them away; `Select` begins with no sample selected, `Deselect` with all. A cell that is no number or has
    /// not been computed fits neither. The first form is for columns of whole numbers, the second for real ones.
    /// Refused: a column of the other kind (`IncompatibleType`), no such column, another mode (`OutOfRange`).
    void SamplesSelect(int Feature, int Minimum, int Maximum, RangeMode Range, SelectionMode Selection);
    void SamplesSelect(int Feature, double Minimum, double Maximum, RangeMode Range, SelectionMode Selection);
    /// The position of the selected sample with the smallest value, or with the largest unless `Increasing`: the first
    /// of equals, 0 if none is selected. Refused: a column without numbers (`IncompatibleType`), no such column
    /// (`OutOfRange`).
    int SamplesFirst(int Feature, bool Increasing) const;
    /// Sorts the selected samples; equal ones keep their order, and those that are no numbers or have not
    /// been computed come last. Refused as by
    /// `SamplesFirst`.
    void SamplesSort(int Feature, bool Increasing);
    /// The same for a column that places the samples. Refused, too: no sample selected (`OutOfRange`).
    void _XYSort(int Feature, bool Increasing = true);
    /// Whether the sample at a position is selected. Refused: a sample that there is not (`OutOfRange`).
    bool IsSelected(int Sample) const;

    /// Shares the content of `Src`. A table has no window, so the second argument changes nothing.
    void ShallowCopy(const FeatureTable& Src, bool KeepWindow);

protected:
    /// Steps of a selection, on the positions from `begin` up to `end`; `matches(row)` says which samples it concerns.
    /// Upwards a match is swapped with the first deselected position, and that one is seen in its place no more, as it
    /// has been; downwards from the end what comes in by the swap is looked at next.
    enum class Walk
    {
        Upwards,
        FromTheEnd
    };
    template <typename F>
    void ChangeSelection(SelectionMode selection, Walk walk, F matches)
    {
        std::vector<int>& order = WriteOrder();
        int selected = NumSelected;
        const int count = NumSamples;
        if (selection == Select) selected = 0;
        if (selection == Deselect) selected = count;
        const auto swap = [&](int a, int b) {
            std::swap(order[static_cast<std::size_t>(a)], order[static_cast<std::size_t>(b)]);
        };
        const auto fits = [&](int position) { return matches(order[static_cast<std::size_t>(position)]); };
        if (selection == Remove || selection == Deselect) {
            for (int i = selected - 1; i >= 0; i--)
                if (fits(i)) swap(i, --selected);
        } else if (walk == Walk::Upwards) {
            for (int i = selected; i < count; i++)
                if (fits(i)) swap(i, selected++);
        } else {
            for (int i = count - 1; i >= selected;)
                if (fits(i))
                    swap(i, selected++);
                else
                    i--;
        }
        SelectFirst(selected);
    }
    /// The order for writing. May throw `std::bad_alloc`.
    std::vector<int>& WriteOrder();
    /// Selects the samples at the first positions.
    void SelectFirst(int count);
    /// After the number of samples or of selected ones may have changed.
    virtual void CountsChanged() {}

    static int CheckSelection(int selection);
    /// Whether the cells of a type are whole numbers, or real ones.
    static bool IsWhole(int type);
    static bool IsReal(int type);
    /// The inner form of `SamplesSort`.
    int TrySort(int feature, bool increasing);
    /// The inner form of `SamplesFirst`, for a column of numbers.
    int FirstOf(int feature, bool increasing) const;

    void SamplesAdded() override;
    void SamplesReplaced() override;

private:
    void PlaceOrder() { Order = order_.Read().data(); }
    template <typename T>
    void SelectValues(const char* context, int feature, T minimum, T maximum, int range, int selection);

    CopyOnWrite<std::vector<int>> order_;
};

} // namespace Tesk
