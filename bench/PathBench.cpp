// Fitting and enclosing the sites of a path, beside OpenCV: the contour of a large ellipse with jagged sides.
#include "Bench.h"

#include <opencv2/imgproc.hpp>

namespace {

constexpr int sites = 20000;

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    Tesk::Image frame;
    frame.Set(bench::side, bench::side, Tesk::Gray);
    Tesk::Path path;
    std::vector<cv::Point> points;
    for (int i = 0; i < sites; i++) {
        const double t = i * 2 * 3.14159265358979 / sites, jag = i * 7 % 5 - 2;
        path.Append(static_cast<int>(1000 + (900 + jag) * std::cos(t)),
                    static_cast<int>(900 + (500 + jag) * std::sin(t)));
        points.emplace_back(path.Vertex(i).X, path.Vertex(i).Y);
    }
    path.Closed = true;

    bench::Table table("path", frame);
    Tesk::XY center(0, 0), axis(0, 0);
    double a = 0, b = 0, c = 0, d = 0, e = 0;
    int area = 0;
    cv::Vec4f line;
    cv::Point2f middle;
    float radius = 0;
    Tesk::Path hull;
    std::vector<cv::Point> corners;
    table.Row(
        "line, accurate", [&] { path.LineFit(center, a); },
        [&] { cv::fitLine(points, line, cv::DIST_L2, 0, 0.01, 0.01); });
    table.Row("line, robust", [&] { path.LineFit(center, a, Tesk::RobustFit); });
    table.Row("circle, accurate", [&] { path.CircleFit(center, a); });
    table.Row("circle, robust", [&] { path.CircleFit(center, a, Tesk::RobustFit); });
    table.Row(
        "ellipse, accurate", [&] { path.EllipseFit(center, axis, a); }, [&] { cv::fitEllipseDirect(points); });
    table.Row("ellipse, robust", [&] { path.EllipseFit(center, axis, a, Tesk::RobustFit); });
    table.Row(
        "hull, any", [&] { path.ConvexHull(hull, false); }, [&] { cv::convexHull(points, corners); });
    table.Row(
        "hull, simple", [&] { path.ConvexHull(hull, true); }, [&] { cv::convexHull(points, corners); });
    table.Row(
        "rectangle", [&] { path.Rectangle(a, b, c, d, e, false); }, [&] { cv::minAreaRect(points); });
    table.Row(
        "circle around", [&] { path.Circle(a, b, c, false); }, [&] { cv::minEnclosingCircle(points, middle, radius); });
    table.Row(
        "area", [&] { area += path.Area(); }, [&] { a += cv::contourArea(points); });
    table.Row(
        "moments", [&] { path.FilledEllipse(area, a, b, c, d, e, a); }, [&] { a += cv::moments(points).m00; });
    table.Row("smooth", [&] { path.Smooth(hull, 3); });
    table.Row("vectorize", [&] { path.Vectorize(hull, 3); });
    return 0;
}
