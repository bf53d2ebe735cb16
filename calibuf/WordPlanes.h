// CWordPlanes: the words of a whole picture, one plane a word. Plane k holds word k of every pixel,
// row by row. Several threads may fill different pixels, or read.
#pragma once

#include <cstddef>
#include <cstdint>

#include "trevolt/MemoryBudget.h"

namespace trevolt {

class CWordPlanes {
  public:
    /// Planes whose words are not set yet; none at all when their memory is refused.
    CWordPlanes(std::size_t wordCount, std::uint32_t width, std::uint32_t height)
        : m_wordCount(wordCount),
          m_width(width),
          m_height(height),
          m_words(static_cast<std::size_t>(ByteCount(wordCount, width, height))) {}

    /// The memory that planes of sides up to 65535 take.
    static std::uint64_t ByteCount(std::size_t wordCount, std::uint32_t width,
                                   std::uint32_t height) {
        return std::uint64_t{width} * height * wordCount * sizeof(std::uint16_t);
    }

    explicit operator bool() const { return static_cast<bool>(m_words); }

    std::size_t WordCount() const { return m_wordCount; }
    std::uint32_t Width() const { return m_width; }
    std::uint32_t Height() const { return m_height; }

    /// The words of row `y` of plane `k`; the next row follows.
    std::uint16_t* Row(std::size_t k, std::size_t y) {
        return reinterpret_cast<std::uint16_t*>(m_words.Data()) + RowPlace(k, y);
    }
    const std::uint16_t* Row(std::size_t k, std::size_t y) const {
        return reinterpret_cast<const std::uint16_t*>(m_words.Data()) + RowPlace(k, y);
    }

  private:
    std::size_t RowPlace(std::size_t k, std::size_t y) const {
        return (k * m_height + y) * m_width;
    }

    std::size_t m_wordCount;
    std::uint32_t m_width;
    std::uint32_t m_height;
    CBudgetBlock m_words;
};

} // namespace trevolt
