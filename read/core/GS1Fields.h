// The application identifiers of GS1, with the lengths of their values. GS1 General Specifications, section 3.2.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace Tesk {

/// An application identifier and what stands behind it.
struct GS1Field
{
    std::array<char, 5> key; ///< its digits, with an ending zero
    int keyLength;
    bool fixed; ///< values have one length
    int minimum, maximum;
    const char* name;

    constexpr std::string_view Key() const { return {key.data(), static_cast<std::size_t>(keyLength)}; }
};

constexpr std::size_t gs1FieldCount = 512;
/// All of them in the order of their keys, none of which begins with another one.
extern const std::array<GS1Field, gs1FieldCount> GS1Fields;

/// The field whose key the text begins with, or null.
const GS1Field* FindGS1Field(std::string_view text);

} // namespace Tesk
