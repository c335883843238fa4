#include "read/chars/Filter.h"

#include <gtest/gtest.h>

#include <string>

namespace Tesk {
namespace {

using chars::Filter;

TEST(FilterTest, EachElementIsOnePosition)
{
    EXPECT_EQ(chars::ParseFilter("A%9%%%u-"), (std::vector<Filter>{'A', -'9', '%', -'u', '-'}));
    EXPECT_EQ(chars::ParseFilter(L"\x416%*"), (std::vector<Filter>{0x416, -'*'}));
    EXPECT_EQ(chars::ParseFilter("\xe9"), (std::vector<Filter>{0xe9}));
    EXPECT_TRUE(chars::ParseFilter("").empty());
}

TEST(FilterTest, APercentAtTheEndIgnores)
{
    EXPECT_EQ(chars::ParseFilter("%"), (std::vector<Filter>{chars::ignored}));
    EXPECT_EQ(chars::ParseFilter("%%%"), (std::vector<Filter>{'%', chars::ignored}));
}

TEST(FilterTest, TheLastElementRepeats)
{
    const std::vector<Filter> filters = chars::ParseFilter("A%9");
    EXPECT_EQ(chars::FilterAt(filters, 0), 'A');
    EXPECT_EQ(chars::FilterAt(filters, 1), -'9');
    EXPECT_EQ(chars::FilterAt(filters, 99), -'9');
}

TEST(FilterTest, ClassesAdmitTheirCharacters)
{
    // One of each kind: capital, small letter, digit, sign, blank, control, beyond ASCII.
    const std::string kinds = "Qz7# \n\x80\xe9";
    const struct
    {
        char letter;
        const char* admitted;
    } classes[] = {{'u', "Q"},
                   {'U', "Q7"},
                   {'v', "Q# "},
                   {'V', "Q7# "},
                   {'l', "z"},
                   {'L', "z7"},
                   {'m', "z# "},
                   {'M', "z7# "},
                   {'a', "Qz"},
                   {'A', "Qz7"},
                   {'b', "Qz# "},
                   {'B', "Qz7# "},
                   {'9', "7"},
                   {'0', "7# "},
                   {'.', "# "},
                   {'-', ""},
                   {'*', "Qz7# \n\x80\xe9"},
                   {'?', ""}};
    for (const auto& [letter, admitted] : classes) {
        std::string found;
        for (const char c : kinds)
            if (chars::Admits(chars::ClassFilter(letter), static_cast<unsigned char>(c))) found += c;
        EXPECT_EQ(found, admitted) << letter;
    }
    // The ends of the ranges.
    for (const int outside : {'@', '[', '`', '{', '/', ':'})
        EXPECT_FALSE(chars::Admits(-'A', outside)) << outside;
    for (const int inside : {'A', 'Z', 'a', 'z', '0', '9'})
        EXPECT_TRUE(chars::Admits(-'A', inside)) << inside;
    EXPECT_FALSE(chars::Admits(-'B', 127));
}

TEST(FilterTest, AVerbatimCharacterAdmitsItselfAlone)
{
    EXPECT_TRUE(chars::Admits(0x416, 0x416));
    EXPECT_TRUE(chars::Admits(0xe9, 0xe9));
    EXPECT_FALSE(chars::Admits('A', 'a'));
}

} // namespace
} // namespace Tesk
