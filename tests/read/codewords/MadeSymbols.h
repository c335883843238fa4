// Symbols that other programs made of texts of ours, row by row, a bit a cell, dark ones 1.
#pragma once

#include <string_view>

namespace Tesk::codewords {

enum class MadeFamily
{
    DataMatrix,
    QR,
    DotCode
};

struct MadeSymbol
{
    const char* name;
    MadeFamily family;
    int rows, columns;
    std::string_view text; ///< with its identifier
    std::string_view cells; ///< in hexadecimal digits
};

// clang-format off
constexpr MadeSymbol madeSymbols[] = {
    {"digits", MadeFamily::DataMatrix, 10, 10,
     "]d1123456",
     "aab2dc131dc220fec3d99d3ff"},
    {"C40, rectangle", MadeFamily::DataMatrix, 8, 32,
     "]d1HELLO WORLD",
     "aaaaaaaa8ca5ff55c21ee7988f87988dcc68eeb0c3cfee21ea008014ffffffff"},
    {"bytes, two regions", MadeFamily::DataMatrix, 16, 48,
     "]d1\310\311\312\313\314\315\316\317\320\321\322\323\324\325\326\327\330\331\332\333\334\335\336\337\340",
     "aaaaaaaaaaaaa629c5d65b67885042d18270ddba7b9ee18f9cbebaa1f0a0c94243907403ef6f5ee7a014967a79de61df9393508b32349f"
     "332bcb5d67a9981c80117e935341bae5bf83819cbd6d9ae5995daa246fc138a8a5fbceffffffffffff"},
    {"Text, Structured Append", MadeFamily::DataMatrix, 22, 22,
     "]d1part three of seven",
     "aaaaaa5244bd52fbab5d5bf33713bb645f8ad6bf2d5f9f8bd26feb1ab76c3c3b4df3633a78d5bfa6e7b04313dd6ffb375fbc180c308987"
     "8e078bfffff"},
    {"two blocks, four regions", MadeFamily::DataMatrix, 52, 52,
     "]d1Two blocks of forty-two check words each: {Ab1}{Ab1}{Ab1}{Ab1}{Ab1}{Ab1}{Ab1}{Ab1}{Ab1}{Ab1}{Ab1}{Ab1}",
     "aaaaaaaaaaaaaf67c906bdc277d60445214e9bcf9f018ebd6473b2b5c7b7013a2c162f36e9e22dea6d5739f20848599e6618b243f99dd9"
     "367d9ee927baa6a9ce17a78641b3c92dcf690bcef954f79794142a7c02ce2a2bae579c31f81f77295d6b28cccece83b201955d9f3a2a1b"
     "adf98186a56e23876564bebf5be8ea8a7ea9d67f99073125d46a4c2f2eaf1188d5d050b1b4bef948aea157ebc437fddcd927af264fffff"
     "ffffffffaaaaaaaaaaaaab3b19aea59c81f67ac3b0b71d8e06d01f2a695995966e3e786fea28e5970b507b9cd62e34747b4cb89d77bdc8"
     "5bc10f932910f48ab6c82f6da9cbf3851ba22c7d8c248a1ef3649bef738e311f45ea5b69ae7be147aabbb1ad60920e72bdaf814b6380e1"
     "9b38c220aa654f3f61ebb5db5d91208f8089e68ec70e4edf98d26da8bbe32943c03f70f66bd8043aa75ff4ab8464e6b733ebb104bd3c1e"
     "104fffffffffffff"},
    {"numeric and alphanumeric", MadeFamily::QR, 21, 21,
     "]Q10123456789ABC",
     "fec3fc16906eb6bb7465dbabaec10107faafe008009fb4bb07df73ef2c59d14eb9e58077bffa54705470ba834dd7752e977704311fe8df"
     "0"},
    {"bytes, version information, Structured Append", MadeFamily::QR, 45, 45,
     "]Q1Version seven has version information, \201\377",
     "fe5cfc564bfc12400ea6906eacbb7594bb75d6b84935dba0dafbffaec104f46c2107faaaaaaaafe0040313f9001b703f90c860051870c0"
     "a105b0ed56c4ac1242a35c4bdab3c1b02c5afe93a01109230ef7049985b908e48b8ffc7a6e5d14a1fae989e94dd16981e325b1b3eb4836"
     "a734cff8effff3fe044d14751c776bf0ab4a6b6514311d8b11cfb19f8a4fce0895463ba1cab3d467bac348864e8bc18f39baad0edf5663"
     "32cca3cd9e41febe230a2b68a7d92a82cd91430ca4866f65a375c28a6429fe90f128c74ac999a148fc4dfa80742c54b477fb48ea68ea10"
     "46af100b18baebbfe77fddd5abdb06676e844134be77048f31390d4fe25c5eb3fb0"},
    {"upright", MadeFamily::DotCode, 18, 17,
     "]J0A\\\\b12345678",
     "8aaa8aaa0088a202aaa0082aa8a288a002a88a822a22208a8008a028028a88828a28a288a0a88"},
    {"lying, bytes", MadeFamily::DotCode, 31, 24,
     "]J3\\000899\276\277\300\301\302\303\304\305\306\307\310\311\312\313\314\315",
     "a2a2aa41544180aa20455405a22820515410a280a2504401220aa20450512a20a24451118828a0405545280aa051144422a8281044540a"
     "8aa0150414aa22820550502a80225054152aa0820154108828a2510415a20a88144501aa80aa"},
    {"two blocks", MadeFamily::DotCode, 48, 47,
     "]J0Words of two blocks are dealt in turn; Words of two blocks are dealt in turn; ",
     "8aa2822aa8220aa28a288022aa20a00008a2800888082a2222a828aa00a0aa8aa20a282202a8a2aaa0aa0aa2aa02aa208208aa2828a8a8"
     "00020a080aa0a0820a02022aaaa0008a880a2020a8aa2a2a08222aa20820aa20aa8a820aaaaa08aa0228a008a280000a20aaa28228a820"
     "a0028aa800aa88a08a8aaaaa2a8aa8aa80a828028020a882aa0282a0a0820aa2aa0aaaaa00208888208a0aa8a200aa80a820828a0822a8"
     "8882a02a28088802a8822808a8a8202002a0802822aa08a22a888808a22a2a2aa082882a8aa2a88a8822a2aaa28aa828a0222280a20aa2"
     "08a2888a00222022aaa888000a0888282a808a80aaa082a800a0080aa2a888aa8aa80a088aaa000802808a80a80aa8aa2082aa8880aaaa"
     "00a2aa0822a2aa"},
    {"Structured Append behind pads", MadeFamily::DotCode, 23, 20,
     "]J0part three",
     "a22a014144a02a254144822805514582a80411408a20a5405428a2041105a882a1505080a2851411808a244445a808a44501082a241055"
     "820aa"},
};
// clang-format on

} // namespace Tesk::codewords
