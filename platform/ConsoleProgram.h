// The way into a console program, the same on every system.
#pragma once

#include <string>
#include <vector>

namespace trevolt {

/// What a console program defines; the system's entry point calls it with the arguments behind the
/// program's name, as UTF-8, and ends with its result. On Windows the console takes UTF-8 output
/// from then on.
int ConsoleMain(const std::vector<std::string>& arguments);

/// What a console program defines beside it: says that memory was refused, without any, when that
/// ended `ConsoleMain` or came before it. The program ends with its result.
int ConsoleOutOfMemory() noexcept;

} // namespace trevolt
