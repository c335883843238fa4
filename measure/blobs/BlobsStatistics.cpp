// What the values of a feature amount to over a set of blobs.
#include "measure/blobs/BlobsFrame.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Tesk {

using namespace blobs;

namespace {

using Values = std::vector<double>;

/// The middle of the half of the sorted values that lie closest, of the half of these, and so on.
double HalfSampleMode(Values& values)
{
    std::sort(values.begin(), values.end());
    std::size_t first = 0, n = values.size();
    while (n > 2) {
        const std::size_t half = (n + 1) >> 1;
        std::size_t best = first;
        for (std::size_t i = first; i + half <= first + n; i++)
            if (values[i + half - 1] - values[i] < values[best + half - 1] - values[best]) best = i;
        first = best;
        n = half;
    }
    return n == 1 ? values[first] : (values[first] + values[first + 1]) / 2;
}

double Sum(const Values& values)
{
    double sum = 0;
    for (const double v : values)
        sum += v;
    return sum;
}

double SumOfProducts(const Values& a, const Values& b)
{
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); i++)
        sum += a[i] * b[i];
    return sum;
}

} // namespace

int Blobs::TryCollect(std::initializer_list<int> features, const Image& src, int index, bool setsOnly,
                      std::vector<double>* values, std::vector<int>* positions)
{
    const bool isSet = index == All || index == AllSelected || index == AllDeselected;
    if (!isSet && setsOnly) return Status::Format(OutOfRange, L"Use one of All, AllSelected or AllDeselected");
    int begin = 0, end = 0;
    if (isSet) {
        for (const int feature : features)
            if (const int code = TryProvide(feature, src, index)) return code;
        if (const int code = RangeOf(index, begin, end)) return code;
    }
    return WithMemory(noTable, [&]() -> int {
        for (int position = begin; position < end; position++) {
            const int row = Order[position];
            const bool all = std::all_of(features.begin(), features.end(), [&](int feature) {
                return std::memcmp(FeatureCell(row, feature), &notComputed, sizeof notComputed) != 0;
            });
            if (!all) continue;
            std::vector<double>* to = values;
            for (const int feature : features)
                (to++)->push_back(Measured(row, feature));
            if (positions) positions->push_back(position);
        }
        return values->empty() ? Status::Format(OutOfRange, L"No blob is available") : int(NoError);
    });
}

double Blobs::Measured(int row, int feature) const
{
    const std::uint8_t* cell = FeatureCell(row, feature);
    if (Type(feature) == Float) {
        float real;
        std::memcpy(&real, cell, sizeof real);
        return real;
    }
    std::int32_t whole;
    std::memcpy(&whole, cell, sizeof whole);
    return whole;
}

template <typename F>
double Blobs::Summarize(const char* context, int feature, const Image& src, int index, bool setsOnly, F f)
{
    const Entry entry(context);
    Values values;
    return entry.Refuses(TryCollect({feature}, src, index, setsOnly, &values, nullptr)) ? 0.0 : f(values);
}

double Blobs::FeatureAverage(enum Features Feature, const Image& Src, int Index, bool Average)
{
    return Summarize("Tesk::Blobs::FeatureAverage", Feature, Src, Index, true, [Average](const Values& values) {
        return Average ? Sum(values) / static_cast<double>(values.size()) : Sum(values);
    });
}

double Blobs::FeatureDeviation(enum Features Feature, const Image& Src, int Index)
{
    return Summarize("Tesk::Blobs::FeatureDeviation", Feature, Src, Index, true, [](const Values& values) {
        const auto n = static_cast<double>(values.size());
        const double sum = Sum(values);
        return std::sqrt(Max(n * SumOfProducts(values, values) - sum * sum, 0.0)) / n;
    });
}

double Blobs::FeatureMinimum(enum Features Feature, const Image& Src, int Index)
{
    return Summarize("Tesk::Blobs::FeatureMinimum", Feature, Src, Index, false,
                     [](const Values& values) { return *std::min_element(values.begin(), values.end()); });
}

double Blobs::FeatureMaximum(enum Features Feature, const Image& Src, int Index)
{
    return Summarize("Tesk::Blobs::FeatureMaximum", Feature, Src, Index, false,
                     [](const Values& values) { return *std::max_element(values.begin(), values.end()); });
}

double Blobs::FeatureQuantile(enum Features Feature, const Image& Src, double Percent, int Index)
{
    return Summarize("Tesk::Blobs::FeatureQuantile", Feature, Src, Index, true, [Percent](Values& values) {
        const auto n = static_cast<double>(values.size());
        const double rank = n * Percent - 0.5;
        const auto k = rank > 0 ? static_cast<std::ptrdiff_t>(Min(rank, n - 1)) : 0;
        std::nth_element(values.begin(), values.begin() + k, values.end());
        return values[static_cast<std::size_t>(k)];
    });
}

double Blobs::FeatureMode(enum Features Feature, const Image& Src, int Index)
{
    return Summarize("Tesk::Blobs::FeatureMode", Feature, Src, Index, true, HalfSampleMode);
}

double Blobs::FeatureCovariance(enum Features Feature, enum Features FeatureB, double& Correlation, const Image& Src,
                                int Index)
{
    const Entry entry("Tesk::Blobs::FeatureCovariance");
    Values values[2];
    if (entry.Refuses(TryCollect({Feature, FeatureB}, Src, Index, true, values, nullptr))) return 0;
    const auto& [x, y] = values;
    const auto n = static_cast<double>(x.size());
    const double sx = Sum(x), sy = Sum(y), xy = SumOfProducts(x, y);
    const double radicand = (n * SumOfProducts(y, y) - sy * sy) * (n * SumOfProducts(x, x) - sx * sx);
    Correlation = radicand > 0 ? (n * xy - sx * sy) / std::sqrt(radicand) : 0;
    return xy - sx * sy / n;
}

int Blobs::ExtremeIndex(const char* context, int feature, const Image& src, int index, bool largest)
{
    const Entry entry(context);
    Values values;
    std::vector<int> positions;
    if (entry.Refuses(TryCollect({feature}, src, index, false, &values, &positions))) return 0;
    const auto found =
        largest ? std::max_element(values.begin(), values.end()) : std::min_element(values.begin(), values.end());
    return positions[static_cast<std::size_t>(found - values.begin())];
}

int Blobs::FeatureMinimumIndex(enum Features Feature, const Image& Src, int Index)
{
    return ExtremeIndex("Tesk::Blobs::FeatureMinimumIndex", Feature, Src, Index, false);
}

int Blobs::FeatureMaximumIndex(enum Features Feature, const Image& Src, int Index)
{
    return ExtremeIndex("Tesk::Blobs::FeatureMaximumIndex", Feature, Src, Index, true);
}

} // namespace Tesk
