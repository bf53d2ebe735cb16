// Objects for programs: one JSON object a line on standard output.
#pragma once

#include <string>

#include "cli/JsonValue.h"
#include "trevolt/FileKinds.h"
#include "trevolt/QuarterTurn.h"
#include "trevolt/RotationRun.h"

namespace trevolt {

/// Of the objects' keys and their meaning (docs/json.md).
inline constexpr int kJsonVersion = 1;

/// Prints one object in a line of its own and flushes it: a run that is killed leaves whole lines. What
/// has no UTF-8 form becomes U+FFFD. Throws what fmt::print throws, std::system_error also
/// when the device takes no more.
void PrintObject(const CJson& object);

/// Width and height, or null for 0 × 0.
CJson SizeOrNull(const PixelSize& size);

/// A text, or null for an empty one.
CJson TextOrNull(const std::string& text);

/// The kind's extension without its dot, as options take it; null for no kind.
CJson KindOrNull(const SFileKind* kind);

/// What every summary begins with.
CJson SummaryOf(ERotationEnd end, int exitStatus);

} // namespace trevolt
