// Paths for tests: from lists of sites, from curves, and at random from a fixed generator.
#pragma once

#include "foundation/Status.h"
#include "measure/Path.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Tesk {

inline constexpr double radian = std::numbers::pi / 180;

inline Path PathOf(const std::vector<std::pair<int, int>>& sites, bool closed = true)
{
    Path path;
    for (const auto& [x, y] : sites)
        path.Append(x, y);
    path.Closed = closed;
    return path;
}

inline std::vector<std::pair<int, int>> SitesOf(const Path& path)
{
    std::vector<std::pair<int, int>> sites;
    for (int i = 0; i < path.Length; i++)
        sites.emplace_back(path.Vertex(i).X, path.Vertex(i).Y);
    return sites;
}

/// The sites nearest to points of an ellipse, from one parameter to another in degrees, both included.
inline Path EllipsePath(XY center, XY axis, double angle, int count, double from = 0, double to = 360)
{
    Path path;
    for (int i = 0; i < count; i++) {
        const double t = (from + (to - from) * i / count) * radian, c = std::cos(angle * radian),
                     s = std::sin(angle * radian);
        const double u = axis.X * std::cos(t), v = axis.Y * std::sin(t);
        path.Append(static_cast<int>(std::lround(center.X + c * u - s * v)),
                    static_cast<int>(std::lround(center.Y + s * u + c * v)));
    }
    path.Closed = true;
    return path;
}

inline Path RandomPath(std::mt19937& random, int count, int extent)
{
    Path path;
    std::uniform_int_distribution<int> coordinate(-extent, extent);
    for (int i = 0; i < count; i++)
        path.Append(coordinate(random), coordinate(random));
    return path;
}

/// Every `step`th site moved far away, in ever other directions.
inline void AddOutliers(Path& path, int step, double distance)
{
    for (int i = 1; i < path.Length; i += step) {
        const double direction = 2.4 * i;
        Site& site = path.Vertex(i);
        site = Site(site.X + static_cast<int>(distance * std::cos(direction)),
                    site.Y + static_cast<int>(distance * std::sin(direction)));
    }
}

/// Fails where the last call refused nothing, or something else.
inline void ExpectRefusal(int code, const std::wstring& message, const std::string& context)
{
    EXPECT_EQ(Status::Error().Code, code);
    EXPECT_EQ(Status::UnicodeError(), message);
    EXPECT_EQ(Status::AsciiFunction(), context);
}

class PathMethods : public ::testing::Test
{
protected:
    PathMethods() { Status::ErrorBehavior(IgnoreIt); }
};

} // namespace Tesk
