#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "cli/pages/Pages.h"

namespace trevolt {
namespace {

constexpr const char* kFishBeginning =
    R"(# Completion of {0} for fish, made by ./dev pages of the program's own options.

function {1} --description 'Whether the first word is this one, or still missing where none is given'
    set -l words (commandline -opc)
    test "$words[2]" = "$argv[1]"
end

complete -c {0} -f
)";

/// In single quotes.
std::string FishQuoted(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + "'";
}

class CFishLines {
  public:
    explicit CFishLines(std::string program) : m_program(std::move(program)) {
        for (const char c : m_program)
            m_condition += c == '-' ? '_' : c;
        m_condition = "__" + m_condition + "_calls";
        m_text = fmt::format(kFishBeginning, m_program, m_condition);
    }

    /// Where no command stands yet.
    void AddProgram(const SCommandTable& table) {
        m_text += '\n';
        for (const SCommand& command : table.commands)
            Add("", fmt::format("-a {} -d {}", command.name, FishQuoted(command.description)));
        AddOptions("", table.program);
    }

    void AddCommand(const SCommand& command) {
        m_text += '\n';
        Add(command.name, Filling(PlacesFilling(command), {}));
        AddOptions(command.name, command);
    }

    std::string Text() && { return std::move(m_text); }

  private:
    static std::string Filling(EFilling filling, const std::vector<std::string>& choices) {
        switch (filling) {
        case EFilling::Choice:
            return fmt::format("-f -a {}", FishQuoted(fmt::format("{}", fmt::join(choices, " "))));
        case EFilling::File:
            return "-F";
        case EFilling::Folder:
            return "-f -a '(__fish_complete_directories)'";
        case EFilling::Free:
            break;
        }
        return "-f";
    }

    void Add(const std::string& command, const std::string& what) {
        const std::string condition = m_condition + (command.empty() ? "" : " ") + command;
        m_text += fmt::format("complete -c {} -n {} {}\n", m_program, FishQuoted(condition), what);
    }

    void AddOptions(const std::string& command, const SCommand& options) {
        for (const SCommandOption& option : options.options) {
            std::string what = option.letter.empty() ? "" : fmt::format("-s {} ", option.letter);
            what += fmt::format("-l {} ", option.name);
            if (option.value)
                what +=
                    fmt::format("-r {} ", Filling(option.value->filling, option.value->choices));
            Add(command, what + "-d " + FishQuoted(option.description));
        }
    }

    std::string m_program;
    std::string m_condition;
    std::string m_text;
};

} // namespace

std::string FishCompletion(const SCommandTable& table) {
    CFishLines lines(table.program.name);
    lines.AddProgram(table);
    for (const SCommand& command : table.commands)
        lines.AddCommand(command);
    return std::move(lines).Text();
}

} // namespace trevolt
