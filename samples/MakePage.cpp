// Makes samples/page.png: a printed page under a lamp at one side, slightly uneven, with the noise of a camera.
// The letters are drawn by the library on an image target; the fonts of the machine give their shapes.
#include "Tesk.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

int main(int argc, char** argv)
{
    constexpr int width = 480, height = 320;
    const wchar_t* lines[] = {L"Washer, outer 24.0 mm, inner 13.0 mm", L"Rod, length 80.5 mm, both ends flat",
                              L"Plate, four holes of 6.2 mm",          L"Lot 0117, inspected by hand",
                              L"Edges sharper than 0.05 mm",           L"See drawing 6.1.1 for tolerances"};
    Image page;
    page.Set(width, height, Gray);
    Operator::Copy(255, page);
    Graph::BeginImageTarget(page);
    Graph::TextColor = Black;
    Graph::FillColor = NoColor;
    Graph::FontName = L"DejaVu Sans";
    Graph::FontSize = 22;
    double y = 24;
    for (const wchar_t* line : lines) {
        Graph::Text(24, y, line);
        y += 46;
    }
    Graph::LineColor = Black;
    Graph::LineWidth = 2;
    Graph::Line(24, 296, 456, 296);
    Graph::EndImageTarget(page);

    // The lamp stands at the left; its light falls off across the page, and the sensor adds its noise.
    std::uint64_t state = 7;
    for (int row = 0; row < height; row++)
        for (int x = 0; x < width; x++) {
            state = state * 6364136223846793005u + 1442695040888963407u;
            const double noise = static_cast<double>(state >> 40) / static_cast<double>(1u << 24) - 0.5;
            const double light = 0.95 * std::exp(-std::hypot(x + 60.0, 0.8 * (row - 120.0)) / 420.0) + 0.08;
            const double ink = 0.25 + 0.75 * page.Row(row)[x] / 255.0;
            page.Row(row)[x] = static_cast<std::uint8_t>(Clamp(255 * light * ink + 6 * noise, 0.0, 255.0));
        }
    page.Write(argc > 1 ? argv[1] : "samples/page.png");
    return Status::Error().Code;
}
