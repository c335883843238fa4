// The spiral of places, and the search for one that is free.
#include "workbench/logic/WindowPlaces.h"

#include <algorithm>

namespace TeskPlus {

namespace {

constexpr int spiralStep = 23, spiralMargin = 15, spiralTurns = 8, corners = 4;
/// Between a window and the one beside which it is put.
constexpr int gap = 4;

/// As far inside the work area as the window allows.
WindowRect Inside(WindowSize workArea, WindowSize window, WindowPoint place)
{
    return {std::clamp(place.X, 0, std::max(0, workArea.Width - window.Width)),
            std::clamp(place.Y, 0, std::max(0, workArea.Height - window.Height)), window.Width, window.Height};
}

/// Every corner that the sides of the work area and of the other windows make for a window.
std::vector<WindowPoint> PlacesBeside(WindowSize workArea, WindowSize window, const std::vector<WindowRect>& others)
{
    std::vector<int> columns{spiralMargin, workArea.Width - spiralMargin - window.Width};
    std::vector<int> rows{spiralMargin, workArea.Height - spiralMargin - window.Height};
    for (const WindowRect& other : others) {
        columns.insert(columns.end(), {other.X + other.Width + gap, other.X - gap - window.Width});
        rows.insert(rows.end(), {other.Y + other.Height + gap, other.Y - gap - window.Height});
    }
    std::vector<WindowPoint> places;
    for (const int y : rows)
        for (const int x : columns) {
            const WindowRect inside = Inside(workArea, window, {x, y});
            places.push_back({inside.X, inside.Y});
        }
    return places;
}

} // namespace

std::int64_t Covered(const WindowRect& Window, const std::vector<WindowRect>& Others)
{
    std::int64_t sum = 0;
    for (const WindowRect& other : Others) {
        const std::int64_t width =
            std::min(Window.X + Window.Width, other.X + other.Width) - std::max(Window.X, other.X);
        const std::int64_t height =
            std::min(Window.Y + Window.Height, other.Y + other.Height) - std::max(Window.Y, other.Y);
        if (width > 0 && height > 0) sum += width * height * other.Weight;
    }
    return sum;
}

WindowPoint FreePlace(WindowSize WorkArea, WindowSize Window, std::vector<WindowPoint> Places,
                      const std::vector<WindowRect>& Others)
{
    const std::vector<WindowPoint> beside = PlacesBeside(WorkArea, Window, Others);
    Places.insert(Places.end(), beside.begin(), beside.end());
    WindowPoint best = Places.front();
    std::int64_t least = -1;
    for (const WindowPoint& place : Places) {
        const std::int64_t covered = Covered(Inside(WorkArea, Window, place), Others);
        if (least >= 0 && covered >= least) continue;
        best = place;
        least = covered;
        if (covered == 0) break;
    }
    return best;
}

WindowPoint WindowSpiral::Place(WindowSize workArea, WindowSize window) const
{
    const int offset = spiraleCpt_ * spiralStep + spiralMargin;
    const int right = workArea.Width - offset - window.Width, low = workArea.Height - offset - window.Height;
    const WindowPoint places[corners] = {{offset, offset}, {right, offset}, {right, low}, {offset, low}};
    return places[currentWindowPosition_ % corners];
}

void WindowSpiral::Advance(bool isHelp)
{
    currentWindowPosition_ = (currentWindowPosition_ + 1) % corners;
    if (currentWindowPosition_ == 0 && ++spiraleCpt_ > spiralTurns) spiraleCpt_ = 0;
    if (isHelp && currentWindowPosition_ == 0) currentWindowPosition_ = 1;
}

WindowPoint WindowSpiral::Next(WindowSize WorkArea, WindowSize Window, bool IsHelp,
                               const std::vector<WindowRect>& Others)
{
    if (IsHelp && currentWindowPosition_ == 0) currentWindowPosition_ = 1;
    std::vector<WindowPoint> places;
    WindowSpiral ahead = *this;
    for (int i = 0; i < corners * (spiralTurns + 1); i++) {
        places.push_back(ahead.Place(WorkArea, Window));
        ahead.Advance(IsHelp);
    }
    Advance(false);
    return FreePlace(WorkArea, Window, std::move(places), Others);
}

} // namespace TeskPlus
