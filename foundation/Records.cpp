// What the records do: points are drawn and dragged, rectangles are combined and kept in files.
#include "foundation/Records.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace Tesk {

ReadOnly<DraggingHandles, XY> XY::Handle(NoHandle);
ReadOnly<DraggingHandles, Site> Site::Handle(NoHandle);

namespace {

/// A point of the screen within this many pixels of a mark is on it.
constexpr double handleTolerance = 6.0;
constexpr int markRadius = 5;

void DrawPoint(double x, double y, bool handles)
{
    Graph::Cross(x, y, markRadius);
    if (handles) Graph::Marker(x, y, true, markRadius);
}

bool HitsPoint(double pointX, double pointY, int x, int y)
{
    return handleTolerance > std::abs(Graph::ToTargetMark(pointX) - static_cast<double>(x)) &&
           handleTolerance > std::abs(Graph::ToTargetMark(pointY) - static_cast<double>(y));
}

/// The image coordinate whose mark stands at a pixel of the screen.
double FromTargetMark(int v)
{
    return v / Graph::Zoom - 1;
}

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

constexpr std::array<char, 4> limitsMagic = {'T', 'L', 'I', 'M'};
constexpr int limitsVersion = 1;

/// Opens to read, or to write without cutting what is longer.
File Open(const std::string& path, bool write)
{
    if (!write) return File(std::fopen(path.c_str(), "rb"));
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT, 0666);
    if (descriptor < 0) return {};
    return File(::fdopen(descriptor, "wb"));
}

int RefuseOpen(const wchar_t* name)
{
    return Status::Format(CannotOpen, L"Cannot open file \"%ls\" (%ls)", name, Widen(std::strerror(errno)).c_str());
}

/// What the file holds; each field stays as it is where the file has ended without an error.
int ReadLimits(const std::string& path, const wchar_t* name, Limits& limits)
{
    const File file = Open(path, false);
    if (!file) return RefuseOpen(name);
    std::array<std::uint8_t, 16> bytes{};
    const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), file.get());
    if (std::ferror(file.get())) return CannotRead;
    if (count == 0) return NoError;
    if (count < 4 || std::memcmp(bytes.data(), limitsMagic.data(), limitsMagic.size()) != 0)
        return Status::Format(UnsupportedFormat, L"File \"%ls\" is not an Image Window file", name);
    const int version =
        static_cast<int>(bytes[4] | bytes[5] << 8 | bytes[6] << 16 | static_cast<std::uint32_t>(bytes[7]) << 24);
    if (version > limitsVersion)
        return Status::Format(OutOfRange, L"The version number \"%d\" of this Image Window file is too high", version);
    if (count < bytes.size()) return CannotRead;
    const auto field = [&](std::size_t i) { return static_cast<std::int16_t>(bytes[i] | bytes[i + 1] << 8); };
    limits = Limits(field(8), field(10), field(12), field(14));
    return NoError;
}

int WriteLimits(const std::string& path, const wchar_t* name, const Limits& limits)
{
    const File file = Open(path, true);
    if (!file) return RefuseOpen(name);
    std::array<std::uint8_t, 16> bytes{};
    std::memcpy(bytes.data(), limitsMagic.data(), limitsMagic.size());
    bytes[4] = limitsVersion;
    const std::int16_t fields[] = {limits.X, limits.Y, limits.Width, limits.Height};
    for (std::size_t i = 0; i < 4; i++) {
        bytes[8 + 2 * i] = static_cast<std::uint8_t>(fields[i]);
        bytes[9 + 2 * i] = static_cast<std::uint8_t>(fields[i] >> 8);
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    return written && std::fflush(file.get()) == 0 ? NoError : CannotWrite;
}

std::int16_t Short16(int value)
{
    return static_cast<std::int16_t>(Clamp(value, -32768, 32767));
}

} // namespace

void XY::Draw(bool Handles) const
{
    DrawPoint(X, Y, Handles);
}

DraggingHandles XY::HitHandle(int x, int y) const
{
    Handle = HitsPoint(X, Y, x, y) ? PointHandle : NoHandle;
    return Handle;
}

void XY::Drag(int x, int y)
{
    if (Handle != PointHandle) return;
    X = FromTargetMark(x);
    Y = FromTargetMark(y);
}

void Site::Draw(bool Handles) const
{
    DrawPoint(X, Y, Handles);
}

DraggingHandles Site::HitHandle(int x, int y) const
{
    Handle = HitsPoint(X, Y, x, y) ? PointHandle : NoHandle;
    return Handle;
}

void Site::Drag(int x, int y)
{
    if (Handle != PointHandle) return;
    X = Short16(static_cast<int>(std::lround(FromTargetMark(x))));
    Y = Short16(static_cast<int>(std::lround(FromTargetMark(y))));
}

void Limits::Unite(const Limits& Other)
{
    const int left = Min(X, Other.X), top = Min(Y, Other.Y);
    const int right = Max(X + Width, Other.X + Other.Width), bottom = Max(Y + Height, Other.Y + Other.Height);
    *this = Limits(left, top, Short16(right - left), Short16(bottom - top));
}

void Limits::Stretch(int x, int y)
{
    const int left = Min<int>(X, x), top = Min<int>(Y, y);
    const int right = Max(X + Width, x + 1), bottom = Max(Y + Height, y + 1);
    *this = Limits(Short16(left), Short16(top), Short16(right - left), Short16(bottom - top));
}

bool Limits::Intersect(const Limits& Other)
{
    const int left = Max(X, Other.X), top = Max(Y, Other.Y);
    const int right = Min(X + Width, Other.X + Other.Width), bottom = Min(Y + Height, Other.Y + Other.Height);
    *this = Limits(left, top, Short16(right - left), Short16(bottom - top));
    return Width >= 1 && Height >= 1;
}

void Limits::Read(const char* PathName)
{
    const Entry entry("Tesk::Limits::Read");
    entry.Refuses(ReadLimits(PathName ? PathName : "", Widen(PathName).c_str(), *this));
}

void Limits::Read(const wchar_t* PathName)
{
    const Entry entry("Tesk::Limits::Read");
    entry.Refuses(ReadLimits(Narrow(PathName), PathName ? PathName : L"", *this));
}

void Limits::Write(const char* PathName) const
{
    const Entry entry("Tesk::Limits::Write");
    entry.Refuses(WriteLimits(PathName ? PathName : "", Widen(PathName).c_str(), *this));
}

void Limits::Write(const wchar_t* PathName) const
{
    const Entry entry("Tesk::Limits::Write");
    entry.Refuses(WriteLimits(Narrow(PathName), PathName ? PathName : L"", *this));
}

} // namespace Tesk
