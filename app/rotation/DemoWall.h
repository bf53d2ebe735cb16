// A small wall of made-up cabinets, for trying the program out.
#pragma once

#include <atomic>
#include <string>

#include "platform/Process.h"

namespace trevolt {

/// Writes one small cabinet of every file kind into a folder, which is made when missing, each whole or
/// not at all; with `replaces` in place of a file of its name, with `sync` they and the folders that
/// were made have reached the disk. Nothing, or what went wrong with the first that failed, in plain
/// words, or that it was `interrupted`, and how many are written, which are those before it.
/// The values are the same at every call: gains that drift over a cabinet, with pixel noise.
std::string WriteDemoWall(const std::wstring& folder, bool replaces, bool sync,
                          const std::atomic<bool>& interrupted = kNeverInterrupted);

} // namespace trevolt
