// Correction against an encoder without tables: within capacity all is restored, beyond it nothing is that is no code
// word.
#include "read/codewords/ReedSolomon.h"
#include "SlowField.h"
#include "read/codewords/DataMatrixSizes.h"
#include "read/codewords/DotCodeTables.h"
#include "read/codewords/QRTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace Tesk::codewords {
namespace {

using Words = std::vector<std::uint16_t>;
using BlockSizes = std::set<std::pair<int, int>>; // data and check words

class Damage
{
public:
    Damage(const SlowField& field, const ReedSolomon& code) : field_(field), code_(code) {}

    Words RandomCodeWord(int data, int check)
    {
        Words words(static_cast<std::size_t>(data + check));
        for (std::uint16_t& word : words)
            word = static_cast<std::uint16_t>(random_() % static_cast<unsigned>(field_.Size()));
        field_.Encode(words, check);
        return words;
    }

    Words Hurt(Words words, int erasures, int errors)
    {
        std::vector<std::size_t> places(words.size());
        std::iota(places.begin(), places.end(), std::size_t{0});
        std::shuffle(places.begin(), places.end(), random_);
        for (int i = 0; i < erasures; ++i)
            words[places[static_cast<std::size_t>(i)]] = erasedWord;
        for (int i = erasures; i < erasures + errors; ++i) {
            std::uint16_t& word = words[places[static_cast<std::size_t>(i)]];
            const unsigned shift = 1 + random_() % static_cast<unsigned>(field_.Size() - 1);
            word = static_cast<std::uint16_t>((word + shift) % static_cast<unsigned>(field_.Size()));
        }
        return words;
    }

    bool Decode(Words& words, int check)
    {
        return code_.Decode(words.data(), static_cast<int>(words.size()) - check, check, 1, erasures, errors, scratch_);
    }

    /// Every share of errors and erasures that fits, then one error more.
    void Study(const BlockSizes& sizes)
    {
        for (const auto& [data, check] : sizes) {
            SCOPED_TRACE(testing::Message() << data << " data, " << check << " check");
            const Words word = RandomCodeWord(data, check);
            for (int e = 0; e <= check; e += 1 + check / 8) {
                const int t = (check - e) / 2;
                Words hurt = Hurt(word, e, t);
                ASSERT_TRUE(Decode(hurt, check)) << e << " erasures";
                ASSERT_EQ(hurt, word) << e << " erasures";
                ASSERT_EQ(erasures, e);
                ASSERT_EQ(errors, t);
                // With a check word to spare, a guess that uses it up may hit the truth.
                if (data + check < e + t + 1 || e + 2 * t < check) continue;
                Words beyond = Hurt(word, e, t + 1);
                if (!Decode(beyond, check)) continue;
                ASSERT_TRUE(field_.IsCodeWord(beyond, check)) << e << " erasures";
                ASSERT_NE(beyond, word);
                // What is corrected by less than half of the check words is hardly ever reached by chance.
                ASSERT_LT(t, 8) << "wrongly corrected";
            }
        }
    }

    int erasures = 0, errors = 0;

private:
    std::mt19937 random_{7};
    const SlowField& field_;
    const ReedSolomon& code_;
    ReedSolomon::Scratch scratch_;
};

TEST(ReedSolomon, CorrectsDataMatrixBlocksUpToCapacity)
{
    BlockSizes sizes;
    for (const DataMatrixSize& size : DataMatrixSizes())
        for (int block = 0; block < size.blocks; ++block)
            sizes.insert({size.BlockData(block), size.BlockCheck()});
    Damage(slowDataMatrix, ReedSolomonBinary::DataMatrix()).Study(sizes);
}

TEST(ReedSolomon, CorrectsQRBlocksUpToCapacity)
{
    BlockSizes sizes;
    for (int version = 1; version <= 40; ++version)
        for (int level = LevelL; level <= LevelH; ++level) {
            const QRBlocks blocks = BlocksOfQR(version, level);
            sizes.insert({blocks.BlockData(0), blocks.check});
            sizes.insert({blocks.BlockData(blocks.blocks - 1), blocks.check});
        }
    Damage(slowQR, ReedSolomonBinary::QR()).Study(sizes);
}

TEST(ReedSolomon, CorrectsDotCodeBlocksUpToCapacity)
{
    BlockSizes sizes;
    for (int words = 7; words <= maximumDotCodeWords; words += words < 240 ? 1 : 23) {
        const DotCodeBlocks blocks = DotCodeBlocks::Of(words);
        for (int block = 0; block < blocks.blocks; ++block)
            sizes.insert({blocks.BlockData(block), blocks.BlockWords(block) - blocks.BlockData(block)});
    }
    Damage(slowDotCode, ReedSolomonPrime()).Study(sizes);
}

TEST(ReedSolomon, OneErasureTooManyFailsAtOnceAndErasedWordsAreZero)
{
    const ReedSolomonPrime code;
    Damage damage(slowDotCode, code);
    const Words word = damage.RandomCodeWord(10, 6);
    Words hurt = damage.Hurt(word, 7, 0);
    const Words before = hurt;
    EXPECT_FALSE(damage.Decode(hurt, 6));
    EXPECT_EQ(damage.erasures, 7);
    for (std::size_t i = 0; i < hurt.size(); ++i)
        EXPECT_EQ(hurt[i], before[i] == erasedWord ? 0 : word[i]);
}

TEST(ReedSolomon, RefusesWhatIsNotOfTheField)
{
    ReedSolomon::Scratch scratch;
    int erasures = 0, errors = 0;
    Words words(300, 0);
    words[3] = 113;
    EXPECT_FALSE(ReedSolomonPrime().Decode(words.data(), 10, 6, 1, erasures, errors, scratch));
    words[3] = 0;
    EXPECT_FALSE(ReedSolomonBinary::QR().Decode(words.data(), 250, 6, 1, erasures, errors, scratch));
    EXPECT_FALSE(ReedSolomonPrime().Decode(words.data(), 107, 6, 1, erasures, errors, scratch));
    EXPECT_FALSE(ReedSolomonPrime().Decode(words.data(), 10, 0, 1, erasures, errors, scratch));
    EXPECT_TRUE(ReedSolomonPrime().Decode(words.data(), 106, 6, 1, erasures, errors, scratch));
}

} // namespace
} // namespace Tesk::codewords
