// The pixels of a binary coefficient file, piece by piece: no body is held.
#pragma once

#include <cstddef>
#include <istream>

#include "common/PixelSink.h"
#include "formats/BinaryCoefKind.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Reads the file that lies in the stream from its position to its end and hands its pixels to `sink`:
/// the values that the kind sets of a map's elements, and the default's for the others. Up to `threads`
/// threads decode its body, of which each holds no more than two blocks of the frame. Statuses of
/// `ReadCoefBody`; after a failure the sink may have taken something. Compiled for every kind.
template <class Kind>
Status ReadBinaryCoefPixels(std::istream& stream, std::size_t threads, CPixelSink& sink);

} // namespace trevolt
