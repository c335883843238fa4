// The bytes of a text as wide characters, one for each.
#pragma once

#include <string>
#include <string_view>

namespace Tesk {

inline std::wstring WideBytes(std::string_view bytes)
{
    std::wstring wide;
    for (const char byte : bytes)
        wide += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    return wide;
}

} // namespace Tesk
