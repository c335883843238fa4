// The step that all selections of blobs share.
#pragma once

#include "measure/blobs/BlobsFrame.h"

namespace Tesk {

/// Blobs that are added go behind the selected ones in the order in which they stood.
template <typename F>
void Blobs::SelectWhere(const Entry& entry, int selection, F matches)
{
    entry.Guards(blobs::noTable,
                 [&] { ChangeSelection(static_cast<SelectionMode>(selection), Walk::Upwards, matches); });
}

} // namespace Tesk
