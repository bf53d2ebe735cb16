#include "app/rotation/MapRegion.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "platform/FileSystem.h"
#include "trevolt/CoefRotation.h"
#include "trevolt/PlacedCoefFile.h"
#include "trevolt/RegionCoefFile.h"
#include "trevolt/TransferProblems.h"

namespace trevolt {
namespace {

/// The kinds whose files go into a rectangle of a map, and come of one, without a map of their own.
struct SRegionKind {
    std::wstring_view extension;
    Status (*place)(CChromaCorrectCoef& map, const wchar_t* path, SPixelRect& rect);
    Status (*write)(const CChromaCorrectCoef& map, const wchar_t* path, const SPixelRect& rect);
};

template <class Mask>
using Placer = Status (*)(CChromaCorrectCoef&, const wchar_t*, SPixelRect&, bool, const Mask&);
using RegionWriter = Status (*)(const CChromaCorrectCoef&, const wchar_t*, const SPixelRect&);

template <class Mask, Placer<Mask> Place>
Status PlaceAllEntries(CChromaCorrectCoef& map, const wchar_t* path, SPixelRect& rect) {
    Mask mask;
    mask.fill(true);
    return Place(map, path, rect, false, mask);
}

constexpr std::array kRegionKinds{
    SRegionKind{L".9fcoef", PlaceAllEntries<MatrixEntryMask, Place9fCoefFile>,
                static_cast<RegionWriter>(WriteRegion9fCoefFile)},
    SRegionKind{L".3fcoef", PlaceAllEntries<DiagonalEntryMask, Place3fCoefFile>,
                static_cast<RegionWriter>(WriteRegion3fCoefFile)},
    SRegionKind{L".9bcoef", PlaceAllEntries<MatrixEntryMask, Place9bCoefFile>,
                static_cast<RegionWriter>(WriteRegion9bCoefFile)},
    SRegionKind{L".3bcoef", PlaceAllEntries<DiagonalEntryMask, Place3bCoefFile>,
                static_cast<RegionWriter>(WriteRegion3bCoefFile)},
};

/// Null for a kind that goes through a map of its own, and for no kind.
const SRegionKind* FindRegionKind(const SFileKind* kind) {
    const auto* const found =
        std::find_if(kRegionKinds.begin(), kRegionKinds.end(), [&](const SRegionKind& known) {
            return kind != nullptr && known.extension == kind->extension;
        });
    return found == kRegionKinds.end() ? nullptr : &*found;
}

const SFileKind* LoadKindOf(const std::wstring& path) {
    return FindLoadKind(path.substr(FolderPart(path).size()));
}

template <class Visit>
void ForEachPixel(const SPixelRect& rect, Visit visit) {
    for (std::int32_t y = rect.top; y < rect.bottom; ++y)
        for (std::int32_t x = rect.left; x < rect.right; ++x)
            visit(x, y);
}

/// Puts the whole source at the rectangle's left top.
void PutInto(const CChromaCorrectCoef& source, const SPixelRect& rect, CChromaCorrectCoef& map) {
    ForEachPixel({0, 0, source.Width(), source.Height()}, [&](std::int32_t x, std::int32_t y) {
        map.SetElement(std::int64_t{rect.left} + x, std::int64_t{rect.top} + y,
                       *source.FindElement(x, y));
    });
}

constexpr const char* kChangedSize = "its size changed while it was read";
constexpr const char* kNoTurnMemory = "not enough memory to turn it";

/// Straight into the map, whose pixels stay as they were when the file cannot be read.
SPlacing PlaceUnturned(const SRegionKind& kind, const std::wstring& path, const SPixelRect& rect,
                       CChromaCorrectCoef& map) {
    const PixelSize size{map.Width(), map.Height()};
    const SPixelRect seen = CutTo(rect, size);
    SPixelRect placed = rect;
    const CTransferReport report;
    const Status status = kind.place(map, path.c_str(), placed);
    SPlacing placing{
        DescribeReadProblems(status, report), DescribeReadNotes(report), {}, !Failed(status)};
    if (placing.problems.empty() && (placed.right != seen.right || placed.bottom != seen.bottom))
        placing.problems.emplace_back(kChangedSize);
    return placing;
}

SPlacing PlaceThroughMap(const std::wstring& path, std::uint32_t code, const SPixelRect& rect,
                         CChromaCorrectCoef& map) {
    SCoefLoad load = LoadCoefFile(path);
    SPlacing placing{std::move(load.problems), std::move(load.notes), std::move(load.losses),
                     false};
    if (!load.isRead) // as by the other way its place stays as it is
        return placing;
    if (TurnedBy(code, load.size) != PixelSize{rect.Width(), rect.Height()})
        placing.problems.emplace_back(kChangedSize);
    else if (!TurnWhole(*load.map, code))
        placing.problems.emplace_back(kNoTurnMemory);
    else
        placing.isPut = true;
    if (placing.isPut)
        PutInto(*load.map, rect, map);
    return placing;
}

} // namespace

std::string ShownRect(const SPixelRect& rect) {
    return fmt::format("{},{},{},{}", rect.left, rect.top, rect.right, rect.bottom);
}

bool IsWithin(const SPixelRect& rect, const PixelSize& size) {
    return rect.left >= 0 && rect.top >= 0 && rect.right <= size.width &&
           rect.bottom <= size.height;
}

SPixelRect CutTo(const SPixelRect& rect, const PixelSize& size) {
    const auto width = static_cast<std::int32_t>(size.width);
    const auto height = static_cast<std::int32_t>(size.height);
    return {std::clamp(rect.left, 0, width), std::clamp(rect.top, 0, height),
            std::clamp(rect.right, 0, width), std::clamp(rect.bottom, 0, height)};
}

PixelSize TurnedBy(std::uint32_t code, const PixelSize& size) {
    return code == 0 ? size : CQuarterTurn(code, size.width, size.height).TurnedSize();
}

bool TurnWhole(CChromaCorrectCoef& map, std::uint32_t code) {
    if (code == 0 || map.IsEmpty())
        return true;
    CChromaCorrectCoef turned;
    TurnMap(map, map.Width(), map.Height(), code, turned);
    map = std::move(turned);
    if (map.HasStorage())
        return true;
    map.Reset();
    return false;
}

SPlacing PlaceCoefFile(const std::wstring& path, std::uint32_t code, const SPixelRect& rect,
                       CChromaCorrectCoef& map) {
    const SRegionKind* const kind = FindRegionKind(LoadKindOf(path));
    if (kind != nullptr && code == 0 && rect.left >= 0 && rect.top >= 0)
        return PlaceUnturned(*kind, path, rect, map);
    return PlaceThroughMap(path, code, rect, map);
}

std::string WriteMapPiece(const CChromaCorrectCoef& map, const SPixelRect& rect, std::uint32_t code,
                          const SFileKind& kind, const std::wstring& path) {
    const CTransferReport report;
    if (const SRegionKind* const region = FindRegionKind(&kind); region != nullptr && code == 0)
        return DescribeWriteProblem(region->write(map, path.c_str(), rect), report);
    CChromaCorrectCoef piece;
    piece.Resize(static_cast<std::int32_t>(rect.Width()), static_cast<std::int32_t>(rect.Height()));
    if (!piece.HasStorage())
        return DescribeWriteProblem(E_FAIL, report);
    ForEachPixel(rect, [&](std::int32_t x, std::int32_t y) {
        piece.SetElement(std::int64_t{x} - rect.left, std::int64_t{y} - rect.top,
                         *map.FindElement(x, y));
    });
    if (!TurnWhole(piece, code))
        return DescribeWriteProblem(E_FAIL, report);
    return DescribeWriteProblem(kind.save(piece, path.c_str()), report);
}

} // namespace trevolt
