// Erosion and dilation of many short runs by way of rows of bits.
#pragma once

#include "measure/region/RunSets.h"

namespace Tesk::regions {

/// Whether runs, in scan order, stand so close that words of bits are less work than the runs one by one, and whether
/// an element can be moved over them as bits: runs that lie apart, results far enough from the ends of the coordinates,
/// and at least a row of the element above and below its middle one, behind which labels are lost in any case.
bool SuitsBits(RunSpan src, const Element& element);

/// The same runs as by `Eroded` and `Dilated`, of what `SuitsBits`.
RunList ErodedBits(RunSpan src, const Element& element);
RunList DilatedBits(RunSpan src, const Element& element);

} // namespace Tesk::regions
