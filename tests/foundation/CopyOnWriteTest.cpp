#include "foundation/CopyOnWrite.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <utility>
#include <vector>

using namespace Tesk;

TEST(CopyOnWrite, AWriterMovesAwayFromWhatOthersShare)
{
    CopyOnWrite<std::vector<int>> first;
    EXPECT_TRUE(first.Read().empty());
    EXPECT_EQ(first.Get(), nullptr);
    first.Write() = {1, 2, 3};
    CopyOnWrite<std::vector<int>> second = first;
    EXPECT_TRUE(second.SharesWith(first));
    (*second.Get())[0] = 7; // past the rule, for all
    EXPECT_EQ(first.Read()[0], 7);
    second.Write().push_back(4);
    EXPECT_EQ(first.Read(), (std::vector<int>{7, 2, 3}));
    EXPECT_EQ(second.Read(), (std::vector<int>{7, 2, 3, 4}));
    EXPECT_FALSE(first.IsShared());
    const auto* kept = second.Get();
    EXPECT_EQ(&second.Overwrite(), kept) << "nobody else holds it";
    first = second;
    EXPECT_TRUE(first.Overwrite().empty());
    EXPECT_EQ(second.Read().size(), 4u);
}

TEST(CopyOnWrite, BytesAreSharedAndALackOfMemoryLeavesThem)
{
    SharedBytes first;
    EXPECT_FALSE(first.IsSole());
    ASSERT_TRUE(first.Allocate(5, 3, 2));
    std::memcpy(first.Data(), "abcde", 5);
    EXPECT_TRUE(first.IsSole());
    SharedBytes second = first;
    EXPECT_TRUE(second.IsShared() && second.SharesWith(first) && !first.IsSole());
    EXPECT_FALSE(second.Allocate(std::numeric_limits<std::size_t>::max() / 4));
    EXPECT_EQ(second.Size(), 5u);
    EXPECT_EQ(std::memcmp(second.Data(), "abcde", 5), 0);
    ASSERT_TRUE(second.Allocate(9));
    EXPECT_EQ(std::memcmp(first.Data(), "abcde", 5), 0);
    const SharedBytes third = std::move(second);
    EXPECT_EQ(third.Size(), 9u);
    EXPECT_EQ(second.Size(), 0u);
    EXPECT_EQ(second.Data(), nullptr);
}
