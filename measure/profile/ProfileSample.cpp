// Sampling images along rows, columns, oblique lines and paths, alone or across a breadth.
#include "measure/Profile.h"

#include "measure/Path.h"
#include "measure/profile/LinePixels.h"
#include "measure/profile/ProfileFrame.h"

#include <cmath>
#include <vector>

namespace Tesk {

namespace {

using namespace profiles;

/// What becomes of the values across the breadth.
enum Across
{
    Single,
    Sum,
    Average,
    Variance,
    Deviation,
    Largest,
    Smallest,
    Spread
};

bool IsSampled(PixelTypes type)
{
    return type == Gray || type == Gray16 || type == Rgb;
}

int CheckSource(const Image& src)
{
    if (const int code = CheckImage(src)) return code;
    if (IsSampled(src.Type)) return NoError;
    return Status::Format(UnsupportedType, L"The image type (%ls) is not supported for this operation",
                          PixelTypeName(src.Type));
}

int CheckBreadth(int breadth)
{
    if (breadth >= 1) return NoError;
    return Status::Format(OutOfRange, L"The breadth (%d) must be positive", breadth);
}

/// Lines beside each other are not bounded by the image.
int CheckLineBreadth(int breadth)
{
    constexpr int largestBreadth = 65536;
    if (breadth <= largestBreadth) return CheckBreadth(breadth);
    return Status::Format(OutOfRange, L"The breadth (%d) must be in the range [1..%d]", breadth, largestBreadth);
}

/// The source, and the breadth where there is one.
int CheckBand(const Image& src, int breadth, int across, int (*checkBreadth)(int))
{
    if (const int code = CheckSource(src)) return code;
    return across == Single ? NoError : checkBreadth(breadth);
}

/// Rows `y` to `y + breadth - 1` must lie in the window; `breadth` 0 stands for a single row.
int CheckRows(const Image& src, int y, int breadth)
{
    if (y < 0 || y >= src.Height)
        return Status::Format(OutOfRange, L"Ordinate (%d) must be in the range [0..%d]", y, src.Height - 1);
    if (breadth > src.Height - y)
        return Status::Format(OutOfRange, L"Ordinate plus height (%d + %d) must be in the range [0..%d]", y, breadth,
                              int(src.Height));
    return NoError;
}

int CheckColumns(const Image& src, int x, int breadth)
{
    if (x < 0 || x >= src.Width)
        return Status::Format(OutOfRange, L"Abscissa (%d) must be in the range [0..%d]", x, src.Width - 1);
    if (breadth > src.Width - x)
        return Status::Format(OutOfRange, L"Abscissa plus width (%d + %d) must be in the range [0..%d]", x, breadth,
                              int(src.Width));
    return NoError;
}

ProfileSource SourceIn(const Image& src, ProfileSource::Kinds kind, DraggingHandles direction, int breadth)
{
    ProfileSource source;
    source.Kind = kind;
    source.Direction = direction;
    source.Breadth = breadth;
    source.X = src.X;
    source.Y = src.Y;
    source.Width = src.Width;
    source.Height = src.Height;
    return source;
}

void FetchRow(const Image& src, int y, std::int32_t* out)
{
    ByPixel(src.Type, [&]<typename T>(T*) {
        const T* row = src.Row<T>(y);
        for (int x = 0; x < src.Width; x++, out += Channels(src.Type))
            Put(row[x], out);
    });
}

void FetchColumn(const Image& src, int x, std::int32_t* out)
{
    ByPixel(src.Type, [&]<typename T>(T*) {
        for (int y = 0; y < src.Height; y++, out += Channels(src.Type))
            Put(src.Row<T>(y)[x], out);
    });
}

/// What is kept of the lines while they go by, a number for each component of each sample.
class Gathered
{
public:
    Gathered(std::size_t count, int across) : across_(across), line_(count), sums_(UsesSums() ? count : 0)
    {
        if (across == Variance || across == Deviation) squares_.resize(count);
        if (across == Largest || across == Spread) largest_.assign(count, INT32_MIN);
        if (across == Smallest || across == Spread) smallest_.assign(count, INT32_MAX);
    }

    std::int32_t* Line() { return line_.data(); }

    void Add()
    {
        const std::size_t n = line_.size();
        if (UsesSums())
            for (std::size_t i = 0; i < n; i++)
                sums_[i] += line_[i];
        if (!squares_.empty())
            for (std::size_t i = 0; i < n; i++)
                squares_[i] += static_cast<std::uint64_t>(std::int64_t{line_[i]} * line_[i]);
        if (!largest_.empty())
            for (std::size_t i = 0; i < n; i++)
                largest_[i] = Max(largest_[i], line_[i]);
        if (!smallest_.empty())
            for (std::size_t i = 0; i < n; i++)
                smallest_[i] = Min(smallest_[i], line_[i]);
    }

    void Finish(int breadth, std::int32_t* out) const
    {
        for (std::size_t i = 0; i < line_.size(); i++)
            out[i] = Value(i, breadth);
    }

private:
    bool UsesSums() const { return across_ >= Sum && across_ <= Deviation; }

    int Value(std::size_t i, int breadth) const
    {
        switch (across_) {
        case Sum:
            return Saturated(sums_[i]);
        case Average:
            return static_cast<int>(sums_[i] / breadth);
        case Largest:
            return largest_[i];
        case Smallest:
            return smallest_[i];
        case Spread:
            return largest_[i] - smallest_[i];
        default:
            break;
        }
        // n sum(v^2) of 16-bit values needs 64 bits up to this breadth, and more than a double above it.
        constexpr int exactBreadth = 65536;
        const auto n = static_cast<std::uint64_t>(breadth), sum = static_cast<std::uint64_t>(sums_[i]);
        double variance;
        if (breadth <= exactBreadth) {
            const std::uint64_t whole = (n * squares_[i] - sum * sum) / (n * n);
            variance = static_cast<double>(whole);
        } else {
            const double mean = static_cast<double>(sum) / static_cast<double>(n);
            variance = static_cast<double>(squares_[i]) / static_cast<double>(n) - mean * mean;
        }
        // The root of the truncated variance truncates to the same integer as that of the variance.
        return Truncated(across_ == Deviation ? std::sqrt(variance) : variance);
    }

    int across_;
    std::vector<std::int32_t> line_;
    std::vector<std::int64_t> sums_;
    std::vector<std::uint64_t> squares_;
    std::vector<std::int32_t> largest_, smallest_;
};

} // namespace

/// Samples the lines that `fetch(k, out)` gives, one for each unit of the breadth, and combines them.
template <typename Fetch>
int Profile::SampleBand(const Image& src, int length, const ProfileSource& source, int across, Fetch fetch)
{
    // Before any memory is asked for.
    if (std::int64_t{length} * SampleSize(src.Type) > INT32_MAX) return RefuseMemory();
    return Allocating([&]() -> int {
        const int breadth = Max(source.Breadth, 1);
        const std::size_t count = static_cast<std::size_t>(length) * static_cast<std::size_t>(Channels(src.Type));
        Gathered gathered(across == Single ? 0 : count, across);
        if (!TrySet(length, src.Type)) return RefuseMemory();
        Source = source;
        if (length == 0) return NoError;
        if (across == Single) {
            fetch(0, Samples());
            return NoError;
        }
        if (across == Sum) Scale = breadth;
        for (int k = 0; k < breadth; k++) {
            fetch(k, gathered.Line());
            gathered.Add();
        }
        gathered.Finish(breadth, Samples());
        return NoError;
    });
}

int Profile::SampleRows(int y, int breadth, const Image& src, int across)
{
    if (const int code = CheckBand(src, breadth, across, CheckBreadth)) return code;
    if (const int code = CheckRows(src, y, breadth)) return code;
    ProfileSource source = SourceIn(src, ProfileSource::OfRow, NHandle, breadth);
    source.Row = y;
    return SampleBand(src, src.Width, source, across, [&](int k, std::int32_t* out) { FetchRow(src, y + k, out); });
}

int Profile::SampleColumns(int x, int breadth, const Image& src, int across)
{
    if (const int code = CheckBand(src, breadth, across, CheckBreadth)) return code;
    if (const int code = CheckColumns(src, x, breadth)) return code;
    ProfileSource source = SourceIn(src, ProfileSource::OfColumn, WHandle, breadth);
    source.Column = x;
    return SampleBand(src, src.Height, source, across, [&](int k, std::int32_t* out) { FetchColumn(src, x + k, out); });
}

int Profile::SampleLines(const XY& beg, const XY& end, int breadth, const Image& src, int across, bool interpolate)
{
    if (const int code = CheckBand(src, breadth, across, CheckLineBreadth)) return code;
    ProfileSource source = SourceIn(src, ProfileSource::OfLine, AllHandle, breadth);
    source.Beg = beg;
    source.End = end;
    const Direction u = DirectionOf(beg, end);
    if (u.length >= INT32_MAX) return RefuseMemory();
    const bool longEnough = u.length >= 1.0;
    const int length = longEnough ? static_cast<int>(u.length) : 0;
    const int code = SampleBand(src, length, source, across, [&](int k, std::int32_t* out) {
        const double aside = k - (Max(breadth, 1) - 1) / 2.0;
        FetchLine(src, XY(source.Beg.X - aside * u.y, source.Beg.Y + aside * u.x), u, length, interpolate, out);
    });
    if (!longEnough) return Status::Format(OutOfRange, L"This profile is too short (%.3f pixels)", u.length);
    return code;
}

void Profile::RowGet(int Y, const Image& Src)
{
    const Entry entry("Tesk::Profile::RowGet");
    entry.Refuses(SampleRows(Y, 0, Src, Single));
}

void Profile::RowAdd(int Y, int Breadth, const Image& Src, bool Average)
{
    const Entry entry("Tesk::Profile::RowAdd");
    entry.Refuses(SampleRows(Y, Breadth, Src, Average ? Across::Average : Sum));
}

void Profile::RowVariance(int Y, int Breadth, const Image& Src, bool RMS)
{
    const Entry entry("Tesk::Profile::RowVariance");
    entry.Refuses(SampleRows(Y, Breadth, Src, RMS ? Deviation : Across::Variance));
}

void Profile::RowMaximize(int Y, int Breadth, const Image& Src)
{
    const Entry entry("Tesk::Profile::RowMaximize");
    entry.Refuses(SampleRows(Y, Breadth, Src, Largest));
}

void Profile::RowMinimize(int Y, int Breadth, const Image& Src)
{
    const Entry entry("Tesk::Profile::RowMinimize");
    entry.Refuses(SampleRows(Y, Breadth, Src, Smallest));
}

void Profile::RowRange(int Y, int Breadth, const Image& Src)
{
    const Entry entry("Tesk::Profile::RowRange");
    entry.Refuses(SampleRows(Y, Breadth, Src, Spread));
}

void Profile::ColumnGet(int X, const Image& Src)
{
    const Entry entry("Tesk::Profile::ColumnGet");
    entry.Refuses(SampleColumns(X, 0, Src, Single));
}

void Profile::ColumnAdd(int X, int Breadth, const Image& Src, bool Average)
{
    const Entry entry("Tesk::Profile::ColumnAdd");
    entry.Refuses(SampleColumns(X, Breadth, Src, Average ? Across::Average : Sum));
}

void Profile::ColumnVariance(int X, int Breadth, const Image& Src, bool RMS)
{
    const Entry entry("Tesk::Profile::ColumnVariance");
    entry.Refuses(SampleColumns(X, Breadth, Src, RMS ? Deviation : Across::Variance));
}

void Profile::ColumnMaximize(int X, int Breadth, const Image& Src)
{
    const Entry entry("Tesk::Profile::ColumnMaximize");
    entry.Refuses(SampleColumns(X, Breadth, Src, Largest));
}

void Profile::ColumnMinimize(int X, int Breadth, const Image& Src)
{
    const Entry entry("Tesk::Profile::ColumnMinimize");
    entry.Refuses(SampleColumns(X, Breadth, Src, Smallest));
}

void Profile::ColumnRange(int X, int Breadth, const Image& Src)
{
    const Entry entry("Tesk::Profile::ColumnRange");
    entry.Refuses(SampleColumns(X, Breadth, Src, Spread));
}

void Profile::LineGet(const XY& Beg, const XY& End, const Image& Src, bool Interpolate)
{
    const Entry entry("Tesk::Profile::LineGet");
    entry.Refuses(SampleLines(Beg, End, 0, Src, Single, Interpolate));
}

void Profile::LineAdd(const XY& Beg, const XY& End, int Breadth, const Image& Src, bool Average, bool Interpolate)
{
    const Entry entry("Tesk::Profile::LineAdd");
    entry.Refuses(SampleLines(Beg, End, Breadth, Src, Average ? Across::Average : Sum, Interpolate));
}

void Profile::LineVariance(const XY& Beg, const XY& End, int Breadth, const Image& Src, bool RMS, bool Interpolate)
{
    const Entry entry("Tesk::Profile::LineVariance");
    entry.Refuses(SampleLines(Beg, End, Breadth, Src, RMS ? Deviation : Across::Variance, Interpolate));
}

void Profile::LineMaximize(const XY& Beg, const XY& End, int Breadth, const Image& Src, bool Interpolate)
{
    const Entry entry("Tesk::Profile::LineMaximize");
    entry.Refuses(SampleLines(Beg, End, Breadth, Src, Largest, Interpolate));
}

void Profile::LineMinimize(const XY& Beg, const XY& End, int Breadth, const Image& Src, bool Interpolate)
{
    const Entry entry("Tesk::Profile::LineMinimize");
    entry.Refuses(SampleLines(Beg, End, Breadth, Src, Smallest, Interpolate));
}

void Profile::LineRange(const XY& Beg, const XY& End, int Breadth, const Image& Src, bool Interpolate)
{
    const Entry entry("Tesk::Profile::LineRange");
    entry.Refuses(SampleLines(Beg, End, Breadth, Src, Spread, Interpolate));
}

int Profile::SampleCurve(const Path& pathway, const Image& src)
{
    if (const int code = CheckSource(src)) return code;
    if (pathway.Length < 1) return Status::Format(VoidObject, L"This path is void");
    return Allocating([&] {
        const Site* sites = pathway.Sites();
        ProfileSource source = SourceIn(src, ProfileSource::OfCurve, NoHandle, 0);
        source.Curve = std::make_shared<const std::vector<Site>>(sites, sites + pathway.Length);
        return SampleBand(src, pathway.Length, source, Single, [&](int, std::int32_t* out) {
            ByPixel(src.Type, [&]<typename T>(T*) {
                for (int i = 0; i < pathway.Length; i++, out += Channels(src.Type))
                    Put(src.Row<T>(Clamp<int>(sites[i].Y, 0, src.Height - 1))[Clamp<int>(sites[i].X, 0, src.Width - 1)],
                        out);
            });
        });
    });
}

void Profile::CurveGet(const Path& Pathway, const Image& Src)
{
    const Entry entry("Tesk::Profile::CurveGet");
    entry.Refuses(SampleCurve(Pathway, Src));
}

} // namespace Tesk
