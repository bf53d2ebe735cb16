#include "trevolt/ChromaCorrectCoef.h"

namespace trevolt {

CChromaCorrectCoef::CChromaCorrectCoef() : m_colour(sizeof(SMatrixCoef)), m_gain(sizeof(float)) {}

CChromaCorrectCoef::CChromaCorrectCoef(CChromaCorrectCoef&& other) noexcept
    : m_kindWord(other.m_kindWord),
      m_width(std::exchange(other.m_width, std::uint16_t{0})),
      m_height(std::exchange(other.m_height, std::uint16_t{0})),
      m_colour(std::move(other.m_colour)),
      m_gain(std::move(other.m_gain)),
      m_defaultElement(other.m_defaultElement),
      m_attachment(std::move(other.m_attachment)) {}

CChromaCorrectCoef& CChromaCorrectCoef::operator=(CChromaCorrectCoef&& other) noexcept {
    if (this == &other)
        return *this;
    m_kindWord = other.m_kindWord;
    m_width = std::exchange(other.m_width, std::uint16_t{0});
    m_height = std::exchange(other.m_height, std::uint16_t{0});
    m_colour = std::move(other.m_colour);
    m_gain = std::move(other.m_gain);
    m_defaultElement = other.m_defaultElement;
    m_attachment = std::move(other.m_attachment);
    return *this;
}

void CChromaCorrectCoef::Reset() {
    m_colour.Release();
    m_gain.Release();
    m_width = 0;
    m_height = 0;
}

void CChromaCorrectCoef::Resize(std::int32_t width, std::int32_t height) {
    AllocateGrids(width, height);
    FillDefaults();
}

void CChromaCorrectCoef::ResizeForOverwrite(std::int32_t width, std::int32_t height) {
    AllocateGrids(width, height);
    FillGain();
}

void CChromaCorrectCoef::FillDefaults() {
    if (m_width == 0)
        return;
    m_colour.FillWith(&m_defaultElement, sizeof m_defaultElement);
    FillGain();
}

void CChromaCorrectCoef::AllocateGrids(std::int32_t width, std::int32_t height) {
    Reset();
    if (width < 1 || height < 1)
        return;
    m_width = static_cast<std::uint16_t>(width);
    m_height = static_cast<std::uint16_t>(height);
    if (!m_colour.Resize(width, height) || !m_gain.Resize(width, height))
        m_colour.Release();
}

void CChromaCorrectCoef::FillGain() {
    constexpr float kDefaultGain = 1.0F;
    if (m_width != 0)
        m_gain.FillWith(&kDefaultGain, sizeof kDefaultGain);
}

} // namespace trevolt
