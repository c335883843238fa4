// The search of a locator: a scan of the coarsest level, then a climb about each candidate at every finer one.
#pragma once

#include "match/locator/LocatorModel.h"

#include <array>
#include <memory>

namespace Tesk::locator {

/// Prunes a level's candidates by overlap and to the best ones.
void Prune(std::vector<Candidate>& candidates, const Model& model, int depth, double maxOverlap, double limit);

void SortByScore(std::vector<Candidate>& candidates);

/// The scores about a candidate, 3 steps each of x, y, angle and scale.
struct Cube
{
    static constexpr int size = 81, center = 40;
    std::array<double, size> scores;

    static constexpr int Index(int x, int y, int a, int s) { return x * 27 + y * 9 + a * 3 + s; }
    /// Moves the cell to the centre; cells that come in are not computed.
    void Move(int x, int y, int a, int s);
    /// The place of the maximum of a quadratic in each coordinate, within a step of the centre.
    std::array<double, 4> Refine(bool angles, bool scales) const;
};

/// Holds the buffers of searches.
class Search
{
public:
    /// Fills `found`, of an image at least as large as the pattern. An `ErrorCodes` value; may throw `std::bad_alloc`.
    int Run(const Model& model, const Masks* masks, const Image& image, const Settings& settings,
            std::vector<Candidate>& found);

private:
    struct Sampled
    {
        int depth = -1;
        double angle = 0, scale = 0;
        bool fits = false;
    };

    int MakePyramid(const Image& image);
    const Image& Picture(int depth) const;
    const Image* Mask(int depth) const;
    void MakeGrids();
    int MakeGradient(int depth, bool zeroBorder);
    const Box& Sample(int depth, int ia, int is);
    bool Fits() const { return sampled_.fits; }
    void Evaluate(int depth, int x, int y, int steps, Score* scores);
    Score ScoreOf(const kernels::RunSums& sums) const;
    Score ScoreOf(const kernels::VectorSums& sums) const;
    int Scan();
    void ScanPose(int ia, int is);
    void TakePeaks(std::vector<Candidate>& candidates) const;
    bool Climb(int depth, Candidate& candidate);
    bool FillCube(int depth, Candidate& best, const std::array<int, 4>& center, std::array<int, 4>& at);
    void Enter(int depth, Candidate& candidate) const;
    void Refine(int depth, Candidate& candidate) const;

    const Model* model_ = nullptr;
    const Masks* masks_ = nullptr;
    const Image* image_ = nullptr;
    Settings settings_{};
    std::array<Image, mostLevels> pyramid_;
    std::array<Grid, mostLevels> grids_;
    Image scores_, angles_, scales_, gradient_;
    Area area_;
    Outline outline_;
    Sampled sampled_;
    Cube cube_{};
    std::vector<Score> row_;
    std::vector<kernels::RunSums> runSums_;
    std::vector<kernels::VectorSums> vectorSums_;
};

} // namespace Tesk::locator
