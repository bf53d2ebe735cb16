// A small wall of made-up cabinets, for trying the program out.
#pragma once

#include <string>

namespace trevolt {

/// Writes one small cabinet of every file kind into a folder, which is made when missing, each whole or
/// not at all; with `replaces` in place of a file of its name, with `sync` they have reached the disk
/// when it succeeds. Nothing, or what went wrong with the first that
/// failed, in plain words; those before it are written. The values are the same at every call: gains
/// that drift over a cabinet, with pixel noise.
std::string WriteDemoWall(const std::wstring& folder, bool replaces, bool sync);

} // namespace trevolt
