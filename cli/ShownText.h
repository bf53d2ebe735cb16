// Text for people: a line a message, with nothing in it that a terminal obeys.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace trevolt {

/// `text` with what controls a terminal or the order of letters escaped: C0, DEL and bytes that are
/// no UTF-8 as \x1B, C1, line separators and bidirectional controls as \u202E.
std::string Shown(std::string_view text);

/// Prints `text` as it is shown, and the line's end. Throws what fmt::print throws.
void PrintLine(std::FILE* stream, std::string_view text);

/// The same to standard error, behind the program's name.
void Complain(std::string_view problem);

} // namespace trevolt
