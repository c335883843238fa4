// The step that all selections of blobs share.
#pragma once

#include "measure/blobs/BlobsFrame.h"

namespace Tesk {

/// Blobs that are added go behind the selected ones in the order in which they stood.
template <typename F>
int Blobs::TrySelectWhere(int selection, F matches)
{
    return WithMemory(blobs::noTable,
                      [&] { ChangeSelection(static_cast<SelectionMode>(selection), Walk::Upwards, matches); });
}

} // namespace Tesk
