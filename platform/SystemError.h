// What the system's error numbers mean, in English whatever the locale.
#pragma once

#include <string>

namespace trevolt {

/// The meaning of an `errno` value, as "No space left on device"; a number without a text of its own
/// is shown as such, and 0 has none.
std::string SystemErrorText(int error);

/// "problem: meaning", or the problem alone where there is no meaning.
std::string WithSystemReason(const std::string& problem, int error);

} // namespace trevolt
