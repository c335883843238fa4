// The boxes of characters and the runs that they make.
#pragma once

namespace Tesk::chars {

struct CharBox
{
    int X = 0, Y = 0, Width = 0, Height = 0;
};

struct CharString
{
    int First = 0, Last = 0, Separator = 0;
};

} // namespace Tesk::chars
