// What every fuzz target needs: its input as a stream, and a check that ends the process.
#pragma once

#include <cstddef>
#include <span>
#include <sstream>
#include <string>

namespace trevolt::fuzz {

inline std::istringstream StreamOf(std::span<const std::byte> input) {
    return std::istringstream(
        std::string(reinterpret_cast<const char*>(input.data()), input.size()), std::ios::binary);
}

/// Ends the process when a reader's own account does not add up.
inline void Check(bool holds) {
    if (!holds)
        __builtin_trap();
}

} // namespace trevolt::fuzz
