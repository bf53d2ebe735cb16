// The words of a command line, looked at before they are parsed: what is mistyped is named before what
// is missing or wrong.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace trevolt {

struct SCommandLine {
    /// As the parser takes them: the command, its options, each with its value behind it, and places
    /// behind all options.
    std::vector<std::string> words;
    /// What is mistyped, and what may be meant; empty when every word has its meaning.
    std::string mistake;
};

/// Tells options, their values and places apart by what `program` knows. A word that begins with "-"
/// and a digit is a value where one is missing. `arguments` stand in their order, without the
/// program's name.
SCommandLine ArrangeWords(const CLI::App& program, const std::vector<std::string>& arguments);

/// The one of `known` that `word` is the beginning of by three letters or more, the shortest of several;
/// else the one that is nearest by letters to change, leave out, put in or swap. Empty when that are
/// more than a third of them. Capitals count as small letters.
std::string NearestWord(const std::string& word, const std::vector<std::string>& known);

/// How many letters are to be changed, left out, put in, or swapped with their neighbours.
std::size_t WordDistance(const std::string& a, const std::string& b);

} // namespace trevolt
