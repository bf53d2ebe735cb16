// Writers that save a rectangle of a map as a binary coefficient file of the rectangle's size.
//
// The rectangle may hang over the map's edges, where the identity is written, but may not be wider
// or taller than the map. Statuses: 0; E_COEF_INVALIDARG for a null path or an empty map; E_FAIL for
// a negative side or when the body gets no memory, as one of more than 2^31 − 1 pixels never does;
// E_COEF_INVALIDARG for a rectangle wider or taller than the map: no file is touched with these;
// E_COEF_OPENFAILED; E_FAIL when the stream fails, and a partial file may stay. A side of 0 gives a
// file of that size with an empty body. Streams are used as by the plain writers
// (trevolt/BinaryCoefFile.h); one is not touched where no file is.
#pragma once

#include <iosfwd>

#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/PixelRect.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

Status WriteRegion9fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect);
Status WriteRegion9fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect);
Status WriteRegion3fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect);
Status WriteRegion3fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect);
Status WriteRegion9bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect);
Status WriteRegion9bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect);
Status WriteRegion3bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect);
Status WriteRegion3bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect);

} // namespace trevolt
