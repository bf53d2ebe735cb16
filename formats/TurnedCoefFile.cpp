#include "trevolt/TurnedCoefFile.h"

#include <algorithm>
#include <type_traits>

#include "formats/BinaryCoefBody.h"
#include "formats/BinaryCoefKind.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {
namespace {

/// What a stored pixel is made of.
struct Origin {
    PixelPosition at; ///< in the rectangle
    const SMatrixCoef* element = nullptr;

    /// Whether this one's turn comes after `other`'s when the rectangle is gone through column by
    /// column.
    bool IsConvertedAfter(const Origin& other) const {
        return at.x > other.at.x || (at.x == other.at.x && at.y > other.at.y);
    }
};

/// The trailing values of the pixel that lies before in memory run over into this one, when they
/// are copied later than it.
void TakeOverrun(const Origin& before, const Origin& origin, S9fCoefKind::Stored& stored) {
    constexpr std::size_t kTrailing = S9fCoefKind::kStoredCount;
    if (before.element != nullptr && before.IsConvertedAfter(origin))
        std::copy(before.element->m.begin() + kTrailing, before.element->m.end(), stored.begin());
}

/// Fills a body of the turned rectangle's size in memory order. `back` turns its pixels back into
/// the rectangle.
template <class Kind>
void FillTurnedBody(const CChromaCorrectCoef& map, const SPixelRect& rect, const CQuarterTurn& back,
                    CMassiveGrid& body) {
    std::uint32_t index = 0;
    Origin before;
    for (std::uint32_t y = 0; y < body.Height(); ++y) {
        for (std::uint32_t x = 0; x < body.Width(); ++x, ++index) {
            Origin origin{back.Turned(x, y)};
            origin.element = map.FindElement(rect.left + origin.at.x, rect.top + origin.at.y);
            typename Kind::Stored stored = Kind::SaveOrIdentity(origin.element);
            if constexpr (std::is_same_v<Kind, S9fCoefKind>)
                if ((index & CMassiveGrid::kBlockMask) != 0) // no overrun from block to block
                    TakeOverrun(before, origin, stored);
            Kind::Put(body, index, stored);
            before = origin;
        }
    }
}

template <class Kind>
Status WriteTurned(const CChromaCorrectCoef& map, const CFileTarget& target, const SPixelRect& rect,
                   std::uint32_t mode) {
    if (target.IsNull() || map.IsEmpty())
        return E_COEF_INVALIDARG;
    const PixelSize size = CQuarterTurn(mode, rect.Width(), rect.Height()).TurnedSize();
    CMassiveGrid body(Kind::kStoredBytes);
    if (!ResizeBody(body, size.width, size.height))
        return E_FAIL;
    const CQuarterTurn back(CQuarterTurn::BackCode(mode), size.width, size.height);
    FillTurnedBody<Kind>(map, rect, back, body);
    return WriteCoefBody(target, Kind::kMagic, body.Width(), body.Height(), body);
}

} // namespace

Status WriteTurned9fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect, std::uint32_t mode) {
    return WriteTurned<S9fCoefKind>(map, path, rect, mode);
}

Status WriteTurned9fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect, std::uint32_t mode) {
    return WriteTurned<S9fCoefKind>(map, stream, rect, mode);
}

Status WriteTurned3fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect, std::uint32_t mode) {
    return WriteTurned<S3fCoefKind>(map, path, rect, mode);
}

Status WriteTurned3fCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect, std::uint32_t mode) {
    return WriteTurned<S3fCoefKind>(map, stream, rect, mode);
}

Status WriteTurned9bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect, std::uint32_t mode) {
    return WriteTurned<S9bCoefKind>(map, path, rect, mode);
}

Status WriteTurned9bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect, std::uint32_t mode) {
    return WriteTurned<S9bCoefKind>(map, stream, rect, mode);
}

Status WriteTurned3bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                             const SPixelRect& rect, std::uint32_t mode) {
    return WriteTurned<S3bCoefKind>(map, path, rect, mode);
}

Status WriteTurned3bCoefFile(const CChromaCorrectCoef& map, std::ostream& stream,
                             const SPixelRect& rect, std::uint32_t mode) {
    return WriteTurned<S3bCoefKind>(map, stream, rect, mode);
}

} // namespace trevolt
