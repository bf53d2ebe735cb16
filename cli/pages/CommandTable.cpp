#include "cli/pages/CommandTable.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace trevolt {
namespace {

struct SValueName {
    std::string_view name;
    EFilling filling;
};

constexpr std::array kValueNames = {
    SValueName{"BYTES", EFilling::Free},
    SValueName{"COLUMNSxROWS", EFilling::Free},
    SValueName{"FILE", EFilling::File},
    SValueName{"FILE.html", EFilling::File},
    SValueName{"FOLDER", EFilling::Folder},
    SValueName{"I/N", EFilling::Free},
    SValueName{"LEFT,TOP,RIGHT,BOTTOM", EFilling::Free},
    SValueName{"LOW,HIGH", EFilling::Free},
    SValueName{"N", EFilling::Free},
    SValueName{"PATH", EFilling::File},
    SValueName{"T", EFilling::Free},
    SValueName{"TABLE", EFilling::File},
    SValueName{"TEXT", EFilling::Free},
    SValueName{"WIDTHxHEIGHT", EFilling::Free},
};

EFilling FillingOf(std::string_view valueName) {
    const auto found =
        std::find_if(kValueNames.begin(), kValueNames.end(),
                     [&](const SValueName& known) { return known.name == valueName; });
    if (found == kValueNames.end())
        throw std::invalid_argument(
            fmt::format("what fills {} is not known: add it to the value names", valueName));
    return found->filling;
}

std::vector<std::string> ChoicesOf(const std::string& valueName) {
    std::vector<std::string> choices;
    for (std::size_t begin = 0; begin <= valueName.size();) {
        const std::size_t end = std::min(valueName.find('|', begin), valueName.size());
        choices.push_back(valueName.substr(begin, end - begin));
        begin = end + 1;
    }
    return choices;
}

SOptionValue ValueOf(const std::string& valueName) {
    auto choices = ChoicesOf(valueName);
    if (choices.size() > 1)
        return {valueName, EFilling::Choice, std::move(choices)};
    return {valueName, FillingOf(valueName), {}};
}

SCommandPlace PlaceOf(const CLI::Option& option) {
    return {option.get_name(true), option.get_group(), option.get_description(),
            FillingOf(option.get_type_name()), option.get_items_expected_max() > 1};
}

SCommandOption OptionOf(const CLI::Option& option) {
    if (option.get_lnames().empty())
        throw std::invalid_argument(fmt::format("{} has no long name", option.get_name()));
    SCommandOption entry{option.get_snames().empty() ? "" : option.get_snames().front(),
                         option.get_lnames().front(),
                         option.get_group(),
                         option.get_description(),
                         option.get_default_str(),
                         {}};
    if (option.get_items_expected_max() > 0)
        entry.value = ValueOf(option.get_type_name());
    return entry;
}

/// Its places and options in the order of their groups.
void AddOptions(const CLI::App& app, SCommand& command) {
    for (const std::string& group : app.get_groups())
        for (const CLI::Option* option : app.get_options(
                 [&](const CLI::Option* candidate) { return candidate->get_group() == group; })) {
            if (option->get_positional())
                command.places.push_back(PlaceOf(*option));
            else
                command.options.push_back(OptionOf(*option));
        }
}

/// A term, with its text behind it where two spaces separate them.
SFooterEntry EntryOf(const std::string& line) {
    const std::size_t gap = std::min(line.find("  "), line.size());
    const std::size_t text = std::min(line.find_first_not_of(' ', gap), line.size());
    return {line.substr(0, gap), line.substr(text)};
}

/// Titles stand at the left, terms behind two spaces, and texts behind more.
class CFooterReader {
  public:
    void Take(const std::string& line) {
        if (line.empty())
            return;
        const std::size_t indent = line.find_first_not_of(' ');
        if (indent == 0 && line.back() == ':')
            m_sections.push_back({line.substr(0, line.size() - 1), {}});
        else if (indent == 2 && !m_sections.empty())
            m_sections.back().entries.push_back(EntryOf(line.substr(indent)));
        else if (indent > 2 && !m_sections.empty() && !m_sections.back().entries.empty())
            AddText(line.substr(indent));
        else
            throw std::invalid_argument(fmt::format("no title, term or text: {}", line));
    }

    std::vector<SFooterSection> Sections() && { return std::move(m_sections); }

  private:
    void AddText(const std::string& more) {
        std::string& text = m_sections.back().entries.back().text;
        text += (text.empty() ? "" : " ") + more;
    }

    std::vector<SFooterSection> m_sections;
};

std::vector<SFooterSection> FooterOf(const std::string& footer) {
    CFooterReader reader;
    for (std::size_t begin = 0; begin < footer.size();) {
        const std::size_t end = std::min(footer.find('\n', begin), footer.size());
        reader.Take(footer.substr(begin, end - begin));
        begin = end + 1;
    }
    return std::move(reader).Sections();
}

/// A command without a footer of its own has its program's.
bool HasOwnFooter(const CLI::App& app) {
    return app.get_parent() == nullptr || app.get_footer() != app.get_parent()->get_footer();
}

SCommand CommandOf(const CLI::App& app) {
    SCommand command;
    command.name = app.get_name();
    command.description = app.get_description();
    AddOptions(app, command);
    if (HasOwnFooter(app))
        command.footer = FooterOf(app.get_footer());
    return command;
}

} // namespace

EFilling PlacesFilling(const SCommand& command) {
    for (const SCommandPlace& place : command.places)
        if (place.filling != EFilling::Folder)
            return place.filling;
    return EFilling::Folder;
}

SCommandTable TableOf(const CLI::App& program) {
    SCommandTable table{CommandOf(program), {}};
    for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; }))
        table.commands.push_back(CommandOf(*command));
    return table;
}

} // namespace trevolt
