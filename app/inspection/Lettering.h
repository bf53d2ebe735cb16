// Text in pictures: UTF-8, one line, smooth edges. Letters stand in the order of the text; what the
// font has no letter for is a box.
#pragma once

#include <string>
#include <string_view>

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

} // namespace trevolt
