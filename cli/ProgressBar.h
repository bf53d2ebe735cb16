// How far a run is, in one line of a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace trevolt {

struct SProgress {
    std::size_t done = 0; ///< files
    std::size_t count = 0;
    std::uint64_t pixels = 0; ///< of the files that are done
    std::chrono::milliseconds elapsed{0};
};

/// "[####----]  50 %  2 of 4 files  1.5 Mpixel/s  3 s left" in at most `columns` ASCII characters:
/// where they do not all fit, the bar goes first, then the rate, the time left and the share. Rate and
/// time left are told from the first second on; the rate is that of files where no pixels are known.
std::string ProgressText(const SProgress& progress, std::size_t columns);

} // namespace trevolt
