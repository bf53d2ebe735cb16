// How commands give their options to the parser: each with a group, a name for its value and a
// sentence, so that the help and all else that tells of them is made of the same.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>

namespace trevolt {

/// Calls `parse`, and names the option where that throws std::invalid_argument.
template <class Parse>
auto ParseFor(const std::string& option, const std::string& valueName, const std::string& text,
              Parse parse) {
    try {
        return parse(text);
    } catch (const std::invalid_argument& error) {
        const std::string problem = error.what();
        throw CLI::ValidationError(option,
                                   text.empty() ? "it is empty: give " + valueName : problem);
    }
}

/// The options of one group of a command.
class COptionGroup {
  public:
    COptionGroup(CLI::App& command, std::string name)
        : m_command(command), m_name(std::move(name)) {}

    CLI::Option* AddFlag(const std::string& names, bool& flag, const std::string& description) {
        return m_command.add_flag(names, flag, description)->group(m_name);
    }

    /// An option whose value `parse` reads; its long name comes first. A value name with bars
    /// between words is the choice of them.
    template <class Value, class Parse>
    CLI::Option* AddValue(const std::string& names, const std::string& valueName, Value& value,
                          Parse parse, const std::string& description) {
        const auto take = [&value, parse, valueName,
                           name = names.substr(0, names.find(','))](const std::string& text) {
            value = ParseFor(name, valueName, text, parse);
        };
        return m_command.add_option_function<std::string>(names, take, description)
            ->type_name(valueName)
            ->group(m_name);
    }

  private:
    CLI::App& m_command;
    std::string m_name;
};

} // namespace trevolt
