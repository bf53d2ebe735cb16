#include "coef/VirtualGreenCorrectCoef.h"

namespace trevolt {

template <class Element>
bool CVirtualGreenCorrectCoef<Element>::FillRectChannel(std::int32_t channel, std::uint32_t x,
                                                        std::uint32_t y, std::uint32_t width,
                                                        std::uint32_t height, float value,
                                                        std::uint32_t tableIndex) {
    return this->FillThrough(m_pTransferTable, channel, {x, y, width, height}, value, tableIndex);
}

template <class Element>
bool CVirtualGreenCorrectCoef<Element>::SetPixelChannel(std::int32_t channel, std::uint32_t x,
                                                        std::uint32_t y, float value,
                                                        std::uint32_t tableIndex) {
    return this->SetThrough(m_pTransferTable, channel, x, y, value, tableIndex);
}

template class CVirtualGreenCorrectCoef<S4WordCoef>;
template class CVirtualGreenCorrectCoef<S12WordCoef>;

} // namespace trevolt
