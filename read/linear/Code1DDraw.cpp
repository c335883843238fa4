// What a reader found, drawn over the picture.
#include "foundation/Graph.h"
#include "read/Code1DReader.h"
#include "read/core/SymbologyLabel.h"
#include "read/core/WideBytes.h"
#include "read/linear/ScanState.h"

#include <string>

namespace Tesk {

using namespace linear;

namespace {

void DrawText(const ScanVote& symbol, bool viewName)
{
    std::wstring text = WideBytes(symbol.Text());
    if (viewName) text += std::wstring(L" (") + SymbologyLabel(symbol.symbology) + L")";
    Graph::TextAlignX = -1;
    Graph::TextAlignY = 1;
    Graph::Text(symbol.corners[0].X, symbol.corners[0].Y, text.c_str());
}

} // namespace

void Code1DReader::Draw(bool ViewText, bool ViewName, bool All, bool HighlightBest) const
{
    const GraphSettings settings;
    for (int i = 0; i < NumDecoded; i++) {
        if (!All && i != chosen_) continue;
        const ScanVote& symbol = state_->ballot[i];
        const auto [a, b, c, d] = symbol.corners;
        Graph::LineColor = HighlightBest && i != chosen_ ? Yellow : Green;
        Graph::TextColor = Graph::LineColor;
        Graph::Polyline4(a, b, c, d, -1);
        if (ViewText) DrawText(symbol, ViewName);
    }
    if (chosen_ < 0) return;
    for (int i = 0; i < state_->inspected.count; i++) {
        const ColorBar& bar = state_->inspected.bars[static_cast<std::size_t>(i)];
        Graph::LineColor = bar.passed ? Green : Red;
        Graph::Polyline4(bar.corners[0], bar.corners[1], bar.corners[2], bar.corners[3], -1);
    }
}

} // namespace Tesk
