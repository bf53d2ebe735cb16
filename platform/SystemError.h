// What the system's error numbers mean, in English whatever the locale.
#pragma once

#include <string>

namespace trevolt {

/// The meaning of an `errno` value, as "No space left on device"; a number without a text of its own
/// is shown as such, and 0 has none.
std::string SystemErrorText(int error);

/// `text` with the meaning of an `errno` value behind it, as "it is refused: Permission denied".
std::string WithSystemReason(std::string text, int error);

} // namespace trevolt
