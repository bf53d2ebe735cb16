// The objects of all word kinds, by their elements.
#pragma once

#include <cstdint>

#include "calibuf/BlockGrid.h"
#include "coef/CNewBrightCorrectCoef.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/VirtualGreenBrightCorrectCoef.h"
#include "coef/VirtualGreenChromaCorrectCoef.h"
#include "trevolt/QuarterTurn.h"

namespace trevolt {

template <class Element>
using WordObject = typename SObjectOf<Element>::Type;

/// The most that an object of that size takes: whole blocks of the longest element, and of extra words.
inline std::uint64_t LargestStoreBytes(const PixelSize& size) {
    const auto columns = (static_cast<std::uint64_t>(size.width) + kBlockWidth - 1) / kBlockWidth;
    const auto rows = (static_cast<std::uint64_t>(size.height) + kBlockHeight - 1) / kBlockHeight;
    return columns * rows * kBlockElements * (sizeof(S12WordCoef) + sizeof(SWordCoef));
}

} // namespace trevolt
