#include "cli/HelpText.h"

#include <string_view>
#include <vector>

#include <fmt/format.h>

namespace trevolt {
namespace {

constexpr std::size_t kTitleColumns = 29;
constexpr std::string_view kIndent = "  ";

/// Of UTF-8, a column a character.
std::size_t Columns(std::string_view text) {
    std::size_t columns = 0;
    for (const char c : text)
        columns += (static_cast<unsigned char>(c) & 0xC0U) != 0x80 ? 1 : 0;
    return columns;
}

std::string Paragraph(std::string_view text) {
    return fmt::format("{}\n", fmt::join(Wrapped(text, kHelpColumns), "\n"));
}

/// A title, and beside it, or below where it is long, its text.
std::string Entry(const std::string& title, std::string_view text) {
    std::string entry = std::string(kIndent) + title;
    const bool isLong = Columns(entry) + 2 > kTitleColumns;
    if (isLong)
        entry += '\n';
    bool isFirst = !isLong;
    for (const std::string& line : Wrapped(text, kHelpColumns - kTitleColumns)) {
        entry += std::string(kTitleColumns - (isFirst ? Columns(entry) : 0), ' ') + line + '\n';
        isFirst = false;
    }
    return entry;
}

std::string Described(const CLI::Option& option) {
    std::string text = option.get_description();
    if (!option.get_default_str().empty())
        text += fmt::format(" (default: {})", option.get_default_str());
    return text;
}

bool TakesMany(const CLI::Option& option) { return option.get_items_expected_max() > 1; }

std::string PlaceTitle(const CLI::Option& place) {
    return place.get_name(true) + (TakesMany(place) ? "..." : "");
}

std::string GroupText(const CLI::App& command, const std::string& group) {
    std::string text = fmt::format("\n{}:\n", group);
    for (const CLI::Option* option : command.get_options(
             [&](const CLI::Option* candidate) { return candidate->get_group() == group; }))
        text += Entry(OptionTitle(*option), Described(*option));
    return text;
}

std::string CommandsText(const CLI::App& program) {
    const auto commands = program.get_subcommands([](const CLI::App*) { return true; });
    if (commands.empty())
        return {};
    std::string text = "\nCommands:\n";
    for (const CLI::App* command : commands)
        text += Entry(command->get_name(), command->get_description());
    return text;
}

class CHelpFormatter : public CLI::FormatterBase {
  public:
    std::string make_help(const CLI::App* command, std::string, CLI::AppFormatMode) const override {
        return HelpText(*command);
    }
};

} // namespace

std::vector<std::string> Wrapped(std::string_view text, std::size_t columns) {
    std::vector<std::string> lines(1);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!lines.back().empty() && Columns(lines.back()) + 1 + Columns(word) > columns)
            lines.emplace_back();
        lines.back() += lines.back().empty() ? "" : " ";
        lines.back() += word;
    }
    return lines;
}

std::string OptionTitle(const CLI::Option& option) {
    if (option.get_positional())
        return PlaceTitle(option);
    std::string title;
    for (const std::string& name : option.get_snames())
        title += fmt::format("-{}, ", name);
    for (const std::string& name : option.get_lnames())
        title += fmt::format("--{}", name);
    if (option.get_items_expected_max() > 0)
        title += " " + option.get_type_name();
    return title;
}

std::string UsageText(const CLI::App& command) {
    const CLI::App* const program = command.get_parent();
    std::string usage = program != nullptr ? program->get_name() + " " : "";
    usage += command.get_name();
    if (program == nullptr)
        return usage + " [OPTIONS] COMMAND ...";
    usage += " [OPTIONS]";
    for (const CLI::Option* place :
         command.get_options([](const CLI::Option* option) { return option->get_positional(); }))
        usage += " " + PlaceTitle(*place);
    return usage;
}

std::string HelpText(const CLI::App& command) {
    std::string text = fmt::format("Usage: {}\n\n", UsageText(command));
    text += Paragraph(command.get_description() + ".");
    for (const std::string& group : command.get_groups())
        text += GroupText(command, group);
    text += CommandsText(command);
    if (!command.get_footer().empty())
        text += fmt::format("\n{}\n", command.get_footer());
    return text;
}

std::shared_ptr<CLI::FormatterBase> MakeHelpFormatter() {
    return std::make_shared<CHelpFormatter>();
}

} // namespace trevolt
