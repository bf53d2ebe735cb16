// The round numbers that a scale is marked with.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "app/inspection/CellPainter.h"

namespace trevolt {

struct SScaleTick {
    double value = 0;
    std::string text;
};

/// Multiples of 1, 2 or 5 times a power of ten inside a range, its ends included, in rising order and
/// no more than `most`, which is at least 1; of such steps the smallest that keeps to it.
std::vector<SScaleTick> RoundTicks(const SValueRange& range, std::size_t most);

/// What marks a scale that is `width` pixels long, with numbers in letters of `textSize`: round numbers
/// that do not touch each other, or, where less than two of them would stand there, its ends.
std::vector<SScaleTick> ScaleTicks(const SValueRange& range, int width, int textSize);

/// Pixels from such a scale's begin.
int TickPlace(const SScaleTick& tick, const SValueRange& range, int width);

constexpr int kShownDigits = 4; ///< that count

/// A number as people read it: so many significant digits, a real minus sign.
std::string ShownNumber(double value, int digits = kShownDigits);

/// The ends of a range as people read them: in so many digits, or in as many as tell them apart.
std::pair<std::string, std::string> ShownEnds(const SValueRange& range, int digits = kShownDigits);

} // namespace trevolt
