// The loops over the rows of windows: bytes, pixels and packed bits through functions, tables and row kernels.
#pragma once

#include "image/core/Destination.h"
#include "image/core/Saturation.h"
#include "image/kernels/RowKernels.h"

#include <cstdint>
#include <initializer_list>

namespace Tesk::images {

/// The loop over rows: windows without gaps between their rows are one long row, so that a call pays once.
struct RowRun
{
    int rows;
    std::size_t count; ///< of what one row holds: bytes, or pixels
};

inline RowRun RunOver(int count, std::initializer_list<const Image*> images)
{
    const int rows = (*images.begin())->Height;
    for (const Image* image : images)
        if (image->Pitch != ByteCount(*image) || (image->Type == Gray1 && image->Width % 8 != 0))
            return {rows, static_cast<std::size_t>(count)};
    return {1, static_cast<std::size_t>(count) * static_cast<std::size_t>(rows)};
}

/// The end of the rows of a destination. The last byte of a packed row also holds pixels beyond a window that is
/// narrower than its store: those stay.
struct RowEnd
{
    std::size_t whole;        ///< bytes that belong to the window alone
    std::uint8_t mask = 0xff; ///< the window's bits in the byte behind those, if there is one

    explicit RowEnd(const Image& dst) : whole(static_cast<std::size_t>(ByteCount(dst)))
    {
        const int bits = dst.Width % 8;
        if (dst.Type != Gray1 || bits == 0 || dst.Width == dst.StoreWidth) return;
        whole--;
        mask = static_cast<std::uint8_t>(0xff00 >> bits);
    }
    bool Shared() const { return mask != 0xff; }
    void Put(std::uint8_t* row, int value) const
    {
        row[whole] = static_cast<std::uint8_t>((row[whole] & ~mask) | (value & mask));
    }
};

/// Packs a test of each pixel into bits, the most significant leftmost.
template <typename T, typename Test>
void ToBits(const Image& src, Image& dst, Test test)
{
    const RowEnd end(dst);
    for (int y = 0; y < dst.Height; y++) {
        const T* s = src.Row<T>(y);
        std::uint8_t* d = dst.Row(y);
        const auto packed = [&](int x, int count) {
            int bits = 0;
            for (int i = 0; i < count; i++)
                bits |= test(s[x + i]) ? 0x80 >> i : 0;
            return bits;
        };
        const int n = static_cast<int>(end.whole);
        for (int i = 0; i < n; i++)
            d[i] = static_cast<std::uint8_t>(packed(8 * i, Min(8, dst.Width - 8 * i)));
        if (end.Shared()) end.Put(d, packed(8 * n, dst.Width - 8 * n));
    }
}

/// Rows of bytes through a function of one byte.
template <typename F>
void EachByte(const Image& src, Image& dst, F f)
{
    const RowEnd end(dst);
    for (int y = 0; y < dst.Height; y++) {
        const std::uint8_t* s = src.Row(y);
        std::uint8_t* d = dst.Row(y);
        for (std::size_t i = 0; i < end.whole; i++)
            d[i] = static_cast<std::uint8_t>(f(s[i]));
        if (end.Shared()) end.Put(d, f(s[end.whole]));
    }
}

/// Two sources through a row kernel.
inline void EachBytePair(const Image& src, const Image& srcB, Image& dst, kernels::BytePair operation)
{
    const RowEnd end(dst);
    const auto [rows, n] = RunOver(static_cast<int>(end.whole), {&src, &srcB, &dst});
    for (int y = 0; y < rows; y++) {
        const std::uint8_t *a = src.Row(y), *b = srcB.Row(y);
        kernels::BytePairRow(operation, a, b, dst.Row(y), n);
        if (!end.Shared()) continue;
        std::uint8_t last = 0;
        kernels::BytePairRow(operation, a + n, b + n, &last, 1);
        end.Put(dst.Row(y), last);
    }
}

template <typename F>
void EachBytePair(const Image& src, const Image& srcB, Image& dst, F f)
{
    const int n = ByteCount(dst);
    for (int y = 0; y < dst.Height; y++) {
        const std::uint8_t* a = src.Row(y);
        const std::uint8_t* b = srcB.Row(y);
        std::uint8_t* d = dst.Row(y);
        for (int i = 0; i < n; i++)
            d[i] = static_cast<std::uint8_t>(f(int{a[i]}, int{b[i]}));
    }
}

/// Pixels of one type through a function into pixels of another.
template <typename S, typename D, typename F>
void EachPixel(const Image& src, Image& dst, F f)
{
    for (int y = 0; y < dst.Height; y++) {
        const S* s = src.Row<S>(y);
        D* d = dst.Row<D>(y);
        for (int x = 0; x < dst.Width; x++)
            d[x] = static_cast<D>(f(s[x]));
    }
}

template <typename T, typename F>
void EachPixelPair(const Image& src, const Image& srcB, Image& dst, F f)
{
    for (int y = 0; y < dst.Height; y++) {
        const T* a = src.Row<T>(y);
        const T* b = srcB.Row<T>(y);
        T* d = dst.Row<T>(y);
        for (int x = 0; x < dst.Width; x++)
            d[x] = static_cast<T>(f(int{a[x]}, int{b[x]}));
    }
}

/// An operation by constant: a table of 256 entries made by `f(value)`, through which the rows go.
template <typename F>
void ThroughTable(const Image& src, Image& dst, F f)
{
    std::uint8_t table[256];
    for (int v = 0; v < 256; v++)
        table[v] = static_cast<std::uint8_t>(f(v));
    const auto [rows, n] = RunOver(ByteCount(dst), {&src, &dst});
    for (int y = 0; y < rows; y++)
        kernels::LookupRow(src.Row(y), dst.Row(y), n, table);
}

} // namespace Tesk::images
