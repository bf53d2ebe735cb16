// Maps as pictures so small that thousands stand on one page.
#pragma once

#include <cstddef>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/RotationRun.h"

namespace trevolt {

/// The longest side of the pictures of `files` files, two each, which then take 32 MiB of a page at
/// most; 0 where there would be nothing to see.
int ThumbnailSide(std::size_t files);

/// How bright each pixel is for white, in colours between the darkest and the lightest. The picture
/// has a pixel for each of the map, or for several where it would pass `side`, which is 16 to 128; it is to be
/// shown a whole number of times larger, up to 128. None of a map without pixels. Throws
/// std::bad_alloc.
SThumbnail MapThumbnail(const CChromaCorrectCoef& map, int side);

} // namespace trevolt
