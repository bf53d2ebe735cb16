// A file of a binary kind in the elements that it stores, loaded and turned without a map.
#pragma once

#include <cstddef>
#include <istream>

#include "common/StoredCoef.h"
#include "formats/BinaryCoefKind.h"

namespace trevolt {

/// Loads the file that lies in the stream from its position to its end; up to `threads` threads
/// decode its body. Every file counts as the kind's own. Its body is read whole or not at all, with
/// the statuses of `ReadCoefBody`. Compiled for every kind.
template <class Kind>
SStoredLoad LoadStoredBinaryCoef(std::istream& stream, std::size_t threads);

} // namespace trevolt
