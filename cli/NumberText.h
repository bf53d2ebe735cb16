// Numbers in the values of options.
#pragma once

#include <array>
#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace trevolt {

/// The number that the whole text is; nothing for any other.
template <class Number>
std::optional<Number> NumberOf(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

/// The numbers on both sides of the first of `separators`.
template <class Number>
std::array<std::optional<Number>, 2> NumberPair(std::string_view text,
                                                std::string_view separators) {
    const std::size_t place = text.find_first_of(separators);
    if (place == std::string_view::npos)
        return {};
    return {NumberOf<Number>(text.substr(0, place)), NumberOf<Number>(text.substr(place + 1))};
}

} // namespace trevolt
