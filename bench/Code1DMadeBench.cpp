// How many symbols are read right and wrong where no peer reads well: faint, slanted, small, blurred, bent and torn
// ones, twenty of each, and the symbologies that the peers lack. The program zint makes the symbols.
#include "tests/read/linear/Symbols.h"

#include "foundation/Status.h"
#include "read/Code1DReader.h"

#include <array>
#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Tesk;

/// The modules of a symbol, '1' for bars, that zint makes of a text.
std::string Encode(int symbology, const std::string& text)
{
    const std::string command = "zint -b " + std::to_string(symbology) + " --dump -d '" + text + "'";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string modules;
    for (int c = std::fgetc(pipe.get()); c != EOF && c != '\n'; c = std::fgetc(pipe.get())) {
        if (!std::isxdigit(c)) continue;
        const int digit = std::isdigit(c) ? c - '0' : std::toupper(c) - 'A' + 10;
        for (int bit = 3; bit >= 0; bit--)
            modules += digit >> bit & 1 ? '1' : '0';
    }
    while (!modules.empty() && modules.back() == '0')
        modules.pop_back();
    return modules;
}

struct Random
{
    checks::Noise noise;
    double operator()(double from, double to) { return from + (to - from) * (noise() >> 8) / double(1 << 24); }
    std::string Digits(int count)
    {
        std::string digits;
        for (int i = 0; i < count; i++)
            digits += static_cast<char>('0' + static_cast<int>((*this)(0, 9.999)));
        return digits;
    }
};

/// A mean by a Gaussian over rows and columns.
void Blur(Image& image, double sigma)
{
    const int reach = static_cast<int>(std::ceil(3 * sigma)), width = image.Width, height = image.Height;
    std::vector<double> weights;
    double sum = 0;
    for (int i = -reach; i <= reach; i++)
        sum += weights.emplace_back(std::exp(-i * i / (2 * sigma * sigma)));
    std::vector<double> row(static_cast<std::size_t>(width * height)), both(row.size());
    const auto at = [&](std::vector<double>& v, int x, int y) -> double& {
        return v[static_cast<std::size_t>(std::clamp(y, 0, height - 1) * width + std::clamp(x, 0, width - 1))];
    };
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            for (int i = -reach; i <= reach; i++)
                at(row, x, y) +=
                    weights[static_cast<std::size_t>(i + reach)] / sum * image.Row(y)[std::clamp(x + i, 0, width - 1)];
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            for (int i = -reach; i <= reach; i++)
                at(both, x, y) += weights[static_cast<std::size_t>(i + reach)] / sum * at(row, x, y + i);
            image.Row(y)[x] = static_cast<std::uint8_t>(std::lround(at(both, x, y)));
        }
}

/// On a cylinder that turns away by 55 degrees to both sides of the symbol.
void Bend(Image& image, double width)
{
    Image flat;
    flat = image;
    const double half = width / 2, farthest = 55 * 3.14159265358979 / 180, center = (image.Width - 1) / 2.0;
    const double radius = half / std::sin(farthest);
    for (int y = 0; y < image.Height; y++)
        for (int x = 0; x < image.Width; x++) {
            const double sine = (x - center) / radius;
            const double from = std::abs(sine) < 1 ? center + half * std::asin(sine) / farthest : 0;
            const int left = std::clamp(static_cast<int>(from), 0, image.Width - 2);
            const double part = std::clamp(from - left, 0.0, 1.0);
            image.Row(y)[x] = static_cast<std::uint8_t>(flat.Row(y)[left] * (1 - part) + flat.Row(y)[left + 1] * part);
        }
}

struct Kind
{
    int number; ///< of zint
    std::function<std::string(Random&)> text;
    bool Code1DReader::*enable;
};

const std::array<Kind, 4>& UsualKinds()
{
    static const std::array<Kind, 4> kinds = {
        {{13, [](Random& r) { return r.Digits(12); }, &Code1DReader::DetectEAN13},
         {20, [](Random& r) { return "AB" + r.Digits(3) + "x" + r.Digits(2); }, &Code1DReader::DetectEAN128},
         {8, [](Random& r) { return "K" + r.Digits(4); }, &Code1DReader::Detect39},
         {3, [](Random& r) { return r.Digits(10); }, &Code1DReader::Detect2of5}}};
    return kinds;
}

void DisableAll(Code1DReader& reader)
{
    reader.DetectEAN128 = reader.DetectEAN13 = reader.DetectEAN8 = reader.DetectUPCA = reader.DetectUPCE = false;
    reader.Detect2of5 = reader.Detect39 = reader.Detect39Extended = reader.Detect93 = reader.DetectCodabar = false;
    reader.DetectDatabar = reader.DetectDatabarLimited = false;
}

/// Whether a text is what was encoded, or that with a check digit.
bool IsRight(const std::string& read, const std::string& text)
{
    return read == text || (read.size() > text.size() && read.size() <= text.size() + 2 && read.starts_with(text));
}

struct Row
{
    const char* name;
    std::function<void(checks::Print&, Random&)> print;
    std::function<void(Image&, const checks::Print&, Random&, double)> degrade;
};

void Count(const char* name, const Row& row, const std::vector<Kind>& kinds)
{
    int right = 0, wrong = 0, none = 0;
    double time = 0;
    Random random{{static_cast<std::uint32_t>(name[0] * 251 + name[1])}};
    for (int i = 0; i < 20; i++) {
        const Kind& kind = kinds[static_cast<std::size_t>(i) % kinds.size()];
        const std::string text = kind.text(random), modules = Encode(kind.number, text);
        checks::Print print;
        print.dark = 40;
        print.bright = 215;
        print.height = 70;
        print.angle = random(-2, 2);
        if (row.print) row.print(print, random);
        const double width = print.module * static_cast<double>(modules.size());
        const int side = static_cast<int>(width) + 100;
        Image image;
        checks::Blank(image, side, std::abs(print.angle) > 10 ? side : 180, print.bright);
        print.x = (image.Width - 1) / 2.0 + random(-0.5, 0.5);
        print.y = (image.Height - 1) / 2.0 + random(-0.5, 0.5);
        checks::Paint<GrayPixel>(image, modules, print);
        if (row.degrade) row.degrade(image, print, random, width);
        checks::BlurAndNoise(image, 0, 2);
        Code1DReader reader;
        DisableAll(reader);
        reader.*kind.enable = true;
        const auto begin = std::chrono::steady_clock::now();
        const bool decoded = reader.Decode(image);
        time += std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count();
        const std::string read = static_cast<const char*>(reader.AsciiString);
        !decoded ? none++ : IsRight(read, text) ? right++ : wrong++;
    }
    std::printf("%-28s %2d right %2d wrong %2d none %6.0f us\n", name, right, wrong, none, time / 20);
}

} // namespace

int main()
{
    Status::ErrorBehavior(IgnoreIt);
    const std::vector<Kind> usual(UsualKinds().begin(), UsualKinds().end());
    using Print = checks::Print;
    const Row rows[] = {
        {"plain", nullptr, nullptr},
        {"contrast of 15", [](Print& p, Random&) { p.dark = 110, p.bright = 125; }, nullptr},
        {"slanted by 30 degrees", [](Print& p, Random& r) { p.angle = 30 + r(-2, 2); }, nullptr},
        {"slanted by 45 degrees", [](Print& p, Random& r) { p.angle = 45 + r(-2, 2); }, nullptr},
        {"1.6 pixels a module", [](Print& p, Random&) { p.module = 1.6; }, nullptr},
        {"1.6 pixels, 30 degrees", [](Print& p, Random& r) { p.module = 1.6, p.angle = 30 + r(-2, 2); }, nullptr},
        {"blur, sigma 0.4 module", nullptr, [](Image& i, const Print& p, Random&, double) { Blur(i, 0.4 * p.module); }},
        {"blur, sigma 0.6 module", nullptr, [](Image& i, const Print& p, Random&, double) { Blur(i, 0.6 * p.module); }},
        {"blur, sigma 0.8 module", [](Print& p, Random&) { p.module = 3; },
         [](Image& i, const Print& p, Random&, double) { Blur(i, 0.8 * p.module); }},
        {"on a cylinder", [](Print& p, Random&) { p.module = 3; },
         [](Image& i, const Print&, Random&, double width) { Bend(i, width); }},
        {"a fifth torn", nullptr, [](Image& i, const Print& p, Random& r, double) {
             const double level = r(-0.4, 0.2) * p.height, slope = r(-0.1, 0.1);
             for (int y = 0; y < i.Height; y++)
                 for (int x = 0; x < i.Width; x++) {
                     const double v = y - p.y - level - slope * (x - p.x);
                     if (v >= 0 && v < p.height / 5) i.Row(y)[x] = static_cast<std::uint8_t>(r(60, 230));
                 }
         }}};
    for (const Row& row : rows)
        Count(row.name, row, usual);
    const Row plain{"", nullptr, nullptr};
    Count("Code 11", plain, {{1, [](Random& r) { return r.Digits(7); }, &Code1DReader::Detect11}});
    Count("MSI", plain, {{47, [](Random& r) { return r.Digits(7); }, &Code1DReader::DetectMSI}});
    Count("Matrix 2 of 5", plain, {{2, [](Random& r) { return r.Digits(8); }, &Code1DReader::DetectMatrix2of5}});
    Count("Pharmacode", plain, {{51, [](Random& r) { return "1" + r.Digits(3); }, &Code1DReader::DetectPharmacode}});
    return 0;
}
