// Text with nothing hidden in it, for people to read.
#pragma once

#include <string>
#include <string_view>

#include <fmt/format.h>

namespace trevolt {

/// Appends `text` with what controls a terminal or the order of letters escaped: C0, DEL and bytes
/// that are no UTF-8 as \x1B, C1, line separators and bidirectional controls as \u202E.
void AppendShown(std::string_view text, fmt::memory_buffer& shown);

/// The same as a text of its own.
std::string Shown(std::string_view text);

} // namespace trevolt
