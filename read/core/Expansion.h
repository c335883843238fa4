// The texts of codes for goods, split into their fields for people to read.
#pragma once

namespace Tesk {

/// Writes each field of a GS1 text as its application identifier in brackets and its value; if `verbose` as its name,
/// the identifier and the value, a line each. Ends at what is no identifier. Writes at most `outLength` bytes with the
/// ending zero, nothing if `out` is null. The length that the whole takes, with the ending zero.
int ExpandGS1(const char in[], char out[], int outLength, bool verbose);

/// The same with the fields of a message in the syntax of ISO/IEC 15434, as MIL-STD-130 marks property: data
/// identifiers (format 06), text element identifiers (12 and DD) and application identifiers (05). A text without the
/// envelope is taken for data identifiers.
int ExpandMIL(const char in[], char out[], int outLength, bool verbose);

} // namespace Tesk
