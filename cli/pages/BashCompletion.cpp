#include <vector>

#include <fmt/format.h>

#include "cli/pages/Pages.h"

namespace trevolt {
namespace {

constexpr const char* kBashBeginning =
    R"(# Completion of {0} for bash, made by ./dev pages of the program's own options.

{1}() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD - 1]}} i
    # --option=value comes as three words.
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = ]]; then
        before=${{COMP_WORDS[COMP_CWORD - 2]}}
    fi
    # Behind -- no word is an option.
    local ended=
    for ((i = 2; i < COMP_CWORD; ++i)); do
        [[ ${{COMP_WORDS[i]}} != -- ]] || ended=yes before=
    done

    # The words that fit, or what readline completes by itself: names of files or folders.
    local words= names= command=
    ((COMP_CWORD == 1)) || command=${{COMP_WORDS[1]}}
    case "$command $before" in
    ' '*) words='{2}' ;;
)";

constexpr const char* kBashEnd = R"(    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    [[ -z $names ]] || compopt -o "$names"
}}

complete -F {1} {0}
)";

std::string FunctionName(const std::string& program) {
    std::string name = "_" + program;
    for (char& c : name)
        c = c == '-' ? '_' : c;
    return name;
}

std::string LongNames(const SCommand& command) {
    std::vector<std::string> names;
    for (const SCommandOption& option : command.options)
        names.push_back("--" + option.name);
    return fmt::format("{}", fmt::join(names, " "));
}

std::string FirstWords(const SCommandTable& table) {
    std::string words;
    for (const SCommand& command : table.commands)
        words += command.name + " ";
    return words + LongNames(table.program);
}

/// What is offered, as the two variables.
std::string Offer(EFilling filling, const std::vector<std::string>& choices) {
    switch (filling) {
    case EFilling::Choice:
        return fmt::format("words='{}'", fmt::join(choices, " "));
    case EFilling::File:
        return "names=default";
    case EFilling::Folder:
        return "names=dirnames";
    case EFilling::Free:
        break;
    }
    return ":"; // only the user knows
}

std::string ValueCase(const SCommand& command, const SCommandOption& option) {
    std::string pattern = fmt::format("'{} --{}'", command.name, option.name);
    if (!option.letter.empty())
        pattern += fmt::format(" | '{} -{}'", command.name, option.letter);
    return fmt::format("    {}) {} ;;\n", pattern,
                       Offer(option.value->filling, option.value->choices));
}

std::string CommandCases(const SCommand& command) {
    std::string cases;
    for (const SCommandOption& option : command.options)
        if (option.value)
            cases += ValueCase(command, option);
    cases += fmt::format("    '{} '*)\n", command.name);
    cases += "        if [[ $word == -* && -z $ended ]]; then\n";
    cases += fmt::format("            words='{}'\n", LongNames(command));
    cases += "        else\n";
    cases += fmt::format("            {}\n", Offer(PlacesFilling(command), {}));
    return cases + "        fi\n        ;;\n";
}

} // namespace

std::string BashCompletion(const SCommandTable& table) {
    const std::string& program = table.program.name;
    const std::string function = FunctionName(program);
    std::string text = fmt::format(kBashBeginning, program, function, FirstWords(table));
    for (const SCommand& command : table.commands)
        text += CommandCases(command);
    return text + fmt::format(kBashEnd, program, function);
}

} // namespace trevolt
