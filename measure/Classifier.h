// A statistical classifier over the rows of a table.
#pragma once

#include "foundation/ReadOnly.h"
#include "measure/TableStore.h"

#include <cstddef>
#include <vector>

namespace Tesk {

class Entry;

/// Each row of the table is a sample, a column of type `Int` holds its class, from 0 on, and other columns are its
/// features. It learns the class of a sample either from clusters (the mean and the covariance of each class) or from
/// neighbours (a k-d tree of the samples; Bentley 1975). Rows that are appended later can be classified by what was
/// learned; reading another table forgets it.
///
///     Classifier classifier;
///     classifier.Read("parts.tbl");                      // columns: class, width, height
///     const int features[] = {1, 2};
///     classifier.TrainClusters(2, features, 0, 3);
///     classifier.Metric = MahalanobisDistance;
///     double distance;
///     const int found = classifier.NearestCluster(distance, -1);  // the class of the last row
///
/// Numbers beyond 1e100 and such that are none are refused (`OutOfRange`) in features. No distance is ever undefined: a
/// direction in which a class or the whole of the samples has no spread counts as if its variance were 1e-12 of that of
/// the column, else of the largest variance of the columns, else 1. The mean of a class without samples is at 0, where
/// the straight distance finds it; under the other metrics such a class is never chosen. Results of refused calls stay
/// as they were, and the class is -1.
class Classifier : public TableStore
{
    template <typename T>
    using Field = ReadOnly<T, Classifier>;

public:
    Field<int> Trained;            ///< 0 none, 1 neighbours, 2 clusters
    int Metric = StraightDistance; ///< a `Metrics` value; may be changed at any time
    int NumClasses = 0;            ///< to be set before `TrainNeighbors`; set by `TrainClusters`
    Field<int> ClassFeature = -1;  ///< the column of the class
    Field<int> NumUsed;            ///< number of feature columns
    Field<int> NumTrained;         ///< samples seen by the training

    /// Means and covariances of the classes 0 to `NumClasses` - 1 over the columns `Features`, of type `Gray`,
    /// `Gray16`, `Int`, `Float`, `Dble` or `Bool`. Refused, leaving what was learned: no rows, no features, a column
    /// that there is not or of another type, a class out of range (`OutOfRange`), no memory (`CannotAllocate`).
    void TrainClusters(int NumFeatures, const int* Features, int ClassFeature, int NumClasses);
    /// The tree of all samples, and their mean and covariance as one group. Refused as `TrainClusters`, and a table
    /// without columns (`VoidObject`).
    void TrainNeighbors(int NumFeatures, const int* Features, int ClassFeature);

    /// \name Classification
    /// The class of a row, from 0 on or from -1 back from the last one, and its distance. Refused: another training
    /// than the one needed (`VoidObject` for clusters, else `OutOfRange`), a row that there is not (`OutOfRange`).
    /// @{

    /// The class with the nearest mean, by straight distance.
    int NearestCenter(double& Distance, int Sample) const;
    /// The class with the nearest mean under `Metric`, the lower one of equals.
    int NearestCluster(double& Distance, int Sample) const;
    /// The class of the nearest trained sample, `Index`, through the tree. Refused, too: `MahalanobisDistance`
    /// (`OutOfRange`).
    int NearestNeighbor(int& Index, double& Distance, int Sample) const;
    /// The class of most of the `K` nearest samples, and of equals that of the nearer one; `Index` is its nearest
    /// sample. Of samples as far as the `K`-th the one met last counts, in the order of the tree or of the rows. 0 asks
    /// for the single nearest. Refused, too: `K` below 0, or not below the number of trained samples
    /// (`OutOfRange`).
    int NearestNeighbors(int K, int& Index, double& Distance, int Sample) const;
    /// The same by looking at all samples, under any `Metric`.
    int SlowNearestNeighbor(int& Index, double& Distance, int Sample) const;
    int SlowNearestNeighbors(int K, int& Index, double& Distance, int Sample) const;
    /// How many of `Count` rows from `First` on `NearestNeighbors` gives their own class. A row that was trained is
    /// among its own neighbours: rows appended since then tell more.
    int CrossValidateNeighbors(int K, int First, int Count) const;
    /// @}

    /// \name What was learned
    /// 0 for a class, or a feature of the list, that there is not. After `TrainNeighbors` class 0 is the group of all
    /// samples.
    /// @{
    int ClassCount(int Class) const;
    double Mean(int Class, int Feature) const;
    double Covariance(int Class, int Row, int Column) const;
    /// One over the variance.
    double Weight(int Class, int Feature) const;
    /// @}

protected:
    void SamplesReplaced() override;

private:
    /// One group of samples.
    struct Group
    {
        int Count = 0;
        std::vector<double> Mean, Covariance, Weights;
        std::vector<double> Inverse; ///< of the covariance; the lower triangle with its diagonal
    };
    struct Neighbor
    {
        int Row;
        double Squared;
    };
    class Best;
    static constexpr double farthestFeature = 1e100;

    int CheckColumns(int count, const int* features) const;
    int CheckTypes(int count, const int* features) const;
    int CheckClasses(int classFeature, int numClasses) const;
    int CheckClass(int classFeature, int sample, int numClasses) const;
    int ReadFeatures(const std::vector<int>& columns, std::vector<double>& values) const;
    double Value(int row, int column) const;
    void Describe(Group& group, const std::vector<double>& values, const std::vector<int>& rows) const;
    void Learn(int kind, std::vector<int>&& columns, int classFeature, std::vector<double>&& values,
               std::vector<Group>&& groups);
    int CheckQuery(int& sample, std::vector<double>& query) const;
    int CheckNeighbors(int k, bool throughTree) const;
    double Squared(const double* a, const double* b, const Group& group, int metric) const;
    void Build(std::size_t d, std::size_t low, std::size_t high);
    void Search(std::size_t d, std::size_t low, std::size_t high, const double* query, Best& best) const;
    int Vote(const std::vector<Neighbor>& nearest, int& index, double& distance) const;
    int FindCluster(const Entry& entry, int metric, double& distance, int sample) const;
    int Find(bool throughTree, int k, int sample, int& index, double& distance, int& found) const;
    int Report(const Entry& entry, bool throughTree, int k, int& index, double& distance, int sample) const;
    const Group* GroupOf(int index) const;
    const double* Sample(int row) const { return values_.data() + static_cast<std::size_t>(row) * featureList_.size(); }

    std::vector<int> featureList_, classes_, tree_;
    std::vector<double> values_; ///< the features of the trained samples, row after row
    std::vector<Group> groups_;
};

} // namespace Tesk
