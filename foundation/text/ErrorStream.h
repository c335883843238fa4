// Lines for the error stream, whatever the program itself writes there.
#pragma once

#include <string>

namespace Tesk {

/// Writes UTF-8 text on the standard error stream, which may be narrow or wide already and stays as it is.
void ToErrorStream(const std::string& text);

} // namespace Tesk
