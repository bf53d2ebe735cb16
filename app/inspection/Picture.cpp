#include "app/inspection/Picture.h"

#include <algorithm>

namespace trevolt {
namespace {

std::uint8_t Mixed(std::uint8_t below, std::uint8_t above, int cover) {
    return static_cast<std::uint8_t>((below * (255 - cover) + above * cover + 127) / 255);
}

} // namespace

CPicture::CPicture(int width, int height, SColour background)
    : m_width(width),
      m_height(height),
      m_bytes(3 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {
    Fill({0, 0, width, height}, background);
}

void CPicture::Lengthen(int rows, SColour background) {
    const int before = m_height;
    m_height += rows;
    m_bytes.resize(3 * static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height));
    Fill({0, before, m_width, rows}, background);
}

SColour CPicture::At(int x, int y) const {
    const std::size_t at = IndexOf(x, y);
    return {m_bytes[at], m_bytes[at + 1], m_bytes[at + 2]};
}

void CPicture::Set(int x, int y, SColour colour) {
    if (!IsInside(x, y))
        return;
    const std::size_t at = IndexOf(x, y);
    m_bytes[at] = colour.red;
    m_bytes[at + 1] = colour.green;
    m_bytes[at + 2] = colour.blue;
}

void CPicture::Mix(int x, int y, SColour colour, int cover) {
    if (!IsInside(x, y))
        return;
    const SColour below = At(x, y);
    Set(x, y,
        {Mixed(below.red, colour.red, cover), Mixed(below.green, colour.green, cover),
         Mixed(below.blue, colour.blue, cover)});
}

void CPicture::Fill(const SPictureRect& rect, SColour colour) {
    const SPictureRect part = Clipped(rect);
    for (int y = part.top; y < part.top + part.height; ++y)
        for (int x = part.left; x < part.left + part.width; ++x)
            Set(x, y, colour);
}

void CPicture::MixFill(const SPictureRect& rect, SColour colour, int cover) {
    const SPictureRect part = Clipped(rect);
    for (int y = part.top; y < part.top + part.height; ++y)
        for (int x = part.left; x < part.left + part.width; ++x)
            Mix(x, y, colour, cover);
}

void CPicture::Frame(const SPictureRect& rect, SColour colour) {
    Fill({rect.left, rect.top, rect.width, 1}, colour);
    Fill({rect.left, rect.top + rect.height - 1, rect.width, 1}, colour);
    Fill({rect.left, rect.top, 1, rect.height}, colour);
    Fill({rect.left + rect.width - 1, rect.top, 1, rect.height}, colour);
}

SPictureRect CPicture::Clipped(const SPictureRect& rect) const {
    const int left = std::clamp(rect.left, 0, m_width);
    const int top = std::clamp(rect.top, 0, m_height);
    const int right = std::clamp(rect.left + rect.width, left, m_width);
    const int bottom = std::clamp(rect.top + rect.height, top, m_height);
    return {left, top, right - left, bottom - top};
}

} // namespace trevolt
