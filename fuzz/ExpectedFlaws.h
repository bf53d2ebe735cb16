// What the reader of text files must tell of its lines, reckoned the slow way and of the lines whose
// numbers have a plain form only.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "fuzz/FuzzInput.h"
#include "trevolt/TextFlaws.h"

namespace trevolt::fuzz {

/// How a data line looks to somebody who knows plain numbers alone.
enum class ELook : std::uint8_t {
    Whole,   ///< two integers and nine decimals
    Partial, ///< another number of fields, or a NUL
    Unsure
};

struct SLook {
    ELook look = ELook::Unsure;
    std::int64_t x = 0;
    std::int64_t y = 0;
};

/// Takes a field that is blanks, digits with a sign, and `decimals` behind a point; nothing else.
inline bool IsPlainNumber(std::string_view field, bool hasDecimals) {
    field.remove_prefix(std::min(field.find_first_not_of(" \t"), field.size()));
    if (field.starts_with('-'))
        field.remove_prefix(1);
    const std::size_t point = std::min(field.find('.'), field.size());
    const auto isDigits = [](std::string_view text) {
        return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    };
    if (!hasDecimals)
        return field.size() <= 9 && isDigits(field);
    return isDigits(field.substr(0, point)) &&
           (point == field.size() || isDigits(field.substr(point + 1)));
}

inline std::int64_t IntegerOf(std::string_view field) {
    field.remove_prefix(field.find_first_not_of(" \t"));
    std::int64_t value = 0;
    std::from_chars(field.data(), field.data() + field.size(), value);
    return value;
}

inline SLook LookAt(std::string_view line) {
    if (std::ranges::count(line, ',') != 10 || line.find('\0') != std::string_view::npos)
        return {.look = ELook::Partial};
    SLook look{.look = ELook::Whole};
    for (int k = 0; k < 11; ++k) {
        const std::size_t comma = std::min(line.find(','), line.size());
        const std::string_view field = line.substr(0, comma);
        if (!IsPlainNumber(field, k >= 2))
            return {};
        if (k == 0)
            look.x = IntegerOf(field);
        else if (k == 1)
            look.y = IntegerOf(field);
        line.remove_prefix(std::min(comma + 1, line.size()));
    }
    return look;
}

/// The bounds of what is told of the data lines in `lines`, with nothing said before them that is
/// damaged, of a file of a size.
struct SExpectedFlaws {
    std::uint64_t partial = 0;
    std::uint64_t outside = 0;
    std::uint64_t repeated = 0;
    std::uint64_t unsure = 0; ///< lines that may be anything
    bool hasNoEnd = false;
    bool isTooLong = false;
};

inline SExpectedFlaws ExpectFlaws(std::string_view lines, std::int64_t width, std::int64_t height) {
    constexpr std::size_t kLongest = 2047;
    SExpectedFlaws flaws;
    std::set<std::pair<std::int64_t, std::int64_t>> named;
    for (;;) {
        const std::size_t feed = lines.find('\n');
        const bool hasEnd = feed != std::string_view::npos;
        std::string_view line = lines.substr(0, feed);
        if (hasEnd && line.ends_with('\r'))
            line.remove_suffix(1);
        flaws.isTooLong = line.size() > kLongest;
        flaws.hasNoEnd = !hasEnd && !line.empty() && !flaws.isTooLong;
        if (flaws.isTooLong || !hasEnd)
            return flaws;
        lines.remove_prefix(feed + 1);
        const SLook look = LookAt(line);
        if (look.look != ELook::Whole) {
            ++(look.look == ELook::Partial ? flaws.partial : flaws.unsure);
        } else if (look.x < 0 || look.y < 0 || look.x >= width || look.y >= height) {
            ++flaws.outside;
        } else if (!named.insert({look.x, look.y}).second) {
            ++flaws.repeated;
        }
    }
}

/// Checks what was told of a text's lines against what they look like. A line that one is unsure of
/// may be whole, and then name any pixel.
inline void CheckFlaws(const CTextFlaws& told, const SExpectedFlaws& expected) {
    const auto isWithin = [&](ETextFlaw flaw, std::uint64_t least) {
        const std::uint64_t count = told[flaw].count;
        return count >= least && count <= least + expected.unsure;
    };
    Check(told[ETextFlaw::LongLine].count == (expected.isTooLong ? 1U : 0U));
    Check(told[ETextFlaw::NoEnd].count == (expected.hasNoEnd ? 1U : 0U));
    Check(told[ETextFlaw::SizeLine].count == 0);
    Check(isWithin(ETextFlaw::DataLine, expected.partial));
    Check(isWithin(ETextFlaw::Outside, expected.outside));
    Check(isWithin(ETextFlaw::Repeated, expected.repeated));
}

} // namespace trevolt::fuzz
