#include "workbench/views/PictureClipboard.h"

#include "foundation/Services.h"

#include <QString>
#include <QWidget>
#include <QtEndian>

#include <cstring>

namespace TeskPlus {

using namespace Tesk;

namespace {

constexpr int headerSize = 40, paletteEntries = 256;

/// A bitmap with its bottom row first; `row` gives the bytes of a row, blue first.
template <typename Row>
std::vector<std::uint8_t> MakeDib(int width, int height, int bitCount, Row row)
{
    const auto bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(bitCount / 8);
    const std::size_t pitch = (bytes + 3) & ~std::size_t{3}, colors = bitCount == 8 ? paletteEntries : 0;
    std::vector<std::uint8_t> dib(headerSize + 4 * colors + pitch * static_cast<std::size_t>(height));
    qToLittleEndian<quint32>(headerSize, dib.data());
    qToLittleEndian<qint32>(width, dib.data() + 4);
    qToLittleEndian<qint32>(height, dib.data() + 8);
    qToLittleEndian<quint16>(1, dib.data() + 12);
    qToLittleEndian<quint16>(static_cast<quint16>(bitCount), dib.data() + 14);
    qToLittleEndian<quint32>(static_cast<quint32>(colors), dib.data() + 32);
    for (std::size_t i = 0; i < colors; i++)
        std::memset(dib.data() + headerSize + 4 * i, static_cast<int>(i), 3);
    std::uint8_t* pixels = dib.data() + headerSize + 4 * colors;
    for (int y = 0; y < height; y++)
        std::memcpy(pixels + pitch * static_cast<std::size_t>(height - 1 - y), row(y), bytes);
    return dib;
}

void PutBitmap(std::vector<std::uint8_t> dib)
{
    Services::Clipboard().Empty();
    Services::Clipboard().Put(IClipboard::Dib, std::move(dib));
}

} // namespace

void CopyText(const std::wstring& Text)
{
    const QString text = QString::fromStdWString(Text);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.utf16());
    Services::Clipboard().Empty();
    Services::Clipboard().Put(IClipboard::UnicodeText, {bytes, bytes + 2 * (text.size() + 1)});
}

void CopyPicture(const Image& Picture)
{
    const int bitCount = Picture.Type == Gray ? 8 : Picture.Type == Rgb ? 24 : Picture.Type == Rgba ? 32 : 0;
    if (bitCount == 0) return;
    PutBitmap(MakeDib(Picture.Width, Picture.Height, bitCount, [&](int y) { return Picture.Row(y); }));
}

void CopyScreen(QWidget& Widget)
{
    int width = 0, height = 0;
    std::vector<std::uint8_t> pixels;
    if (!Services::WindowCapture().Capture(&Widget, width, height, pixels)) return;
    const std::size_t pitch = 4 * static_cast<std::size_t>(width);
    PutBitmap(MakeDib(width, height, 32, [&](int y) { return pixels.data() + pitch * static_cast<std::size_t>(y); }));
}

} // namespace TeskPlus
