// Correction of errors and erasures in Reed-Solomon code words, over the binary fields of Data Matrix and QR and the
// prime field of DotCode.
#pragma once

#include <array>
#include <cstdint>

namespace Tesk::codewords {

/// Stands for a word that was not seen.
constexpr std::uint16_t erasedWord = 65535;

/// A field, and the decoder of Berlekamp, Massey, Chien and Forney over it.
class ReedSolomon
{
public:
    /// The most check words of a sequence.
    static constexpr int maximumCheck = 111;
    using Polynomial = std::array<std::uint16_t, maximumCheck + 1>; ///< lowest coefficient first
    struct Scratch
    {
        Polynomial syndromes, locator, previous, evaluator;
    };

    /// Corrects a sequence of `data` and `check` words, `stride` apart, in place; true if it is a code word now. Counts
    /// the erased words, which become 0 in any case, and the others that were changed. False for words or lengths that
    /// are not of the field.
    bool Decode(std::uint16_t* words, int data, int check, int stride, int& erasures, int& errors,
                Scratch& scratch) const;

protected:
    ReedSolomon(int size, const std::int16_t* exponentials, const std::int16_t* logarithms, int firstRoot)
        : size_(size), exp_(exponentials), log_(logarithms), firstRoot_(firstRoot)
    {}
    ~ReedSolomon() = default;

    int Product(int a, int b) const
    {
        if (a == 0 || b == 0) return 0;
        const int sum = log_[a] + log_[b];
        return exp_[sum < size_ - 1 ? sum : sum - (size_ - 1)];
    }
    /// The divisor must not be 0.
    int Quotient(int a, int b) const
    {
        if (a == 0) return 0;
        const int difference = log_[a] - log_[b];
        return exp_[difference < 0 ? difference + size_ - 1 : difference];
    }

    const int size_;

private:
    virtual int Add(int a, int b) const = 0;
    virtual int Subtract(int a, int b) const = 0;
    virtual int Negate(int a) const = 0;
    /// The value at `x` of the polynomial of `n` coefficients, which lie `step` apart, lowest first.
    virtual int Evaluate(const std::uint16_t* p, int n, int x, int step = 1) const = 0;
    virtual int EvaluateDerivative(const std::uint16_t* p, int n, int x) const = 0;

    bool LocateErasures(std::uint16_t* words, int total, int check, int stride, int& erasures,
                        Polynomial& locator) const;
    bool Syndromes(const std::uint16_t* words, int total, int check, int stride, Polynomial& syndromes) const;
    bool LocateErrors(int check, int erasures, int& degree, Scratch& scratch) const;
    void FormEvaluator(int degree, Scratch& scratch) const;

    const std::int16_t* exp_;
    const std::int16_t* log_;
    const int firstRoot_;
};

/// GF(256), with the generator 2.
class ReedSolomonBinary final : public ReedSolomon
{
public:
    static ReedSolomonBinary DataMatrix(); ///< polynomial 0x12D, first root 1: ISO/IEC 16022
    static ReedSolomonBinary QR();         ///< polynomial 0x11D, first root 0: ISO/IEC 18004

private:
    using ReedSolomon::ReedSolomon;
    int Add(int a, int b) const override { return a ^ b; }
    int Subtract(int a, int b) const override { return a ^ b; }
    int Negate(int a) const override { return a; }
    int Evaluate(const std::uint16_t* p, int n, int x, int step) const override;
    int EvaluateDerivative(const std::uint16_t* p, int n, int x) const override;
};

/// GF(113), with the generator 3 and the first root 1: AIM DotCode.
class ReedSolomonPrime final : public ReedSolomon
{
public:
    ReedSolomonPrime();

private:
    int Add(int a, int b) const override { return a + b < size_ ? a + b : a + b - size_; }
    int Subtract(int a, int b) const override { return a < b ? a - b + size_ : a - b; }
    int Negate(int a) const override { return a == 0 ? 0 : size_ - a; }
    int Evaluate(const std::uint16_t* p, int n, int x, int step) const override;
    int EvaluateDerivative(const std::uint16_t* p, int n, int x) const override;
};

} // namespace Tesk::codewords
