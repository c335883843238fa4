// Writes past the buffer of the error stream, which takes narrow text or wide text, never both.
#include "foundation/text/ErrorStream.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace Tesk {

void ToErrorStream(const std::string& text)
{
    std::fflush(stderr);
    const int descriptor = fileno(stderr);
    if (descriptor < 0) {
        std::fputs(text.c_str(), stderr);
        return;
    }
    for (std::size_t written = 0; written < text.size();) {
        const auto count = ::write(descriptor, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        written += static_cast<std::size_t>(count);
    }
}

} // namespace Tesk
