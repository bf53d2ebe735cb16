// The one reader and the one writer of a binary coefficient file's header and body, and the
// conversions between a body and a map, for every kind.
//
// A file is a 24-byte header (magic, uint32 version, uint16 width, uint16 height, little-endian)
// and a body: one LZ4 frame of width × height stored elements, row by row.
#pragma once

#include <cstdint>

#include "common/PixelRect.h"
#include "common/StatusCodes.h"
#include "formats/BinaryCoefKind.h"
#include "formats/ChromaCorrectCoef.h"

namespace trevolt {

/// Reads a file of the kind with `magic` into `body`, which takes the file's width and height; its
/// element size must be the kind's. E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED,
/// E_COEF_BADFORMAT for another magic, a version above 1 or a file shorter than its header, E_FAIL
/// for a damaged body or one of another size than the header's, E_OUTOFMEMORY. After a failure
/// `body` is empty.
Status ReadCoefBody(const wchar_t* path, const CoefFileMagic& magic, CMassiveGrid& body);

/// Reads only the header; E_COEF_INVALIDARG, E_COEF_OPENFAILED and E_COEF_BADFORMAT as above, the
/// outputs then unchanged.
Status ReadCoefFileSize(const wchar_t* path, const CoefFileMagic& magic, std::uint32_t& width,
                        std::uint32_t& height);

/// Writes header (version 1, the sizes' low 16 bits) and body. E_COEF_OPENFAILED, or E_FAIL when
/// the stream fails; a partial file then stays.
Status WriteCoefBody(const wchar_t* path, const CoefFileMagic& magic, std::uint32_t width,
                     std::uint32_t height, const CMassiveBuf& body);

/// Sizes `body` to the rectangle and converts the map's pixels into it, the identity where a pixel
/// is not in the map. E_COEF_INVALIDARG when the rectangle is wider or taller than the map, E_FAIL
/// when the memory is refused; a width or height below 1 converts nothing and succeeds.
template <class Kind>
Status FillBodyFromMap(const CChromaCorrectCoef& map, const SPixelRect& rect, CMassiveGrid& body);

extern template Status FillBodyFromMap<S9fCoefKind>(const CChromaCorrectCoef&, const SPixelRect&,
                                                    CMassiveGrid&);
extern template Status FillBodyFromMap<S3fCoefKind>(const CChromaCorrectCoef&, const SPixelRect&,
                                                    CMassiveGrid&);
extern template Status FillBodyFromMap<S9bCoefKind>(const CChromaCorrectCoef&, const SPixelRect&,
                                                    CMassiveGrid&);
extern template Status FillBodyFromMap<S3bCoefKind>(const CChromaCorrectCoef&, const SPixelRect&,
                                                    CMassiveGrid&);

} // namespace trevolt
