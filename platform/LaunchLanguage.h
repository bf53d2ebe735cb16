// The language id that a launching program hands over on the standard input.
#pragma once

#include <cstdint>

namespace trevolt {

/// Reads up to 10000 bytes from the standard input in one read and closes it. The id is the first
/// four bytes as a little-endian int32; bytes that were not given count as 0. It is 0 when the
/// standard input is absent, fails, or is neither a pipe nor a file: a console would block, and
/// holds no id. To be called once, before another thread uses the standard input.
std::int32_t ReadLaunchLanguage();

} // namespace trevolt
