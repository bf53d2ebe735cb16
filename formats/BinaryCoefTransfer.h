// A whole file of a binary kind into a map, and a map into one, by the kind's type. The functions of
// trevolt/BinaryCoefFile.h are these by their kinds' names; their statuses are told there.
//
// All three are compiled for every kind.
#pragma once

#include <cstdint>

#include "formats/BinaryCoefKind.h"
#include "formats/FileOrStream.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Reads what file and map both have. The kind's own status for a file of the map's size.
template <class Kind>
Status ReadBinaryCoef(CChromaCorrectCoef& map, const CFileSource& source);

/// Writes the map, or a prepared grid of `.9fcoef` elements in its stead.
template <class Kind>
Status WriteBinaryCoef(const CChromaCorrectCoef& map, const CFileTarget& target,
                       const CMassiveGrid* preparedGrid);

/// The size that a file's header tells.
template <class Kind>
Status ReadBinaryCoefSize(const CFileSource& source, std::uint32_t& width, std::uint32_t& height);

} // namespace trevolt
