#include "trevolt/PlacedCoefFile.h"

#include <algorithm>

#include "formats/BinaryCoefBody.h"
#include "formats/BinaryCoefKind.h"

namespace trevolt {
namespace {

/// Converts chosen entries of a body of `Kind` into the elements that it is handed.
template <class Kind>
class CMaskedLoad {
  public:
    CMaskedLoad(const CMassiveGrid& body, const typename Kind::EntryMask& mask)
        : m_body(body), m_mask(mask) {}

    void operator()(std::uint32_t index, SMatrixCoef& element) const {
        Kind::LoadMasked(Kind::At(m_body, index), m_mask, element);
    }

  private:
    const CMassiveGrid& m_body;
    const typename Kind::EntryMask& m_mask;
};

bool IsPlace(const SPixelRect& rect, bool clip) {
    return rect.left >= 0 && rect.top >= 0 && (!clip || (rect.Width() >= 1 && rect.Height() >= 1));
}

/// How much of a file's `stored` columns or rows goes to the map's `mapSize` from `start` on;
/// `wanted` is the rectangle's part. Below 0 when the place lies beyond the map.
std::int32_t PlacedExtent(std::int64_t start, std::int64_t stored, std::int64_t wanted, bool clip,
                          std::int64_t mapSize) {
    const std::int64_t extent = clip ? std::min(wanted, stored) : stored;
    return static_cast<std::int32_t>(std::min(extent, mapSize - start));
}

template <class Kind>
Status Place(CChromaCorrectCoef& map, const CFileSource& source, SPixelRect& rect, bool clip,
             const typename Kind::EntryMask& mask) {
    if (!IsPlace(rect, clip))
        return E_COEF_INVALIDARG;
    CMassiveGrid body(Kind::kStoredBytes);
    if (const Status status = ReadCoefBody(source, Kind::kMagic, body); Failed(status))
        return status;
    const std::int32_t width =
        PlacedExtent(rect.left, body.Width(), rect.Width(), clip, map.Width());
    const std::int32_t height =
        PlacedExtent(rect.top, body.Height(), rect.Height(), clip, map.Height());
    ConvertPart(body, {0, 0, width, height}, map, rect.left, rect.top,
                CMaskedLoad<Kind>(body, mask));
    rect.right = rect.left + width;
    rect.bottom = rect.top + height;
    return S_OK;
}

/// Converts column by column and keeps the sink informed; E_FAIL when it asked to stop.
template <class Convert>
Status ConvertColumns(const CMassiveGrid& body, CChromaCorrectCoef& map,
                      const SOperationRecord& operation, const Convert& convert) {
    CProgressSink& sink = *operation.sink;
    const SPixelRect part = OverlapOf(body, map);
    sink.Begin(operation.id);
    for (std::int32_t x = 0; x < part.right; ++x) {
        ConvertPart(body, {x, 0, x + 1, part.bottom}, map, 0, 0, convert);
        if (sink.IsCancelled(operation.id)) {
            sink.End(operation.id, E_FAIL);
            return E_FAIL;
        }
        sink.Report(operation.id, static_cast<double>(x) / part.right);
    }
    sink.End(operation.id, S_OK);
    return S_OK;
}

template <class Kind>
Status ReadDiagonal(CChromaCorrectCoef& map, const CFileSource& source,
                    const SOperationRecord* operation) {
    constexpr typename Kind::EntryMask kDiagonal{true,  false, false, false, true,
                                                 false, false, false, true};
    CMassiveGrid body(Kind::kStoredBytes);
    if (const Status status = ReadCoefBody(source, Kind::kMagic, body); Failed(status))
        return status;
    const CMaskedLoad<Kind> convert(body, kDiagonal);
    if (operation != nullptr && operation->sink != nullptr)
        return ConvertColumns(body, map, *operation, convert);
    ConvertPart(body, OverlapOf(body, map), map, 0, 0, convert);
    return S_OK;
}

} // namespace

Status Place9fCoefFile(CChromaCorrectCoef& map, const wchar_t* path, SPixelRect& rect, bool clip,
                       const S9fCoefKind::EntryMask& mask) {
    return Place<S9fCoefKind>(map, path, rect, clip, mask);
}

Status Place9fCoefFile(CChromaCorrectCoef& map, std::istream& stream, SPixelRect& rect, bool clip,
                       const S9fCoefKind::EntryMask& mask) {
    return Place<S9fCoefKind>(map, stream, rect, clip, mask);
}

Status Place9bCoefFile(CChromaCorrectCoef& map, const wchar_t* path, SPixelRect& rect, bool clip,
                       const S9bCoefKind::EntryMask& mask) {
    return Place<S9bCoefKind>(map, path, rect, clip, mask);
}

Status Place9bCoefFile(CChromaCorrectCoef& map, std::istream& stream, SPixelRect& rect, bool clip,
                       const S9bCoefKind::EntryMask& mask) {
    return Place<S9bCoefKind>(map, stream, rect, clip, mask);
}

Status Place3fCoefFile(CChromaCorrectCoef& map, const wchar_t* path, SPixelRect& rect, bool clip,
                       const S3fCoefKind::EntryMask& mask) {
    return Place<S3fCoefKind>(map, path, rect, clip, mask);
}

Status Place3fCoefFile(CChromaCorrectCoef& map, std::istream& stream, SPixelRect& rect, bool clip,
                       const S3fCoefKind::EntryMask& mask) {
    return Place<S3fCoefKind>(map, stream, rect, clip, mask);
}

Status Place3bCoefFile(CChromaCorrectCoef& map, const wchar_t* path, SPixelRect& rect, bool clip,
                       const S3bCoefKind::EntryMask& mask) {
    return Place<S3bCoefKind>(map, path, rect, clip, mask);
}

Status Place3bCoefFile(CChromaCorrectCoef& map, std::istream& stream, SPixelRect& rect, bool clip,
                       const S3bCoefKind::EntryMask& mask) {
    return Place<S3bCoefKind>(map, stream, rect, clip, mask);
}

Status ReadDiagonal9fCoefFile(CChromaCorrectCoef& map, const wchar_t* path,
                              const SOperationRecord* operation) {
    return ReadDiagonal<S9fCoefKind>(map, path, operation);
}

Status ReadDiagonal9fCoefFile(CChromaCorrectCoef& map, std::istream& stream,
                              const SOperationRecord* operation) {
    return ReadDiagonal<S9fCoefKind>(map, stream, operation);
}

Status ReadDiagonal9bCoefFile(CChromaCorrectCoef& map, const wchar_t* path) {
    return ReadDiagonal<S9bCoefKind>(map, path, nullptr);
}

Status ReadDiagonal9bCoefFile(CChromaCorrectCoef& map, std::istream& stream) {
    return ReadDiagonal<S9bCoefKind>(map, stream, nullptr);
}

} // namespace trevolt
