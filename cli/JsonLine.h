// Objects for programs: one JSON object a line on standard output.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cli/JsonValue.h"
#include "trevolt/FileKinds.h"
#include "trevolt/QuarterTurn.h"
#include "trevolt/RotationRun.h"

namespace trevolt {

/// Of the objects' keys and their meaning (docs/json.md).
inline constexpr int kJsonVersion = 1;

/// Prints one object in a line of its own and flushes it: a run that is killed leaves whole lines.
/// Takes no memory. Throws what fmt::print throws, std::system_error also when the device takes no
/// more.
void PrintObject(JsonMembers members);

/// The same of a run's summary; `members` stand behind what every summary begins with.
void PrintSummary(ERotationEnd end, int exitStatus, JsonMembers members);

/// A value, or null for none.
template <class Value>
CJson ValueOrNull(const std::optional<Value>& value) {
    return value ? CJson(*value) : CJson(nullptr);
}

/// Width and height.
CJson SizeOf(const PixelSize& size);

/// The same, or null for 0 × 0.
CJson SizeOrNull(const PixelSize& size);

/// A text, or null for an empty one.
CJson TextOrNull(std::string_view text);

/// A kind's extension without its dot, as options take it; empty for no kind.
std::string KindName(const SFileKind* kind);

} // namespace trevolt
