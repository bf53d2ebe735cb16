#include "calibuf/ChunkCoverage.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <span>

#include "calibuf/BlockGrid.h"
#include "trevolt/MemoryBudget.h"

namespace trevolt {
namespace {

/// What a record holds of one cell of the plane, which is divided into cells of a block's size.
struct SCellPiece {
    std::uint64_t cell;
    std::uint16_t left; ///< this and the others counted from the cell's corner
    std::uint16_t top;
    std::uint16_t right;
    std::uint16_t bottom;

    std::uint32_t Pixels() const {
        return static_cast<std::uint32_t>(right - left) * static_cast<std::uint32_t>(bottom - top);
    }
};

/// The pixels from `from` to `to` that lie in the run of `length` pixels that is the `cell`-th of
/// its direction, counted from the run's start.
struct SCellRun {
    std::uint16_t from;
    std::uint16_t to;

    SCellRun(std::uint64_t first, std::uint64_t end, std::uint64_t cell, std::uint32_t length)
        : from(static_cast<std::uint16_t>(std::max(first, cell * length) - cell * length)),
          to(static_cast<std::uint16_t>(std::min(end, (cell + 1) * length) - cell * length)) {}
};

/// Hands what `record` holds of `area` to `take`, cell by cell: four at most.
template <class Take>
void CutToCells(const SChunkRecord& record, const SStatedArea& area, const Take& take) {
    const std::uint32_t width = std::min<std::uint32_t>(record.width, kBlockWidth);
    const std::uint32_t height = std::min<std::uint32_t>(record.height, kBlockHeight);
    const std::uint64_t left = std::max<std::uint64_t>(record.x, area.left);
    const std::uint64_t top = std::max<std::uint64_t>(record.y, area.top);
    const std::uint64_t right = std::min(std::uint64_t{record.x} + width, area.right);
    const std::uint64_t bottom = std::min(std::uint64_t{record.y} + height, area.bottom);
    if (left >= right || top >= bottom)
        return;
    for (std::uint64_t row = top / kBlockHeight; row * kBlockHeight < bottom; ++row) {
        const SCellRun rows(top, bottom, row, kBlockHeight);
        for (std::uint64_t column = left / kBlockWidth; column * kBlockWidth < right; ++column) {
            const SCellRun columns(left, right, column, kBlockWidth);
            take(SCellPiece{row << 32 | column, columns.from, rows.from, columns.to, rows.to});
        }
    }
}

template <class Take>
void CutToCells(const SChunkDirectory& directory, const SStatedArea& area, const Take& take) {
    for (std::uint32_t i = 0; i < directory.count; ++i)
        CutToCells(directory[i], area, take);
}

/// How the pieces of one cell hold pixels.
struct SHeld {
    std::uint64_t held = 0;     ///< by any of them
    std::uint64_t repeated = 0; ///< by several
};

SHeld CountHeld(std::span<const SCellPiece> ofOneCell) {
    if (ofOneCell.size() == 1)
        return {ofOneCell.front().Pixels(), 0};
    using Row = std::bitset<kBlockWidth>;
    std::array<Row, kBlockHeight> held;
    std::array<Row, kBlockHeight> repeated;
    for (const SCellPiece& piece : ofOneCell) {
        const auto width = static_cast<std::size_t>(piece.right - piece.left);
        const Row columns = (Row().set() >> (kBlockWidth - width)) << piece.left;
        for (std::size_t row = piece.top; row < piece.bottom; ++row) {
            repeated[row] |= held[row] & columns;
            held[row] |= columns;
        }
    }
    SHeld count;
    for (std::size_t row = 0; row < kBlockHeight; ++row) {
        count.held += held[row].count();
        count.repeated += repeated[row].count();
    }
    return count;
}

} // namespace

std::optional<SCoverage> MeasureCoverage(const SChunkDirectory& directory,
                                         const SStatedArea& area) {
    std::size_t pieceCount = 0;
    CutToCells(directory, area, [&](const SCellPiece&) { ++pieceCount; });
    SCoverage coverage{.missing = area.Pixels()};
    if (pieceCount == 0)
        return coverage;
    CBudgetBlock memory(pieceCount * sizeof(SCellPiece));
    if (!memory)
        return std::nullopt;
    const std::span pieces(reinterpret_cast<SCellPiece*>(memory.Data()), pieceCount);
    auto next = pieces.begin();
    CutToCells(directory, area, [&](const SCellPiece& piece) { *next++ = piece; });
    std::ranges::sort(pieces, {}, &SCellPiece::cell);
    for (auto first = pieces.begin(); first != pieces.end();) {
        const auto end = std::find_if(first, pieces.end(), [&](const SCellPiece& piece) {
            return piece.cell != first->cell;
        });
        const SHeld count = CountHeld(std::span(first, end));
        coverage.missing -= count.held;
        coverage.repeated += count.repeated;
        first = end;
    }
    return coverage;
}

} // namespace trevolt
