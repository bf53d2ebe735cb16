// The commands of trevolt-cli with all their options, for the program and for what tells of them.
#pragma once

#include <memory>
#include <string_view>

#include <CLI/CLI.hpp>

namespace trevolt {

/// The program's commands. Each option has a group, a description, and, where it takes a value, a name
/// for it as its type; bars in that separate the words that it may be. A command that is called leaves
/// its exit status in `exitStatus`, which must outlive the program.
std::unique_ptr<CLI::App> MakeProgram(int& exitStatus);

/// The exit status of a command that ends for lack of memory or because its output takes no more.
int FailureStatus(std::string_view command) noexcept;

} // namespace trevolt
