#include "app/inspection/ScaleTicks.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "app/inspection/Lettering.h"

namespace trevolt {
namespace {

constexpr const char* kMinus = "\u2212";

std::string WithMinus(std::string text) {
    if (const std::size_t sign = text.find('-'); sign == 0)
        text.replace(sign, 1, kMinus);
    return text;
}

/// A step that is `factor` · 10^`power`.
struct SStep {
    double factor = 1;
    int power = 0;

    double Value() const { return factor * std::pow(10.0, power); }
};

/// The multiples of a step that lie in a range; what rounding put just outside counts as inside.
struct SMultiples {
    double first;
    double last;

    SMultiples(const SValueRange& range, double step) {
        const double tolerance = 1e-9 * (range.high - range.low) / step;
        first = std::ceil(range.low / step - tolerance);
        last = std::floor(range.high / step + tolerance);
    }
    double Count() const { return std::max(last - first + 1, 0.0); }
};

SStep SmallestStep(const SValueRange& range, std::size_t most) {
    const double width = (range.high - range.low) / static_cast<double>(most);
    for (int power = static_cast<int>(std::floor(std::log10(width))) - 1;; ++power)
        for (const double factor : {1.0, 2.0, 5.0}) {
            const SStep step{factor, power};
            if (SMultiples(range, step.Value()).Count() <= static_cast<double>(most))
                return step;
        }
}

std::string TickText(double value, const SStep& step) {
    constexpr int kMostDecimals = 9;
    if (step.power < -kMostDecimals || std::abs(value) >= 1e7)
        return ShownNumber(value);
    return WithMinus(fmt::format("{:.{}f}", value, std::max(-step.power, 0)));
}

/// What no eye tells from 0 is told as that.
std::vector<SScaleTick> Ends(const SValueRange& range) {
    const double unseen = 1e-4 * (range.high - range.low);
    const auto shown = [unseen](double end) { return std::abs(end) < unseen ? 0 : end; };
    const auto [low, high] = ShownEnds({shown(range.low), shown(range.high)});
    return {{range.low, low}, {range.high, high}};
}

bool HaveRoom(const std::vector<SScaleTick>& ticks, const SValueRange& range, int width,
              int textSize) {
    constexpr int kLeastGap = 8;
    const auto isNear = [&](const SScaleTick& a, const SScaleTick& b) {
        const int ofTexts = (TextWidth(a.text, textSize) + TextWidth(b.text, textSize) + 1) / 2;
        return TickPlace(b, range, width) - TickPlace(a, range, width) < ofTexts + kLeastGap;
    };
    return std::ranges::adjacent_find(ticks, isNear) == ticks.end();
}

} // namespace

std::vector<SScaleTick> RoundTicks(const SValueRange& range, std::size_t most) {
    const SStep step = SmallestStep(range, most);
    const SMultiples multiples(range, step.Value());
    std::vector<SScaleTick> ticks;
    const auto count = static_cast<std::size_t>(multiples.Count());
    for (std::size_t i = 0; i < count; ++i) {
        const double n = multiples.first + static_cast<double>(i);
        const double value = n == 0 ? 0 : n * step.Value(); // and not −0
        ticks.push_back({value, TickText(value, step)});
    }
    return ticks;
}

std::vector<SScaleTick> ScaleTicks(const SValueRange& range, int width, int textSize) {
    constexpr int kUsualRoom = 96; // of a tick
    const auto usual = static_cast<std::size_t>(std::max(width / kUsualRoom, 2));
    for (std::size_t most = usual; most <= usual + 2; ++most) { // which a smaller step may need
        std::vector<SScaleTick> ticks = RoundTicks(range, most);
        if (ticks.size() >= 2 && HaveRoom(ticks, range, width, textSize))
            return ticks;
    }
    return Ends(range);
}

int TickPlace(const SScaleTick& tick, const SValueRange& range, int width) {
    const double place = (tick.value - range.low) / (range.high - range.low);
    return static_cast<int>(std::lround(place * (width - 1)));
}

std::string ShownNumber(double value, int digits) {
    return WithMinus(fmt::format("{:.{}g}", value == 0 ? 0.0 : value, digits));
}

std::pair<std::string, std::string> ShownEnds(const SValueRange& range, int digits) {
    constexpr int kMostDigits = 17; // which tell any two numbers apart
    std::pair<std::string, std::string> ends;
    for (int shown = digits; shown <= kMostDigits && ends.first == ends.second; ++shown)
        ends = {ShownNumber(range.low, shown), ShownNumber(range.high, shown)};
    return ends;
}

} // namespace trevolt
