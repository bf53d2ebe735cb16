#include "app/inspection/CoefPixels.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "app/rotation/CoefFile.h"
#include "app/rotation/SourceFile.h"
#include "app/rotation/StoredKinds.h"
#include "platform/FileSystem.h"
#include "trevolt/MemoryBudget.h"
#include "trevolt/TransferProblems.h"

namespace trevolt {
namespace {

/// The size of a file that can be read in elements of so many bytes; nothing for one of which a map's
/// way tells why not.
std::optional<PixelSize> ReadableSize(const SFileKind& kind, std::uint64_t elementBytes,
                                      CSourceFile& source) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    const CTransferReport report;
    const Status status = source.TakeOpen(
        [&](std::istream& stream) { return kind.readStreamSize(stream, width, height); });
    const PixelSize size = SizeToldBy(kind, width, height);
    if (Failed(status) || report.HasReadFailed() || !DescribeMapSize(kind, size).empty())
        return std::nullopt;
    if (width == 0 || height == 0 ||
        !CMemoryBudget::Process().HasRoomFor(std::uint64_t{width} * height * elementBytes))
        return std::nullopt;
    return size;
}

/// Nothing where only a map can tell what the file holds, or what is wrong with it.
std::optional<SCoefPixelLoad> LoadStored(const std::wstring& path, const SFileKind& kind,
                                         std::size_t threads) {
    const SStoredKind& stored = StoredKindOf(kind);
    CSourceFile source;
    if (stored.load != nullptr)
        source.Open(path);
    if (!source.IsOpen())
        return std::nullopt;
    const auto size = ReadableSize(kind, stored.elementBytes, source);
    if (!size)
        return std::nullopt;
    const std::uint64_t bytes = static_cast<std::uint64_t>(size->width) *
                                static_cast<std::uint64_t>(size->height) * stored.elementBytes;
    const CTransferReport report;
    SStoredLoad read = source.TakeOpen([&](std::istream& stream) {
        return stored.load(stream, ThreadsToDecode(threads, bytes), {});
    });
    if (read.coef == nullptr)
        return std::nullopt;
    SCoefPixelLoad load{&kind,
                        *size,
                        DescribeReadProblems(read.status, report),
                        DescribeReadNotes(report),
                        std::move(read.coef),
                        nullptr};
    const bool isOtherSize = load.problems.empty() && load.stored->Size() != *size;
    if (isOtherSize || source.HasOtherSize())
        load.problems.emplace_back("its size changed while it was read");
    if (!load.problems.empty())
        load.stored.reset();
    return load;
}

} // namespace

PixelSize CCoefPixels::Size() const {
    return m_stored != nullptr ? m_stored->Size() : PixelSize{m_map->Width(), m_map->Height()};
}

const SMatrixCoef* CCoefPixels::Run(std::uint32_t x, std::uint32_t y, std::uint32_t count,
                                    SMatrixCoef* scratch) const {
    if (m_stored != nullptr) {
        m_stored->CopyElements(x, y, count, scratch);
        return scratch;
    }
    const CMassiveGrid& grid = m_map->ColourGrid();
    const bool isInGrid = grid.HasStorage() && x + count <= grid.Width() && y < grid.Height();
    if (isInGrid && grid.RunLength(y * grid.Width() + x) >= count)
        return m_map->FindElement(x, y);
    for (std::uint32_t i = 0; i < count; ++i)
        scratch[i] = m_map->ElementOrDefault(std::int64_t{x} + i, y);
    return scratch;
}

std::size_t ThreadsToDecode(std::size_t threads, std::uint64_t bytes) {
    constexpr std::uint64_t kOwnBytes = std::uint64_t{16} << 20; // for each
    return static_cast<std::size_t>(std::min<std::uint64_t>(threads, 1 + bytes / kOwnBytes));
}

SCoefPixelLoad LoadCoefPixels(const std::wstring& path, std::size_t threads) {
    const SFileKind* const kind = FindLoadKind(path.substr(FolderPart(path).size()));
    if (kind != nullptr)
        if (auto load = LoadStored(path, *kind, threads))
            return *std::move(load);
    SCoefLoad load = LoadCoefFile(path);
    if (!load.problems.empty())
        load.map.reset();
    return {load.kind, load.size,          std::move(load.problems), std::move(load.notes),
            nullptr,   std::move(load.map)};
}

} // namespace trevolt
