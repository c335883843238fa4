// The locator beside template matching and beside feature matching, and what it finds of patterns that were pasted into
// pictures at known poses. Arguments: the width of the vectors (128 or 256), then photographs.
#include "Bench.h"

#include "match/Locator.h"

#include <opencv2/calib3d.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdint>
#include <random>

namespace {

using namespace Tesk;

constexpr double degrees = 180 / CV_PI;

void ToImage(const cv::Mat& from, Image& to)
{
    to.Set(from.cols, from.rows, Gray);
    from.copyTo(bench::View(to));
}

/// A rendered part: a plate with holes and a notch on a dark ground.
cv::Mat RenderPart(int side)
{
    cv::Mat part(side, side, CV_8UC1, cv::Scalar(50));
    const auto at = [side](double v) { return static_cast<int>(v * side); };
    cv::rectangle(part, {at(0.15), at(0.2)}, {at(0.85), at(0.75)}, cv::Scalar(190), cv::FILLED);
    cv::circle(part, {at(0.35), at(0.45)}, at(0.1), cv::Scalar(50), cv::FILLED, cv::LINE_AA);
    cv::circle(part, {at(0.68), at(0.6)}, at(0.06), cv::Scalar(90), cv::FILLED, cv::LINE_AA);
    cv::rectangle(part, {at(0.6), at(0.2)}, {at(0.7), at(0.35)}, cv::Scalar(50), cv::FILLED);
    cv::GaussianBlur(part, part, {0, 0}, 1);
    return part;
}

struct Pose
{
    double x, y, angle, scale; ///< the centre in pixels, degrees as the locator counts them
};

/// Pastes a pattern about its centre at a pose. What lies under its mask is replaced.
void Paste(const cv::Mat& pattern, const Pose& pose, cv::Mat& scene)
{
    const double a = pose.scale * std::cos(pose.angle / degrees), b = pose.scale * std::sin(pose.angle / degrees),
                 cx = (pattern.cols - 1) / 2.0, cy = (pattern.rows - 1) / 2.0;
    const cv::Mat map = (cv::Mat_<double>(2, 3) << a, b, pose.x - a * cx - b * cy, -b, a, pose.y + b * cx - a * cy);
    cv::Mat mask, turned;
    cv::warpAffine(cv::Mat(pattern.size(), CV_8UC1, cv::Scalar(255)), mask, map, scene.size(), cv::INTER_NEAREST);
    cv::warpAffine(pattern, turned, map, scene.size(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
    turned.copyTo(scene, mask);
}

struct Trouble
{
    const char* name;
    double noise, gain, offset, blur;
    bool cover, clutter;
};
constexpr Trouble troubles[] = {{"none", 0, 1, 0, 0, false, false},
                                {"noise 8", 8, 1, 0, 0, false, false},
                                {"light x 0.6 + 40", 0, 0.6, 40, 0, false, false},
                                {"blur 1.2", 0, 1, 0, 1.2, false, false},
                                {"clutter", 0, 1, 0, 0, false, true},
                                {"a quarter covered", 0, 1, 0, 0, true, false}};

cv::Mat MakeScene(const cv::Mat& pattern, const Pose& pose, const Trouble& trouble, std::mt19937& random)
{
    cv::Mat scene(256, 256, CV_8UC1, cv::Scalar(70));
    std::uniform_int_distribution<int> any(0, 255);
    if (trouble.clutter)
        for (int i = 0; i < 60; i++)
            cv::circle(scene, {any(random), any(random)}, 3 + any(random) % 12, cv::Scalar(any(random)), cv::FILLED);
    Paste(pattern, pose, scene);
    if (trouble.cover) {
        cv::Mat corner(pattern.rows / 2, pattern.cols / 2, CV_8UC1, cv::Scalar(120));
        const double u = -pattern.cols / 4.0, v = -pattern.rows / 4.0, c = std::cos(pose.angle / degrees),
                     s = std::sin(pose.angle / degrees);
        Paste(corner,
              {pose.x + pose.scale * (c * u + s * v), pose.y + pose.scale * (c * v - s * u), pose.angle, pose.scale},
              scene);
    }
    if (trouble.blur > 0) cv::GaussianBlur(scene, scene, {0, 0}, trouble.blur);
    scene.convertTo(scene, CV_8UC1, trouble.gain, trouble.offset);
    if (trouble.noise > 0) {
        cv::Mat noise(scene.size(), CV_16SC1), sum;
        cv::theRNG().state = random();
        cv::randn(noise, 0, trouble.noise);
        cv::add(scene, noise, sum, cv::noArray(), CV_16SC1);
        sum.convertTo(scene, CV_8UC1);
    }
    return scene;
}

struct Tally
{
    int scenes = 0, found = 0, wrong = 0;
    std::vector<double> place, angle, scale;
    double worst(std::vector<double> v) const { return v.empty() ? 0 : *std::max_element(v.begin(), v.end()); }
    double median(std::vector<double> v) const
    {
        if (v.empty()) return 0;
        std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2), v.end());
        return v[v.size() / 2];
    }
};

/// Adds what a search found of a pattern: whatever lies more than 4 pixels away is a false find.
void Judge(const Locator& locator, const Pose& pose, Tally& tally)
{
    tally.scenes++;
    bool found = false;
    for (int i = 0; i < locator.NumLocations; i++) {
        const _LocatorPose at = locator.Location(i);
        const double distance = std::hypot(at.X - pose.x, at.Y - pose.y),
                     turn = std::abs(std::remainder(at.Angle - pose.angle, 360));
        if (distance > 4 || turn > 15 || found) {
            tally.wrong++;
            continue;
        }
        found = true;
        tally.place.push_back(distance);
        tally.angle.push_back(turn);
        tally.scale.push_back(std::abs(at.Scale - pose.scale));
    }
    tally.found += found;
}

void TruthTable(const std::vector<cv::Mat>& patterns)
{
    std::printf("\nfound of patterns of 63 x 63 pixels in 256 x 256, at scores from 0.7 up (0.5 if covered); errors: "
                "median, largest\n");
    for (const bool edges : {false, true})
        for (const Trouble& trouble : troubles) {
            std::mt19937 random(7);
            std::uniform_real_distribution<double> place(85, 170), angle(-180, 180), scale(0.8, 1.25);
            Tally tally;
            for (const cv::Mat& pattern : patterns)
                for (int k = 0; k < 6; k++) {
                    const Pose pose = {place(random), place(random), angle(random), scale(random)};
                    Image trained, searched;
                    ToImage(pattern, trained);
                    ToImage(MakeScene(pattern, pose, trouble, random), searched);
                    Locator locator;
                    locator.Train(trained);
                    locator.Edges = edges;
                    locator.MinAngle = -180, locator.MaxAngle = 180;
                    locator.MinScale = 0.75, locator.MaxScale = 1.3;
                    locator.MaxLocations = 5;
                    locator.MinScore = trouble.cover ? 0.5 : 0.7;
                    locator.Find(searched);
                    Judge(locator, pose, tally);
                }
            std::printf(
                "%-6s %-18s found %3d of %3d   false %2d   pixels %.2f %.2f   degrees %.2f %.2f   scale %.3f %.3f\n",
                edges ? "edges" : "areas", trouble.name, tally.found, tally.scenes, tally.wrong,
                tally.median(tally.place), tally.worst(tally.place), tally.median(tally.angle),
                tally.worst(tally.angle), tally.median(tally.scale), tally.worst(tally.scale));
        }
}

/// The centre of a pattern by ORB features and a homography; false if there is none.
bool FindFeatures(const cv::Mat& pattern, const cv::Mat& scene, cv::Point2f& center)
{
    const auto orb = cv::ORB::create(500, 1.2f, 4, 8, 0, 2, cv::ORB::HARRIS_SCORE, 16);
    std::vector<cv::KeyPoint> from, to;
    cv::Mat a, b;
    orb->detectAndCompute(pattern, cv::noArray(), from, a);
    orb->detectAndCompute(scene, cv::noArray(), to, b);
    if (from.size() < 4 || to.size() < 4) return false;
    std::vector<cv::DMatch> matches;
    cv::BFMatcher(cv::NORM_HAMMING, true).match(a, b, matches);
    std::vector<cv::Point2f> p, q, mapped;
    for (const cv::DMatch& match : matches) {
        p.push_back(from[static_cast<std::size_t>(match.queryIdx)].pt);
        q.push_back(to[static_cast<std::size_t>(match.trainIdx)].pt);
    }
    if (p.size() < 4) return false;
    const cv::Mat map = cv::findHomography(p, q, cv::RANSAC);
    if (map.empty()) return false;
    cv::perspectiveTransform(std::vector<cv::Point2f>{{(pattern.cols - 1) / 2.f, (pattern.rows - 1) / 2.f}}, mapped,
                             map);
    center = mapped[0];
    return true;
}

void RaceRotation(const std::vector<cv::Mat>& patterns)
{
    int ours = 0, theirs = 0, scenes = 0;
    double ourTime = 0, theirTime = 0;
    std::mt19937 random(11);
    std::uniform_real_distribution<double> place(85, 170), angle(-180, 180);
    for (const cv::Mat& pattern : patterns)
        for (int k = 0; k < 4; k++) {
            const Pose pose = {place(random), place(random), angle(random), 1};
            const cv::Mat scene = MakeScene(pattern, pose, troubles[1], random);
            Image trained, searched;
            ToImage(pattern, trained);
            ToImage(scene, searched);
            Locator locator;
            locator.Train(trained);
            locator.MinAngle = -180, locator.MaxAngle = 180;
            cv::Point2f center;
            bool found = false;
            const auto times = bench::Race<2>(
                {[&] { locator.Find(searched); }, [&] { found = FindFeatures(pattern, scene, center); }}, 3);
            ourTime += times[0], theirTime += times[1];
            scenes++;
            ours += locator.NumLocations > 0 &&
                    std::hypot(locator.Location(0).X - pose.x, locator.Location(0).Y - pose.y) < 2;
            theirs += found && std::hypot(center.x - pose.x, center.y - pose.y) < 2;
        }
    std::printf("\nover 360 degrees: ours %d of %d in %.2f ms, features and homography %d in %.2f ms\n", ours, scenes,
                ourTime / scenes / 1e3, theirs, theirTime / scenes / 1e3);
}

/// A part of 64 x 64 pixels of a picture, by translation alone.
void RaceTranslation(const cv::Mat& photo, int side)
{
    cv::Mat picture;
    cv::resize(photo, picture, {side, side}, 0, 0, cv::INTER_AREA);
    const int x = side / 3 + 5, y = side / 2 + 3;
    Image searched, trained;
    ToImage(picture, searched);
    ToImage(picture(cv::Rect(x, y, 64, 64)), trained);
    Locator locator;
    locator.Train(trained);
    cv::Mat scores;
    cv::Point best;
    const auto times =
        bench::Race<2>({[&] { locator.Find(searched); },
                        [&] {
                            cv::matchTemplate(picture, picture(cv::Rect(x, y, 64, 64)), scores, cv::TM_CCOEFF_NORMED);
                            cv::minMaxLoc(scores, nullptr, nullptr, nullptr, &best);
                        }},
                       15);
    Poly corners;
    locator.Corners(0, corners);
    const bool same = corners.Length == 4 && corners.Vertex(2).X == best.x && corners.Vertex(2).Y == best.y;
    std::printf("64 x 64 in %4d x %4d: ours %8.3f ms   OpenCV/ours %6.1f   %s\n", side, side, times[0] / 1e3,
                times[1] / times[0], same ? "the same place" : "ANOTHER PLACE");
}

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    std::vector<cv::Mat> patterns = {RenderPart(63)};
    for (int i = 2; i < argc; i++) {
        Image read;
        read.Read(argv[i], Gray);
        if (read.Type != Gray) continue;
        const cv::Mat photo = bench::View(read);
        std::printf("%s\n", argv[i]);
        RaceTranslation(photo, 512);
        RaceTranslation(photo, 2048);
        const int side = std::min(photo.cols, photo.rows) / 3;
        cv::Mat pattern;
        cv::resize(photo(cv::Rect((photo.cols - side) / 2, (photo.rows - side) / 2, side, side)), pattern, {63, 63}, 0,
                   0, cv::INTER_AREA);
        patterns.push_back(pattern);
    }
    TruthTable(patterns);
    RaceRotation(patterns);
}
