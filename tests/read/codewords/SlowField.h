// The fields of Reed-Solomon codes without tables, and an encoder over them, for tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tesk::codewords {

struct SlowField
{
    int polynomial; ///< of GF(256); 0 for GF(113)
    int generator, firstRoot;

    int Size() const { return polynomial == 0 ? 113 : 256; }
    int Times(int a, int b) const
    {
        if (polynomial == 0) return a * b % 113;
        int product = 0;
        for (; b > 0; b >>= 1, a = (a << 1) > 255 ? (a << 1) ^ polynomial : a << 1)
            if (b % 2 != 0) product ^= a;
        return product;
    }
    int Minus(int a, int b) const { return polynomial == 0 ? (a - b + 113) % 113 : a ^ b; }
    int Plus(int a, int b) const { return polynomial == 0 ? (a + b) % 113 : a ^ b; }

    /// Fills the last `check` words, so that the word is a multiple of the generator polynomial.
    void Encode(std::vector<std::uint16_t>& words, int check) const
    {
        std::vector<int> divisor{1}; // highest power first
        int root = firstRoot == 0 ? 1 : generator;
        for (int i = 0; i < check; ++i, root = Times(root, generator)) {
            divisor.push_back(0);
            for (std::size_t j = divisor.size() - 1; j > 0; --j)
                divisor[j] = Minus(divisor[j], Times(root, divisor[j - 1]));
        }
        const std::size_t data = words.size() - static_cast<std::size_t>(check);
        std::vector<int> rest(words.begin(), words.end());
        for (std::size_t j = data; j < rest.size(); ++j)
            rest[j] = 0;
        for (std::size_t i = 0; i < data; ++i) {
            const int factor = rest[i];
            for (std::size_t j = 0; j < divisor.size(); ++j)
                rest[i + j] = Minus(rest[i + j], Times(factor, divisor[j]));
        }
        for (std::size_t j = data; j < rest.size(); ++j)
            words[j] = static_cast<std::uint16_t>(Minus(0, rest[j]));
    }

    bool IsCodeWord(const std::vector<std::uint16_t>& words, int check) const
    {
        std::vector<std::uint16_t> encoded = words;
        Encode(encoded, check);
        return encoded == words;
    }
};

constexpr SlowField slowDataMatrix{0x12D, 2, 1}, slowQR{0x11D, 2, 0}, slowDotCode{0, 3, 1};

} // namespace Tesk::codewords
