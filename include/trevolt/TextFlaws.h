// What the reader of text coefficient files passes over, as the format has it, and what a transfer
// report therefore tells of it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace trevolt {

/// How a line is not what its dialect says. A line has one flaw at most: the first that fits.
enum class ETextFlaw : std::uint8_t {
    LongLine, ///< more characters than a reader takes; neither their rest nor a further line is read
    NoEnd,    ///< the last line, without a line feed: the file may have been cut in it
    SizeLine, ///< no whole size line: missing, another key, no size, or something behind it
    DataLine, ///< no whole data line: fields are missing, or something stands behind them
    Outside,  ///< a pixel left of or above the first one, or outside the size that the file states
    Repeated, ///< a pixel that an earlier line has named
};

/// The lines that have a flaw.
struct SFlawedLines {
    std::uint64_t count = 0;
    std::uint64_t first = 0; ///< the number of the first one, from 1; 0 when there is none
};

/// The lines of each flaw.
class CTextFlaws {
  public:
    static constexpr std::size_t kKinds = 6;

    const SFlawedLines& operator[](ETextFlaw flaw) const {
        return m_lines[static_cast<std::size_t>(flaw)];
    }

    /// Counts a line.
    void Note(ETextFlaw flaw, std::uint64_t line) {
        SFlawedLines& lines = m_lines[static_cast<std::size_t>(flaw)];
        if (lines.count++ == 0)
            lines.first = line;
    }

    /// Adds those of a file that was read later.
    void Add(const CTextFlaws& later) {
        for (std::size_t i = 0; i < kKinds; ++i) {
            if (m_lines[i].count == 0)
                m_lines[i].first = later.m_lines[i].first;
            m_lines[i].count += later.m_lines[i].count;
        }
    }

  private:
    std::array<SFlawedLines, kKinds> m_lines;
};

} // namespace trevolt
