// What the searches for matrix codes share: taking and keeping symbols, and why none was read.
#include "read/matrix/SymbolSearch.h"

#include "image/histogram/LevelCounts.h"

#include <algorithm>
#include <utility>

namespace Tesk::matrix {

void SymbolRecord::Take(const codewords::SymbolText& read)
{
    text.assign(read.View());
    readFNC1 = read.readFNC1;
    readerProgramming = read.readerProgramming;
    symbolPosition = read.symbolPosition;
    symbolTotal = read.symbolTotal;
    symbolFileID1 = read.symbolFileID1;
    symbolFileID2 = read.symbolFileID2;
    parityData = read.parityData;
}

bool SymbolRecord::Holds(XY place) const
{
    int left = 0, right = 0;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const XY from = corners[i], along = corners[(i + 1) % corners.size()] - from, to = place - from;
        const double cross = along.X * to.Y - along.Y * to.X;
        left += cross >= 0;
        right += cross <= 0;
    }
    return left == 4 || right == 4;
}

SearchFailure::SearchFailure()
{
    Clear();
}

void SearchFailure::Clear()
{
    Set(1, L"No symbol candidate was found in the image");
}

void SearchFailure::Set(int newState, const wchar_t* newMessage, int newValue)
{
    state = newState;
    message = newMessage;
    value = newValue;
}

void SearchFailure::Raise(int newState)
{
    state = std::max(state, newState);
}

int ThresholdOf(const Image& gray, int threshold)
{
    return threshold == Auto ? levels::BestSplit(gray).threshold : threshold;
}

bool SymbolSearch::IsRead(XY place, double scale) const
{
    return std::any_of(symbols.begin(), symbols.end(),
                       [&](const SymbolRecord& symbol) { return symbol.Holds(scale * place); });
}

void SymbolSearch::Add(SymbolRecord symbol)
{
    symbols.push_back(std::move(symbol));
    failure.Clear();
}

} // namespace Tesk::matrix
