#include "Failures.h"
#include "foundation/Archive.h"
#include "image/Geometry.h"

#include <bit>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <unistd.h>

using namespace Tesk;
namespace fs = std::filesystem;

namespace {

void Append(std::string& bytes, double value)
{
    const auto bits = std::bit_cast<std::uint64_t>(value);
    for (int i = 0; i < 8; i++)
        bytes += static_cast<char>(bits >> (8 * i) & 255);
}

class GeometryFile : public checks::IgnoringFailures
{
protected:
    GeometryFile()
        : name_((fs::temp_directory_path() / ("tesk_geometry_" + std::to_string(getpid()) + ".cal")).string())
    {}
    ~GeometryFile() override
    {
        fs::remove(name_);
        Geometry::SimpleCalibration(1, 1);
    }

    std::string Bytes() const
    {
        std::ifstream file(name_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void Put(const std::string& bytes) const { std::ofstream(name_, std::ios::binary | std::ios::trunc) << bytes; }

    /// A file written byte by byte, whose coefficients are 1, 2, ... and -1, -2, ...
    static std::string Model(int version, int model, double fromPixel, double toPixel)
    {
        std::string bytes = "TCAL";
        for (const int number : {version, model})
            bytes += std::string{static_cast<char>(number), 0, 0, 0};
        for (const int sign : {1, -1})
            for (int i = 1; i <= 14; i++)
                Append(bytes, sign * i);
        Append(bytes, fromPixel);
        Append(bytes, toPixel);
        return bytes;
    }

    std::string name_;
};

TEST_F(GeometryFile, HoldsModelCoefficientsAndScales)
{
    Geometry geometry;
    geometry.Append({1, 1}, {2, 2});
    Put(Model(2, Biquadratic, 0.25, 4));
    geometry.Read(name_.c_str());
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(geometry.Model, Biquadratic);
    EXPECT_EQ(geometry.NumAnchors, 0);
    EXPECT_EQ(Geometry::ScaleFromPixel, 0.25);
    EXPECT_EQ(Geometry::ScaleToPixel, 4);
    // x' = (x + 2 y + 4) x + (3 y + 5) y + 6
    EXPECT_EQ(geometry.MapPoint({10, 100}).X, 214 * 10 + 305 * 100 + 6);
    EXPECT_EQ(geometry.ReverseMapPoint({10, 100}).Y, -(880 * 10 + 911 * 100 + 12));

    fs::remove(name_);
    geometry.Write(fs::path(name_).wstring().c_str());
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(Bytes(), Model(2, Biquadratic, 0.25, 4));
    Geometry read;
    read.Read(fs::path(name_).wstring().c_str());
    EXPECT_EQ(read.Forward(), geometry.Forward());
    EXPECT_EQ(read.Inverse(), geometry.Inverse());
}

TEST_F(GeometryFile, IsRefusedWhereverItIsCutAndLeavesModelAndScales)
{
    const std::string whole = Model(2, Affinity, 2, 0.5);
    Geometry::SimpleCalibration(8, 1);
    Geometry geometry;
    geometry.PureScaling(1, 3);
    geometry.Append({1, 1}, {2, 2});
    ASSERT_EQ(whole.size(), 252u);
    for (std::size_t size = 0; size < whole.size(); size++) {
        Put(whole.substr(0, size));
        geometry.Read(name_.c_str());
        EXPECT_EQ(Status::Error().Code, size > 0 && size < 4 ? UnsupportedFormat : CannotRead) << size;
        EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Geometry::Read");
        ASSERT_EQ(geometry.MapPoint({1, 1}).Y, 3) << size;
        ASSERT_EQ(geometry.Model, Scaling);
        ASSERT_EQ(geometry.NumAnchors, 1);
        ASSERT_EQ(Geometry::ScaleToPixel, 8);
        ASSERT_EQ(Geometry::ScaleFromPixel, 0.125);
    }
}

TEST_F(GeometryFile, TellsWhatIsWrongWithAnother)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const std::wstring name(name_.begin(), name_.end());
    std::string other = Model(2, Affinity, 2, 0.5), wild = other;
    other[3] = 'M';
    const auto bits = std::bit_cast<std::uint64_t>(nan);
    std::memcpy(&wild[12 + 8 * 20], &bits, sizeof bits);
    const struct
    {
        std::string bytes;
        int code;
        std::wstring message;
    } rows[] = {
        {other, UnsupportedFormat, L"File \"" + name + L"\" is not a Geometry Model"},
        {Model(1, Affinity, 2, 0.5), OutOfRange,
         L"The version number \"1\" of this Geometry Model is no more supported"},
        {Model(0, Affinity, 2, 0.5), OutOfRange,
         L"The version number \"0\" of this Geometry Model is no more supported"},
        {Model(3, Affinity, 2, 0.5), OutOfRange, L"The version number \"3\" of this Geometry Model is too high"},
        {wild, OutOfRange, L"The coefficients of this Geometry Model are not finite"},
        {Model(2, Affinity, 0, 0.5), OutOfRange, L"The scales (0, 0.5) of this Geometry Model are not usable"},
        {Model(2, Affinity, 2, nan), OutOfRange, L"The scales (2, nan) of this Geometry Model are not usable"},
    };
    Geometry geometry;
    for (const auto& row : rows) {
        Put(row.bytes);
        for (const bool wide : {false, true}) {
            wide ? geometry.Read(fs::path(name_).wstring().c_str()) : geometry.Read(name_.c_str());
            EXPECT_EQ(Status::Error().Code, row.code);
            EXPECT_EQ(checks::Message(), row.message);
            EXPECT_EQ(geometry.MapPoint({3, 4}).X, 3);
            EXPECT_EQ(Geometry::ScaleToPixel, 1);
        }
    }
    geometry.Read("/nowhere/at.cal");
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_EQ(checks::Message(), L"Cannot open file \"/nowhere/at.cal\" (No such file or directory)");
    geometry.Write("/nowhere/at.cal");
    EXPECT_EQ(Status::Error().Code, CannotOpen);
    EXPECT_STREQ(Status::AsciiFunction(), "Tesk::Geometry::Write");
    geometry.Write("/dev/full");
    EXPECT_EQ(Status::Error().Code, CannotWrite);
}

} // namespace
