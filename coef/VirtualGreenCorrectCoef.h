// CVirtualGreenCorrectCoef: what the two virtual-green kinds share beyond their word store: a
// transfer table that callers hand them.
#pragma once

#include "coef/WordCorrectCoef.h"

namespace trevolt {

template <class Element>
class CVirtualGreenCorrectCoef : public CWordCorrectCoef<Element> {
  public:
    /// The table for channel writes with an index from 1 to 56; it stays the caller's and must
    /// outlive its use. Null for none.
    void SetTransferTable(CCaliOperationData* table) { m_pTransferTable = table; }

    bool FillRectChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y,
                         std::uint32_t width, std::uint32_t height, float value,
                         std::uint32_t tableIndex) override;
    bool SetPixelChannel(std::int32_t channel, std::uint32_t x, std::uint32_t y, float value,
                         std::uint32_t tableIndex) override;

  private:
    friend struct SCoefFields;

    CCaliOperationData* m_pTransferTable = nullptr; ///< not owned
};

extern template class CVirtualGreenCorrectCoef<S4WordCoef>;
extern template class CVirtualGreenCorrectCoef<S12WordCoef>;

} // namespace trevolt
