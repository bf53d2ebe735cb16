// A small wall of made-up cabinets, for trying the program out.
#pragma once

#include <atomic>
#include <string>

#include "platform/Process.h"

namespace trevolt {

/// Writes one small cabinet of every file kind into a folder, which is made when missing, each whole or
/// not at all; with `replaces` in place of a file of its name, with `sync` they and the folders that
/// were made have reached the disk when it succeeds. Nothing, or what went wrong with the first that
/// failed, in plain words, or how far it came until it was `interrupted`; those before it are written.
/// The values are the same at every call: gains that drift over a cabinet, with pixel noise.
std::string WriteDemoWall(const std::wstring& folder, bool replaces, bool sync,
                          const std::atomic<bool>& interrupted = kNeverInterrupted);

} // namespace trevolt
