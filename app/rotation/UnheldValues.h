// What of a map's pixels a kind's files cannot hold.
#pragma once

#include <string>
#include <vector>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/FileKinds.h"
#include "trevolt/PixelRect.h"

namespace trevolt {

/// What changes of the pixels of `rect`, which lies in the map, when they are written as the kind, but
/// for rounding: one entry a cause, in plain words, with how many there are.
std::vector<std::string> DescribeUnheld(const CChromaCorrectCoef& map, const SPixelRect& rect,
                                        const SFileKind& kind);

} // namespace trevolt
