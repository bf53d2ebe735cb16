// The raw map file: a whole coefficient map, uncompressed. It is only read.
// docs/formats/raw-map.md tells its layout.
//
// On a stream, which is in binary mode and stays the caller's, the file begins at its position. It
// must be seekable, since a grid's claim of a size is held against what is left: else both grids are
// empty. When both grids were read it stands behind them, else where is left open.
#pragma once

#include <iosfwd>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Reads the file's two grids into the map's. The map's width and height are 0 afterwards, whatever
/// the header says, and so are the grids' shapes: only their storage holds what the file held. A
/// grid that could not be read is empty, and behind an unread colour grid so is the gain grid.
/// E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED, E_COEF_BADFORMAT for another magic or a
/// file shorter than one, the map then as it was; else 0, whether the grids could be read or not: the
/// thread's transfer report hears of a failed read when one could not.
Status ReadRawMapFile(CChromaCorrectCoef& map, const wchar_t* path);
Status ReadRawMapFile(CChromaCorrectCoef& map, std::istream& stream);

} // namespace trevolt
