// The running process: its id, and the user's wish to stop it.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace trevolt {

std::uint32_t ProcessId();

/// A number of those who mean the same process by the same id: of the running system, and of the part
/// of it that counts its processes by itself. 0 when it is not known.
std::uint32_t ProcessRealm();

/// Whether certainly no process of this realm has the id.
bool IsProcessGone(std::uint32_t id);

/// A flag that becomes true when the user interrupts the program from now on (Ctrl+C, a request to
/// terminate, a pipe that nobody reads any more), in place of ending it at once. A second interrupt of
/// the same sort ends it: work may wait for what never comes.
const std::atomic<bool>& CatchInterrupts();

/// For work that nobody interrupts.
inline const std::atomic<bool> kNeverInterrupted{false};

/// The columns of the terminal at standard error, 80 where it does not tell; 0 when it is none.
std::size_t ErrorTerminalColumns();

} // namespace trevolt
