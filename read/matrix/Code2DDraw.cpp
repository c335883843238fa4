// What a reader of matrix codes found, drawn over the picture.
#include "foundation/Graph.h"
#include "read/Code2DReader.h"
#include "read/core/SymbologyLabel.h"
#include "read/core/WideBytes.h"
#include "read/matrix/ReaderState.h"

#include <cstddef>
#include <string>

namespace Tesk {

using namespace matrix;

namespace {

void DrawText(const SymbolRecord& symbol, XY origin, bool viewName)
{
    std::wstring text = WideBytes(symbol.text);
    if (viewName) text += std::wstring(L" (") + SymbologyLabel(symbol.symbology) + L")";
    if (Graph::AutoColors) Graph::TextColor = Green;
    Graph::TextAlignX = -1;
    Graph::TextAlignY = 1;
    Graph::Text(symbol.x + origin.X, symbol.y + origin.Y, text.c_str());
}

} // namespace

void Code2DReader::Draw(bool ViewText, bool ViewName, bool All, bool HighlightBest) const
{
    const GraphSettings settings;
    const auto& symbols = state_->search.symbols;
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        const bool chosen = static_cast<int>(i) == chosen_;
        if (!All && !chosen) continue;
        const auto& c = symbols[i].corners;
        const XY o = state_->origin;
        if (Graph::AutoColors) Graph::LineColor = All && HighlightBest && !chosen ? Yellow : Green;
        for (std::size_t k = 0; k < 4; ++k) {
            const XY from = c[k] + o, to = c[(k + 1) % 4] + o;
            Graph::Line(from.X, from.Y, to.X, to.Y);
        }
        if (ViewText) DrawText(symbols[i], o, ViewName);
    }
}

} // namespace Tesk
