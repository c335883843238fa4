// Which pixels thinning may remove, by their eight neighbours: bit 0 east, then clockwise, a bit set for foreground.
#pragma once

#include <string_view>

namespace Tesk::morpho {

using ThinTable = std::string_view;

/// Removes the ends of lines too, down to a closed curve or a single pixel.
inline constexpr ThinTable thinToCore = "0111111110001111"  // 0
                                        "1000111110001111"  // 16
                                        "1000000000000000"  // 32
                                        "1000111110001111"  // 48
                                        "1101010100000101"  // 64
                                        "1101111111011111"  // 80
                                        "1101010100000101"  // 96
                                        "1101111111011111"  // 112
                                        "1101010100000101"  // 128
                                        "0000010100000101"  // 144
                                        "0000000000000000"  // 160
                                        "0000010100000101"  // 176
                                        "1101010100000101"  // 192
                                        "1101111111011111"  // 208
                                        "1101010100000101"  // 224
                                        "1101111111011111"; // 240

/// Keeps the ends of lines.
inline constexpr ThinTable thinToLines = "0001011100001111"  // 0
                                         "0000111110001111"  // 16
                                         "0000000000000000"  // 32
                                         "1000111110001111"  // 48
                                         "0101010100000101"  // 64
                                         "1101111111011111"  // 80
                                         "1101010100000101"  // 96
                                         "1101111111011111"  // 112
                                         "0101010100000101"  // 128
                                         "0000010100000101"  // 144
                                         "0000000000000000"  // 160
                                         "0000010100000101"  // 176
                                         "1101010100000101"  // 192
                                         "1101111111011111"  // 208
                                         "1101010100000101"  // 224
                                         "1101111111011111"; // 240

} // namespace Tesk::morpho
