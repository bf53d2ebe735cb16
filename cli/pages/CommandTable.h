// The program's commands and options as plain data, for the pages that are made of them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CLI { // NOLINT(readability-identifier-naming): the parser's own name
class App;
}

namespace trevolt {

/// What can be put where a value stands.
enum class EFilling {
    Choice, ///< one of some words
    File,   ///< or a folder on the way to one
    Folder,
    Free ///< only the user knows
};

struct SOptionValue {
    std::string name; ///< as the help has it
    EFilling filling = EFilling::Free;
    std::vector<std::string> choices;
};

struct SCommandOption {
    std::string letter; ///< behind one dash, or empty
    std::string name;   ///< behind two
    std::string group;
    std::string description;
    std::string defaultText; ///< empty when there is none
    std::optional<SOptionValue> value;
};

struct SCommandPlace {
    std::string name;
    std::string group;
    std::string description;
    EFilling filling = EFilling::Free;
    bool takesMany = false;
};

/// A term, and what is said of it.
struct SFooterEntry {
    std::string term;
    std::string text;
};

/// A part of what stands below the options in the help.
struct SFooterSection {
    std::string title;
    std::vector<SFooterEntry> entries;
};

/// The program, or a command of it. Options and places of one group stand together.
struct SCommand {
    std::string name;
    std::string description;
    std::vector<SCommandPlace> places;
    std::vector<SCommandOption> options;
    std::vector<SFooterSection> footer;
};

struct SCommandTable {
    SCommand program;
    std::vector<SCommand> commands;
};

/// What fills the places of a command: a file where any takes one, since which place a word fills is
/// not known before the last.
EFilling PlacesFilling(const SCommand& command);

/// The table of a program. Throws std::invalid_argument for a value name of which it is not known what
/// fills it, for an option without a long name, and for a line of a footer that is none of a title, a
/// term or the text of one.
SCommandTable TableOf(const CLI::App& program);

} // namespace trevolt
