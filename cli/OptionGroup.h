// What commands give the parser: their options and places, each with a group, a name for its value and
// a sentence, so that the help and all else that tells of them is made of the same. The parser's own
// header stays out: a compiler takes longer for that than for a command.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace trevolt {

/// Words of a command line that cannot be meant so; what() tells which, and what to give instead.
class CUsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    CUsageError(const std::string& option, const std::string& problem)
        : std::runtime_error(option + ": " + problem) {}
};

/// Calls `parse`, and throws CUsageError, which names the option, where that throws
/// std::invalid_argument.
template <class Parse>
auto ParseFor(const std::string& option, const std::string& valueName, const std::string& text,
              Parse parse) {
    try {
        return parse(text);
    } catch (const std::invalid_argument& error) {
        throw CUsageError(option, text.empty() ? "it is empty: give " + valueName : error.what());
    }
}

/// An option or a place that a command has been given; the parser owns it.
class COption {
  public:
    explicit COption(CLI::Option* option) : m_option(option) {}

    /// What the help tells of a command that is called without it.
    COption Default(const std::string& text) const;
    COption Required() const;
    COption Needs(COption other) const;
    COption Excludes(COption other) const;
    /// Where this one is given, `place` may be missing.
    COption Spares(COption place) const;

  private:
    CLI::Option* m_option;
};

/// The options of one group of a command. What they are read into must outlive the command.
class COptionGroup {
  public:
    using Take = std::function<void(const std::string& text)>;

    COptionGroup(CLI::App& command, std::string name)
        : m_command(command), m_name(std::move(name)) {}

    COption AddFlag(const std::string& names, bool& flag, const std::string& description);

    /// An option whose value `parse` reads; its long name comes first. A value name with bars
    /// between words is the choice of them.
    template <class Value, class Parse>
    COption AddValue(const std::string& names, const std::string& valueName, Value& value,
                     Parse parse, const std::string& description) {
        const auto take = [&value, parse, valueName,
                           name = names.substr(0, names.find(','))](const std::string& text) {
            value = ParseFor(name, valueName, text, parse);
        };
        return AddText(names, valueName, take, description);
    }

    /// A place that takes one word.
    COption AddPlace(const std::string& name, const std::string& valueName, const Take& take,
                     const std::string& description);
    COption AddPlace(const std::string& name, const std::string& valueName, std::string& word,
                     const std::string& description);

    /// A place that takes any number of words.
    COption AddPlaces(const std::string& name, const std::string& valueName,
                      std::vector<std::string>& words, const std::string& description);

  private:
    COption AddText(const std::string& names, const std::string& valueName, const Take& take,
                    const std::string& description);

    CLI::App& m_command;
    std::string m_name;
};

/// The group of places in every command.
inline constexpr const char* kPlaces = "Places";

/// A new command of the program. When it is the one called, `run` gives `exitStatus`, which must
/// outlive the program. `notes` stand at the end of its help.
CLI::App& AddCommand(CLI::App& program, const std::string& name, const std::string& description,
                     const char* notes, int& exitStatus, std::function<int()> run);

} // namespace trevolt
