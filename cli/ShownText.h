// Text for people: a line a message, with nothing in it that a terminal obeys.
#pragma once

#include <cstdio>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "common/ShownCharacters.h"

namespace trevolt {

/// Prints a text as it is shown, and the line's end. Throws what fmt::print throws.
void PrintText(std::FILE* stream, std::string_view text);

/// The same of what is formatted. Lines of usual length take no memory: what is done is told also
/// where none is left.
template <class... Values>
void PrintLine(std::FILE* stream, fmt::format_string<Values...> form, Values&&... values) {
    fmt::memory_buffer line;
    fmt::format_to(std::back_inserter(line), form, std::forward<Values>(values)...);
    PrintText(stream, {line.data(), line.size()});
}

/// Prints to standard error, behind the program's name.
template <class... Values>
void Complain(fmt::format_string<Values...> form, Values&&... values) {
    fmt::memory_buffer line;
    fmt::format_to(std::back_inserter(line), "trevolt-cli: ");
    fmt::format_to(std::back_inserter(line), form, std::forward<Values>(values)...);
    PrintText(stderr, {line.data(), line.size()});
}

} // namespace trevolt
