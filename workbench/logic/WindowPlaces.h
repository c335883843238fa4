// Where new windows go: round the corners of the work area, to a place at which they cover no other window.
#pragma once

#include "workbench/logic/OperationItemInfo.h"

#include <cstdint>
#include <vector>

namespace TeskPlus {

/// A window that is on the screen.
struct WindowRect
{
    int X = 0, Y = 0, Width = 0, Height = 0;
    int Weight = 1; ///< how much worse than a picture it is to be covered
};

/// Of every window the pixels that it shares with the first, by its weight.
std::int64_t Covered(const WindowRect& Window, const std::vector<WindowRect>& Others);

/// The first of the places at which a window covers nothing; behind them such a place beside another window; where
/// there is none, the place at which it covers least.
WindowPoint FreePlace(WindowSize WorkArea, WindowSize Window, std::vector<WindowPoint> Places,
                      const std::vector<WindowRect>& Others);

/// The places of new windows: the four corners of the work area in turn, ever further in. While help is shown, the
/// first corner is the help's.
struct WindowSpiral
{
    int spiraleCpt_ = 0, currentWindowPosition_ = 0;

    /// The place of the next window, and on to the one after it: the first from here on at which it covers nothing.
    WindowPoint Next(WindowSize WorkArea, WindowSize Window, bool IsHelp, const std::vector<WindowRect>& Others = {});

private:
    WindowPoint Place(WindowSize workArea, WindowSize window) const;
    void Advance(bool isHelp);
};

} // namespace TeskPlus
