// The raw map file: a whole coefficient map, uncompressed. It is only read.
// docs/formats/raw-map.md tells its layout.
#pragma once

#include "common/StatusCodes.h"
#include "formats/BinaryCoefKind.h"
#include "formats/ChromaCorrectCoef.h"

namespace trevolt {

inline constexpr CoefFileMagic kRawMapMagic{0x20, 0xBA, 0xCA, 0x2D, 0xED, 0x0B, 0xB9, 0x44,
                                            0xA4, 0xC1, 0xC9, 0xD0, 0x19, 0x16, 0x81, 0x2C};

/// Reads the file's two grids into the map's. The map's width and height are 0 afterwards, whatever
/// the header says, and so are the grids' shapes: only their storage holds what the file held. A
/// grid that could not be read is empty, and behind an unread colour grid so is the gain grid.
/// E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED, E_COEF_BADFORMAT for another magic or a
/// file shorter than one, the map then as it was; else 0, whether the grids could be read or not.
Status ReadRawMapFile(CChromaCorrectCoef& map, const wchar_t* path);

} // namespace trevolt
