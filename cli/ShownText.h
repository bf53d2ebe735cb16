// Text for people: a line a message, with nothing in it that a terminal obeys.
#pragma once

#include <array>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "cli/TextPieces.h"

namespace trevolt {

/// A line as it is shown. Takes no memory.
class CShownLine {
  public:
    using value_type = char; // NOLINT(readability-identifier-naming): std::back_inserter's names

    explicit CShownLine(std::FILE* stream) : m_pieces(stream) {}

    /// Adds a byte of its text. Throws what fmt::print throws.
    void push_back(char byte); // NOLINT(readability-identifier-naming)

    /// Prints the rest and the line's end. Throws the same.
    void End();

  private:
    /// Shows the characters of what has come, up to so many bytes that may be a part of one.
    void Show(std::size_t rest);

    CTextPieces m_pieces;
    std::array<char, 256> m_text{};
    std::size_t m_size = 0;
};

/// Prints a text as it is shown, and the line's end. Throws what fmt::print throws.
void PrintText(std::FILE* stream, std::string_view text);

/// The same of what is formatted. Takes no memory of its own: what is done is told also where none is
/// left.
template <class... Values>
void PrintLine(std::FILE* stream, fmt::format_string<Values...> form, Values&&... values) {
    CShownLine line(stream);
    fmt::format_to(std::back_inserter(line), form, std::forward<Values>(values)...);
    line.End();
}

/// Prints to standard error, behind the program's name.
template <class... Values>
void Complain(fmt::format_string<Values...> form, Values&&... values) {
    CShownLine line(stderr);
    fmt::format_to(std::back_inserter(line), "trevolt-cli: ");
    fmt::format_to(std::back_inserter(line), form, std::forward<Values>(values)...);
    line.End();
}

} // namespace trevolt
