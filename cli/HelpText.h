// What --help prints, made of the options themselves.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

namespace trevolt {

inline constexpr std::size_t kHelpColumns = 80;

/// The words of `text` in lines of at most `columns`, or of a single longer word; one empty line for
/// no text.
std::vector<std::string> Wrapped(std::string_view text, std::size_t columns);

/// The names of an option or place with its value's, as "-a, --angle 90|180|270" or "SOURCE...".
std::string OptionTitle(const CLI::Option& option);

/// How a program or command is called, as "trevolt-cli rotate [OPTIONS] SOURCE... TARGET".
std::string UsageText(const CLI::App& command);

/// Usage, description, groups of options in lines of at most `kHelpColumns`, commands, and the footer
/// as it stands.
std::string HelpText(const CLI::App& command);

/// Lets the parser print that.
std::shared_ptr<CLI::FormatterBase> MakeHelpFormatter();

} // namespace trevolt
