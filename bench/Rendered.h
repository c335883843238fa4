// Pictures of shapes at known places, and how exactly such a picture can tell a place at best.
#pragma once

#define TESK_NO_USING_NAMESPACE
#include "Tesk.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

namespace rendered {

struct Pose
{
    double x, y, degrees;
};

class Noise
{
public:
    explicit Noise(unsigned seed) : engine_(seed) {}
    double Next(double sigma) { return sigma > 0 ? sigma * normal_(engine_) : 0; }

private:
    std::mt19937 engine_;
    std::normal_distribution<double> normal_;
};

/// A shape seen through a lens: the light that falls on the area of each pixel, blurred by a Gaussian. All of it is
/// done on a grid of `fine` by `fine` cells a pixel.
class Picture
{
public:
    template <typename Distance>
    Picture(int width, int height, double blur, Distance distance) : width_(width), height_(height)
    {
        const int w = fine * width, h = fine * height;
        std::vector<float> cells(static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
        for (int y = 0; y < h; y++)
            for (int x = 0; x < w; x++)
                cells[static_cast<std::size_t>(y) * static_cast<std::size_t>(w) + static_cast<std::size_t>(x)] =
                    static_cast<float>(std::clamp(0.5 - fine * distance(Centre(x), Centre(y)), 0.0, 1.0));
        Blur(cells, w, h, 1, blur * fine);
        Blur(cells, h, w, w, blur * fine);
        light_.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
        for (int y = 0; y < h; y++)
            for (int x = 0; x < w; x++)
                light_[static_cast<std::size_t>(y / fine) * static_cast<std::size_t>(width) +
                       static_cast<std::size_t>(x / fine)] +=
                    cells[static_cast<std::size_t>(y) * static_cast<std::size_t>(w) + static_cast<std::size_t>(x)] /
                    (fine * fine);
    }

    /// Takes the picture: gray values from `dark` to `dark + step`, with noise of the camera, in whole levels.
    void Shoot(double dark, double step, double sigma, Noise& noise, Tesk::Image& image) const
    {
        image.Set(width_, height_, Tesk::Gray);
        for (int y = 0; y < height_; y++)
            for (int x = 0; x < width_; x++) {
                const double light = light_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                                            static_cast<std::size_t>(x)];
                image.Row(y)[x] =
                    static_cast<std::uint8_t>(std::clamp(dark + step * light + noise.Next(sigma) + 0.5, 0.0, 255.0));
            }
    }

private:
    static constexpr int fine = 4;

    /// The pixel at 0 reaches from -0.5 to 0.5.
    static double Centre(int cell) { return (cell + 0.5) / fine - 0.5; }

    /// Along lines whose cells are `stride` apart: all rows, or with `stride` the width all columns.
    static void Blur(std::vector<float>& cells, int count, int lines, int stride, double sigma)
    {
        const int reach = static_cast<int>(std::ceil(4.5 * sigma));
        std::vector<float> weights;
        double sum = 0;
        for (int i = -reach; i <= reach; i++)
            sum += std::exp(-0.5 * i * i / (sigma * sigma));
        for (int i = -reach; i <= reach; i++)
            weights.push_back(static_cast<float>(std::exp(-0.5 * i * i / (sigma * sigma)) / sum));
        std::vector<float> line(static_cast<std::size_t>(count + 2 * reach)), out(static_cast<std::size_t>(count));
        const std::ptrdiff_t next = stride == 1 ? count : 1;
        for (int l = 0; l < lines; l++) {
            float* first = cells.data() + l * next;
            for (int i = -reach; i < count + reach; i++)
                line[static_cast<std::size_t>(i + reach)] =
                    first[static_cast<std::ptrdiff_t>(std::clamp(i, 0, count - 1)) * stride];
            std::fill(out.begin(), out.end(), 0.0f);
            for (std::size_t k = 0; k < weights.size(); k++)
                for (std::size_t i = 0; i < out.size(); i++)
                    out[i] += weights[k] * line[i + k];
            for (int i = 0; i < count; i++)
                first[static_cast<std::ptrdiff_t>(i) * stride] = out[static_cast<std::size_t>(i)];
        }
    }

    int width_, height_;
    std::vector<double> light_;
};

/// The distance of a place from an ellipse about 0 with upright axes, negative inside: Newton's steps for the nearest
/// parameter.
inline double EllipseDistance(double x, double y, double a, double b)
{
    const double px = std::abs(x), py = std::abs(y);
    // Far from the edge only the side matters.
    const double level = std::hypot(px / a, py / b);
    if (level < 0.6) return (level - 1) * std::min(a, b);
    double t = std::atan2(a * py, b * px);
    for (int i = 0; i < 6; i++) {
        const double c = std::cos(t), s = std::sin(t);
        const double slope = (a * c - px) * -a * s + (b * s - py) * b * c;
        const double bend = a * a * s * s + b * b * c * c - (a * c - px) * a * c - (b * s - py) * b * s;
        if (std::abs(bend) < 1e-12) break;
        t = std::clamp(t - slope / bend, 0.0, std::numbers::pi / 2);
    }
    const double distance = std::hypot(a * std::cos(t) - px, b * std::sin(t) - py);
    return level < 1 ? -distance : distance;
}

/// Solves and inverts a small symmetric matrix in place; rows of `size`.
inline void Invert(std::vector<double>& m, std::size_t size)
{
    std::vector<double> inverse(size * size);
    for (std::size_t i = 0; i < size; i++)
        inverse[i * size + i] = 1;
    for (std::size_t k = 0; k < size; k++) {
        std::size_t pivot = k;
        for (std::size_t i = k + 1; i < size; i++)
            if (std::abs(m[i * size + k]) > std::abs(m[pivot * size + k])) pivot = i;
        for (std::size_t j = 0; j < size; j++) {
            std::swap(m[k * size + j], m[pivot * size + j]);
            std::swap(inverse[k * size + j], inverse[pivot * size + j]);
        }
        const double scale = 1 / m[k * size + k];
        for (std::size_t j = 0; j < size; j++) {
            m[k * size + j] *= scale;
            inverse[k * size + j] *= scale;
        }
        for (std::size_t i = 0; i < size; i++) {
            if (i == k) continue;
            const double factor = m[i * size + k];
            for (std::size_t j = 0; j < size; j++) {
                m[i * size + j] -= factor * m[k * size + j];
                inverse[i * size + j] -= factor * inverse[k * size + j];
            }
        }
    }
    m = std::move(inverse);
}

/// The bound of Cramer and Rao for the place of one probe: pixels of independent noise, a blurred step whose offset,
/// height and width are not known either.
inline double ProbeBound(double blur, double noise, double step, int breadth, double length)
{
    // The area of a pixel blurs, too.
    const double width = std::sqrt(blur * blur + 1.0 / 12);
    std::vector<double> information(16);
    for (double x = -length / 2; x <= length / 2; x++) {
        const double bell = std::exp(-0.5 * x * x / (width * width)) / (width * std::sqrt(2 * std::numbers::pi));
        const double terms[] = {1, 0.5 * std::erfc(-x / (width * std::numbers::sqrt2)), -step * bell,
                                -step * bell * x / width};
        for (std::size_t i = 0; i < 4; i++)
            for (std::size_t j = 0; j < 4; j++)
                information[i * 4 + j] += terms[i] * terms[j];
    }
    Invert(information, 4);
    return noise * std::sqrt(information[2 * 4 + 2] / breadth);
}

/// The bounds of quantities that probes tell of: `rows` holds, for each probe, by how much its edge moves with a unit
/// of each.
inline std::vector<double> Bounds(const std::vector<std::vector<double>>& rows, double probeBound)
{
    const std::size_t size = rows[0].size();
    std::vector<double> information(size * size), bounds;
    for (const auto& row : rows)
        for (std::size_t i = 0; i < size; i++)
            for (std::size_t j = 0; j < size; j++)
                information[i * size + j] += row[i] * row[j];
    Invert(information, size);
    for (std::size_t i = 0; i < size; i++)
        bounds.push_back(probeBound * std::sqrt(information[i * size + i]));
    return bounds;
}

} // namespace rendered
