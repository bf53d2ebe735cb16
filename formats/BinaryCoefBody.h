// The one reader and the one writer of a binary coefficient file's header and body, and the
// conversions between a body and a map, for every kind.
//
// A file is a 24-byte header (magic, uint32 version, uint16 width, uint16 height, little-endian)
// and a body: one LZ4 frame of width × height stored elements, row by row.
#pragma once

#include <algorithm>
#include <cstdint>

#include "formats/BinaryCoefKind.h"
#include "formats/FileOrStream.h"
#include "trevolt/ChromaCorrectCoef.h"
#include "trevolt/PixelRect.h"
#include "trevolt/StatusCodes.h"

namespace trevolt {

/// Reads a file of the kind with `magic` into `body`, which takes the file's width and height; its
/// element size must be the kind's. E_COEF_INVALIDARG for a null path, E_COEF_OPENFAILED,
/// E_COEF_BADFORMAT for another magic, a version above 1 or a file shorter than its header, E_FAIL
/// for a damaged body or one of another size than the header's, and as `FindCoefBody`, E_OUTOFMEMORY.
/// After a failure `body` is empty. Up to `threads` threads decode the body.
Status ReadCoefBody(const CFileSource& source, const CoefFileMagic& magic, CMassiveGrid& body,
                    std::size_t threads = 1);

/// Reads only the header; E_COEF_INVALIDARG, E_COEF_OPENFAILED and E_COEF_BADFORMAT as above, the
/// outputs then unchanged.
Status ReadCoefFileSize(const CFileSource& source, const CoefFileMagic& magic, std::uint32_t& width,
                        std::uint32_t& height);

/// Of a body that was not read yet.
struct SStoredBody {
    std::uint32_t width = 0; ///< in pixels
    std::uint32_t height = 0;
    std::uint64_t bytes = 0; ///< that the stream holds of it
};

/// Takes the header; the stream then stands at the body, of which nothing is read. E_COEF_BADFORMAT as
/// above; E_FAIL for a size of more pixels than a signed 32-bit number counts, which no body has, or a
/// stream that cannot tell where it ends, `body` then being unchanged.
Status FindCoefBody(std::istream& stream, const CoefFileMagic& magic, SStoredBody& body);

/// Writes the header (version 1, the sizes' low 16 bits).
void WriteCoefHeader(std::ostream& stream, const CoefFileMagic& magic, std::uint32_t width,
                     std::uint32_t height);

/// Writes header and body. E_COEF_OPENFAILED, or E_FAIL when
/// the stream fails; a partial file then stays.
Status WriteCoefBody(const CFileTarget& target, const CoefFileMagic& magic, std::uint32_t width,
                     std::uint32_t height, const CMassiveBuf& body);

/// Sizes `body`; false, and it is empty, when a size is negative or the memory is refused. A size of
/// 0 succeeds and holds nothing.
bool ResizeBody(CMassiveGrid& body, std::int64_t width, std::int64_t height);

/// Sizes `body` to the rectangle and converts the map's pixels into it, the identity where a pixel
/// is not in the map. E_FAIL when the memory is refused, and only then E_COEF_INVALIDARG when the
/// rectangle is wider or taller than the map, `body` being empty with both; a width or height below
/// 1 converts nothing and succeeds. Compiled for every kind.
template <class Kind>
Status FillBodyFromMap(const CChromaCorrectCoef& map, const SPixelRect& rect, CMassiveGrid& body);

/// Writes the map's pixels in the rectangle as a file of the rectangle's size. E_COEF_INVALIDARG for
/// a null path or an empty map, E_FAIL for a negative width or height, which no body has; else as
/// `FillBodyFromMap`, and with all these no file is touched; else as `WriteCoefBody`.
template <class Kind>
Status WriteMapRegion(const CChromaCorrectCoef& map, const CFileTarget& target,
                      const SPixelRect& rect) {
    if (target.IsNull() || map.IsEmpty())
        return E_COEF_INVALIDARG;
    if (rect.Width() < 0 || rect.Height() < 0)
        return E_FAIL;
    CMassiveGrid body(Kind::kStoredBytes);
    if (const Status status = FillBodyFromMap<Kind>(map, rect, body); Failed(status))
        return status;
    return WriteCoefBody(target, Kind::kMagic, static_cast<std::uint32_t>(rect.Width()),
                         static_cast<std::uint32_t>(rect.Height()), body);
}

/// Converts the part of `body` that `part` names, which must lie in it, into the map, moved by
/// (xOffset, yOffset), row by row. `convert` gets the body's linear index and the map's element;
/// pixels outside the map are passed over.
template <class Convert>
void ConvertPart(const CMassiveGrid& body, const SPixelRect& part, CChromaCorrectCoef& map,
                 std::int32_t xOffset, std::int32_t yOffset, Convert convert) {
    for (std::int64_t y = part.top; y < part.bottom; ++y)
        for (std::int64_t x = part.left; x < part.right; ++x)
            if (SMatrixCoef* element = map.FindElement(x + xOffset, y + yOffset))
                convert(static_cast<std::uint32_t>(y * body.Width() + x), *element);
}

/// What a body and a map both have when they lie on each other's first pixel.
inline SPixelRect OverlapOf(const CMassiveGrid& body, const CChromaCorrectCoef& map) {
    return {0, 0, static_cast<std::int32_t>(std::min<std::uint32_t>(map.Width(), body.Width())),
            static_cast<std::int32_t>(std::min<std::uint32_t>(map.Height(), body.Height()))};
}

} // namespace trevolt
