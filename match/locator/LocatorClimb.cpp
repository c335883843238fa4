// The climb of a candidate of a locator to the best place, angle and scale of a level, and its last refinement.
#include "match/locator/LocatorSearch.h"

#include <algorithm>

namespace Tesk::locator {

namespace {

/// A quadratic through three values, at a place between the first and the last one.
double Quadratic(double before, double at, double behind, double t)
{
    return ((behind - 2 * at + before) * t + (behind - before)) * t / 2 + at;
}

} // namespace

void Cube::Move(int x, int y, int a, int s)
{
    std::array<double, size> moved;
    const auto inside = [](int i) { return i >= 0 && i < 3; };
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++)
            for (int k = 0; k < 3; k++)
                for (int l = 0; l < 3; l++) {
                    const bool kept = inside(i + x) && inside(j + y) && inside(k + a) && inside(l + s);
                    moved[static_cast<std::size_t>(Index(i, j, k, l))] =
                        kept ? scores[static_cast<std::size_t>(Index(i + x, j + y, k + a, l + s))] : dead;
                }
    scores = moved;
}

std::array<double, 4> Cube::Refine(bool angles, bool scales) const
{
    constexpr int iterations = 8;
    constexpr std::array<int, 4> strides = {27, 9, 3, 1};
    const std::array<bool, 4> used = {true, true, angles, scales};
    std::array<double, 4> offsets{};
    for (int iteration = 0; iteration < iterations; iteration++)
        for (std::size_t axis = 0; axis < 4; axis++) {
            if (!used[axis]) continue;
            // The other axes are reduced to their offsets one by one.
            const auto value = [&](auto self, std::size_t other, int cell) -> double {
                if (other == 4) return scores[static_cast<std::size_t>(cell)];
                if (other == axis || !used[other]) return self(self, other + 1, cell);
                return Quadratic(self(self, other + 1, cell - strides[other]), self(self, other + 1, cell),
                                 self(self, other + 1, cell + strides[other]), offsets[other]);
            };
            const double before = value(value, 0, center - strides[axis]), at = value(value, 0, center),
                         behind = value(value, 0, center + strides[axis]), curvature = -2 * (behind - 2 * at + before);
            offsets[axis] = curvature == 0 ? 0 : Clamp((behind - before) / curvature, -1.0, 1.0);
        }
    return offsets;
}

void Search::Enter(int depth, Candidate& c) const
{
    const bool halved = model_->levels[static_cast<std::size_t>(depth) + 1].halved;
    const auto scaled = [halved](int& v) { v = halved ? 2 * v : 3 * v / 2; };
    scaled(c.ix);
    scaled(c.iy);
    scaled(c.ia);
    scaled(c.is);
    const Image& picture = Picture(depth);
    c.ix = Clamp(c.ix, 0, picture.Width - 1);
    c.iy = Clamp(c.iy, 0, picture.Height - 1);
    const Grid& grid = grids_[static_cast<std::size_t>(depth)];
    if (c.ia >= grid.numAngles) c.ia = grid.fullTurn ? 0 : grid.numAngles - 1;
}

/// Computes what is missing of the cube about `center`, and takes the best cell into `best`, its place into `at`.
bool Search::FillCube(int depth, Candidate& best, const std::array<int, 4>& center, std::array<int, 4>& at)
{
    const Grid& grid = grids_[static_cast<std::size_t>(depth)];
    const Image& picture = Picture(depth);
    for (int s = -1; s <= 1; s++) {
        const int is = center[3] + s;
        if (is < 0 || is >= grid.numScales) continue;
        for (int a = -1; a <= 1; a++) {
            const int ia = center[2] + a;
            if ((ia < 0 || ia >= grid.numAngles) && !grid.fullTurn) continue;
            const auto cell = [&](int x, int y) -> double& {
                return cube_.scores[static_cast<std::size_t>(Cube::Index(x + 1, y + 1, a + 1, s + 1))];
            };
            bool complete = true;
            for (int y = -1; y <= 1; y++)
                for (int x = -1; x <= 1; x++)
                    complete = complete && cell(x, y) != dead;
            if (complete) continue;
            const Box box = Sample(depth, ia, is);
            if (!Fits()) continue;
            // The box stays in the image, and so does the origin, from which rows are counted.
            const int left = Max(-box.x, 0), right = Min(picture.Width - box.width - box.x, picture.Width - 1),
                      top = Max(-box.y, 0), bottom = Min(picture.Height - box.height - box.y, picture.Height - 1);
            for (int y = Max(-1, top - center[1]); y <= Min(1, bottom - center[1]); y++) {
                int x = Max(-1, left - center[0]);
                const int end = Min(1, right - center[0]);
                while (x <= end && cell(x, y) != dead)
                    x++;
                if (x > end) continue;
                int last = end;
                while (cell(last, y) != dead)
                    last--;
                Score scores[3];
                Evaluate(depth, center[0] + x, center[1] + y, last - x + 1, scores);
                for (int i = x; i <= last; i++) {
                    if (cell(i, y) != dead) continue;
                    const Score& score = scores[i - x];
                    cell(i, y) = score.score;
                    if (!(score.score > best.score)) continue;
                    best.score = score.score;
                    best.contrast = score.contrast;
                    best.box = {center[0] + i + box.x, center[1] + y + box.y, box.width, box.height};
                    at = {center[0] + i, center[1] + y, ia, is};
                }
            }
        }
    }
    return best.score != rejected;
}

bool Search::Climb(int depth, Candidate& candidate)
{
    Enter(depth, candidate);
    cube_.scores.fill(dead);
    Candidate best = candidate;
    best.score = rejected;
    std::array<int, 4> center = {candidate.ix, candidate.iy, candidate.ia, candidate.is}, at = center;
    while (true) {
        if (!FillCube(depth, best, center, at)) return false;
        if (at == center) break;
        cube_.Move(at[0] - center[0], at[1] - center[1], at[2] - center[2], at[3] - center[3]);
        center = at;
    }
    candidate = best;
    candidate.ix = center[0];
    candidate.iy = center[1];
    candidate.ia = center[2];
    candidate.is = center[3];
    const auto i = static_cast<std::size_t>(depth);
    const Grid& grid = grids_[i];
    const Image& pattern = model_->levels[i].pattern;
    if (depth == settings_.stop) Refine(depth, candidate);
    candidate.angle = grid.Angle(candidate.ia);
    candidate.scale = grid.Scale(candidate.is);
    candidate.area = (pattern.Width - 1.0) * (pattern.Height - 1.0) * candidate.scale;
    return true;
}

void Search::Refine(int depth, Candidate& candidate) const
{
    const Grid& grid = grids_[static_cast<std::size_t>(depth)];
    const Image& pattern = model_->levels[static_cast<std::size_t>(depth)].pattern;
    const std::array<double, 4> offsets = cube_.Refine(grid.numAngles >= 2, grid.numScales >= 2);
    candidate.x = candidate.ix + offsets[0] + PlaceOffset(pattern.Width);
    candidate.y = candidate.iy + offsets[1] + PlaceOffset(pattern.Height);
}

} // namespace Tesk::locator
