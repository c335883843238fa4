// Printed labels as a camera sees them: text, dots, a frame and a bar, moved and turned, with the noise of print and
// camera, and with one defect if wanted.
#pragma once

#include "samples/Scene.h"

#include "Tesk.h"

#include <cmath>
#include <cstdint>
#include <iterator>

namespace labels {

constexpr int width = 480, height = 320;

enum class Defect
{
    None,
    MissingDot,
    Smear,
    WrongLetter,
    Scratch
};

constexpr Defect defects[] = {Defect::MissingDot, Defect::Smear, Defect::WrongLetter, Defect::Scratch};
constexpr const char* names[] = {"good", "missing dot", "smear", "wrong letter", "scratch"};

/// A label that was made: its picture, and where on the untouched label the defect lies.
struct Label
{
    Image picture;
    Limits box{0, 0, 0, 0};
};

/// Sizes in pixels. Of the dots one can be missing; the smear is an ellipse of weak ink, the scratch bares the bar.
constexpr int dots = 9, dotRadius = 6, dotStep = 24, dotX = 144, dotY = 216;
constexpr int barX = 96, barY = 240, barWidth = 288, barHeight = 20;
constexpr int smearWidth = 34, smearHeight = 12, scratchLength = 24, scratchWidth = 3;

/// Draws a label on the flat, 0 for ink and 255 for paper. `place`, at random, tells where the defect is put.
inline void Draw(Defect defect, unsigned place, Label& dst)
{
    Image& image = dst.picture;
    image.Set(width, height, Gray);
    Operator::Copy(255, image);
    const Tesk::GraphSettings kept;
    Graph::BeginImageTarget(image);
    Graph::Zoom = 1;
    Graph::AutoColors = false;
    Graph::LineColor = Graph::TextColor = Black;
    Graph::FillColor = NoColor;
    Graph::TextAlignX = Graph::TextAlignY = -1;
    Graph::LineWidth = 3;
    Graph::Rectangle(64, 60, 352, 212);
    Graph::LineWidth = 1;
    Graph::FontSize = 34;
    Graph::Text(92, 72, defect == Defect::WrongLetter && place % 2 == 0 ? "PART 47-N" : "PART 47-H");
    Graph::Text(288, 72, "B 09-4");
    Graph::Text(288, 132, "05/2028");
    Graph::FontSize = 30;
    Graph::Text(92, 132, defect == Defect::WrongLetter && place % 2 == 1 ? "LOT 2O26-A" : "LOT 2026-B");
    Graph::FillColor = Black;
    const int missing = defect == Defect::MissingDot ? static_cast<int>(place % dots) : -1;
    for (int i = 0; i < dots; i++)
        if (i != missing) Graph::Circle(dotX + dotStep * i, dotY, dotRadius);
    Graph::FillRectangle(Limits(barX, barY, barWidth, barHeight));
    Graph::EndImageTarget(image);

    const auto paint = [&](auto distance, double ink) {
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++) {
                const double part = scene::Coverage(distance(x, y), 2), v = image.Row(y)[x];
                image.Row(y)[x] = static_cast<std::uint8_t>(v + part * (ink - v));
            }
    };
    if (defect == Defect::MissingDot)
        dst.box = Limits(dotX + dotStep * missing - dotRadius, dotY - dotRadius, 2 * dotRadius, 2 * dotRadius);
    if (defect == Defect::Smear) {
        const int cx = 130 + static_cast<int>(place % 220), cy = 190 - static_cast<int>(place / 220 % 5);
        paint(
            [=](int x, int y) {
                return (std::hypot((x - cx) * 2.0 / smearWidth, (y - cy) * 2.0 / smearHeight) - 1) * smearHeight / 2;
            },
            140);
        dst.box = Limits(cx - smearWidth / 2, cy - smearHeight / 2, smearWidth, smearHeight);
    }
    if (defect == Defect::Scratch) {
        const int cx = barX + 20 + static_cast<int>(place % 240), cy = barY + barHeight / 2;
        const double degrees = 20 + static_cast<double>(place % 7) * 20;
        paint([=](int x, int y) { return scene::Rod(x, y, cx, cy, scratchLength, scratchWidth / 2.0, degrees); }, 255);
        dst.box = Limits(cx - scratchLength / 2, barY, scratchLength, barHeight);
    }
    if (defect == Defect::WrongLetter) dst.box = place % 2 == 0 ? Limits(92, 72, 160, 48) : Limits(92, 132, 160, 42);
}

/// Prints a label and takes its picture: moved by up to `shift` pixels and turned by up to `degrees` about its middle,
/// under light that differs by up to 8 %, with noise.
inline void Print(Defect defect, unsigned place, scene::Noise& noise, Label& dst, double shift = 10, double degrees = 2)
{
    Label flat;
    Draw(defect, place, flat);
    dst.box = flat.box;
    Kernel::Binomial(flat.picture, flat.picture);
    Image turned;
    turned.Set(width, height, Gray);
    const XY middle(width / 2.0, height / 2.0),
        to(middle.X + 2 * shift * noise.Next(), middle.Y + 2 * shift * noise.Next());
    Geometry::Rotate(middle, to, 2 * degrees * noise.Next(), 1, flat.picture, turned);
    const double light = 1 + 0.16 * noise.Next();
    dst.picture.Set(width, height, Gray);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++) {
            // The sum of uniform numbers is nearly normal: a deviation of 3.
            const double grain = 5.2 * (noise.Next() + noise.Next() + noise.Next() + noise.Next());
            dst.picture.Row(y)[x] =
                static_cast<std::uint8_t>(Clamp(light * (45 + turned.Row(y)[x] * 0.63) + grain, 0.0, 255.0));
        }
}

/// Teaches a comparator a label, and from good samples how much its pixels vary.
inline void Teach(int samples, scene::Noise& noise, Comparator& comparator)
{
    Label label;
    Image aligned;
    Print(Defect::None, 0, noise, label, 0, 0);
    comparator.SetReference(label.picture, 2, 1, Similarity);
    // Where there is much print, at both ends of the label.
    comparator.AlignerIndex = 0;
    comparator.AlignerTrainROI(Limits(76, 52, 120, 150));
    comparator.AlignerIndex = 1;
    comparator.AlignerTrainROI(Limits(284, 52, 120, 150));
    comparator.AlignerIndex = -1;
    comparator.AlignerSearchRange(-24, -24, 24, 24, -3, 3, 1, 1);
    comparator.TrainAligners();
    comparator.GainCompensation = true;
    comparator.StartTolerancing(true);
    for (int i = 0; i < samples && Status::Error().Code == NoError; i++) {
        Print(Defect::None, 0, noise, label);
        comparator.Align(label.picture, aligned);
        comparator.NextTolerancing(aligned);
    }
    comparator.EndTolerancing(6);
}

/// What an inspection says of a label.
struct Verdict
{
    bool isFound = false; ///< a blob at the defect
    int elsewhere = 0;    ///< blobs that are at none
};

/// Judges by the blobs of the differences, which count from the corner of the working area; boxes on the label count
/// from its own. The blobs must have their boxes.
inline Verdict Judge(const Label& label, const Limits& area, const Blobs& blobs)
{
    constexpr int margin = 4;
    Verdict verdict;
    Limits box(label.box.X - area.X - margin, label.box.Y - area.Y - margin, label.box.Width + 2 * margin,
               label.box.Height + 2 * margin);
    for (int i = 0; i < blobs.NumBlobs; i++) {
        Limits at(blobs.IntFeature(i, BlobBoxX), blobs.IntFeature(i, BlobBoxY), blobs.IntFeature(i, BlobBoxWidth),
                  blobs.IntFeature(i, BlobBoxHeight));
        if (label.box.Width > 0 && at.Intersect(box))
            verdict.isFound = true;
        else
            verdict.elsewhere++;
    }
    return verdict;
}

/// The least pixels of a blob that is told as a difference.
constexpr int leastDefect = 8;

inline Verdict Inspect(Comparator& comparator, Label& label, int leastArea = leastDefect)
{
    Image aligned;
    Blobs blobs;
    comparator.Align(label.picture, aligned);
    if (Status::Error().Code != NoError) return {false, 1};
    comparator.Differences(aligned, blobs, leastArea);
    comparator.DetectorIndex = 0;
    blobs.Evaluate(BlobBox, aligned);
    return Judge(label, comparator.DetectorROI(), blobs);
}

} // namespace labels
