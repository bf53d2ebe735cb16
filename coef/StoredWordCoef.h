// Word files in their own words: loaded and turned without a coefficient object and without a map.
#pragma once

#include <cstddef>
#include <istream>
#include <memory>

#include "common/StoredCoef.h"
#include "trevolt/WordElements.h"

namespace trevolt {

/// The word file of the kind that begins at the stream's position. Only a whole and plain one is
/// taken: with the kind's own identifier and, where the kind carries one, the virtual-green file-kind
/// value, with no extra words, sides of 1 to 65535, every pixel in just one chunk, and every chunk
/// sound. Null for anything else, and without memory, which the thread's transfer report hears of;
/// the stream then stands anywhere and may have failed. The decoding is shared among `threads`
/// threads at most.
std::unique_ptr<CStoredCoef> LoadStoredWordCoef(EWordKind kind, std::istream& stream,
                                                std::size_t threads);

} // namespace trevolt
