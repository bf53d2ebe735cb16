// CChromaCorrectCoef: the coefficient map that every file kind loads into and is saved from. It
// holds one SMatrixCoef and one gain per pixel of a cabinet or a whole screen.
//
// A map is used by one thread at a time.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>

#include "trevolt/MassiveGrid.h"
#include "trevolt/MatrixCoef.h"

namespace trevolt {

/// What a caller may hang on a map; deleted with it.
class CMapAttachment {
  public:
    virtual ~CMapAttachment() = default;
};

/// The largest width and height that a map can have.
inline constexpr std::int32_t kLargestMapSide = 0xFFFF;

class CChromaCorrectCoef {
  public:
    CChromaCorrectCoef();
    ~CChromaCorrectCoef() = default;
    /// A map that was moved from is empty.
    CChromaCorrectCoef(CChromaCorrectCoef&& other) noexcept;
    CChromaCorrectCoef& operator=(CChromaCorrectCoef&& other) noexcept;

    /// Releases the storage of both grids and sets width and height to 0.
    void Reset();

    /// Resets, then, with both sizes at least 1, takes them (stored as uint16), sizes both grids to
    /// width × height and fills them with defaults. A zero or negative size leaves the map empty.
    /// When the memory is refused the map has its size and no storage.
    void Resize(std::int32_t width, std::int32_t height);

    /// As `Resize`, but the colour grid's content is left undefined, for callers that set every
    /// element next. The gain grid is filled.
    void ResizeForOverwrite(std::int32_t width, std::int32_t height);

    /// Fills the colour grid with the default element and the gain grid with 1.0, each where it has
    /// storage and the width is above 0.
    void FillDefaults();

    /// Copies `element` into pixel (x, y); does nothing outside the map or its colour grid.
    /// Coordinates are 64-bit, so that a caller may add offsets to them without a check.
    void SetElement(std::int64_t x, std::int64_t y, const SMatrixCoef& element) {
        if (IsInside(x, y))
            std::memcpy(m_colour.Element(IndexOf(x, y)), &element, sizeof element);
    }

    /// The element at pixel (x, y), null outside the map or its colour grid.
    const SMatrixCoef* FindElement(std::int64_t x, std::int64_t y) const {
        return IsInside(x, y)
                   ? reinterpret_cast<const SMatrixCoef*>(m_colour.Element(IndexOf(x, y)))
                   : nullptr;
    }
    SMatrixCoef* FindElement(std::int64_t x, std::int64_t y) {
        return const_cast<SMatrixCoef*>(std::as_const(*this).FindElement(x, y));
    }

    /// The element at pixel (x, y), or the default element where there is none.
    const SMatrixCoef& ElementOrDefault(std::int64_t x, std::int64_t y) const {
        const SMatrixCoef* element = FindElement(x, y);
        return element == nullptr ? m_defaultElement : *element;
    }

    std::uint16_t Width() const { return m_width; }
    std::uint16_t Height() const { return m_height; }
    bool IsEmpty() const { return m_width == 0 || m_height == 0; }
    /// Whether both grids got their memory.
    bool HasStorage() const { return m_colour.HasStorage() && m_gain.HasStorage(); }

    CMassiveGrid& ColourGrid() { return m_colour; }
    const CMassiveGrid& ColourGrid() const { return m_colour; }
    CMassiveGrid& GainGrid() { return m_gain; }
    const CMassiveGrid& GainGrid() const { return m_gain; }
    const SMatrixCoef& DefaultElement() const { return m_defaultElement; }
    std::uint32_t KindWord() const { return m_kindWord; }

    /// The map owns the attachment.
    void Attach(std::unique_ptr<CMapAttachment> attachment) {
        m_attachment = std::move(attachment);
    }
    CMapAttachment* Attachment() const { return m_attachment.get(); }

  private:
    void AllocateGrids(std::int32_t width, std::int32_t height);
    void FillGain();
    /// The colour grid may be smaller than the map: without storage it has no size at all.
    bool IsInside(std::int64_t x, std::int64_t y) const {
        return x >= 0 && y >= 0 && x < m_width && y < m_height && x < m_colour.Width() &&
               y < m_colour.Height();
    }
    std::uint32_t IndexOf(std::int64_t x, std::int64_t y) const {
        return m_colour.Width() * static_cast<std::uint32_t>(y) + static_cast<std::uint32_t>(x);
    }

    std::uint32_t m_kindWord = 1;
    std::uint16_t m_width = 0;
    std::uint16_t m_height = 0;
    CMassiveGrid m_colour;
    CMassiveGrid m_gain;
    SMatrixCoef m_defaultElement;
    std::unique_ptr<CMapAttachment> m_attachment;
};

} // namespace trevolt
