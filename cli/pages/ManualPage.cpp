#include <cctype>
#include <cstdint>
#include <string_view>

#include <fmt/format.h>

#include "cli/HelpText.h"
#include "cli/pages/Pages.h"
#include "trevolt/FileKinds.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

constexpr const char* kDescription =
    "turns the correction coefficients that a calibration run measured, when cabinets are mounted "
    "turned or a whole screen is installed rotated. It reads coefficient files, turns each of them "
    "clockwise as seen on the screen, and writes it in its own kind under a name that says so. The "
    "files read are never written to, outputs that exist are never replaced unasked, and an output "
    "gets its name only when it is whole.";

constexpr const char* kKinds = "The extension in the name of a coefficient file tells its kind:";

constexpr std::size_t kLineColumns = 78;

/// As troff prints it: a hyphen as what is typed, no character with a meaning of its own.
std::string Literal(wchar_t c) {
    switch (c) {
    case L'\\':
        return "\\e";
    case L'-':
        return "\\-";
    case L'\'':
        return "\\(aq";
    case L'"':
        return "\\(dq";
    case L'`':
        return "\\(ga";
    case L'^':
        return "\\(ha";
    case L'~':
        return "\\(ti";
    default:
        break;
    }
    if (c < 0x80)
        return {static_cast<char>(c)};
    return fmt::format("\\[u{:04X}]", static_cast<std::uint32_t>(c));
}

std::string Literal(std::string_view text) {
    const std::wstring characters = Utf8ToWide(text).value();
    std::string literal;
    for (const wchar_t c : characters)
        literal += Literal(c);
    return literal;
}

std::string Bold(std::string_view text) { return "\\fB" + Literal(text) + "\\fR"; }
std::string Italic(std::string_view text) { return "\\fI" + Literal(text) + "\\fR"; }

/// What troff has already, in lines none of which is a request.
std::string Filled(const std::string& troff) {
    std::string lines;
    for (const std::string& line : Wrapped(troff, kLineColumns))
        lines += (line.starts_with('.') ? "\\&" : "") + line + '\n';
    return lines;
}

std::string Sentence(std::string_view text) {
    return Literal(text) + (text.ends_with('.') ? "" : ".");
}

std::string Capitals(std::string_view text) {
    std::string capitals;
    for (const char c : text)
        capitals += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return Literal(capitals);
}

std::string Heading(std::string_view title) { return ".SH " + Capitals(title) + "\n"; }

std::string Subheading(const SCommandTable& table, const SCommand& command) {
    return fmt::format(".SS {} {}\n", Literal(table.program.name), Literal(command.name));
}

std::string Tagged(const std::string& tag, const std::string& text) {
    return ".TP\n" + tag + "\n" + Filled(text);
}

std::string Name(const SCommandTable& table) {
    std::string description = table.program.description;
    description[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(description[0])));
    return Heading("Name") + Filled(Literal(table.program.name) + " \\- " + Literal(description));
}

std::string Called(const SCommandTable& table, const SCommand& command) {
    std::string words =
        fmt::format("{} [{}]", Bold(table.program.name + " " + command.name), Italic("OPTIONS"));
    for (const SCommandPlace& place : command.places)
        words += " " + Italic(place.name) + (place.takesMany ? "..." : "");
    return Filled(words);
}

std::string Synopsis(const SCommandTable& table) {
    std::string text = Heading("Synopsis");
    for (const SCommand& command : table.commands)
        text += Called(table, command) + ".br\n";
    std::string options;
    for (const SCommandOption& option : table.program.options)
        options += (options.empty() ? "" : " | ") + Bold("--" + option.name);
    return text + Filled(Bold(table.program.name) + " " + options);
}

std::string Description(const SCommandTable& table) {
    return Heading("Description") + Filled(Bold(table.program.name) + " " + Literal(kDescription));
}

std::string ValueTag(const SOptionValue& value) {
    std::string tag;
    for (const std::string& choice : value.choices)
        tag += (tag.empty() ? "" : "|") + Bold(choice);
    return tag.empty() ? Italic(value.name) : tag;
}

std::string OptionTag(const SCommandOption& option) {
    std::string tag = option.letter.empty() ? "" : Bold("-" + option.letter) + ", ";
    tag += Bold("--" + option.name);
    return tag + (option.value ? " " + ValueTag(*option.value) : "");
}

std::string OptionEntry(const SCommandOption& option) {
    std::string text = Sentence(option.description);
    if (!option.defaultText.empty())
        text += " Default: " + Sentence(option.defaultText);
    return Tagged(OptionTag(option), text);
}

std::string PlaceEntry(const SCommandPlace& place) {
    return Tagged(Italic(place.name) + (place.takesMany ? "..." : ""), Sentence(place.description));
}

/// Before the first entry of each group.
class CGroupTitles {
  public:
    std::string Before(const std::string& group) {
        if (group == m_last)
            return {};
        m_last = group;
        return ".PP\n" + Bold(group) + "\n";
    }

  private:
    std::string m_last;
};

std::string Entries(const SCommand& command) {
    CGroupTitles titles;
    std::string text;
    for (const SCommandPlace& place : command.places)
        text += titles.Before(place.group) + PlaceEntry(place);
    for (const SCommandOption& option : command.options)
        text += titles.Before(option.group) + OptionEntry(option);
    return text;
}

std::string Options(const SCommandTable& table) {
    std::string text = Heading("Options");
    for (const SCommandOption& option : table.program.options)
        text += OptionEntry(option);
    return text;
}

std::string Commands(const SCommandTable& table) {
    std::string text = Heading("Commands");
    for (const SCommand& command : table.commands)
        text +=
            Subheading(table, command) + Filled(Sentence(command.description)) + Entries(command);
    return text;
}

std::string Files() {
    std::string extensions;
    for (const SFileKind& kind : FileKinds())
        extensions += (extensions.empty() ? "" : ", ") + Bold(WideToShownUtf8(kind.extension));
    return Heading("Files") + Filled(Literal(kKinds) + " " + extensions + ".");
}

std::string FooterEntries(const SCommand& command, std::string_view title) {
    std::string text;
    for (const SFooterSection& section : command.footer)
        if (section.title == title)
            for (const SFooterEntry& entry : section.entries)
                text += Tagged(Bold(entry.term), Literal(entry.text));
    return text;
}

/// What the help's ends say under `title`: the program's, and those of the commands that have more.
std::string FooterParts(const SCommandTable& table, std::string_view title,
                        std::string_view heading) {
    std::string text = Heading(heading) + FooterEntries(table.program, title);
    for (const SCommand& command : table.commands) {
        const std::string entries = FooterEntries(command, title);
        if (!entries.empty())
            text += Subheading(table, command) + entries;
    }
    return text;
}

} // namespace

std::string ManualPage(const SCommandTable& table) {
    std::string page = ".\\\" Made by ./dev pages of the program's own options.\n";
    page += fmt::format(".TH {} 1 \"\" Trevolt\n", Capitals(table.program.name));
    page += Name(table) + Synopsis(table) + Description(table) + Options(table);
    page += Commands(table) + Files();
    page += FooterParts(table, "Exit states", "Exit status");
    page += FooterParts(table, "Examples", "Examples");
    return page + Heading("See also") + ".BR sha256sum (1)\n";
}

} // namespace trevolt
