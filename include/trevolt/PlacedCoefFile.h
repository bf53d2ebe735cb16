// Readers that compose a map from several binary coefficient files: one file's pixels go to a place
// in the map, and only chosen matrix entries are taken.
//
// Statuses are those of the plain readers (trevolt/BinaryCoefFile.h) but for the 1: E_COEF_INVALIDARG,
// E_COEF_OPENFAILED, E_COEF_BADFORMAT, E_FAIL, E_OUTOFMEMORY, 0. A map is never resized; a failed
// read leaves it as it was, and so its rectangle. Streams are used as by the plain readers too.
#pragma once

#include <array>
#include <iosfwd>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/PixelRect.h"
#include "trevolt/ProgressSink.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// One flag for each stored matrix entry, row by row, or for each of the diagonal.
using MatrixEntryMask = std::array<bool, 9>;
using DiagonalEntryMask = std::array<bool, 3>;

/// Reads the file to (left, top) of the map: w × h pixels of it, which is the file's size, with
/// `clip` no more than the rectangle's, and no more than the map has from there on. Only entries
/// whose flag in `mask` is true are written; the trailing values stay. Afterwards right is left + w
/// and bottom is top + h; beyond the map's edge, where nothing is written, that is the edge itself.
/// E_COEF_INVALIDARG also for a negative left or top, and with `clip` for a rectangle of
/// no columns or rows.
Status Place9fCoefFile(CChromaCorrectCoef& map, const wchar_t* path, SPixelRect& rect, bool clip,
                       const MatrixEntryMask& mask);
Status Place9fCoefFile(CChromaCorrectCoef& map, std::istream& stream, SPixelRect& rect, bool clip,
                       const MatrixEntryMask& mask);
Status Place9bCoefFile(CChromaCorrectCoef& map, const wchar_t* path, SPixelRect& rect, bool clip,
                       const MatrixEntryMask& mask);
Status Place9bCoefFile(CChromaCorrectCoef& map, std::istream& stream, SPixelRect& rect, bool clip,
                       const MatrixEntryMask& mask);

/// As above; `mask` has the three flags of the diagonal. The six other entries become 0 in all w × h
/// pixels, whatever it says.
Status Place3fCoefFile(CChromaCorrectCoef& map, const wchar_t* path, SPixelRect& rect, bool clip,
                       const DiagonalEntryMask& mask);
Status Place3fCoefFile(CChromaCorrectCoef& map, std::istream& stream, SPixelRect& rect, bool clip,
                       const DiagonalEntryMask& mask);
Status Place3bCoefFile(CChromaCorrectCoef& map, const wchar_t* path, SPixelRect& rect, bool clip,
                       const DiagonalEntryMask& mask);
Status Place3bCoefFile(CChromaCorrectCoef& map, std::istream& stream, SPixelRect& rect, bool clip,
                       const DiagonalEntryMask& mask);

/// Reads the diagonal of what file and map both have, from their first pixel on; all other values
/// stay. With a sink in `operation` (which may be null) the pixels are taken column by column: the
/// sink is told the begin, after each column x of w, unless it asks to stop, the fraction x ÷ w, and
/// the end. A stop ends with E_FAIL, to the sink too, and leaves the columns taken so far.
Status ReadDiagonal9fCoefFile(CChromaCorrectCoef& map, const wchar_t* path,
                              const SOperationRecord* operation);
Status ReadDiagonal9fCoefFile(CChromaCorrectCoef& map, std::istream& stream,
                              const SOperationRecord* operation);
Status ReadDiagonal9bCoefFile(CChromaCorrectCoef& map, const wchar_t* path);
Status ReadDiagonal9bCoefFile(CChromaCorrectCoef& map, std::istream& stream);

} // namespace trevolt
