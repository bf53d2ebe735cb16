#include "cli/RangeOption.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include <fmt/format.h>

#include "cli/NumberText.h"

namespace trevolt {
namespace {

SValueRange ParseRange(const std::string& text) {
    const auto [low, high] = NumberPair<double>(text, ",");
    constexpr double kLargest = 1e38; // of what a file's values can be, with room for a difference
    if (!low || !high || !(std::abs(*low) <= kLargest) || !(std::abs(*high) <= kLargest))
        throw std::invalid_argument(fmt::format("{} is no range: give LOW,HIGH as 0.8,1.2", text));
    constexpr double kNarrowest = 1e-9; // of the numbers themselves; ticks could not be told apart
    if (!(*high - *low > kNarrowest * std::max(std::abs(*low), std::abs(*high))))
        throw std::invalid_argument(
            fmt::format("{} is empty or too narrow: give a LOW that is below HIGH", text));
    return {*low, *high};
}

} // namespace

COption AddRange(COptionGroup& group, std::optional<SValueRange>& range) {
    return group
        .AddValue("--range", "LOW,HIGH", range, ParseRange,
                  "Values at the ends of the scale; those beyond have colours of their own")
        .Default("those shown, without the few that are far from all others");
}

} // namespace trevolt
