// Filling the pixels around a seed that have much the same gray value.
#include "foundation/Entry.h"
#include "image/Image.h"
#include "measure/Region.h"
#include "measure/region/RegionFrame.h"
#include "measure/region/RunScanner.h"

#include <algorithm>
#include <cstring>

namespace Tesk {

using namespace regions;

namespace {

/// Spreads over runs of pixels that qualify. A row is scanned once, when it is first reached, and a run is taken once,
/// so that what waits is bounded by the number of runs, and nothing is written before all is known.
class Flood
{
public:
    Flood(const Image& src, Band band, int reach)
        : scan_{src, band}, width_(src.Width), reach_(reach), rows_(static_cast<std::size_t>(int(src.Height))),
          edges_(static_cast<std::size_t>(width_) + 1 + kernels::edgeSlack)
    {}

    void Spread(int x, int y)
    {
        Take(x, x + 1, y);
        while (!waiting_.empty()) {
            const Span span = waiting_.back();
            waiting_.pop_back();
            Take(span.start - reach_, span.end + reach_, span.y - 1);
            Take(span.start - reach_, span.end + reach_, span.y + 1);
        }
    }

    void Fill(GrayPixel value, Image& dst) const
    {
        for (std::size_t y = 0; y < rows_.size(); y++)
            for (std::size_t i = rows_[y].first; i < rows_[y].last; i++)
                if (const Run& run = runs_[i]; run.taken)
                    std::memset(dst.Row(static_cast<int>(y)) + run.start, value,
                                static_cast<std::size_t>(run.end - run.start));
    }

private:
    struct Run
    {
        int start, end;
        bool taken;
    };
    struct Span
    {
        int start, end, y;
    };
    struct Row
    {
        std::size_t first = 0, last = 0;
        bool scanned = false;
    };

    /// Takes all runs of a row that have a pixel from `start` to `end - 1`.
    void Take(int start, int end, int y)
    {
        if (y < 0 || y >= static_cast<int>(rows_.size())) return;
        Row& row = rows_[static_cast<std::size_t>(y)];
        if (!row.scanned) Scan(y, row);
        const auto begin = runs_.begin() + static_cast<std::ptrdiff_t>(row.first),
                   behind = runs_.begin() + static_cast<std::ptrdiff_t>(row.last);
        for (auto run = std::partition_point(begin, behind, [start](const Run& r) { return r.end <= start; });
             run != behind && run->start < end; ++run)
            if (!run->taken) {
                run->taken = true;
                waiting_.push_back({run->start, run->end, y});
            }
    }

    void Scan(int y, Row& row)
    {
        const std::size_t count = scan_(0, y, static_cast<std::size_t>(width_), edges_.data());
        row.first = runs_.size();
        for (std::size_t i = 0; i < count; i += 2)
            runs_.push_back({edges_[i], edges_[i + 1], false});
        row.last = runs_.size();
        row.scanned = true;
    }

    BandScanner scan_;
    int width_, reach_;
    std::vector<Row> rows_;
    std::vector<std::int32_t> edges_;
    std::vector<Run> runs_;
    std::vector<Span> waiting_;
};

int CheckSeed(Site seed, GrayPixel value, const Image& src)
{
    if (const int code = CheckImage(src)) return code;
    if (src.Type != Gray) return RefuseType(src.Type, L"Gray");
    if (seed.X < 0 || seed.X >= src.Width || seed.Y < 0 || seed.Y >= src.Height)
        return Status::Format(OutOfRange,
                              L"The seed point (%d, %d) lies outside the image boundaries [0..%d] x [0..%d]", seed.X,
                              seed.Y, src.Width - 1, src.Height - 1);
    if (src.Row(seed.Y)[seed.X] == value)
        return Status::Format(OutOfRange, L"The fill value (%d) must differ from the seed pixel value", value);
    return NoError;
}

} // namespace

void Region::SeedFill(const Site& Seed, GrayPixel Value, Image& Src, bool Connexity8, int Tolerance)
{
    const Entry entry("Tesk::Region::SeedFill");
    if (entry.Refuses(CheckSeed(Seed, Value, Src))) return;
    if (Tolerance < 0) return;
    entry.Guards(noRuns, [&] {
        const int reference = Src.Row(Seed.Y)[Seed.X], tolerance = Min(Tolerance, 255);
        const Band band{static_cast<GrayPixel>(Max(reference - tolerance, 0)),
                        static_cast<GrayPixel>(Min(reference + tolerance, 255)), true};
        Flood flood(Src, band, Connexity8 ? 1 : 0);
        flood.Spread(Seed.X, Seed.Y);
        Src.DetachIfShared(true);
        flood.Fill(Value, Src);
    });
}

} // namespace Tesk
