// A file of a binary kind in the elements that it stores, loaded and turned without a map.
#pragma once

#include <cstddef>
#include <istream>
#include <memory>

#include "common/StoredCoef.h"
#include "formats/BinaryCoefKind.h"

namespace trevolt {

/// Loads the file that lies in the stream from its position to its end; up to `threads` threads
/// decode its body. Null for what `ReadCoefBody` refuses; when that is for want of memory, the
/// thread's transfer report hears of it. Compiled for every kind.
template <class Kind>
std::unique_ptr<CStoredCoef> LoadStoredBinaryCoef(std::istream& stream, std::size_t threads);

} // namespace trevolt
