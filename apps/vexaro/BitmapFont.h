// A tiny 5 x 7 pixel font for the labels of the preview image (capital letters, digits and
// common punctuation; small letters are drawn as capitals).
#pragma once

#include <string>

namespace vx::app {

constexpr int kGlyphWidth = 5;
constexpr int kGlyphHeight = 7;

/// True when pixel (column, row) of the character's glyph is ink. Unknown characters draw as
/// an empty box.
bool glyphPixel(char c, int column, int row);

/// Width in pixels of text drawn at the given scale (one blank column between characters).
int textWidth(const std::string& text, int scale);

} // namespace vx::app
