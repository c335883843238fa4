// The thumbnails of a font as source text in C.
#pragma once

#include <string>

namespace Tesk::chars {

class Font;

/// A table of the thumbnails in the font's own size, with their statistics.
std::string TableSource(const Font& font, int fontWidth, int fontHeight);

/// An array for each thumbnail, of the size that it has, and a table that names them.
std::string ArraysSource(const Font& font);

} // namespace Tesk::chars
