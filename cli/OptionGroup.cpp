#include "cli/OptionGroup.h"

#include <CLI/CLI.hpp>

namespace trevolt {

COption COption::Default(const std::string& text) const {
    m_option->default_str(text);
    return *this;
}

COption COption::Required() const {
    m_option->required();
    return *this;
}

COption COption::Needs(COption other) const {
    m_option->needs(other.m_option);
    return *this;
}

COption COption::Excludes(COption other) const {
    m_option->excludes(other.m_option);
    return *this;
}

COption COption::Spares(COption place) const {
    m_option->trigger_on_parse()->each(
        [option = place.m_option](const std::string&) { option->required(false); });
    return *this;
}

COption COptionGroup::AddFlag(const std::string& names, bool& flag,
                              const std::string& description) {
    return COption(m_command.add_flag(names, flag, description)->group(m_name));
}

COption COptionGroup::AddText(const std::string& names, const std::string& valueName,
                              const Take& take, const std::string& description) {
    return COption(m_command.add_option_function<std::string>(names, take, description)
                       ->type_name(valueName)
                       ->group(m_name));
}

COption COptionGroup::AddPlace(const std::string& name, const std::string& valueName,
                               const Take& take, const std::string& description) {
    return AddText(name, valueName, take, description);
}

COption COptionGroup::AddPlace(const std::string& name, const std::string& valueName,
                               std::string& word, const std::string& description) {
    return AddText(
        name, valueName, [&word](const std::string& text) { word = text; }, description);
}

COption COptionGroup::AddPlaces(const std::string& name, const std::string& valueName,
                                std::vector<std::string>& words, const std::string& description) {
    return COption(
        m_command.add_option(name, words, description)->type_name(valueName)->group(m_name));
}

CLI::App& AddCommand(CLI::App& program, const std::string& name, const std::string& description,
                     const char* notes, int& exitStatus, std::function<int()> run) {
    CLI::App* const command = program.add_subcommand(name, description);
    command->footer(notes);
    command->callback([run = std::move(run), &exitStatus] { exitStatus = run(); });
    return *command;
}

} // namespace trevolt
