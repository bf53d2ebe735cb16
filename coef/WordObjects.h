// The objects of all word kinds, by their elements.
#pragma once

#include "coef/CNewBrightCorrectCoef.h"
#include "coef/CNewChromaCorrectCoef.h"
#include "coef/VirtualGreenBrightCorrectCoef.h"
#include "coef/VirtualGreenChromaCorrectCoef.h"

namespace trevolt {

template <class Element>
using WordObject = typename SObjectOf<Element>::Type;

} // namespace trevolt
