// The font of pictures, which the program holds: no system is asked for one.
#pragma once

#include <cstddef>
#include <span>

namespace trevolt {

/// The bytes of a TrueType file with one font.
std::span<const unsigned char> FontFile();

} // namespace trevolt
