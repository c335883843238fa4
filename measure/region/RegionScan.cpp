// Regions by thresholds.
#include "measure/Region.h"

#include "foundation/Entry.h"
#include "image/Image.h"
#include "image/histogram/LevelCounts.h"
#include "measure/region/RegionFrame.h"
#include "measure/region/RunScanner.h"

#include <typeinfo>

namespace Tesk {

using namespace regions;

namespace {

int CheckSource(const Image& src, bool takesBits)
{
    if (const int code = CheckImage(src)) return code;
    if (src.Type != Gray && !(takesBits && src.Type == Gray1)) return RefuseType(src.Type, L"Gray");
    return CheckReach(src);
}

} // namespace

/// Takes the runs of all rows. A class that takes runs in its own way is fed through its virtual methods.
template <typename Scanner>
void Region::Scan(const Entry& entry, const Image& src, const Scanner& scanner)
{
    const bool done = entry.Guards(noRuns, [&] {
        std::vector<LabeledRun>& runs = RewriteRuns();
        Sorted = true;
        if (typeid(*this) == typeid(Region))
            ScanWindow(src, scanner, [&runs](const ScannedRow& row) {
                const std::size_t first = runs.size();
                runs.resize(first + row.Runs());
                LabeledRun* run = runs.data() + first;
                for (std::size_t i = 0; i < row.Runs(); i++)
                    run[i] = MakeRun(row.Start(i), row.End(i), row.y);
            });
        else
            ScanWindow(src, scanner, [this](const ScannedRow& row) {
                for (std::size_t i = 0; i < row.Runs(); i++)
                    AddRun(row.Start(i), row.End(i), row.y);
                EndRow();
            });
    });
    if (!done) WriteRuns().clear();
    CountRuns();
}

int Region::Binarize(int Threshold, const Image& Src, bool Above, int)
{
    const Entry entry("Tesk::Region::Binarize");
    if (entry.Refuses(CheckSource(Src, false))) return 0;
    const int threshold = Threshold == Auto || Threshold == MinInt ? levels::BestSplit(Src).threshold : Threshold;
    Scan(entry, Src, BandScanner{Src, Band::Above(threshold, Above)});
    return threshold;
}

void Region::Binarize(GrayPixel Background, GrayPixel Foreground, const Image& Src, bool Above, int)
{
    const Entry entry("Tesk::Region::Binarize");
    if (entry.Refuses(CheckSource(Src, false))) return;
    Scan(entry, Src, BandScanner{Src, Band::Above((Background + Foreground) >> 1, Above)});
}

int Region::Binarize(const Image& Src, bool Above)
{
    const Entry entry("Tesk::Region::Binarize");
    if (entry.Refuses(CheckSource(Src, true))) return 0;
    if (Src.Type == Gray1) {
        Scan(entry, Src, BitScanner{Src});
        return 0;
    }
    const int threshold = levels::BestSplit(Src).threshold;
    Scan(entry, Src, BandScanner{Src, Band::Above(threshold, Above)});
    return threshold;
}

} // namespace Tesk
