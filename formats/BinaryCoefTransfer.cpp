#include "formats/BinaryCoefTransfer.h"

#include "formats/BinaryCoefBody.h"

namespace trevolt {
namespace {

bool HasSizeOf(const CMassiveGrid& body, const CChromaCorrectCoef& map) {
    return body.Width() == map.Width() && body.Height() == map.Height() && !map.IsEmpty();
}

/// Converts a grid of 9-float elements into `body`, which has the same shape; the identity where
/// the grid holds no element.
template <class Kind>
void FillBodyFromPrepared(const CMassiveGrid& prepared, CMassiveGrid& body) {
    const auto count = static_cast<std::uint32_t>(body.ElementCount());
    const std::uint64_t held = prepared.ElementBytes() == S9fCoefKind::kStoredBytes
                                   ? prepared.ElementCount()
                                   : std::uint64_t{0};
    for (std::uint32_t index = 0; index < count; ++index) {
        if (index >= held) {
            Kind::Put(body, index, Kind::Identity());
            continue;
        }
        SMatrixCoef element;
        S9fCoefKind::Load(S9fCoefKind::At(prepared, index), element);
        Kind::Put(body, index, Kind::Save(element));
    }
}

/// The map's own body is asked for even where nothing of it is written.
template <class Kind>
Status WritePrepared(const CChromaCorrectCoef& map, const CFileTarget& target,
                     const CMassiveGrid& preparedGrid) {
    CMassiveGrid body(Kind::kStoredBytes);
    if (!body.Resize(map.Width(), map.Height()))
        return E_FAIL;
    if constexpr (Kind::kTakesPreparedBody) {
        const Status status =
            WriteCoefBody(target, Kind::kMagic, map.Width(), map.Height(), preparedGrid);
        return status == E_COEF_OPENFAILED ? status : S_OK;
    } else {
        FillBodyFromPrepared<Kind>(preparedGrid, body);
        return WriteCoefBody(target, Kind::kMagic, map.Width(), map.Height(), body);
    }
}

} // namespace

template <class Kind>
Status ReadBinaryCoef(CChromaCorrectCoef& map, const CFileSource& source) {
    CMassiveGrid body(Kind::kStoredBytes);
    if (const Status status = ReadCoefBody(source, Kind::kMagic, body); Failed(status))
        return status;
    ConvertPart(
        body, OverlapOf(body, map), map, 0, 0,
        [&body](std::uint32_t index, SMatrixCoef& element) { Kind::LoadAt(body, index, element); });
    return HasSizeOf(body, map) ? Kind::kWholeMapRead : S_OK;
}

template <class Kind>
Status WriteBinaryCoef(const CChromaCorrectCoef& map, const CFileTarget& target,
                       const CMassiveGrid* preparedGrid) {
    if (target.IsNull() || map.IsEmpty())
        return E_COEF_INVALIDARG;
    if (Kind::kNeedsStorage && !map.ColourGrid().HasStorage())
        return E_FAIL;
    if (preparedGrid != nullptr)
        return WritePrepared<Kind>(map, target, *preparedGrid);
    return WriteMapRegion<Kind>(map, target, {0, 0, map.Width(), map.Height()});
}

template <class Kind>
Status ReadBinaryCoefSize(const CFileSource& source, std::uint32_t& width, std::uint32_t& height) {
    return ReadCoefFileSize(source, Kind::kMagic, width, height);
}

#define TREVOLT_TRANSFER(Kind)                                                                     \
    template Status ReadBinaryCoef<Kind>(CChromaCorrectCoef&, const CFileSource&);                 \
    template Status WriteBinaryCoef<Kind>(const CChromaCorrectCoef&, const CFileTarget&,           \
                                          const CMassiveGrid*);                                    \
    template Status ReadBinaryCoefSize<Kind>(const CFileSource&, std::uint32_t&, std::uint32_t&);
TREVOLT_EACH_BINARY_COEF_KIND(TREVOLT_TRANSFER)
#undef TREVOLT_TRANSFER

} // namespace trevolt
