// The geometric transforms on 2048 x 2048 images beside OpenCV on one thread, with memcpy of one image as the floor.
// Behind them the time of a calibration with a target of 2,000 dots. usage: geometry-bench [128|256]: the width of the
// vectors; OpenCV is held to 128 bits for 128.
#include "Bench.h"

#include <opencv2/imgproc.hpp>

#include <numbers>

namespace {

using bench::side;
using Tesk::Geometry;
using Tesk::Pyramid;

/// The inverse map of a turn by `degrees` about the middle, magnified by `scale`, as both contenders take it.
cv::Mat TurnAboutMiddle(double degrees, double scale)
{
    const double a = degrees * std::numbers::pi / 180, c = std::cos(a) / scale, s = std::sin(a) / scale, m = side / 2;
    return (cv::Mat_<double>(2, 3) << c, s, m - (c * m + s * m), -s, c, m - (-s * m + c * m));
}

void Warp(const cv::Mat& m, const Tesk::Image& src, Tesk::Image& dst, bool interpolate)
{
    const auto at = [&](int r, int c) { return m.at<double>(r, c); };
    Geometry::Affine(at(0, 0), at(0, 1), at(0, 2), at(1, 0), at(1, 1), at(1, 2), src, dst, interpolate);
}

void Run(Tesk::PixelTypes type, const char* name)
{
    Tesk::Image src, dst, sized, map;
    bench::Fill(src, type, 1);
    bench::Fill(dst, type, 2);
    const cv::Mat view = bench::View(src);
    cv::Mat result = view.clone(), other;
    bench::Table table(name, src);

    const cv::Mat turn = TurnAboutMiddle(30, 1), inside = TurnAboutMiddle(30, 1.5);
    const auto warp = [&](const char* row, const cv::Mat& m, bool interpolate) {
        const int flags = (interpolate ? cv::INTER_LINEAR : cv::INTER_NEAREST) | cv::WARP_INVERSE_MAP;
        table.Row(
            row, [&src, &dst, m, interpolate] { Warp(m, src, dst, interpolate); },
            [&view, &result, m, flags] { cv::warpAffine(view, result, m, view.size(), flags, cv::BORDER_REPLICATE); });
    };
    warp("rotate 30 bilinear", turn, true);
    warp("rotate 30 nearest", turn, false);
    warp("inside bilinear", inside, true);
    warp("inside nearest", inside, false);

    table.Row(
        "Pyramid::Halve", [&] { Pyramid::Halve(src, sized); },
        [&] {
            cv::resize(view, other, {side / 2, side / 2}, 0, 0, cv::INTER_AREA);
        });
    table.Row(
        "half size", [&] { Geometry::DownSample(side / 2, side / 2, src, sized); },
        [&] {
            cv::resize(view, other, {side / 2, side / 2}, 0, 0, cv::INTER_AREA);
        });
    table.Row(
        "700 x 700", [&] { Geometry::DownSample(700, 700, src, sized); },
        [&] {
            cv::resize(view, other, {700, 700}, 0, 0, cv::INTER_AREA);
        });
    table.Row(
        "Pyramid::Double", [&] { Pyramid::Double(src, sized); },
        [&] {
            cv::resize(view, other, {2 * side, 2 * side}, 0, 0, cv::INTER_LINEAR);
        });
    table.Row(
        "double size", [&] { Geometry::UpSample(2 * side, 2 * side, src, sized); },
        [&] {
            cv::resize(view, other, {2 * side, 2 * side}, 0, 0, cv::INTER_LINEAR);
        });
    table.Row(
        "flip", [&] { Geometry::Flip(src, dst); }, [&] { cv::flip(view, result, 0); });
    table.Row(
        "mirror", [&] { Geometry::Mirror(src, dst); }, [&] { cv::flip(view, result, 1); });
    table.Row(
        "quarter turn", [&] { Geometry::Turn(1, src, dst); },
        [&] { cv::rotate(view, result, cv::ROTATE_90_CLOCKWISE); });

    map.Set(side, side, Tesk::GeoMap);
    Warp(turn, src, map, true);
    cv::Mat x(side, side, CV_32F), y(side, side, CV_32F), places, fractions;
    for (int j = 0; j < side; j++)
        for (int i = 0; i < side; i++) {
            const auto at = [&](int r, int c) { return turn.at<double>(r, c); };
            x.at<float>(j, i) = static_cast<float>(at(0, 0) * i + at(0, 1) * j + at(0, 2));
            y.at<float>(j, i) = static_cast<float>(at(1, 0) * i + at(1, 1) * j + at(1, 2));
        }
    cv::convertMaps(x, y, places, fractions, CV_16SC2);
    table.Row(
        "map bilinear", [&] { Geometry::Transform(map, src, dst); },
        [&] { cv::remap(view, result, places, fractions, cv::INTER_LINEAR, cv::BORDER_REPLICATE); });
}

/// 50 x 40 dark dots, turned a little.
void CalibrateDots()
{
    constexpr int columns = 50, rows = 40;
    constexpr double step = 38, radius = 12, turn = 0.05;
    Tesk::Image image;
    image.Set(side, side, Tesk::Gray);
    for (int y = 0; y < side; y++)
        for (int x = 0; x < side; x++) {
            const double u = (x - 90 + turn * (y - 180)) / step, v = (y - 180 - turn * (x - 90)) / step,
                         c = std::clamp(std::round(u), 0.0, columns - 1.0),
                         r = std::clamp(std::round(v), 0.0, rows - 1.0);
            const double inside = std::clamp(radius - step * std::hypot(u - c, v - r) + 0.5, 0.0, 1.0);
            image.Row(y)[x] = static_cast<std::uint8_t>(220 - 180 * inside);
        }
    Geometry geometry;
    for (const Tesk::RegistrationModels model : {Tesk::Similarity, Tesk::Perspective, Tesk::General}) {
        const auto [time] = bench::Race<1>({[&] { geometry.CalibrateTarget(model, image, 1); }});
        std::printf("CalibrateTarget, model %d, %d dots: %.2f ms\n", model, int(geometry.NumAnchors), time / 1000);
    }
}

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    Run(Tesk::Gray, "Gray");
    Run(Tesk::Rgb, "Rgb");
    CalibrateDots();
    return 0;
}
