// CCaliOperationData: the transfer table of channel writes, 57 rows that map a word to a candidate
// for the next one. Rows 0 to 40 never change. Rows 41 to 56 are eight pairs that follow the table's
// step value; with step 0 they equal row 0.
//
// The rows are computed once for the process and shared. A pair that a table recomputes for another
// step becomes that table's own. A table that goes leaves its own pairs to the process, which hands
// them to the next table that needs one, so memory grows with the tables in use at a time and not
// with their number.
//
// A table is used by one thread at a time; different tables by any threads.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "trevolt/FixedPoint.h"

namespace trevolt {

class CCaliOperationData {
  public:
    static constexpr std::uint32_t kRowCount = 57;
    static constexpr std::uint32_t kRowLength = std::uint32_t{kFullScale} + 1;
    static constexpr std::uint32_t kFirstStepRow = 41;
    static constexpr std::uint32_t kStepPairCount = (kRowCount - kFirstStepRow) / 2;
    static_assert(std::uint64_t{kRowCount} * kRowLength * sizeof(std::uint32_t) == 14'942'208);

    using RowPair = std::array<std::uint32_t, std::size_t{2} * kRowLength>;

    CCaliOperationData() = default;
    ~CCaliOperationData();
    CCaliOperationData(const CCaliOperationData&) = delete;
    CCaliOperationData& operator=(const CCaliOperationData&) = delete;

    /// Whether channel writes with this index go through a row.
    static constexpr bool IsRowIndex(std::uint32_t index) {
        return index >= 1 && index < kRowCount;
    }
    /// Whether filling with this index sets the step value first.
    static constexpr bool IsStepRow(std::uint32_t index) {
        return index >= kFirstStepRow && index < kRowCount;
    }

    /// Row `row` (below kRowCount). Entries are the low 32 bits of the rule's integer; they are not
    /// clamped. The span holds until the row's pair is recomputed or the table goes.
    std::span<const std::uint32_t, kRowLength> Row(std::uint32_t row) const;

    /// What a channel write makes of an entry: read as int32 and clamped to a word.
    static std::uint16_t ClampedEntry(std::uint32_t entry);

    /// The row's clamped entry for `word`.
    std::uint16_t Candidate(std::uint32_t row, std::uint16_t word) const {
        return ClampedEntry(Row(row)[word]);
    }

    float StepValue() const { return m_step; }

    /// Sets the step value and computes the pair that step row `row` belongs to.
    void SetStep(std::uint32_t row, float step);

    /// Pairs that gone tables have left and no table uses.
    static std::size_t SparePairCount();

  private:
    float m_step = 0.0F;
    std::array<std::unique_ptr<RowPair>, kStepPairCount> m_ownPairs;
};

} // namespace trevolt
