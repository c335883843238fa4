// Texts split into their fields.
#include "read/core/Expansion.h"

#include <gtest/gtest.h>

#include "read/core/GS1Fields.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace Tesk {
namespace {

using Expander = int(const char*, char*, int, bool);

std::string Expanded(Expander* expand, const char* in, bool verbose = false)
{
    std::string out(static_cast<std::size_t>(expand(in, nullptr, 0, verbose)), '#');
    EXPECT_EQ(expand(in, out.data(), static_cast<int>(out.size()), verbose), static_cast<int>(out.size()));
    EXPECT_EQ(out.back(), 0);
    out.pop_back();
    return out;
}

TEST(ExpansionTest, FieldsEndAtTheirLengthOrAtASeparator)
{
    EXPECT_EQ(Expanded(ExpandGS1, "]C10109501101020917"
                                  "10ABC\x1d"
                                  "21123"),
              "(01)09501101020917(10)ABC(21)123");
    EXPECT_EQ(Expanded(ExpandGS1, "3103001750"
                                  "10"
                                  "12345678901234567890"
                                  "17251231"),
              "(3103)001750(10)12345678901234567890(17)251231")
        << "six digits without a separator; twenty characters at most";
    EXPECT_EQ(Expanded(ExpandGS1, "11"
                                  "12\x1d"
                                  "456\x1d"
                                  "1012"),
              "(11)12\x1d"
              "456(10)12")
        << "the least length is copied whatever its bytes; the separator behind it is not";
    EXPECT_EQ(Expanded(ExpandGS1, "10AB\x1e"
                                  "37"
                                  "5"),
              "(10)AB(37)5");
    EXPECT_EQ(Expanded(ExpandGS1, "10AB\x1d"
                                  "05xx"),
              "(10)AB")
        << "what is no identifier ends the expansion";
    EXPECT_EQ(Expanded(ExpandGS1, "]"), "");
    EXPECT_EQ(Expanded(ExpandGS1, "0112"), "(01)12") << "cut short";
    EXPECT_EQ(Expanded(ExpandGS1, "310"), "");
    EXPECT_EQ(Expanded(ExpandGS1,
                       "]d20112345678901231"
                       "10X",
                       true),
              "GTIN (01): 12345678901231\nBATCH/LOT (10): X\n");
}

TEST(ExpansionTest, SpaceThatRunsOutOnlyCounts)
{
    std::array<char, 8> out;
    out.fill('#');
    EXPECT_EQ(ExpandGS1("10ABCDEF", out.data(), 6, false), 11);
    EXPECT_EQ(std::string_view(out.data(), 8), std::string_view("(10)A\0##", 8));
    EXPECT_EQ(ExpandGS1("10ABCDEF", out.data(), -1, false), 11);
    EXPECT_EQ(out[0], '(');
}

TEST(ExpansionTest, TheTableIsSortedAndNoKeyBeginsWithAnother)
{
    EXPECT_TRUE(std::is_sorted(GS1Fields.begin(), GS1Fields.end(),
                               [](const GS1Field& a, const GS1Field& b) { return a.Key() < b.Key(); }));
    for (std::size_t i = 1; i < GS1Fields.size(); ++i)
        EXPECT_FALSE(GS1Fields[i].Key().starts_with(GS1Fields[i - 1].Key())) << GS1Fields[i].key.data();
    for (const GS1Field& field : GS1Fields) {
        EXPECT_EQ(FindGS1Field(std::string(field.Key()) + "9"), &field);
        EXPECT_TRUE(field.minimum >= 1 && field.minimum <= field.maximum);
        EXPECT_EQ(field.fixed, field.minimum == field.maximum);
    }
}

TEST(ExpansionTest, MessagesOfPropertyHaveDataOrTextElementIdentifiers)
{
    EXPECT_EQ(Expanded(ExpandMIL, "[)>\x1e"
                                  "06\x1d"
                                  "17V1T579\x1d"
                                  "1PABC-1\x1d"
                                  "S00018\x1e\x04"),
              "(17V)1T579(1P)ABC-1(S)00018");
    EXPECT_EQ(Expanded(ExpandMIL,
                       "[)>\x1e"
                       "12\x1d"
                       "CAG 1T579\x1d"
                       "SER 18\x1e"
                       "05\x1d"
                       "10AB\x1e\x04",
                       true),
              "CAGE (CAG): 1T579\nSERIAL NO. (SER): 18\nBATCH/LOT (10): AB\n");
    EXPECT_EQ(Expanded(ExpandMIL, "1PX\x1dS7"), "(1P)X(S)7");
    EXPECT_EQ(Expanded(ExpandMIL, "[)>\x1e"), "");
}

} // namespace
} // namespace Tesk
