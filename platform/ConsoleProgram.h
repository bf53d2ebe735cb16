// The way into a console program, the same on every system.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace trevolt {

/// What a console program defines; the system's entry point calls it with the arguments behind the
/// program's name, as UTF-8, and ends with its result. On Windows the console takes UTF-8 output
/// from then on.
int ConsoleMain(const std::vector<std::string>& arguments);

/// What it defines besides: its exit status where memory is refused before `ConsoleMain` or ends it.
/// `firstArgument` is empty where there is none.
int StatusWithoutMemory(std::string_view firstArgument) noexcept;

/// Says that memory was refused; the program's exit status.
inline int EndWithoutMemory(std::string_view firstArgument) noexcept {
    std::fputs("not enough memory\n", stderr);
    return StatusWithoutMemory(firstArgument);
}

} // namespace trevolt
