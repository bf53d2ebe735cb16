#include "calibuf/ChunkStructure.h"

#include <algorithm>

#include "calibuf/BlockGrid.h"
#include "calibuf/PlaneCodec.h"
#include "platform/FileStream.h"
#include "trevolt/TransferReport.h"

namespace trevolt {
namespace {

/// Whether the chunk is one of the store's whole blocks.
bool IsWholeBlock(const SChunkRecord& record) {
    return record.width == kBlockWidth && record.height == kBlockHeight &&
           PlaceInBlock(record.x, record.y) == 0;
}

/// Whether the chunk lies in the area, or is a whole block that the area touches.
bool LiesWithin(const SChunkRecord& record, const SStatedArea& area) {
    const std::uint64_t right = std::uint64_t{record.x} + record.width;
    const std::uint64_t bottom = std::uint64_t{record.y} + record.height;
    if (record.x >= area.left && record.y >= area.top && right <= area.right &&
        bottom <= area.bottom)
        return true;
    return IsWholeBlock(record) && record.x < area.right && record.y < area.bottom &&
           right > area.left && bottom > area.top;
}

/// The chunks of which `holds` is true. Those that no store can have fail, and nothing else counts.
template <class Holds>
std::uint32_t CountChunks(const SChunkDirectory& directory, std::size_t elemSize,
                          const Holds& holds) {
    std::uint32_t count = 0;
    for (std::uint32_t i = 0; i < directory.count; ++i) {
        const SChunkRecord record = directory[i];
        count += IsPossibleChunk(record, elemSize) && holds(record) ? 1 : 0;
    }
    return count;
}

std::uint64_t DataBytes(const SChunkDirectory& directory) {
    std::uint64_t bytes = 0;
    for (std::uint32_t i = 0; i < directory.count; ++i)
        bytes += directory[i].totalSize;
    return bytes;
}

} // namespace

std::optional<SCoverage> NoteStructure(const SChunkDirectory& directory, const SChunkHeader& header,
                                       std::uint64_t x, std::uint64_t y, std::size_t elemSize) {
    const SStatedArea area{x, y, x + header.width, y + header.height};
    if (elemSize == sizeof(SWordCoef)) {
        const auto coverage = MeasureCoverage(directory, area);
        if (coverage)
            CTransferReport::NoteMissingExtraWords(coverage->missing);
        return coverage;
    }
    CTransferReport::NoteChunksOutside(
        CountChunks(directory, elemSize,
                    [&](const SChunkRecord& record) { return !LiesWithin(record, area); }));
    CTransferReport::NoteForeignIndices(
        CountChunks(directory, elemSize, [](const SChunkRecord& record) {
            return record.index != BlockIndexOfPixel(record.x, record.y);
        }));
    const auto coverage = MeasureCoverage(directory, area);
    if (coverage) {
        CTransferReport::NoteMissingPixels(coverage->missing);
        CTransferReport::NoteRepeatedPixels(coverage->repeated);
    }
    return coverage;
}

void NoteStrayBytes(std::istream& stream, const SChunkDirectory& directory,
                    const SChunkHeader& header, std::size_t elemSize) {
    const std::streamoff here = stream.tellg();
    const auto left = BytesToEnd(stream);
    if (here < 0 || !left)
        return;
    std::uint64_t room = *left;
    if (elemSize != sizeof(SWordCoef) && header.formatId == kChromaChunkFormat2) {
        const std::int64_t toExtraWords = std::int64_t{header.directoryOffset} - here;
        room = std::min(room, static_cast<std::uint64_t>(std::max<std::int64_t>(toExtraWords, 0)));
    }
    const std::uint64_t data = DataBytes(directory);
    if (room > data)
        CTransferReport::NoteStrayBytes(room - data);
}

} // namespace trevolt
