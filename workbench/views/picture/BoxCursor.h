// The cursor over the handles of an upright box.
#pragma once

#include "foundation/Graph.h"

#include <qnamespace.h>

namespace TeskPlus {

inline Qt::CursorShape CursorOfBox(Tesk::DraggingHandles Handle)
{
    using namespace Tesk;
    switch (Handle) {
    case NHandle:
    case SHandle:
        return Qt::SizeVerCursor;
    case WHandle:
    case EHandle:
        return Qt::SizeHorCursor;
    case NWHandle:
    case SEHandle:
        return Qt::SizeFDiagCursor;
    case SWHandle:
    case NEHandle:
        return Qt::SizeBDiagCursor;
    case AllHandle:
        return Qt::SizeAllCursor;
    default:
        return Qt::ArrowCursor;
    }
}

} // namespace TeskPlus
