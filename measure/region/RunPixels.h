// Writing and drawing the pixels of runs, whether those of a region or of blobs.
#pragma once

#include "image/Image.h"

#include <span>

namespace Tesk::regions {

/// Writes a value over the pixels of the runs, of any type but gradients and bits (`UnsupportedType`).
int PutRuns(std::span<const LabeledRun> runs, int value, Image& dst);
/// Draws runs in the filling colour. `OutOfRange` without one.
int DrawRuns(std::span<const LabeledRun> runs);

} // namespace Tesk::regions
