// The setting that all operations on deep pixels go by.
#include "image/Operator.h"

namespace Tesk {

int Operator::GrayDepth = 16;

} // namespace Tesk
