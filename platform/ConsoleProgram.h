// The way into a console program, the same on every system.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace trevolt {

/// What a console program defines; the system's entry point calls it with the arguments behind the
/// program's name, as UTF-8, and ends with its result. On Windows the console takes UTF-8 output
/// from then on.
int ConsoleMain(const std::vector<std::string>& arguments);

/// Says that memory was refused before `ConsoleMain` or ended it; the program's exit status.
inline int EndWithoutMemory() noexcept {
    std::fputs("not enough memory\n", stderr);
    return EXIT_FAILURE;
}

} // namespace trevolt
