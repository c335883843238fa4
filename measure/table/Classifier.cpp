// The training of classifiers: checks, means and covariances, what was learned.
#include "measure/Classifier.h"

#include "foundation/Entry.h"
#include "measure/table/TableFrame.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <utility>

namespace Tesk {

using namespace tables;

namespace {

/// A variance of 0 counts as this part of another one.
constexpr double leastVariance = 1e-12;
/// Numbers of all covariances together; more is no classifier but a mistake.
constexpr std::int64_t mostNumbers = std::int64_t{1} << 26;

bool IsNumber(int type)
{
    return type == Gray || type == Gray16 || type == Int || type == Float || type == Dble || type == Bool;
}

template <typename T>
double ReadAs(const std::uint8_t* cell)
{
    T value;
    std::memcpy(&value, cell, sizeof value);
    return static_cast<double>(value);
}

/// The inverse of a covariance, by its factor L L^T (Cholesky). A pivot that is not above rounding is one of the least
/// variances, so that there is always an inverse.
void Invert(const std::vector<double>& covariance, const std::vector<double>& floors, std::vector<double>& inverse)
{
    const std::size_t n = floors.size();
    std::vector<double> factor(n * n), column(n);
    const auto l = [&](std::size_t i, std::size_t j) -> double& { return factor[i * n + j]; };
    for (std::size_t j = 0; j < n; j++)
        for (std::size_t i = j; i < n; i++) {
            double sum = covariance[i * n + j];
            for (std::size_t k = 0; k < j; k++)
                sum -= l(i, k) * l(j, k);
            if (i == j)
                l(j, j) = std::sqrt(sum > floors[j] ? sum : floors[j]);
            else
                l(i, j) = sum / l(j, j);
        }
    for (std::size_t unit = 0; unit < n; unit++) {
        for (std::size_t i = 0; i < n; i++) {
            double sum = i == unit ? 1 : 0;
            for (std::size_t k = 0; k < i; k++)
                sum -= l(i, k) * column[k];
            column[i] = sum / l(i, i);
        }
        for (std::size_t i = n; i-- > 0;) {
            double sum = column[i];
            for (std::size_t k = i + 1; k < n; k++)
                sum -= l(k, i) * column[k];
            column[i] = sum / l(i, i);
        }
        for (std::size_t i = unit; i < n; i++)
            inverse[i * n + unit] = column[i];
    }
}

} // namespace

double Classifier::Value(int row, int column) const
{
    const std::uint8_t* cell = Cell(column, row);
    switch (Record(column).Type) {
    case Gray:
    case Bool:
        return ReadAs<std::uint8_t>(cell);
    case Gray16:
        return ReadAs<std::uint16_t>(cell);
    case Int:
        return ReadAs<std::int32_t>(cell);
    case Float:
        return ReadAs<float>(cell);
    default:
        return ReadAs<double>(cell);
    }
}

int Classifier::CheckClass(int classFeature, int sample, int numClasses) const
{
    const int value = static_cast<int>(Value(sample, classFeature));
    if (value >= 0 && value < numClasses) return NoError;
    return Status::Format(OutOfRange, L"The class value (%d) of the sample (%d) must be in range [0..%d]", value,
                          sample, numClasses - 1);
}

int Classifier::CheckColumns(int count, const int* features) const
{
    if (count < 1 || !features)
        return Status::Format(OutOfRange, L"The number of features (%d) must be positive", count);
    for (int i = 0; i < count; i++)
        if (const int code = CheckFeature(features[i])) return code;
    return NoError;
}

int Classifier::CheckTypes(int count, const int* features) const
{
    for (int i = 0; i < count; i++)
        if (const int type = Record(features[i]).Type; !IsNumber(type))
            return Status::Format(OutOfRange, L"The feature type (%ls) at index (%d) is not supported", TypeName(type),
                                  features[i]);
    return NoError;
}

int Classifier::CheckClasses(int classFeature, int numClasses) const
{
    if (classFeature < -FirstFeature || classFeature >= NumFeatures)
        return Status::Format(OutOfRange, L"The class index (%d) must be in range [0..%d]", classFeature,
                              NumFeatures - 1);
    if (const int type = Record(classFeature).Type; type != Int)
        return Status::Format(OutOfRange, L"The class feature must be of type Int, not %ls", TypeName(type));
    if (NumSamples < 1) return Status::Format(OutOfRange, L"No sample has been appended yet");
    for (int row = 0; row < NumSamples; row++)
        if (const int code = CheckClass(classFeature, row, numClasses)) return code;
    return NoError;
}

int Classifier::ReadFeatures(const std::vector<int>& columns, std::vector<double>& values) const
{
    values.reserve(columns.size() * static_cast<std::size_t>(int(NumSamples)));
    for (int row = 0; row < NumSamples; row++)
        for (const int column : columns) {
            const double value = Value(row, column);
            if (!(std::abs(value) <= farthestFeature))
                return Status::Format(OutOfRange, L"The value of the feature (%d) of the sample (%d) is not finite",
                                      column, row);
            values.push_back(value);
        }
    return NoError;
}

/// Mean, covariance, weights and inverse over some rows.
void Classifier::Describe(Group& group, const std::vector<double>& values, const std::vector<int>& rows) const
{
    const std::size_t n = group.Mean.size();
    group.Count = static_cast<int>(rows.size());
    if (rows.empty()) return;
    const double count = group.Count;
    const auto value = [&](int row, std::size_t i) { return values[static_cast<std::size_t>(row) * n + i]; };
    // About the first row, so that the variance of a constant is 0.
    std::vector<double> sums(n), difference(n), floors(n);
    for (const int row : rows) {
        for (std::size_t i = 0; i < n; i++) {
            difference[i] = value(row, i) - value(rows[0], i);
            sums[i] += difference[i];
        }
        for (std::size_t i = 0; i < n; i++)
            for (std::size_t j = 0; j <= i; j++)
                group.Covariance[i * n + j] += difference[i] * difference[j];
    }
    double largest = 0;
    for (std::size_t i = 0; i < n; i++) {
        group.Mean[i] = value(rows[0], i) + sums[i] / count;
        for (std::size_t j = 0; j <= i; j++) {
            double& c = group.Covariance[i * n + j];
            c = c / count - sums[i] / count * (sums[j] / count);
            group.Covariance[j * n + i] = c;
        }
        group.Covariance[i * n + i] = Max(0.0, group.Covariance[i * n + i]);
        largest = Max(largest, group.Covariance[i * n + i]);
    }
    for (std::size_t i = 0; i < n; i++) {
        const double variance = group.Covariance[i * n + i];
        floors[i] = variance > 0 ? leastVariance * variance : largest > 0 ? leastVariance * largest : 1;
        if (!(floors[i] > 0)) floors[i] = largest;
        group.Weights[i] = 1 / (variance > 0 ? variance : floors[i]);
    }
    Invert(group.Covariance, floors, group.Inverse);
}

void Classifier::Learn(int kind, std::vector<int>&& columns, int classFeature, std::vector<double>&& values,
                       std::vector<Group>&& groups)
{
    classes_.resize(static_cast<std::size_t>(int(NumSamples)));
    for (int row = 0; row < NumSamples; row++)
        classes_[static_cast<std::size_t>(row)] = static_cast<int>(Value(row, classFeature));
    featureList_ = std::move(columns);
    values_ = std::move(values);
    groups_ = std::move(groups);
    ClassFeature = classFeature;
    NumUsed = static_cast<int>(featureList_.size());
    NumTrained = int(NumSamples);
    Trained = kind;
    tree_.clear();
}

void Classifier::TrainClusters(int NumFeatures, const int* Features, int ClassFeature, int NumClasses)
{
    const Entry entry("Tesk::Classifier::TrainClusters");
    if (entry.Refuses(CheckClasses(ClassFeature, NumClasses)) || entry.Refuses(CheckColumns(NumFeatures, Features)) ||
        entry.Refuses(CheckTypes(NumFeatures, Features)))
        return;
    entry.Refuses(WithMemory(noMemory, [&] {
        const std::int64_t numbers = std::int64_t{NumFeatures} * NumFeatures;
        if (numbers > mostNumbers / NumClasses) return Status::Format(CannotAllocate, noMemory);
        std::vector<int> columns(Features, Features + NumFeatures);
        std::vector<double> values;
        if (const int code = ReadFeatures(columns, values)) return code;
        std::vector<std::vector<int>> rows(static_cast<std::size_t>(NumClasses));
        for (int row = 0; row < NumSamples; row++)
            rows[static_cast<std::size_t>(Value(row, ClassFeature))].push_back(row);
        Group empty;
        empty.Mean.resize(columns.size());
        empty.Weights = empty.Mean;
        empty.Covariance.resize(columns.size() * columns.size());
        empty.Inverse = empty.Covariance;
        std::vector<Group> groups(rows.size(), empty);
        for (std::size_t i = 0; i < rows.size(); i++)
            Describe(groups[i], values, rows[i]);
        this->NumClasses = NumClasses;
        Learn(2, std::move(columns), ClassFeature, std::move(values), std::move(groups));
        return int(NoError);
    }));
}

void Classifier::TrainNeighbors(int NumFeatures, const int* Features, int ClassFeature)
{
    const Entry entry("Tesk::Classifier::TrainNeighbors");
    if (FirstFeature + this->NumFeatures < 1) {
        entry.Refuse(VoidObject, L"No feature has been appended yet");
        return;
    }
    if (entry.Refuses(CheckColumns(NumFeatures, Features)) || entry.Refuses(CheckClasses(ClassFeature, NumClasses)) ||
        entry.Refuses(CheckTypes(NumFeatures, Features)))
        return;
    entry.Refuses(WithMemory(noMemory, [&] {
        if (std::int64_t{NumFeatures} * NumFeatures > mostNumbers) return Status::Format(CannotAllocate, noMemory);
        std::vector<int> columns(Features, Features + NumFeatures), rows(static_cast<std::size_t>(int(NumSamples)));
        std::iota(rows.begin(), rows.end(), 0);
        std::vector<double> values;
        if (const int code = ReadFeatures(columns, values)) return code;
        std::vector<Group> groups(1);
        groups[0].Mean.resize(columns.size());
        groups[0].Weights = groups[0].Mean;
        groups[0].Covariance.resize(columns.size() * columns.size());
        groups[0].Inverse = groups[0].Covariance;
        Describe(groups[0], values, rows);
        Learn(1, std::move(columns), ClassFeature, std::move(values), std::move(groups));
        tree_ = std::move(rows);
        Build(0, 0, tree_.size());
        return int(NoError);
    }));
}

void Classifier::SamplesReplaced()
{
    Trained = 0;
    NumTrained = 0;
    TableStore::SamplesReplaced();
}

const Classifier::Group* Classifier::GroupOf(int index) const
{
    return index >= 0 && static_cast<std::size_t>(index) < groups_.size() ? &groups_[static_cast<std::size_t>(index)]
                                                                          : nullptr;
}

int Classifier::ClassCount(int Class) const
{
    const Group* group = GroupOf(Class);
    return group ? group->Count : 0;
}

double Classifier::Mean(int Class, int Feature) const
{
    const Group* group = GroupOf(Class);
    return group && Feature >= 0 && Feature < NumUsed ? group->Mean[static_cast<std::size_t>(Feature)] : 0;
}

double Classifier::Weight(int Class, int Feature) const
{
    const Group* group = GroupOf(Class);
    return group && Feature >= 0 && Feature < NumUsed ? group->Weights[static_cast<std::size_t>(Feature)] : 0;
}

double Classifier::Covariance(int Class, int Row, int Column) const
{
    const Group* group = GroupOf(Class);
    if (!group || Row < 0 || Row >= NumUsed || Column < 0 || Column >= NumUsed) return 0;
    return group->Covariance[static_cast<std::size_t>(Row) * featureList_.size() + static_cast<std::size_t>(Column)];
}

} // namespace Tesk
