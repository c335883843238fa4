// The settings of a reader as the scan and the decoders take them.
#pragma once

#include "read/Code1DReader.h"
#include "read/linear/LinearCode.h"

namespace Tesk::linear {

LinearSettings SettingsOf(const Code1DReader& reader);

} // namespace Tesk::linear
