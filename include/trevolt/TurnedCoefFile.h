// Writers that save a rectangle of a map, turned, as a binary coefficient file.
//
// `mode` is a code of trevolt/QuarterTurn.h: 1 a quarter turn clockwise, 2 a half turn, 3 a quarter
// turn counter-clockwise; any other gives a file of 0 × 0. The rectangle may reach beyond the map,
// where the identity is written. Statuses: 0; E_COEF_INVALIDARG for a null path or an empty map, and
// E_FAIL for a negative side or when the body gets no memory: no file is touched then;
// E_COEF_OPENFAILED; E_FAIL when the stream fails, and a partial file may stay. Streams are used as
// by the plain writers (trevolt/BinaryCoefFile.h); one is not touched where no file is.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/PixelRect.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// The pixels are converted as if column by column of the map, each by a copy of all its twelve
/// values: the trailing three go into m[0], m[1], m[2] of the stored element behind it in the same
/// block, and stay there where that one was converted before. So they stand in every stored element
/// outside column 0 in modes 1 and 2, and in column 0 of every row but the first in mode 3.
Status WriteTurned9fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect, std::uint32_t mode);
Status WriteTurned9fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect, std::uint32_t mode);
Status WriteTurned3fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect, std::uint32_t mode);
Status WriteTurned3fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect, std::uint32_t mode);
Status WriteTurned9bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect, std::uint32_t mode);
Status WriteTurned9bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect, std::uint32_t mode);
Status WriteTurned3bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect, std::uint32_t mode);
Status WriteTurned3bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect, std::uint32_t mode);

} // namespace trevolt
