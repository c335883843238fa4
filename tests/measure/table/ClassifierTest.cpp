// Classifiers: statistics by hand, the tree against looking at all samples, what has no spread, refusals.
#include "measure/Classifier.h"

#include "../../Failures.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <random>
#include <utility>

namespace Tesk {
namespace {

using checks::Message;
using ClassifierTest = checks::IgnoringFailures;

/// Column 0 is the class, the others are features.
void Columns(Classifier& c, int features)
{
    c._AppendFeature(Int, L"Class");
    for (int i = 0; i < features; i++)
        c._AppendFeature(Dble, L"Feature");
}

void Add(Classifier& c, int group, std::initializer_list<double> values)
{
    c.AppendSample();
    c.IntValue(0, c.NumSamples - 1, group);
    int column = 1;
    for (const double value : values)
        c.DbleValue(column++, c.NumSamples - 1, value);
}

void AddRandom(Classifier& c, std::mt19937& random, int count)
{
    std::uniform_int_distribution<int> value(0, 30), group(0, 3);
    for (int i = 0; i < count; i++)
        Add(c, group(random), {value(random) / 4.0, value(random) * 3.0, double(value(random))});
}

constexpr int one[] = {1}, two[] = {1, 2}, three[] = {1, 2, 3};

TEST_F(ClassifierTest, ClustersHaveTheMomentsOfTheirRows)
{
    Classifier c;
    Columns(c, 2);
    for (const auto& [x, y] : {std::pair(0, 0), {2, 0}, {0, 4}, {2, 4}})
        Add(c, 0, {double(x), double(y)});
    for (const auto& [x, y] : {std::pair(11, 10), {9, 10}, {10, 13}, {10, 7}})
        Add(c, 2, {double(x), double(y)});
    c.TrainClusters(2, two, 0, 4);
    ASSERT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(c.Trained, 2);
    EXPECT_EQ(c.ClassCount(0), 4);
    EXPECT_EQ(c.ClassCount(1), 0);
    EXPECT_EQ(c.Mean(1, 0), 0) << "a class without samples";
    EXPECT_DOUBLE_EQ(c.Mean(0, 1), 2);
    EXPECT_DOUBLE_EQ(c.Covariance(0, 1, 1), 4);
    EXPECT_DOUBLE_EQ(c.Covariance(0, 0, 1), 0);
    EXPECT_DOUBLE_EQ(c.Weight(0, 1), 0.25);
    Add(c, 0, {0.5, 0.5});
    double distance = 0;
    EXPECT_EQ(c.NearestCenter(distance, -1), 1) << "the mean of the class without samples";
    EXPECT_DOUBLE_EQ(distance, std::sqrt(0.5));
    Add(c, 0, {4, 6});
    EXPECT_EQ(c.NearestCenter(distance, -1), 0);
    EXPECT_DOUBLE_EQ(distance, 5);
    for (const int metric : {ScaledDistance, MahalanobisDistance}) {
        c.Metric = metric;
        // In class 0 sqrt(3^2 / 1 + 4^2 / 4), in class 2 sqrt(6^2 / 0.5 + 4^2 / 4.5).
        EXPECT_EQ(c.NearestCluster(distance, -1), 0);
        EXPECT_NEAR(distance, std::sqrt(13.0), 1e-12);
    }
}

TEST_F(ClassifierTest, TheMahalanobisDistanceUndoesACorrelation)
{
    Classifier c;
    Columns(c, 2);
    for (const double t : {-1.0, 1.0})
        for (const double u : {-1.0, 1.0})
            Add(c, 0, {1000 + 3 * t + u, 500 + 3 * t - u});
    c.TrainClusters(2, two, 0, 1);
    c.Metric = MahalanobisDistance;
    double distance = 0;
    Add(c, 0, {1000 + 6, 500 + 6});
    EXPECT_EQ(c.NearestCluster(distance, -1), 0);
    EXPECT_NEAR(distance, 2, 1e-9);
    Add(c, 0, {1000 + 4, 500 - 4});
    c.NearestCluster(distance, -1);
    EXPECT_NEAR(distance, 4, 1e-9);
}

TEST_F(ClassifierTest, TheTreeFindsWhatLookingAtAllFinds)
{
    std::mt19937 random(3);
    for (const int count : {2, 3, 4, 7, 50, 333}) {
        Classifier c;
        Columns(c, 3);
        AddRandom(c, random, count);
        c.NumClasses = 4;
        c.TrainNeighbors(3, three, 0);
        ASSERT_EQ(c.Trained, 1);
        AddRandom(c, random, 40);
        for (int row = 0; row < c.NumSamples; row++) {
            double least = 1e9;
            for (int other = 0; other < count; other++) {
                double squared = 0;
                for (const int column : three)
                    squared += Sqr(c.DbleValue(column, row) - c.DbleValue(column, other));
                least = std::min(least, std::sqrt(squared));
            }
            for (const int metric : {StraightDistance, ScaledDistance}) {
                c.Metric = metric;
                int index = -1;
                double near = 0, slow = 0;
                c.NearestNeighbor(index, near, row);
                c.SlowNearestNeighbor(index, slow, row);
                EXPECT_DOUBLE_EQ(near, slow);
                EXPECT_TRUE(metric != StraightDistance || std::abs(least - near) < 1e-9);
            }
        }
    }
}

TEST_F(ClassifierTest, TheMajorityWinsAndTheNearerOneOfEquals)
{
    Classifier c;
    Columns(c, 1);
    for (const auto& [group, place] : {std::pair(0, 1.0), {1, -2.0}, {1, 2.5}, {2, 3.0}, {2, -3.5}, {0, 90.0}})
        Add(c, group, {place});
    c.NumClasses = 3;
    c.TrainNeighbors(1, one, 0);
    Add(c, 1, {0});
    struct
    {
        int k, group, index;
        double distance;
    } const cases[] = {{0, 0, 0, 1}, {1, 0, 0, 1}, {2, 0, 0, 1}, {3, 1, 1, 2}, {5, 1, 1, 2}};
    int index = -1;
    double distance = 0;
    for (const auto& k : cases) {
        EXPECT_EQ(c.NearestNeighbors(k.k, index, distance, -1), k.group) << k.k;
        EXPECT_EQ(index, k.index);
        EXPECT_DOUBLE_EQ(distance, k.distance);
        EXPECT_EQ(c.SlowNearestNeighbors(k.k, index, distance, -1), k.group);
        EXPECT_EQ(index, k.index);
    }
    // Of samples in one place, the first one is the single nearest, and the last one comes into a list.
    Classifier twins;
    Columns(twins, 1);
    for (const auto& [group, place] : {std::pair(0, 5.0), {1, 5.0}, {2, 9.0}})
        Add(twins, group, {place});
    twins.NumClasses = 3;
    twins.TrainNeighbors(1, one, 0);
    EXPECT_EQ(twins.SlowNearestNeighbor(index, distance, 0), 0);
    EXPECT_EQ(twins.SlowNearestNeighbors(1, index, distance, 0), 1);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(c.CrossValidateNeighbors(3, 6, 1), 1);
    EXPECT_EQ(c.CrossValidateNeighbors(1, 6, 1), 0);
    EXPECT_EQ(c.CrossValidateNeighbors(0, 0, 6), 6) << "each row is its own nearest neighbour";
    distance = 7;
    for (const int k : {6, 7, -1}) {
        EXPECT_EQ(c.NearestNeighbors(k, index, distance, -1), -1);
        EXPECT_EQ(Status::Error().Code, OutOfRange);
    }
    EXPECT_EQ(Message(), L"The K value (-1) exceeds the number of trained samples [6]");
    EXPECT_EQ(distance, 7);
    c.CrossValidateNeighbors(1, 5, 3);
    EXPECT_EQ(Message(), L"The number of samples (3) exceeds the available count [2]");
}

TEST_F(ClassifierTest, NoDistanceIsUndefinedWhereSpreadIsMissing)
{
    Classifier c;
    Columns(c, 3);
    // A constant column, columns that depend on each other, a class of one row, one without any, huge numbers.
    for (int i = 0; i < 20; i++)
        Add(c, 0, {double(i), 2.0 * i, 1e6 + 0.1});
    Add(c, 1, {100, 100, 100});
    Add(c, 3, {1e99, -1e99, 0});
    Add(c, 3, {-1e99, 1e99, 1e-99});
    for (const int kind : {0, 1}) {
        c.NumClasses = 4;
        if (kind == 0)
            c.TrainClusters(3, three, 0, 4);
        else
            c.TrainNeighbors(3, three, 0);
        ASSERT_EQ(Status::Error().Code, NoError);
        for (const int metric : {StraightDistance, ScaledDistance, MahalanobisDistance}) {
            c.Metric = metric;
            for (int row = 0; row < c.NumSamples; row++) {
                double distance = -1;
                int index = 0;
                const int found =
                    kind == 0 ? c.NearestCluster(distance, row) : c.SlowNearestNeighbors(3, index, distance, row);
                EXPECT_GE(found, 0);
                EXPECT_TRUE(found != 2 || metric == StraightDistance);
                EXPECT_TRUE(distance >= 0 && distance <= std::numeric_limits<double>::max());
            }
        }
    }
}

TEST_F(ClassifierTest, WhatCannotBeLearnedIsRefused)
{
    Classifier c;
    int index = 0;
    double distance = 0;
    constexpr int missing[] = {7}, color[] = {2};
    c.TrainNeighbors(1, one, 0);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_EQ(Message(), L"No feature has been appended yet");
    c._AppendFeature(Int, L"Class");
    c._AppendFeature(Dble, L"Size");
    c._AppendFeature(Rgb, L"Color");
    c.TrainClusters(1, one, 0, 2);
    EXPECT_EQ(Message(), L"No sample has been appended yet");
    Add(c, 5, {1.5});
    struct
    {
        int count;
        const int* features;
        int classFeature, classes, code;
        const wchar_t* message;
    } const cases[] = {
        {1, one, 0, 2, OutOfRange, L"The class value (5) of the sample (0) must be in range [0..1]"},
        {1, missing, 0, 9, OutOfRange, L"The feature index (7) must be in range [0..2]"},
        {1, color, 0, 9, OutOfRange, L"The feature type (Rgb) at index (2) is not supported"},
        {1, one, 1, 9, OutOfRange, L"The class feature must be of type Int, not Dble"},
        {1, one, 3, 9, OutOfRange, L"The class index (3) must be in range [0..2]"},
        {0, one, 0, 9, OutOfRange, L"The number of features (0) must be positive"},
        {1, one, 0, std::numeric_limits<int>::max(), CannotAllocate, L"Cannot allocate the array buffer"},
        // The class is looked at first.
        {1, missing, 0, 2, OutOfRange, L"The class value (5) of the sample (0) must be in range [0..1]"},
        {1, color, 1, 9, OutOfRange, L"The class feature must be of type Int, not Dble"},
    };
    for (const auto& k : cases) {
        c.TrainClusters(k.count, k.features, k.classFeature, k.classes);
        EXPECT_EQ(Status::Error().Code, k.code) << k.classFeature;
        EXPECT_EQ(Message(), k.message);
    }
    c.TrainNeighbors(1, missing, 1);
    EXPECT_EQ(Message(), L"The feature index (7) must be in range [0..2]");
    c.TrainNeighbors(1, color, 1);
    EXPECT_EQ(Message(), L"The class feature must be of type Int, not Dble");
    c.DbleValue(1, 0, std::nan(""));
    c.TrainClusters(1, one, 0, 9);
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    c.DbleValue(1, 0, 1);
    EXPECT_EQ(c.Trained, 0);
    EXPECT_EQ(c.NearestCluster(distance, 0), -1);
    EXPECT_EQ(Status::Error().Code, VoidObject);
    EXPECT_EQ(Message(), L"cluster training has not been performed yet");
    c.NearestNeighbor(index, distance, 0);
    EXPECT_EQ(Message(), L"neigbor training has not been performed yet");
    c.SlowNearestNeighbor(index, distance, 0);
    EXPECT_EQ(Message(), L"No training has been performed yet");
    c.TrainClusters(1, one, 0, 9);
    EXPECT_EQ(c.NearestCluster(distance, -1), 5) << "the only class with samples";
    c.NearestCluster(distance, -2);
    EXPECT_EQ(Message(), L"The sample index (-2) must be in range [-1..0]");
    c.NumClasses = 6;
    c.TrainNeighbors(1, one, 0);
    c.Metric = MahalanobisDistance;
    c.NearestNeighbor(index, distance, 0);
    EXPECT_EQ(Message(), L"The Mahalanobis distance is not supported; use the SlowNearestNeighbor function instead");
    EXPECT_EQ(c.SlowNearestNeighbor(index, distance, 0), 5);
}

} // namespace
} // namespace Tesk
