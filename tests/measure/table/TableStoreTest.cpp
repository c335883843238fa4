#include "foundation/Archive.h"
#include "foundation/Services.h"
#include "measure/FeatureTable.h"
#include "tests/Failures.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>

using namespace Tesk;
using checks::Message;

namespace {

class Tables : public checks::IgnoringFailures
{
protected:
    /// Columns of every kind, one of them in front, with `rows` rows.
    static FeatureTable Mixed(int rows)
    {
        FeatureTable table;
        table._AppendFeature(Int, L"n", true);
        table._AppendFeature(Bool, L"b", true);
        table._AppendFeature(Float, L"f", true);
        table._AppendFeature(Dble, L"d", true);
        table._AppendFeature(Rgb, L"c", true);
        table._AppendFeature(Gray16, L"w", false);
        for (int i = 0; i < rows; i++) {
            table.AppendSample();
            table.IntValue(0, i, i * i - 5);
            table.BoolValue(1, i, i % 2 == 1);
            table.FloatValue(2, i, static_cast<float>(i) / 4);
            table.DbleValue(3, i, i * 1e-9);
            table.RgbValue(4, i, RgbPixel(i, 2, 3));
            table.Gray16Value(-1, i, static_cast<Gray16Pixel>(65535 - i));
        }
        return table;
    }
    static std::set<int> Selected(const FeatureTable& table)
    {
        return {table.Order.operator const int*(), table.Order + table.NumSelected};
    }
};

TEST_F(Tables, KeepTheirCellsWhileColumnsAndRowsAreAdded)
{
    FeatureTable table = Mixed(9);
    const FeatureTable copy(table);
    table._AppendFeature(Dble, L"late", true);
    table.IntValue(0, 3, 77);
    EXPECT_EQ(copy.IntValue(0, 3), 4);
    EXPECT_EQ(table.IntValue(0, 3), 77);
    EXPECT_EQ(table.Gray16Value(-1, 8), 65527);
    EXPECT_EQ(table.RgbValue(4, 8), RgbPixel(8, 2, 3));
    EXPECT_EQ(table.DbleValue(5, 8), 0);
    EXPECT_EQ(table.NumFeatures, 6);
    EXPECT_EQ(table.RowSize, 4 + 1 + 4 + 8 + 3 + 2 + 8);
}

TEST_F(Tables, RefuseWhatIsNotThere)
{
    TableStore none;
    EXPECT_STREQ(none.ToAsciiString(), "");
    EXPECT_EQ(Message(), L"No feature has been appended yet, the table is empty");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::TableStore::ToAsciiString");
    none._AppendFeature(Int, L"n", true);
    none.ToAsciiString();
    EXPECT_EQ(Message(), L"No sample has been appended yet, the table is empty");
    const FeatureTable table = Mixed(2);
    table.IntValue(5, 0);
    EXPECT_EQ(Message(), L"The feature index (5) must be in range [0..4]");
    table.IntValue(0, 2);
    EXPECT_EQ(Message(), L"The sample index (2) must be in range [0..1]");
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_EQ(table.IntValue(2, 0), 0);
    EXPECT_EQ(Message(), L"The feature named f is not of type Int, but Float");
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    table.ToAsciiString(-1, -3);
    EXPECT_EQ(Message(), L"The sample index (-3) must be in range [-2..1]");
}

TEST_F(Tables, GoToTextAndBack)
{
    FeatureTable table = Mixed(3);
    EXPECT_STREQ(table.ToAsciiString(-1, -2), "w\tn\tb\tf\td\tc\n65534\t-4\ttrue\t0.250000\t1e-09\t1,2,3\n");
    EXPECT_STREQ(table.ToUnicodeString(2), L"f\n0.000000\n0.250000\n0.500000\n");
    FeatureTable read = Mixed(0);
    const std::string text = table.ToAsciiString();
    read.FromAsciiString(text.c_str());
    EXPECT_EQ(read.ToAsciiString(), text);
    table.CopyToClipboard();
    read.PasteFromClipboard();
    EXPECT_EQ(read.NumSamples, 6);
    EXPECT_EQ(read.RgbValue(4, 5), RgbPixel(2, 2, 3));
    // Columns in any order, foreign ones, fields that are no numbers or too large, lines that are too short.
    FeatureTable odd = Mixed(0);
    odd.FromUnicodeString(L"x\tf\tn\r\n1\t2.5\t+7\r\n\tword\t99999999999\n9");
    ASSERT_EQ(odd.NumSamples, 3);
    EXPECT_STREQ(odd.ToAsciiString(0), "n\n7\n0\n0\n");
    EXPECT_STREQ(odd.ToAsciiString(2), "f\n2.500000\n0.000000\n0.000000\n");
    Services::Clipboard().Empty();
    odd.PasteFromClipboard();
    EXPECT_EQ(Message(), L"There is no suitable text data in the clipboard");
}

TEST_F(Tables, ComeBackFromTheirFilesCountedFromZero)
{
    FeatureTable table = Mixed(5);
    std::vector<std::uint8_t> bytes;
    Archive writer = Archive::IntoMemory(bytes);
    table.Transfer(writer);
    // Header 20; a column 4 + 4 + 2 * 2; a row 22.
    EXPECT_EQ(bytes.size(), 20u + 6 * 12 + 5 * 22);
    FeatureTable read = Mixed(1);
    Archive reader = Archive::FromMemory(bytes);
    read.Transfer(reader);
    ASSERT_TRUE(reader.Good());
    EXPECT_EQ(read.FirstFeature, 0);
    EXPECT_EQ(read.NumFeatures, 6);
    EXPECT_EQ(read.NumSelected, 5);
    EXPECT_STREQ(read.ToAsciiString(), std::string(table.ToAsciiString()).c_str());
    // Every shorter file is refused, and leaves the table as it was.
    for (std::size_t size = 0; size < bytes.size(); size++) {
        FeatureTable kept = Mixed(1);
        Archive cut = Archive::FromMemory({bytes.data(), size});
        kept.Transfer(cut);
        EXPECT_FALSE(cut.Good()) << size;
        EXPECT_EQ(kept.NumSamples, 1) << size;
    }
    bytes[4] = 2;
    Archive newer = Archive::FromMemory(bytes);
    read.Transfer(newer);
    EXPECT_EQ(Message(), L"The version number (2) of this TableStore table is too high");
    EXPECT_EQ(newer.Code(), OutOfRange);
}

TEST_F(Tables, FilesCannotAskForMemoryThatTheyDoNotFill)
{
    // One raw column of 2^31 - 1 bytes, and 2^31 - 1 rows.
    std::vector<std::uint8_t> bytes = {'T', 'T', 'B',  'L',  1,    0,    0, 0, 1, 0,    0, 0, 1, 0,
                                       0,   0,   0xff, 0xff, 0xff, 0x7f, 1, 0, 0, 0x80, 0, 0, 0, 0};
    FeatureTable table;
    Archive reader = Archive::FromMemory(bytes);
    table.Transfer(reader);
    EXPECT_EQ(reader.Code(), CannotAllocate);
    EXPECT_EQ(table.NumSamples, 0);
}

TEST_F(Tables, SelectByValue)
{
    FeatureTable table;
    table._AppendFeature(Int, L"n", true);
    table._AppendFeature(Float, L"f", true);
    const int values[] = {5, 1, 9, 5, 3, static_cast<int>(0x80000000u)};
    for (int i = 0; i < 6; i++) {
        table.AppendSample();
        table.IntValue(0, i, values[i]);
        table.FloatValue(1, i, i == 4 ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(values[i]));
    }
    table.SamplesSelect(0, 3, 5, Inside, Select);
    EXPECT_EQ(Selected(table), (std::set<int>{0, 3, 4}));
    table.SamplesSelect(0, 9, 9, Inside, Add);
    EXPECT_EQ(Selected(table), (std::set<int>{0, 2, 3, 4}));
    table.SamplesSelect(0, 5, 5, Inside, Remove);
    EXPECT_EQ(Selected(table), (std::set<int>{2, 4}));
    // What was not computed is neither inside nor outside.
    table.SamplesSelect(0, 3, 5, Outside, Deselect);
    EXPECT_EQ(Selected(table), (std::set<int>{0, 3, 4, 5}));
    table.SamplesSelect(1, 0.0, 100.0, Outside, Select);
    EXPECT_EQ(Selected(table), (std::set<int>{5})); // a large negative number
    table.SamplesSelect(1, 0, 1, Inside, Select);
    EXPECT_EQ(Message(), L"The feature named f is not of type Int, but Float");
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::FeatureTable::SamplesSelect");
}

TEST_F(Tables, SortSearchAndSelectByPosition)
{
    FeatureTable none = Mixed(0);
    none.SamplesSelect(0, -3, 3, Inside, Select);
    none.SamplesSort(0, true);
    EXPECT_EQ(none.SamplesFirst(0, true), 0);
    EXPECT_EQ(Status::Error().Code, NoError);
    FeatureTable table = Mixed(6); // n: -5 -4 -1 4 11 20
    table.SamplesSort(0, false);
    EXPECT_EQ(table.Order[0], 5);
    EXPECT_EQ(table.SamplesFirst(0, true), 5);
    table.SampleSelect(1, Remove);
    EXPECT_EQ(Selected(table), (std::set<int>{0, 1, 2, 3, 5}));
    EXPECT_FALSE(table.IsSelected(5));
    table.SampleSelect(0, Add);
    EXPECT_EQ(table.NumSelected, 5);
    table.SampleSelect(5, Select);
    EXPECT_EQ(Selected(table), (std::set<int>{4}));
    table.SamplesSort(4, true);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    table.SampleSelect(0, Remove);
    table._XYSort(0);
    EXPECT_EQ(Message(), L"No sample is selected");
}

} // namespace
