// What harnesses ask of objects that are read from any bytes.
#pragma once

#include "foundation/Archive.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace Tesk::fuzz {

inline void Require(bool condition)
{
    if (!condition) std::abort();
}

/// The bytes of its file.
template <typename Model>
std::vector<std::uint8_t> Written(Model& model)
{
    std::vector<std::uint8_t> bytes;
    Archive writer = Archive::IntoMemory(bytes);
    model.Transfer(writer);
    Require(writer.Good());
    return bytes;
}

/// Requires that what is written is read back, and written again as it was.
template <typename Model>
void RequireRoundTrip(Model& model, ShortFile shortFile = ShortFile::Refused)
{
    const std::vector<std::uint8_t> bytes = Written(model);
    Model again;
    Archive reader = Archive::FromMemory(bytes, shortFile);
    again.Transfer(reader);
    Require(reader.Good() && Written(again) == bytes);
}

} // namespace Tesk::fuzz
