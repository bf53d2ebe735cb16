// Word files in their own words: loaded and turned without a coefficient object and without a map.
#pragma once

#include <cstddef>
#include <istream>

#include "common/StoredCoef.h"
#include "trevolt/WordElements.h"

namespace trevolt {

/// Loads the word file of the kind that begins at the stream's position. It is the kind's own when it
/// has one of the kind's identifiers and sides up to 65535. Of a file with extra words the matrix part
/// is loaded and the other is looked through for damage. The stream then stands anywhere and may
/// have failed. The decoding is shared among `threads` threads at most. Extras that are to be kept are
/// loaded, too; of extra words that are damaged what could be read, and 0 for the others.
SStoredLoad LoadStoredWordCoef(EWordKind kind, std::istream& stream, std::size_t threads,
                               const SExtrasOfTurn& extras = {});

} // namespace trevolt
