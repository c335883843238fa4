// Drawing of a locator's model and of the places that it found.
#include "match/Locator.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "image/core/Refusals.h"
#include "match/locator/LocatorPlace.h"

#include <cmath>
#include <cwchar>

namespace Tesk {

using namespace locator;

namespace {

/// Of the marks of a location's axes, in pixels of the screen.
constexpr double arrowLength = 16;

void Choose(bool isHit, bool isGood)
{
    if (!Graph::AutoColors) return;
    Graph::LineColor = isHit ? Blue : isGood ? Green : Red;
    Graph::PointColor = isHit ? Cyan : isGood ? Yellow : Magenta;
}

void DrawFrame(const Candidate& found, const Model& model, const Image& pattern, double x, double y)
{
    const double c = std::cos(found.angle), s = std::sin(found.angle), k = found.scale,
                 w = (pattern.Width - 1) / 2.0 * k, h = (pattern.Height - 1) / 2.0 * k;
    if (model.mode == Modes::Disk) {
        const PredefinedColors fill = Graph::FillColor;
        Graph::FillColor = NoColor;
        Graph::Circle(x, y, Min(w, h));
        Graph::FillColor = fill;
    }
    const auto at = [=](double u, double v) { return XY(x + c * u + s * v, y - s * u + c * v); };
    const XY corners[] = {at(w, h), at(-w, h), at(-w, -h), at(w, -h)};
    Graph::Polyline(corners, 4, true);
    const double length = arrowLength / Graph::Zoom;
    Graph::Line(x, y, x + c * length, y - s * length, 1);
    Graph::Line(x, y, x + s * length, y + c * length, 1);
}

void DrawText(const Candidate& found, bool scores, bool contrasts, double x, double y)
{
    wchar_t text[64];
    if (scores && contrasts)
        std::swprintf(text, 64, L"%.3f / %.3f", found.score, found.contrast);
    else if (scores || contrasts)
        std::swprintf(text, 64, L"%.3f", scores ? found.score : found.contrast);
    else
        return;
    Graph::Text(x, y, text);
}

} // namespace

void Locator::Draw(bool ViewScores, bool ViewContrasts, double MinScore, int Depth) const
{
    const Entry entry("Tesk::Locator::Draw");
    if (!model_ || NumLocations < 1) return;
    const GraphSettings settings;
    const Level &stop = model_->At(StopDepth), &level = Depth < 0 ? stop : model_->At(Depth);
    const double ratio = stop.factor / level.factor;
    entry.Guards(images::noWorkingMemory, [&] {
        Outline outline;
        for (int i = 0; i < NumLocations; i++) {
            const Candidate& found = locations_->list[static_cast<std::size_t>(i)];
            const double x = found.x * ratio, y = found.y * ratio;
            Choose(Handle == AllHandle && HitIndex == i, found.score >= MinScore);
            DrawFrame(found, *model_, level.pattern, x, y);
            if (Edges) {
                const XY target((found.ix + originX_) * ratio, (found.iy + originY_) * ratio);
                outline.Sample(level, found.angle, found.scale, target, anywhere);
                for (const Pixel& p : outline.points)
                    Graph::Plot(p.x, p.y, 0);
            }
            DrawText(found, ViewScores, ViewContrasts, x, y);
        }
    });
}

void Locator::DrawModel() const
{
    const Entry entry("Tesk::Locator::DrawModel");
    if (!model_ || StopDepth < 0 || StopDepth >= model_->areaDepths) {
        entry.Refuse(OutOfRange, L"The depth value (%d) must be in range [0..%d]", StopDepth,
                     Max(MaxAreaDepths - 1, 0));
        return;
    }
    const GraphSettings settings;
    Graph::PointColor = Green;
    for (const EdgeSample& e : model_->At(StopDepth).edges)
        Graph::Plot(e.x + model_->x, e.y + model_->y, 0);
}

} // namespace Tesk
