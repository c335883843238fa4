// Counting levels and what follows from the counts, beside OpenCV. Noise keeps every count busy; a flat image makes
// each pixel wait for the count of the one before.
#include "Bench.h"

#include <opencv2/imgproc.hpp>

namespace {

void Flat(Tesk::Image& image, Tesk::PixelTypes type)
{
    image.Set(bench::side, bench::side, type);
    Tesk::Operator::Copy(77, image);
}

void Compute(bench::Table& table, const std::string& name, const Tesk::Image& image)
{
    const cv::Mat mat = bench::View(image);
    const int channels[] = {0, 1, 2}, sizes[] = {image.Type == Tesk::Gray16 ? 65536 : 256};
    const float range[] = {0, static_cast<float>(sizes[0])};
    const float* ranges[] = {range};
    Tesk::Histogram histogram;
    cv::Mat counts;
    table.Row(
        name, [&] { histogram.Compute(image); },
        [&] {
            for (int c = 0; c < mat.channels(); c++)
                cv::calcHist(&mat, 1, channels + c, cv::Mat(), counts, 1, sizes, ranges);
        });
}

void Images(Tesk::PixelTypes type, const char* name)
{
    Tesk::Image noise, flat, other, dst;
    bench::Fill(noise, type, 1);
    bench::Fill(other, type, 2);
    Flat(flat, type);
    const cv::Mat cn = bench::View(noise), cf = bench::View(flat), co = bench::View(other);
    cv::Mat cd;
    bench::Table table(name, noise);
    Compute(table, "compute, noise", noise);
    Compute(table, "compute, flat", flat);
    if (type == Tesk::Gray) {
        table.Row(
            "equalize, noise", [&] { Tesk::Operator::Equalize(noise, dst); }, [&] { cv::equalizeHist(cn, cd); });
        table.Row(
            "equalize, flat", [&] { Tesk::Operator::Equalize(flat, dst); }, [&] { cv::equalizeHist(cf, cd); });
        table.Row(
            "best threshold", [&] { Tesk::Operator::Binarize(noise, dst); },
            [&] { cv::threshold(cn, cd, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU); });
        table.Row("noise", [&] { Tesk::Histogram::Noise(noise); });
    }
    double a = 0, b = 0, c = 0;
    cv::Scalar mean, deviation;
    if (type == Tesk::Rgb)
        table.Row(
            "variance", [&] { Tesk::Histogram::Variance(noise, a, b, c); },
            [&] { cv::meanStdDev(cn, mean, deviation); });
    else
        table.Row(
            "variance", [&] { Tesk::Histogram::Variance(noise, a); }, [&] { cv::meanStdDev(cn, mean, deviation); });
    table.Row(
        "absolute differences", [&] { a = Tesk::Histogram::SumAbsoluteDifferences(noise, other, false); },
        [&] { b = cv::norm(cn, co, cv::NORM_L1); });
    table.Row(
        "squared differences", [&] { a = Tesk::Histogram::SumSquaredDifferences(noise, other, false); },
        [&] { b = cv::norm(cn, co, cv::NORM_L2SQR); });
    if (type != Tesk::Gray16)
        table.Row(
            "correlation", [&] { a = Tesk::Histogram::NormalizedCorrelation(noise, other); },
            [&] {
                cv::Mat result;
                cv::matchTemplate(cn, co, result, cv::TM_CCOEFF_NORMED);
            });
}

} // namespace

int main(int argc, char** argv)
{
    bench::Start(argc, argv);
    Images(Tesk::Gray, "Gray");
    Images(Tesk::Gray16, "Gray16");
    Images(Tesk::Rgb, "Rgb");
}
