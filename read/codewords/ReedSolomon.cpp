// The decoder of Reed-Solomon code words, and the arithmetic of its fields by logarithms.
#include "read/codewords/ReedSolomon.h"

#include <algorithm>
#include <cstddef>

namespace Tesk::codewords {

namespace {

template <int Size>
struct FieldTables
{
    std::array<std::int16_t, Size - 1> exp{};
    std::array<std::int16_t, Size> log{}; ///< that of 0 is never asked for
};

constexpr FieldTables<256> BinaryField(int polynomial)
{
    FieldTables<256> tables;
    for (int i = 0, value = 1; i < 255; ++i) {
        tables.exp[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(value);
        tables.log[static_cast<std::size_t>(value)] = static_cast<std::int16_t>(i);
        value <<= 1;
        if (value > 255) value ^= polynomial;
    }
    return tables;
}

constexpr FieldTables<113> PrimeField()
{
    FieldTables<113> tables;
    for (int i = 0, value = 1; i < 112; ++i) {
        tables.exp[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(value);
        tables.log[static_cast<std::size_t>(value)] = static_cast<std::int16_t>(i);
        value = value * 3 % 113;
    }
    return tables;
}

constexpr FieldTables<256> dataMatrixField = BinaryField(0x12D);
constexpr FieldTables<256> qrField = BinaryField(0x11D);
constexpr FieldTables<113> dotCodeField = PrimeField();

} // namespace

bool ReedSolomon::Decode(std::uint16_t* words, int data, int check, int stride, int& erasures, int& errors,
                         Scratch& scratch) const
{
    erasures = errors = 0;
    if (data < 0 || check < 1 || check > maximumCheck || data > size_ - 1 - check) return false;
    const int total = data + check;
    if (!LocateErasures(words, total, check, stride, erasures, scratch.locator)) return false;
    if (Syndromes(words, total, check, stride, scratch.syndromes)) return true;

    int degree = 0;
    if (!LocateErrors(check, erasures, degree, scratch)) return false;
    FormEvaluator(degree, scratch);

    int corrected = 0;
    for (int j = 0; j < total; ++j) {
        const int exponent = total - 1 - j;
        const int x = exp_[exponent == 0 ? 0 : size_ - 1 - exponent];
        if (Evaluate(scratch.locator.data(), degree + 1, x) != 0) continue;
        ++corrected;
        int denominator = EvaluateDerivative(scratch.locator.data(), degree + 1, x);
        if (firstRoot_ != 1) denominator = Product(denominator, x);
        if (denominator == 0) continue;
        const int magnitude = Quotient(Evaluate(scratch.evaluator.data(), degree, x), denominator);
        std::uint16_t& word = words[static_cast<std::ptrdiff_t>(j) * stride];
        word = static_cast<std::uint16_t>(Subtract(word, Negate(magnitude)));
    }
    errors = std::max(0, corrected - erasures);
    return Syndromes(words, total, check, stride, scratch.syndromes);
}

/// Clears the erased words and forms the polynomial whose roots are their inverse locators; false if they are too many,
/// or if a word is no element of the field.
bool ReedSolomon::LocateErasures(std::uint16_t* words, int total, int check, int stride, int& erasures,
                                 Polynomial& locator) const
{
    locator.fill(0);
    locator[0] = 1;
    bool elements = true;
    for (int j = 0; j < total; ++j) {
        std::uint16_t& word = words[static_cast<std::ptrdiff_t>(j) * stride];
        if (word < size_) continue;
        if (word != erasedWord) {
            elements = false;
            continue;
        }
        word = 0;
        if (++erasures > check) continue;
        const int root = exp_[total - 1 - j];
        for (int k = erasures; k > 0; --k) {
            const auto at = static_cast<std::size_t>(k);
            locator[at] = static_cast<std::uint16_t>(Subtract(locator[at], Product(root, locator[at - 1])));
        }
    }
    return elements && erasures <= check;
}

/// Whether all of them are 0, as they are for a code word.
bool ReedSolomon::Syndromes(const std::uint16_t* words, int total, int check, int stride, Polynomial& syndromes) const
{
    const std::uint16_t* lowest = words + static_cast<std::ptrdiff_t>(total - 1) * stride;
    int all = 0;
    for (int i = 0; i < check; ++i) {
        const int value = Evaluate(lowest, total, exp_[(firstRoot_ + i) % (size_ - 1)], -stride);
        syndromes[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(value);
        all |= value;
    }
    return all == 0;
}

/// The algorithm of Berlekamp and Massey, started with the locator of the erasures; false if there is no locator of
/// errors within capacity.
bool ReedSolomon::LocateErrors(int check, int erasures, int& degree, Scratch& scratch) const
{
    Polynomial& locator = scratch.locator;
    Polynomial& previous = scratch.previous;
    Polynomial& next = scratch.evaluator; // not needed yet
    previous = locator;
    int length = erasures;
    for (int step = erasures + 1; step <= check; ++step) {
        int discrepancy = 0;
        for (int j = 0; j < step; ++j)
            discrepancy = Add(discrepancy, Product(locator[static_cast<std::size_t>(j)],
                                                   scratch.syndromes[static_cast<std::size_t>(step - 1 - j)]));
        std::copy_backward(previous.begin(), previous.begin() + check, previous.begin() + check + 1);
        previous[0] = 0;
        if (discrepancy == 0) continue;
        for (std::size_t j = 0; j <= static_cast<std::size_t>(check); ++j)
            next[j] = static_cast<std::uint16_t>(Subtract(locator[j], Product(discrepancy, previous[j])));
        if (2 * length <= erasures + step - 1) {
            length = step + erasures - length;
            for (std::size_t j = 0; j <= static_cast<std::size_t>(check); ++j)
                previous[j] = static_cast<std::uint16_t>(Quotient(locator[j], discrepancy));
        }
        std::copy_n(next.begin(), check + 1, locator.begin());
    }
    degree = check;
    while (degree > 0 && locator[static_cast<std::size_t>(degree)] == 0)
        --degree;
    return degree == length;
}

/// The product of syndromes and locator, of which the terms below the locator's degree count.
void ReedSolomon::FormEvaluator(int degree, Scratch& scratch) const
{
    for (int i = 0; i < degree; ++i) {
        int sum = 0;
        for (int j = 0; j <= i; ++j)
            sum = Add(sum, Product(scratch.locator[static_cast<std::size_t>(j)],
                                   scratch.syndromes[static_cast<std::size_t>(i - j)]));
        scratch.evaluator[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(sum);
    }
}

ReedSolomonBinary ReedSolomonBinary::DataMatrix()
{
    return {256, dataMatrixField.exp.data(), dataMatrixField.log.data(), 1};
}

ReedSolomonBinary ReedSolomonBinary::QR()
{
    return {256, qrField.exp.data(), qrField.log.data(), 0};
}

int ReedSolomonBinary::Evaluate(const std::uint16_t* p, int n, int x, int step) const
{
    int value = 0;
    for (std::ptrdiff_t i = n - 1; i >= 0; --i)
        value = Product(value, x) ^ p[i * step];
    return value;
}

int ReedSolomonBinary::EvaluateDerivative(const std::uint16_t* p, int n, int x) const
{
    // In characteristic 2 the even terms vanish, and the odd ones lose a power.
    const int square = Product(x, x);
    int value = 0;
    for (int i = n % 2 == 0 ? n - 1 : n - 2; i > 0; i -= 2)
        value = Product(value, square) ^ p[i];
    return value;
}

ReedSolomonPrime::ReedSolomonPrime() : ReedSolomon(113, dotCodeField.exp.data(), dotCodeField.log.data(), 1) {}

int ReedSolomonPrime::Evaluate(const std::uint16_t* p, int n, int x, int step) const
{
    int value = 0;
    for (std::ptrdiff_t i = n - 1; i >= 0; --i)
        value = Add(Product(value, x), p[i * step]);
    return value;
}

int ReedSolomonPrime::EvaluateDerivative(const std::uint16_t* p, int n, int x) const
{
    int value = 0;
    for (int i = n - 1; i > 0; --i)
        value = Add(Product(value, x), Product(i % size_, p[i]));
    return value;
}

} // namespace Tesk::codewords
