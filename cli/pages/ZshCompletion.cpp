#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "cli/pages/Pages.h"

namespace trevolt {
namespace {

constexpr const char* kZshFunction =
    R"(#compdef {0}
# Completion of {0} for zsh, made by ./dev pages of the program's own options.

_{0}() {{
    local curcontext=$curcontext state state_descr line ret=1
    typeset -A opt_args
    _arguments -C \
{1}        '1:command:->command' \
        '*::argument:->arguments' && ret=0
    case $state in
    command)
        local -a commands=(
{2}        )
        _describe -t commands command commands && ret=0
        ;;
    arguments)
        case $words[1] in
{3}        esac
        ;;
    esac
    return ret
}}

_{0} "$@"
)";

/// A word in single quotes.
std::string ZshQuoted(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

/// What ends a part of an argument's description is told apart from its text.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (std::string_view("\\:[]").find(c) != std::string_view::npos)
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string Action(EFilling filling, const std::vector<std::string>& choices) {
    switch (filling) {
    case EFilling::Choice:
        return fmt::format("({})", fmt::join(choices, " "));
    case EFilling::File:
        return "_files";
    case EFilling::Folder:
        return "_files -/";
    case EFilling::Free:
        break;
    }
    return {};
}

/// Both names of one option exclude each other. A letter's value may follow at once, a name's behind
/// "=".
std::string OptionArgument(const SCommandOption& option) {
    const std::string name = fmt::format("--{}{}", option.name, option.value ? "=" : "");
    std::string told = fmt::format("[{}]", Escaped(option.description));
    if (option.value)
        told += fmt::format(":{}:{}", Escaped(option.value->name),
                            Action(option.value->filling, option.value->choices));
    if (option.letter.empty())
        return ZshQuoted(name + told);
    return fmt::format("'(-{0} --{1})'{{-{0}{2},{3}}}{4}", option.letter, option.name,
                       option.value ? "+" : "", name, ZshQuoted(told));
}

/// Each place in its turn, or all in one where one of them takes many words.
std::vector<std::string> PlaceArguments(const SCommand& command) {
    std::vector<std::string> names;
    std::vector<std::string> arguments;
    bool takesMany = false;
    for (const SCommandPlace& place : command.places) {
        names.push_back(place.name);
        arguments.push_back(ZshQuoted(
            fmt::format("{}:{}:{}", names.size(), Escaped(place.name), Action(place.filling, {}))));
        takesMany = takesMany || place.takesMany;
    }
    if (!takesMany)
        return arguments;
    return {ZshQuoted(
        fmt::format("*:{}:{}", fmt::join(names, " or "), Action(PlacesFilling(command), {})))};
}

std::string Lines(const std::vector<std::string>& arguments, std::size_t indent,
                  std::string_view ending) {
    std::string lines;
    for (const std::string& argument : arguments)
        lines += std::string(indent, ' ') + argument + std::string(ending);
    return lines;
}

std::vector<std::string> Arguments(const SCommand& command) {
    std::vector<std::string> arguments;
    for (const SCommandOption& option : command.options)
        arguments.push_back(OptionArgument(option));
    const auto places = PlaceArguments(command);
    arguments.insert(arguments.end(), places.begin(), places.end());
    return arguments;
}

std::string CommandNames(const SCommandTable& table) {
    std::vector<std::string> names;
    for (const SCommand& command : table.commands)
        names.push_back(ZshQuoted(command.name + ":" + command.description));
    return Lines(names, 12, "\n");
}

/// Behind "--" no word is an option.
std::string CommandCase(const SCommand& command) {
    return fmt::format("        {})\n            _arguments -s -S \\\n{}                && ret=0\n"
                       "            ;;\n",
                       command.name, Lines(Arguments(command), 16, " \\\n"));
}

} // namespace

std::string ZshCompletion(const SCommandTable& table) {
    std::string cases;
    for (const SCommand& command : table.commands)
        cases += CommandCase(command);
    return fmt::format(kZshFunction, table.program.name,
                       Lines(Arguments(table.program), 8, " \\\n"), CommandNames(table), cases);
}

} // namespace trevolt
