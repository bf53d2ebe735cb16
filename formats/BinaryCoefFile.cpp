#include "trevolt/BinaryCoefFile.h"

#include <algorithm>

#include "formats/BinaryCoefBody.h"
#include "formats/BinaryCoefKind.h"

namespace trevolt {
namespace {

/// Copies twelve values from the start of a stored element: nine of its own and the first three of
/// the one behind it.
void LoadTwelveValues(const CMassiveGrid& body, std::uint32_t index, SMatrixCoef& element) {
    constexpr std::size_t kTrailing = 9;
    if (body.RunLength(index) > 1) {
        std::memcpy(element.m.data(), body.Element(index), sizeof element.m);
        return;
    }
    const SMatrixCoef defaults;
    std::memcpy(element.m.data(), body.Element(index), S9fCoefKind::kStoredBytes);
    std::copy(defaults.m.begin() + kTrailing, defaults.m.end(), element.m.begin() + kTrailing);
}

template <class Kind>
Status ReadInto(CChromaCorrectCoef& map, const wchar_t* path) {
    CMassiveGrid body(Kind::kStoredBytes);
    if (const Status status = ReadCoefBody(path, Kind::kMagic, body); Failed(status))
        return status;
    ConvertPart(body, OverlapOf(body, map), map, 0, 0,
                [&body](std::uint32_t index, SMatrixCoef& element) {
                    Kind::Load(Kind::At(body, index), element);
                });
    return S_OK;
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

SPixelRect WholeMap(const CChromaCorrectCoef& map) { return {0, 0, map.Width(), map.Height()}; }

/// Sizes the body of the map's own file, not filled; the status of the writers where there is none.
Status SizeBody(const CChromaCorrectCoef& map, const wchar_t* path, CMassiveGrid& body) {
    if (path == nullptr || map.IsEmpty())
        return E_COEF_INVALIDARG;
    return body.Resize(map.Width(), map.Height()) ? S_OK : E_FAIL;
}

template <class Kind>
Status WriteFrom(const CChromaCorrectCoef& map, const wchar_t* path,
                 const CMassiveGrid* preparedGrid) {
    if (preparedGrid == nullptr)
        return WriteMapRegion<Kind>(map, path, WholeMap(map));
    CMassiveGrid body(Kind::kStoredBytes);
    if (const Status status = SizeBody(map, path, body); Failed(status))
        return status;
    FillBodyFromPrepared<Kind>(*preparedGrid, body);
    return WriteCoefBody(path, Kind::kMagic, map.Width(), map.Height(), body);
}

} // namespace

Status Read9fCoefFile(CChromaCorrectCoef& map, const wchar_t* path) {
    CMassiveGrid body(S9fCoefKind::kStoredBytes);
    if (const Status status = ReadCoefBody(path, S9fCoefKind::kMagic, body); Failed(status))
        return status;
    ConvertPart(body, OverlapOf(body, map), map, 0, 0,
                [&body](std::uint32_t index, SMatrixCoef& element) {
                    LoadTwelveValues(body, index, element);
                });
    // The result of copying a whole grid over the map's, a truth value, is the status.
    const bool sameShape = body.Width() == map.Width() && body.Height() == map.Height();
    return sameShape && !map.IsEmpty() ? MakeStatus(1) : S_OK;
}

Status Read3fCoefFile(CChromaCorrectCoef& map, const wchar_t* path) {
    return ReadInto<S3fCoefKind>(map, path);
}

Status Read9bCoefFile(CChromaCorrectCoef& map, const wchar_t* path) {
    return ReadInto<S9bCoefKind>(map, path);
}

Status Read3bCoefFile(CChromaCorrectCoef& map, const wchar_t* path) {
    return ReadInto<S3bCoefKind>(map, path);
}

Status Write9fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid) {
    if (preparedGrid == nullptr)
        return WriteFrom<S9fCoefKind>(map, path, nullptr);
    // The map's own body is asked for, though nothing of it would be written.
    CMassiveGrid body(S9fCoefKind::kStoredBytes);
    if (const Status status = SizeBody(map, path, body); Failed(status))
        return status;
    const Status status =
        WriteCoefBody(path, S9fCoefKind::kMagic, map.Width(), map.Height(), *preparedGrid);
    return status == E_COEF_OPENFAILED ? status : S_OK;
}

Status Write3fCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid) {
    return WriteFrom<S3fCoefKind>(map, path, preparedGrid);
}

Status Write9bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid) {
    if (path != nullptr && !map.IsEmpty() && !map.ColourGrid().HasStorage())
        return E_FAIL;
    return WriteFrom<S9bCoefKind>(map, path, preparedGrid);
}

Status Write3bCoefFile(const CChromaCorrectCoef& map, const wchar_t* path,
                       const CMassiveGrid* preparedGrid) {
    return WriteFrom<S3bCoefKind>(map, path, preparedGrid);
}

Status Read9fCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    return ReadCoefFileSize(path, S9fCoefKind::kMagic, width, height);
}

Status Read3fCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    return ReadCoefFileSize(path, S3fCoefKind::kMagic, width, height);
}

Status Read9bCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    return ReadCoefFileSize(path, S9bCoefKind::kMagic, width, height);
}

Status Read3bCoefSize(const wchar_t* path, std::uint32_t& width, std::uint32_t& height) {
    return ReadCoefFileSize(path, S3bCoefKind::kMagic, width, height);
}

} // namespace trevolt
