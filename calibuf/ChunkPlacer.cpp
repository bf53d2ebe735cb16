#include "calibuf/ChunkPlacer.h"

namespace trevolt {
namespace {

/// The part of `area` in the block at (column, row). The block lies in the grid.
SPixelRect CutToBlock(const SChunkArea& area, std::int64_t column, std::int64_t row) {
    const std::int64_t x = column * kBlockWidth;
    const std::int64_t y = row * kBlockHeight;
    return {static_cast<std::int32_t>(std::max(area.left, x)),
            static_cast<std::int32_t>(std::max(area.top, y)),
            static_cast<std::int32_t>(std::min(area.right, x + kBlockWidth)),
            static_cast<std::int32_t>(std::min(area.bottom, y + kBlockHeight))};
}

/// Cuts `rect` to the clip area at the chunk's corner; false when nothing is left of it.
bool Clip(SPixelRect& rect, const SChunkArea& area, const SPlacement& placement) {
    if (!placement.IsClipped())
        return true;
    rect.right = static_cast<std::int32_t>(
        std::min<std::int64_t>(rect.right, area.left + placement.clipWidth));
    rect.bottom = static_cast<std::int32_t>(
        std::min<std::int64_t>(rect.bottom, area.top + placement.clipHeight));
    return rect.Width() > 0 && rect.Height() > 0;
}

} // namespace

void CChunkPlacer::Count(Outcome outcome) {
    switch (outcome) {
    case Outcome::Read:
        ++m_counts.read;
        m_result = S_OK;
        break;
    case Outcome::DecodedOnly:
        ++m_counts.skipped;
        m_result = S_OK;
        break;
    case Outcome::Skipped:
        ++m_counts.skipped;
        break;
    case Outcome::NotMissed:
        ++m_counts.failed;
        break;
    case Outcome::Failed:
        ++m_counts.failed;
        m_result = E_FAIL;
        break;
    }
}

CChunkPlacer::Outcome CChunkPlacer::Place(const SChunkRecord& record, const std::byte* compressed,
                                          const SPlacement& placement) {
    const std::int64_t left = record.x + placement.shiftX;
    const std::int64_t top = record.y + placement.shiftY;
    if (left < 0 || top < 0)
        return Outcome::Failed;
    const SChunkArea area{left, top, left + record.width, top + record.height};
    if (compressed == nullptr)
        return FallsOnABlock(area) ? Outcome::Failed : Outcome::NotMissed;
    // A chunk inside one block: nothing is decoded for a missing block.
    if (area.IsInOneBlock() && !FallsOnABlock(area))
        return Outcome::Skipped;
    if (Failed(m_codec.Decode(record, compressed)))
        return Outcome::Failed;
    return PutPieces(area, placement);
}

CChunkPlacer::Outcome CChunkPlacer::PutPieces(const SChunkArea& area, const SPlacement& placement) {
    Outcome outcome = Outcome::DecodedOnly;
    bool isFirst = true;
    for (std::int64_t column = area.FirstColumn(); column <= area.LastColumn(); ++column) {
        for (std::int64_t row = area.FirstRow(); row <= area.LastRow(); ++row) {
            const std::uint32_t index = BlockIndexAt(column, row);
            if (!m_target.HasBlock(index))
                continue;
            SPixelRect rect = CutToBlock(area, column, row);
            if (!Clip(rect, area, placement))
                continue;
            const bool isTaken = m_target.Put({m_codec, area, index, rect, isFirst});
            isFirst = false;
            if (outcome != Outcome::Failed)
                outcome = isTaken ? Outcome::Read : Outcome::Failed;
        }
    }
    return outcome;
}

bool CChunkPlacer::FallsOnABlock(const SChunkArea& area) const {
    for (std::int64_t column = area.FirstColumn(); column <= area.LastColumn(); ++column)
        for (std::int64_t row = area.FirstRow(); row <= area.LastRow(); ++row)
            if (m_target.HasBlock(BlockIndexAt(column, row)))
                return true;
    return false;
}

} // namespace trevolt
