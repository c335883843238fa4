// How exact the gauges are, and how fast: rendered edges of known place, over sub-pixel shifts and angles, blur and
// noise, beside the bound of Cramer and Rao and beside what OpenCV offers on the same pictures.
#include "bench/Bench.h"
#include "bench/Rendered.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Tesk;
using rendered::Picture;
using rendered::Pose;

constexpr int size = 160;
constexpr double dark = 50, step = 150, degree = 3.14159265358979323846 / 180;
constexpr double probe = 32;
constexpr int breadth = 5, repeats = 25;

/// The smoothing that fits a blur.
int SmoothingFor(double blur)
{
    return blur < 1.25 ? 3 : 5;
}

template <typename Gauge>
void Tune(Gauge& gauge, double blur, bool model)
{
    gauge.Breadth = breadth;
    gauge.Smoothing = SmoothingFor(blur);
    gauge.Polarity = Both;
    gauge.StepModel = model;
}

double Turned(double angle, double period)
{
    return std::remainder(angle, period);
}

/// A gauge on its shape: where the shape is, what the gauge says of it, and how its edge moves with each quantity.
struct Subject
{
    const char* name;
    std::vector<const char*> quantities;
    std::vector<Pose> poses;
    std::function<double(const Pose&, double, double)> distance; ///< to the edge, negative inside
    /// The errors of the quantities; empty where the gauge finds nothing.
    std::function<std::vector<double>(const Pose&, const Image&, double blur, bool model)> errors;
    /// For each probe, by how much the edge moves along it with a unit of each quantity.
    std::function<std::vector<std::vector<double>>(const Pose&)> rows;
};

std::vector<Pose> Poses()
{
    std::vector<Pose> poses;
    for (int i = 0; i < 10; i++)
        poses.push_back({size / 2 + 0.1 * i, size / 2 + 0.37 * i - std::floor(0.37 * i), i < 5 ? 0.0 : 7.3 * i - 30});
    return poses;
}

XY Along(const Pose& pose, double u, double v)
{
    const double c = std::cos(pose.degrees * degree), s = std::sin(pose.degrees * degree);
    return {pose.x + c * u - s * v, pose.y + s * u + c * v};
}

/// A place in the frame of the pose.
XY Local(const Pose& pose, double x, double y)
{
    const double c = std::cos(pose.degrees * degree), s = std::sin(pose.degrees * degree);
    return {c * (x - pose.x) + s * (y - pose.y), -s * (x - pose.x) + c * (y - pose.y)};
}

Subject Point()
{
    return {"point",
            {"position"},
            Poses(),
            [](const Pose& pose, double x, double y) { return Local(pose, x, y).X; },
            [](const Pose& pose, const Image& image, double blur, bool model) -> std::vector<double> {
                EdgePoint gauge;
                Tune(gauge, blur, model);
                gauge.Beg = Along(pose, -probe / 2, 0);
                gauge.End = Along(pose, probe / 2, 0);
                // An end on the grid of pixels would tell the place.
                gauge.Beg = XY(std::floor(gauge.Beg.X), std::floor(gauge.Beg.Y));
                const double angle = pose.degrees * degree;
                gauge.End = XY(gauge.Beg.X + probe * std::cos(angle), gauge.Beg.Y + probe * std::sin(angle));
                if (!gauge.Detect(image)) return {};
                const XY found = gauge.FittedPoint(BestStep, Both);
                return {Local(pose, found.X, found.Y).X};
            },
            [](const Pose&) { return std::vector<std::vector<double>>{{1}}; }};
}

constexpr double lineLength = 100;

Subject Line()
{
    return {"line",
            {"position", "angle"},
            Poses(),
            [](const Pose& pose, double x, double y) { return Local(pose, x, y).Y; },
            [](const Pose& pose, const Image& image, double blur, bool model) -> std::vector<double> {
                EdgeLine gauge;
                Tune(gauge, blur, model);
                gauge.Locate(XY(size / 2, size / 2), lineLength, pose.degrees, probe);
                if (!gauge.Detect(image)) return {};
                const XY beg = Local(pose, XY(gauge.FittedBeg).X, XY(gauge.FittedBeg).Y);
                const XY end = Local(pose, XY(gauge.FittedEnd).X, XY(gauge.FittedEnd).Y);
                return {(beg.Y + end.Y) / 2, Turned(gauge.FittedAngle - pose.degrees, 180)};
            },
            [](const Pose&) {
                std::vector<std::vector<double>> rows;
                for (double t = -lineLength / 2; t <= lineLength / 2; t += 5)
                    rows.push_back({1, t * degree});
                return rows;
            }};
}

constexpr double radius = 45;

Subject Arc()
{
    return {
        "arc",
        {"x", "y", "radius"},
        Poses(),
        [](const Pose& pose, double x, double y) { return std::hypot(x - pose.x, y - pose.y) - radius; },
        [](const Pose& pose, const Image& image, double blur, bool model) -> std::vector<double> {
            EdgeArc gauge;
            Tune(gauge, blur, model);
            gauge.Locate(XY(size / 2, size / 2), radius, probe);
            if (!gauge.Detect(image)) return {};
            return {XY(gauge.FittedCenter).X - pose.x, XY(gauge.FittedCenter).Y - pose.y, gauge.FittedRadius - radius};
        },
        [](const Pose&) {
            std::vector<std::vector<double>> rows;
            for (double t = 0; t < 2 * std::numbers::pi; t += 5 / radius)
                rows.push_back({std::cos(t), std::sin(t), 1});
            return rows;
        }};
}

constexpr double firstAxis = 55, secondAxis = 36;

Subject Ellipse()
{
    return {"ellipse",
            {"x", "y", "first axis", "second axis", "angle"},
            Poses(),
            [](const Pose& pose, double x, double y) {
                const XY p = Local(pose, x, y);
                return rendered::EllipseDistance(p.X, p.Y, firstAxis, secondAxis);
            },
            [](const Pose& pose, const Image& image, double blur, bool model) -> std::vector<double> {
                EdgeEllipse gauge;
                Tune(gauge, blur, model);
                gauge.Locate(XY(size / 2, size / 2), firstAxis, secondAxis, pose.degrees, probe);
                if (!gauge.Detect(image)) return {};
                double first = gauge.FittedFirstAxis, second = gauge.FittedSecondAxis, angle = gauge.FittedAngle;
                if (first < second) {
                    std::swap(first, second);
                    angle += 90;
                }
                return {XY(gauge.FittedCenter).X - pose.x, XY(gauge.FittedCenter).Y - pose.y, first - firstAxis,
                        second - secondAxis, Turned(angle - pose.degrees, 180)};
            },
            [](const Pose& pose) {
                const double c = std::cos(pose.degrees * degree), s = std::sin(pose.degrees * degree);
                std::vector<std::vector<double>> rows;
                const int count = 58; // five pixels apart
                for (int i = 0; i < count; i++) {
                    const double t = 2 * std::numbers::pi * i / count;
                    double u = secondAxis * std::cos(t), v = firstAxis * std::sin(t);
                    const double norm = std::hypot(u, v);
                    u /= norm;
                    v /= norm;
                    rows.push_back({u * c - v * s, u * s + v * c, u * std::cos(t), v * std::sin(t),
                                    (v * firstAxis * std::cos(t) - u * secondAxis * std::sin(t)) * degree});
                }
                return rows;
            }};
}

constexpr double width = 90, height = 60;

Subject Rectangle()
{
    return {"rectangle",
            {"x", "y", "width", "height", "angle"},
            Poses(),
            [](const Pose& pose, double x, double y) {
                const XY p = Local(pose, x, y);
                const double u = std::abs(p.X) - width / 2, v = std::abs(p.Y) - height / 2;
                return u > 0 && v > 0 ? std::hypot(u, v) : std::max(u, v);
            },
            [](const Pose& pose, const Image& image, double blur, bool model) -> std::vector<double> {
                EdgeRectangle gauge;
                Tune(gauge, blur, model);
                gauge.Clearance = 8;
                gauge.Locate(XY(size / 2, size / 2), XY(width, height), pose.degrees, probe / 2);
                if (!gauge.Detect(image)) return {};
                return {XY(gauge.FittedMiddle).X - pose.x, XY(gauge.FittedMiddle).Y - pose.y,
                        XY(gauge.FittedSize).X - width, XY(gauge.FittedSize).Y - height,
                        Turned(gauge.FittedAngle - pose.degrees, 180)};
            },
            [](const Pose& pose) {
                const double c = std::cos(pose.degrees * degree), s = std::sin(pose.degrees * degree);
                std::vector<std::vector<double>> rows;
                for (const double side : {-1.0, 1.0}) {
                    for (double t = 8 - width / 2; t <= width / 2 - 8; t += 5)
                        rows.push_back({-s * side, c * side, 0, 0.5, side * t * degree});
                    for (double t = 8 - height / 2; t <= height / 2 - 8; t += 5)
                        rows.push_back({c * side, s * side, 0.5, 0, -side * t * degree});
                }
                return rows;
            }};
}

/// Mean, greatest and standard deviation of errors: the deviation is that about the mean of each pose.
struct Errors
{
    double bias = 0, worst = 0, scatter = 0;
    int missing = 0;
};

std::vector<Errors> ErrorsOf(const Subject& subject, double blur, double noise, bool model)
{
    const std::size_t count = subject.quantities.size();
    std::vector<Errors> errors(count);
    std::vector<double> squares(count);
    rendered::Noise random(1);
    int poses = 0, shots = 0;
    for (const Pose& pose : subject.poses) {
        const Picture picture(size, size, blur, [&](double x, double y) { return subject.distance(pose, x, y); });
        const int rounds = noise > 0 ? repeats : 1;
        std::vector<std::vector<double>> found;
        Image image;
        for (int round = 0; round < rounds; round++) {
            picture.Shoot(dark, step, noise, random, image);
            auto e = subject.errors(pose, image, blur, model);
            if (e.empty())
                errors[0].missing++;
            else
                found.push_back(std::move(e));
        }
        if (found.empty()) continue;
        poses++;
        shots += static_cast<int>(found.size()) - 1;
        for (std::size_t q = 0; q < count; q++) {
            double mean = 0;
            for (const auto& e : found)
                mean += e[q] / static_cast<double>(found.size());
            for (const auto& e : found)
                squares[q] += (e[q] - mean) * (e[q] - mean);
            errors[q].bias += mean;
            errors[q].worst = std::max(errors[q].worst, std::abs(mean));
        }
    }
    for (std::size_t q = 0; q < count; q++) {
        errors[q].bias /= std::max(poses, 1);
        errors[q].scatter = shots > 0 ? std::sqrt(squares[q] / shots) : 0;
    }
    return errors;
}

void Accuracy(const Subject& subject)
{
    std::printf("\n%s; pixels and degrees\n", subject.name);
    std::printf("%-12s %5s %5s %6s | %27s | %27s | %7s\n", "", "blur", "noise", "smooth", "vertex: bias worst sd/bound",
                "model: bias worst sd/bound", "bound");
    for (const double blur : {0.7, 1.0, 1.5, 2.0})
        for (const double noise : {0.0, 2.0, 8.0}) {
            const auto vertex = ErrorsOf(subject, blur, noise, false), model = ErrorsOf(subject, blur, noise, true);
            const auto bounds = rendered::Bounds(subject.rows(subject.poses[7]),
                                                 rendered::ProbeBound(blur, noise, step, breadth, probe));
            for (std::size_t q = 0; q < vertex.size(); q++) {
                const auto ratio = [&](const Errors& e) { return noise > 0 ? e.scatter / bounds[q] : 0; };
                std::printf("%-12s %5.1f %5.0f %6d | %9.4f %8.4f %8.2f | %9.4f %8.4f %8.2f | %7.4f",
                            subject.quantities[q], blur, noise, SmoothingFor(blur), vertex[q].bias, vertex[q].worst,
                            ratio(vertex[q]), model[q].bias, model[q].worst, ratio(model[q]), bounds[q]);
                if (vertex[q].missing + model[q].missing > 0)
                    std::printf("   not found: %d, %d", vertex[q].missing, model[q].missing);
                std::printf("\n");
            }
        }
}

/// A fifth of the edge displaced by six pixels: by how much more the results are off than without.
void Outliers(const Subject& subject)
{
    for (const bool model : {false, true}) {
        std::vector<double> most(subject.quantities.size());
        for (const Pose& pose : subject.poses) {
            const auto errors = [&](double displacement) {
                const Picture picture(size, size, 1, [&](double x, double y) {
                    const double turn = std::atan2(y - pose.y, x - pose.x) / degree + 360;
                    const double along = subject.quantities.size() == 2 ? Local(pose, x, y).X + 500 : turn / 72 * 50;
                    return subject.distance(pose, x, y) - (std::fmod(along, 50) < 6 ? displacement : 0);
                });
                rendered::Noise random(1);
                Image image;
                picture.Shoot(dark, step, 2, random, image);
                return subject.errors(pose, image, 1, model);
            };
            const auto clean = errors(0), dirty = errors(6);
            for (std::size_t q = 0; q < most.size() && !clean.empty() && !dirty.empty(); q++)
                most[q] = std::max(most[q], std::abs(dirty[q]) - std::abs(clean[q]));
        }
        std::printf("%-10s %-7s", subject.name, model ? "model" : "vertex");
        for (std::size_t q = 0; q < most.size(); q++)
            std::printf("  %s %.4f", subject.quantities[q], most[q]);
        std::printf("\n");
    }
}

/// The peers' answer on a picture, in the order of the subject's quantities.
using Peer = std::function<std::vector<double>(const Pose&, const Image&)>;

std::vector<double> PeerLine(const Pose& pose, const Image& image)
{
    cv::Mat edges;
    cv::Canny(bench::View(image), edges, 60, 120);
    // Where the gauge looks.
    std::vector<cv::Point> points;
    cv::findNonZero(edges, points);
    std::erase_if(points, [&](cv::Point p) {
        const XY q = Local({size / 2, size / 2, pose.degrees}, p.x, p.y);
        return std::abs(q.X) > lineLength / 2 || std::abs(q.Y) > probe / 2;
    });
    if (points.size() < 2) return {};
    cv::Vec4f line;
    cv::fitLine(points, line, cv::DIST_HUBER, 0, 0.01, 0.01);
    const XY at = Local(pose, line[2], line[3]);
    const double angle = std::atan2(line[1], line[0]) / degree;
    return {at.Y - at.X * std::tan((angle - pose.degrees) * degree), Turned(angle - pose.degrees, 180)};
}

std::vector<double> PeerCircle(const Pose& pose, const Image& image)
{
    std::vector<cv::Vec3f> circles;
    cv::HoughCircles(bench::View(image), circles, cv::HOUGH_GRADIENT, 1, 50, 120, 20, 30, 60);
    if (circles.empty()) return {};
    return {circles[0][0] - pose.x, circles[0][1] - pose.y, circles[0][2] - radius};
}

std::vector<cv::Point> LargestContour(const Image& image)
{
    cv::Mat binary;
    cv::threshold(bench::View(image), binary, dark + step / 2, 255, cv::THRESH_BINARY);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    return contours.empty() ? std::vector<cv::Point>()
                            : *std::max_element(contours.begin(), contours.end(),
                                                [](auto& a, auto& b) { return a.size() < b.size(); });
}

std::vector<double> PeerEllipse(const Pose& pose, const Image& image)
{
    const auto contour = LargestContour(image);
    if (contour.size() < 5) return {};
    const cv::RotatedRect box = cv::fitEllipse(contour);
    double first = box.size.width / 2.0, second = box.size.height / 2.0, angle = box.angle;
    if (first < second) {
        std::swap(first, second);
        angle += 90;
    }
    return {box.center.x - pose.x, box.center.y - pose.y, first - firstAxis, second - secondAxis,
            Turned(angle - pose.degrees, 180)};
}

std::vector<double> PeerRectangle(const Pose& pose, const Image& image)
{
    const auto contour = LargestContour(image);
    if (contour.size() < 4) return {};
    const cv::RotatedRect box = cv::minAreaRect(contour);
    double w = box.size.width, h = box.size.height, angle = box.angle;
    if (w < h) {
        std::swap(w, h);
        angle += 90;
    }
    return {box.center.x - pose.x, box.center.y - pose.y, w - width, h - height, Turned(angle - pose.degrees, 180)};
}

/// Root mean square errors over the poses, and times, with a blur of 1 and a noise of 2.
void BesideOpenCV(const Subject& subject, const char* peerName, const Peer& peer)
{
    std::vector<double> sums[3];
    int found[3] = {};
    double times[3] = {};
    for (auto& sum : sums)
        sum.assign(subject.quantities.size(), 0);
    rendered::Noise random(1);
    for (const Pose& pose : subject.poses) {
        const Picture picture(size, size, 1, [&](double x, double y) { return subject.distance(pose, x, y); });
        Image image;
        picture.Shoot(dark, step, 2, random, image);
        const std::array<std::function<std::vector<double>()>, 3> all{
            [&] { return subject.errors(pose, image, 1, false); }, [&] { return subject.errors(pose, image, 1, true); },
            [&] { return peer(pose, image); }};
        const auto shortest = bench::Race<3>({[&] { all[0](); }, [&] { all[1](); }, [&] { all[2](); }}, 9);
        for (std::size_t i = 0; i < 3; i++) {
            times[i] += shortest[i] / static_cast<double>(subject.poses.size());
            const auto e = all[i]();
            if (e.empty()) continue;
            found[i]++;
            for (std::size_t q = 0; q < e.size(); q++)
                sums[i][q] += e[q] * e[q];
        }
    }
    const char* names[] = {"vertex", "model", peerName};
    for (int i = 0; i < 3; i++) {
        std::printf("%-10s %-22s %2d of %zu, %8.1f us (peer/ours %5.1f)", subject.name, names[i], found[i],
                    subject.poses.size(), times[i], times[2] / times[i]);
        for (std::size_t q = 0; q < sums[i].size(); q++)
            std::printf("  %s %.4f", subject.quantities[q], std::sqrt(sums[i][q] / std::max(found[i], 1)));
        std::printf("\n");
    }
}

/// A line gauge of 100 probes of 32 pixels and a breadth of 5, beside a plain bilinear loop over as many sub-samples.
void Speed()
{
    Image image;
    image.Set(600, 200, Gray);
    for (int y = 0; y < image.Height; y++)
        for (int x = 0; x < image.Width; x++)
            image.Row(y)[x] = static_cast<std::uint8_t>(y < 100 ? 50 : 200);
    EdgeLine gauge;
    gauge.Breadth = breadth;
    gauge.Smoothing = 3;
    volatile double kept = 0;
    for (const double angle : {0.0, 3.0}) {
        gauge.Locate(XY(300, 100.3), 495, angle, probe);
        const auto bilinear = [&] {
            double sum = 0;
            for (int i = 0; i < 100; i++)
                for (int k = 0; k < 32; k++)
                    for (int j = 0; j < breadth; j++) {
                        const double x = 40.3 + 5 * i + j + 0.05 * k, y = 84.2 + k;
                        const int a = static_cast<int>(x), b = static_cast<int>(y);
                        const double u = x - a, v = y - b;
                        const std::uint8_t *p = image.Row(b) + a, *q = image.Row(b + 1) + a;
                        sum += (1 - v) * ((1 - u) * p[0] + u * p[1]) + v * ((1 - u) * q[0] + u * q[1]);
                    }
            kept = kept + sum;
        };
        for (const bool model : {false, true}) {
            gauge.StepModel = model;
            const auto [mine, plain] = bench::Race<2>({[&] { gauge.Detect(image); }, bilinear}, 201);
            const double samples = 16000;
            std::printf("line gauge at %g degrees, %-6s %3d probes: %6.2f ns a sub-sample, %5.2f of a plain loop\n",
                        angle, model ? "model" : "vertex", int(gauge.NumSamples), 1000 * mine / samples, mine / plain);
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    const std::string part = argc > 2 ? argv[2] : "";
    const Subject subjects[] = {Point(), Line(), Arc(), Ellipse(), Rectangle()};
    if (part.empty() || part == "accuracy")
        for (const Subject& subject : subjects)
            Accuracy(subject);
    if (part.empty() || part == "outliers") {
        std::printf("\na fifth of the edge displaced by six pixels: the largest additional error\n");
        for (int i = 1; i < 5; i++)
            Outliers(subjects[i]);
    }
    if (part.empty() || part == "peer") {
        std::printf("\nroot mean square errors, blur 1, noise 2\n");
        BesideOpenCV(subjects[1], "Canny, fitLine", PeerLine);
        BesideOpenCV(subjects[2], "HoughCircles", PeerCircle);
        BesideOpenCV(subjects[3], "contour, fitEllipse", PeerEllipse);
        BesideOpenCV(subjects[4], "contour, minAreaRect", PeerRectangle);
    }
    if (part.empty() || part == "speed") Speed();
}
