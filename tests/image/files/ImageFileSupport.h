// What the tests of image files share: a folder that goes when the test ends, files by their bytes, and pictures.
#pragma once

#include "Failures.h"
#include "image/Image.h"
#include "image/Operator.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace Tesk {

using checks::Message;
using Bytes = std::vector<std::uint8_t>;

class ImageFolderTest : public checks::IgnoringFailures
{
protected:
    void SetUp() override
    {
        IgnoringFailures::SetUp();
        TextOutput() = nullptr;
        folder_ = std::filesystem::temp_directory_path() / ("tesk_image_file_" + std::to_string(getpid()));
        std::filesystem::create_directories(folder_);
    }
    void TearDown() override
    {
        Operator::GrayDepth = 16;
        TextOutput() = stderr;
        std::filesystem::remove_all(folder_);
    }

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }

    std::string Put(const std::string& name, const Bytes& bytes) const
    {
        // Some file systems write a file that is cut and rewritten through to the disk at once.
        std::filesystem::remove(Path(name));
        std::FILE* file = std::fopen(Path(name).c_str(), "wb");
        if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
        return Path(name);
    }

    std::string Put(const std::string& name, const std::string& text) const
    {
        return Put(name, Bytes(text.begin(), text.end()));
    }

    static Bytes Contents(const std::string& path)
    {
        Bytes bytes(std::filesystem::file_size(path));
        std::FILE* file = std::fopen(path.c_str(), "rb");
        bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
        std::fclose(file);
        return bytes;
    }

    std::filesystem::path folder_;
};

/// A picture in which every byte of the window depends on its place.
inline void FillByPlace(Image& image, int width, int height, PixelTypes type)
{
    image.Set(width, height, type);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < RowBytes(width, type); x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(37 * x + 101 * y + x * y + 5);
    // The unused bits of a packed row are no part of the picture.
    if (type == Gray1 && width % 8)
        for (int y = 0; y < height; y++)
            image.Row(y)[width >> 3] &= static_cast<std::uint8_t>(0xff00 >> (width & 7));
}

/// The bytes of a row of the window.
inline Bytes RowOf(const Image& image, int y)
{
    return Bytes(image.Row(y), image.Row(y) + RowBytes(image.Width, image.Type));
}

inline void Put32(Bytes& bytes, std::size_t at, std::uint32_t value)
{
    for (std::size_t i = 0; i < 4; i++)
        bytes[at + i] = static_cast<std::uint8_t>(value >> 8 * i);
}

/// The headers of a BMP file with rows at `offset`.
inline Bytes BmpHeader(int width, int height, int bitCount, std::uint32_t offset = 54, std::uint32_t colors = 0)
{
    Bytes bytes(54);
    bytes[0] = 'B';
    bytes[1] = 'M';
    Put32(bytes, 10, offset);
    Put32(bytes, 14, 40);
    Put32(bytes, 18, static_cast<std::uint32_t>(width));
    Put32(bytes, 22, static_cast<std::uint32_t>(height));
    bytes[26] = 1;
    bytes[28] = static_cast<std::uint8_t>(bitCount);
    Put32(bytes, 46, colors);
    return bytes;
}

} // namespace Tesk
