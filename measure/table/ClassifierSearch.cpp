// What a classifier finds: distances, nearest clusters, nearest samples by the tree and by looking at all.
#include "measure/Classifier.h"

#include "foundation/Entry.h"
#include "measure/table/TableFrame.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace Tesk {

using namespace tables;

/// The nearest samples found so far, in ascending order of distance.
class Classifier::Best
{
public:
    /// The `k` nearest, or with 0 the single nearest.
    explicit Best(int k) : count_(k > 0 ? static_cast<std::size_t>(k) : 1), single_(k == 0) {}

    /// The squared distance beyond which nothing is taken any more.
    double Limit() const
    {
        return nearest_.size() < count_ ? std::numeric_limits<double>::infinity() : nearest_.back().Squared;
    }

    void Offer(int row, double squared)
    {
        if (nearest_.size() == count_) {
            // The single nearest is the first of equals; into a list, the latest of equals comes.
            if (squared > nearest_.back().Squared || (single_ && squared == nearest_.back().Squared)) return;
            nearest_.pop_back();
        }
        const auto place = std::upper_bound(nearest_.begin(), nearest_.end(), squared,
                                            [](double value, const Neighbor& n) { return value < n.Squared; });
        nearest_.insert(place, {row, squared});
    }

    const std::vector<Neighbor>& Nearest() const { return nearest_; }

private:
    std::size_t count_;
    bool single_;
    std::vector<Neighbor> nearest_;
};

double Classifier::Squared(const double* a, const double* b, const Group& group, int metric) const
{
    const std::size_t n = featureList_.size();
    double sum = 0;
    for (std::size_t i = 0; i < n; i++) {
        const double d = a[i] - b[i];
        if (metric != MahalanobisDistance) {
            sum += metric == ScaledDistance ? group.Weights[i] * d * d : d * d;
            continue;
        }
        const double* row = group.Inverse.data() + i * n;
        double mixed = 0;
        for (std::size_t j = 0; j < i; j++)
            mixed += row[j] * (a[j] - b[j]);
        sum += d * (row[i] * d + 2 * mixed);
    }
    // Rounding may lead below 0, and sums of huge terms to no number.
    constexpr double largest = std::numeric_limits<double>::max();
    return sum <= largest ? Max(0.0, sum) : largest;
}

/// Checks a row, counts it from 0, and reads its features.
int Classifier::CheckQuery(int& sample, std::vector<double>& query) const
{
    if (NumSamples < 1) return Status::Format(OutOfRange, L"No sample has been appended yet");
    if (sample < -NumSamples || sample >= NumSamples)
        return Status::Format(OutOfRange, L"The sample index (%d) must be in range [%d..%d]", sample, -NumSamples,
                              NumSamples - 1);
    if (sample < 0) sample += NumSamples;
    for (const int column : featureList_) {
        if (const int code = CheckFeature(column)) return code;
        const double value = Value(sample, column);
        if (!(std::abs(value) <= farthestFeature))
            return Status::Format(OutOfRange, L"The value of the feature (%d) of the sample (%d) is not finite", column,
                                  sample);
        query.push_back(value);
    }
    return NoError;
}

int Classifier::NearestCenter(double& Distance, int Sample) const
{
    const Entry entry("Tesk::Classifier::NearestCenter");
    return FindCluster(entry, StraightDistance, Distance, Sample);
}

int Classifier::NearestCluster(double& Distance, int Sample) const
{
    const Entry entry("Tesk::Classifier::NearestCluster");
    return FindCluster(entry, Metric, Distance, Sample);
}

int Classifier::FindCluster(const Entry& entry, int metric, double& distance, int sample) const
{
    constexpr int clusters = 2;
    int found = -1;
    const bool refused = entry.Refuses(WithMemory(noMemory, [&] {
        if (Trained != clusters) return Status::Format(VoidObject, L"cluster training has not been performed yet");
        std::vector<double> query;
        if (const int code = CheckQuery(sample, query)) return code;
        double nearest = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < groups_.size(); i++) {
            // The mean of a class without samples is there, at 0; it has no spread to measure by.
            if (groups_[i].Count < 1 && metric != StraightDistance) continue;
            const double squared = Squared(query.data(), groups_[i].Mean.data(), groups_[i], metric);
            if (squared >= nearest) continue;
            nearest = squared;
            found = static_cast<int>(i);
        }
        distance = std::sqrt(nearest);
        return int(NoError);
    }));
    return refused ? -1 : found;
}

int Classifier::CheckNeighbors(int k, bool throughTree) const
{
    constexpr int neighbors = 1;
    if (!throughTree && Trained == 0) return Status::Format(OutOfRange, L"No training has been performed yet");
    if (Trained != neighbors)
        return Status::Format(OutOfRange, throughTree ? L"neigbor training has not been performed yet"
                                                      : L"Neigbor training has not been performed yet");
    if (throughTree && Metric == MahalanobisDistance)
        return Status::Format(
            OutOfRange, L"The Mahalanobis distance is not supported; use the SlowNearestNeighbor function instead");
    if (k < 0 || (k > 0 && k >= NumTrained))
        return Status::Format(OutOfRange, L"The K value (%d) exceeds the number of trained samples [%d]", k,
                              int(NumTrained));
    return NoError;
}

/// The k-d tree, implicit in the order of the rows: the middle one of a range divides it.
void Classifier::Build(std::size_t d, std::size_t low, std::size_t high)
{
    constexpr std::size_t leaf = 3;
    const std::size_t middle = (low + high) / 2;
    const auto at = [&](std::size_t i) { return tree_.begin() + static_cast<std::ptrdiff_t>(i); };
    std::nth_element(at(low), at(middle), at(high), [&](int a, int b) { return Sample(a)[d] < Sample(b)[d]; });
    if (high - low < leaf) return;
    const std::size_t next = (d + 1) % featureList_.size();
    Build(next, low, middle);
    Build(next, middle + 1, high);
}

void Classifier::Search(std::size_t d, std::size_t low, std::size_t high, const double* query, Best& best) const
{
    if (low >= high) return;
    const std::size_t middle = (low + high) / 2, next = (d + 1) % featureList_.size();
    const int row = tree_[middle];
    best.Offer(row, Squared(Sample(row), query, groups_[0], Metric));
    const double difference = Sample(row)[d] - query[d];
    const double weight = Metric == ScaledDistance ? groups_[0].Weights[d] : 1;
    const bool before = difference >= 0;
    Search(next, before ? low : middle + 1, before ? middle : high, query, best);
    // What lies beyond the dividing plane is at least as far as the plane.
    if (best.Limit() >= weight * difference * difference)
        Search(next, before ? middle + 1 : low, before ? high : middle, query, best);
}

/// The class of most of the nearest samples; of equals the one with the nearest of them.
int Classifier::Vote(const std::vector<Neighbor>& nearest, int& index, double& distance) const
{
    struct Party
    {
        int group, votes;
        Neighbor first;
    };
    std::vector<Party> parties;
    for (const Neighbor& neighbor : nearest) {
        const int group = classes_[static_cast<std::size_t>(neighbor.Row)];
        const auto party =
            std::find_if(parties.begin(), parties.end(), [&](const Party& p) { return p.group == group; });
        if (party == parties.end())
            parties.push_back({group, 1, neighbor});
        else
            party->votes++;
    }
    // They stand in the order of their nearest samples, so that the first of equals is the nearer one.
    const auto winner = std::max_element(parties.begin(), parties.end(),
                                         [](const Party& a, const Party& b) { return a.votes < b.votes; });
    index = winner->first.Row;
    distance = std::sqrt(winner->first.Squared);
    return winner->group;
}

/// The inner form of all searches among samples.
int Classifier::Find(bool throughTree, int k, int sample, int& index, double& distance, int& found) const
{
    if (const int code = CheckNeighbors(k, throughTree)) return code;
    return WithMemory(noMemory, [&] {
        std::vector<double> query;
        if (const int code = CheckQuery(sample, query)) return code;
        Best best(k);
        if (throughTree)
            Search(0, 0, tree_.size(), query.data(), best);
        else
            for (int row = 0; row < NumTrained; row++)
                best.Offer(row, Squared(this->Sample(row), query.data(), groups_[0], Metric));
        found = Vote(best.Nearest(), index, distance);
        return int(NoError);
    });
}

int Classifier::Report(const Entry& entry, bool throughTree, int k, int& index, double& distance, int sample) const
{
    int found = -1;
    return entry.Refuses(Find(throughTree, k, sample, index, distance, found)) ? -1 : found;
}

int Classifier::NearestNeighbor(int& Index, double& Distance, int Sample) const
{
    return Report(Entry("Tesk::Classifier::NearestNeighbor"), true, 0, Index, Distance, Sample);
}

int Classifier::NearestNeighbors(int K, int& Index, double& Distance, int Sample) const
{
    return Report(Entry("Tesk::Classifier::NearestNeighbors"), true, K, Index, Distance, Sample);
}

int Classifier::SlowNearestNeighbor(int& Index, double& Distance, int Sample) const
{
    return Report(Entry("Tesk::Classifier::SlowNearestNeighbor"), false, 0, Index, Distance, Sample);
}

int Classifier::SlowNearestNeighbors(int K, int& Index, double& Distance, int Sample) const
{
    return Report(Entry("Tesk::Classifier::SlowNearestNeighbors"), false, K, Index, Distance, Sample);
}

int Classifier::CrossValidateNeighbors(int K, int First, int Count) const
{
    const Entry entry("Tesk::Classifier::CrossValidateNeighbors");
    if (entry.Refuses(CheckNeighbors(K, true))) return 0;
    if (First < 0 || First >= NumSamples) {
        entry.Refuse(OutOfRange, L"The sample index (%d) must be in range [%d..%d]", First, 0, NumSamples - 1);
        return 0;
    }
    if (Count < 0 || Count > NumSamples - First) {
        entry.Refuse(OutOfRange, L"The number of samples (%d) exceeds the available count [%d]", Count,
                     NumSamples - First);
        return 0;
    }
    int right = 0;
    for (int row = First; row < First + Count; row++) {
        int index = 0, found = -1;
        double distance = 0;
        if (entry.Refuses(Find(true, K, row, index, distance, found))) return 0;
        if (found == static_cast<int>(Value(row, ClassFeature))) right++;
    }
    return right;
}

} // namespace Tesk
