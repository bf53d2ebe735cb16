// The language id that a launching program hands over on the standard input.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

namespace trevolt {

/// How long a launching program may take to write the id: the window must not wait for one that
/// never does.
inline constexpr std::chrono::milliseconds kLaunchPatience{1000};

/// The id in what a launching program has written: the first four bytes as a little-endian int32;
/// bytes that were not given count as 0.
constexpr std::int32_t LaunchLanguageOf(std::string_view given) {
    std::uint32_t id = 0;
    for (std::size_t i = given.substr(0, sizeof id).size(); i > 0; --i)
        id = id << 8U | static_cast<unsigned char>(given[i - 1]);
    return static_cast<std::int32_t>(id);
}

/// Reads up to 10000 bytes from the standard input in one read, which hold the id, and closes it. The
/// id is 0 when the standard input is absent, fails, is neither a pipe nor a file (a console would
/// block, and holds no id), or is a pipe that is held open and gives nothing for `patience`. To be
/// called once, before another thread uses the standard input.
std::int32_t ReadLaunchLanguage(std::chrono::milliseconds patience = kLaunchPatience);

} // namespace trevolt
