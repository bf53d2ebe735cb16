// Text in pictures: UTF-8, one line, smooth edges. Letters stand in the order of the text; what is
// hidden in it is escaped as elsewhere, what the font has no letter for as \u65E5 or \U0001F9FF.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/inspection/Picture.h"

namespace trevolt {

/// Pixels from the text's first letter to where a next one would stand; `size` is the height of the
/// em square in pixels.
int TextWidth(std::string_view text, int size);

/// Paints with the first letter at `left` and the letters standing on row `baseline`.
void PaintText(CPicture& picture, int left, int baseline, std::string_view text, int size,
               SColour colour);

/// The text as it is when it is no wider than `width`, else with "…" in place of its middle, so that
/// beginnings and ends of names stay; empty where not even that fits.
std::string ShortenedText(std::string_view text, int size, int width);

/// The text in lines that are no wider than `width`, at least one. They are broken between items, which
/// " · " parts and which then goes; items that are wider at blanks, and at those of U+00A0 what is
/// wider still. Words that are wider are shortened.
std::vector<std::string> WrappedText(std::string_view text, int size, int width);

} // namespace trevolt
