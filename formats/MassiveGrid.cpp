#include "trevolt/MassiveGrid.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "common/CheckedArithmetic.h"

namespace trevolt {

CMassiveGrid::CMassiveGrid(std::uint32_t elementBytes)
    : CMassiveBuf(elementBytes << kBlockShift), m_elementBytes(elementBytes) {}

CMassiveGrid::CMassiveGrid(CMassiveGrid&& other) noexcept
    : CMassiveBuf(std::move(other)),
      m_blockCursor(std::exchange(other.m_blockCursor, -1)),
      m_offsetCursor(std::exchange(other.m_offsetCursor, -1)),
      m_width(std::exchange(other.m_width, 0)),
      m_height(std::exchange(other.m_height, 0)),
      m_elementBytes(other.m_elementBytes) {}

CMassiveGrid& CMassiveGrid::operator=(CMassiveGrid&& other) noexcept {
    if (this == &other)
        return *this;
    m_blockCursor = std::exchange(other.m_blockCursor, -1);
    m_offsetCursor = std::exchange(other.m_offsetCursor, -1);
    m_width = std::exchange(other.m_width, 0);
    m_height = std::exchange(other.m_height, 0);
    m_elementBytes = other.m_elementBytes;
    CMassiveBuf::operator=(std::move(other));
    return *this;
}

bool CMassiveGrid::Resize(std::int32_t width, std::int32_t height) {
    Release();
    if (width < 0 || height < 0)
        return false;
    const auto elements = CheckedProduct<std::int32_t>(width, height);
    if (!elements || !Allocate(static_cast<std::uint64_t>(*elements) * m_elementBytes))
        return false;
    m_width = static_cast<std::uint32_t>(width);
    m_height = static_cast<std::uint32_t>(height);
    return true;
}

void CMassiveGrid::Release() {
    CMassiveBuf::Release();
    ResetCursors();
    m_width = 0;
    m_height = 0;
}

bool CMassiveGrid::SetShape(std::uint32_t width, std::uint32_t height) {
    const auto elements = CheckedProduct<std::int32_t>(width, height);
    if (!elements || static_cast<std::uint64_t>(*elements) * m_elementBytes != ByteCount())
        return false;
    m_width = width;
    m_height = height;
    return true;
}

bool CMassiveGrid::CopyRegionFrom(const CMassiveGrid* source, std::int32_t width,
                                  std::int32_t height) {
    if (source == nullptr || source->m_elementBytes != m_elementBytes || width < 1 || height < 1)
        return false;
    const auto sourceWidth = static_cast<std::uint32_t>(width);
    const auto sourceHeight = static_cast<std::uint32_t>(height);
    if (m_width == sourceWidth && m_height == sourceHeight)
        return source->ByteCount() == ByteCount() && CopyFrom(*source) &&
               SetShape(sourceWidth, sourceHeight);
    const bool copied = CopyOverlap(*source, sourceWidth, sourceHeight);
    ResetCursors();
    return copied;
}

bool CMassiveGrid::CopyOverlap(const CMassiveGrid& source, std::uint32_t width,
                               std::uint32_t height) {
    const std::uint32_t columns = std::min(width, m_width);
    const std::uint32_t rows = std::min(height, m_height);
    const std::uint64_t held = std::min(source.ElementCount(), std::uint64_t{width} * height);
    for (std::uint32_t y = 0; y < rows; ++y) {
        for (std::uint32_t x = 0; x < columns; ++x) {
            const std::uint64_t from = std::uint64_t{y} * width + x;
            if (from >= held)
                return false;
            const std::uint32_t to = y * m_width + x;
            m_blockCursor = static_cast<std::int32_t>(to >> kBlockShift);
            m_offsetCursor = static_cast<std::int32_t>(to & kBlockMask);
            std::memcpy(Element(to), source.Element(static_cast<std::uint32_t>(from)),
                        m_elementBytes);
        }
    }
    return true;
}

void CMassiveGrid::ResetCursors() {
    m_blockCursor = -1;
    m_offsetCursor = -1;
}

} // namespace trevolt
