// The running process: its id, and the user's wish to stop it.
#pragma once

#include <atomic>
#include <cstdint>

namespace trevolt {

std::uint32_t ProcessId();

/// A flag that becomes true when the user interrupts the program (Ctrl+C, a request to terminate)
/// from now on, in place of ending it at once.
const std::atomic<bool>& CatchInterrupts();

/// Whether standard error is a terminal.
bool IsErrorTerminal();

} // namespace trevolt
