#include "cli/CommandLine.h"

#include <algorithm>
#include <limits>
#include <set>

#include <fmt/format.h>

namespace trevolt {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsOption(const std::string& word) { return word.size() > 1 && word[0] == '-'; }

bool IsNegativeNumber(const std::string& word) {
    return word.size() > 1 && word[0] == '-' && IsDigit(word[1]);
}

bool TakesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

/// By its name with dashes; null when there is none. The parser's own search ends the program where
/// memory is refused.
const CLI::Option* FindOption(const CLI::App& command, const std::string& name) {
    for (const CLI::Option* option : command.get_options())
        if (!option->get_positional() && option->check_name(name))
            return option;
    return nullptr;
}

std::vector<const CLI::Option*> Places(const CLI::App& command) {
    return command.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

bool TakesPlaces(const CLI::App& command, std::size_t count) {
    std::size_t most = 0;
    for (const CLI::Option* place : Places(command)) {
        if (place->get_items_expected_max() > 1)
            return true;
        ++most;
    }
    return count <= most;
}

std::vector<std::string> LongNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

std::vector<std::string> CommandNames(const CLI::App& program) {
    std::vector<std::string> names;
    for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    return names;
}

std::string WithSmallLetters(std::string word) {
    for (char& c : word)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return word;
}

/// Empty for a word of too few letters, which begins too much.
std::string ShortestBegunBy(const std::string& word, const std::vector<std::string>& known) {
    constexpr std::size_t kFewestLetters = 3;
    const std::size_t dashes = std::min(word.find_first_not_of('-'), word.size());
    std::string shortest;
    for (const std::string& candidate : known)
        if (word.size() >= dashes + kFewestLetters && candidate.starts_with(word) &&
            (shortest.empty() || candidate.size() < shortest.size()))
            shortest = candidate;
    return shortest;
}

std::string MeantOr(const std::string& meant, const std::string& otherwise) {
    return meant.empty() ? otherwise : fmt::format("did you mean {}?", meant);
}

/// Takes the words behind a command.
class CCommandWords {
  public:
    explicit CCommandWords(const CLI::App& command) : m_command(command) {
        m_line.words.push_back(command.get_name());
    }

    SCommandLine Arrange(std::vector<std::string> words) {
        m_words = std::move(words);
        while (m_next < m_words.size() && m_line.mistake.empty())
            Take(m_words[m_next++]);
        if (m_line.mistake.empty() && !TakesPlaces(m_command, m_places.size()))
            m_line.mistake = fmt::format("{} is one word too many for {}: see {}", m_places.back(),
                                         m_command.get_name(), HelpCall());
        m_line.words.emplace_back("--"); // a place may have the name of a command
        m_line.words.insert(m_line.words.end(), m_places.begin(), m_places.end());
        return std::move(m_line);
    }

  private:
    std::string HelpCall() const {
        return fmt::format("trevolt-cli {} --help", m_command.get_name());
    }

    void Take(const std::string& word) {
        if (m_onlyPlaces || !IsOption(word))
            m_places.push_back(word);
        else if (word == "--")
            m_onlyPlaces = true;
        else if (word[1] == '-')
            TakeLong(word);
        else
            TakeShort(word);
    }

    void TakeLong(const std::string& word) {
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const CLI::Option* const option = FindOption(m_command, name);
        if (option == nullptr)
            return TellUnknown(name, name);
        if (!TakesValue(*option) && equals != std::string::npos) {
            m_line.mistake =
                fmt::format("{} takes no value: leave out {}", name, word.substr(equals));
            return;
        }
        m_line.words.push_back(name);
        if (!TakesValue(*option))
            return;
        if (equals == std::string::npos)
            TakeNextValue(*option, name);
        else
            TakeValue(*option, word.substr(equals + 1));
    }

    /// Flags of one letter, the last of which may have a value behind it.
    void TakeShort(const std::string& word) {
        for (std::size_t i = 1; i < word.size(); ++i) {
            const std::string name = {'-', word[i]};
            const CLI::Option* const option = FindOption(m_command, name);
            const bool isLongOne = FindOption(m_command, "-" + word) != nullptr;
            if (option == nullptr || isLongOne)
                return TellUnknown(word.size() > 2 ? word : name, "-" + word);
            m_line.words.push_back(name);
            if (!TakesValue(*option))
                continue;
            const std::size_t value = i + (word.substr(i + 1, 1) == "=" ? 2 : 1);
            if (i + 1 < word.size())
                return TakeValue(*option, word.substr(value));
            return TakeNextValue(*option, name);
        }
    }

    void TakeNextValue(const CLI::Option& option, const std::string& name) {
        if (m_next < m_words.size() &&
            (!IsOption(m_words[m_next]) || IsNegativeNumber(m_words[m_next])))
            return TakeValue(option, m_words[m_next++]);
        m_line.mistake = fmt::format("{} has no value: give {}", name, option.get_type_name());
    }

    void TakeValue(const CLI::Option& option, const std::string& value) {
        m_line.words.push_back(value);
        if (!m_given.insert(&option).second)
            m_line.mistake =
                fmt::format("--{} is given twice: give it once", option.get_lnames().front());
    }

    void TellUnknown(const std::string& shown, const std::string& name) {
        if (FindOption(*m_command.get_parent(), name) != nullptr) {
            m_line.mistake =
                fmt::format("{} stands without a command: call trevolt-cli {}", name, name);
            return;
        }
        m_line.mistake =
            fmt::format("there is no option {} for {}: {}", shown, m_command.get_name(),
                        MeantOr(NearestWord(name, LongNames(m_command)), Advice(shown)));
    }

    /// A file's name may begin with a dash.
    std::string Advice(const std::string& word) const {
        const std::string help = fmt::format("see {}", HelpCall());
        return word.find('.') == std::string::npos
                   ? help
                   : fmt::format("{}, or give ./{} for a file of that name", help, word);
    }

    const CLI::App& m_command;
    std::vector<std::string> m_words;
    std::size_t m_next = 0;
    bool m_onlyPlaces = false;
    std::set<const CLI::Option*> m_given; ///< with values
    std::vector<std::string> m_places;
    SCommandLine m_line;
};

/// Where no command comes first.
SCommandLine WithoutCommand(const CLI::App& program, const std::vector<std::string>& arguments) {
    const std::string commands = fmt::format("{}", fmt::join(CommandNames(program), ", "));
    if (arguments.empty())
        return {{}, fmt::format("name a command: {}; see trevolt-cli --help", commands)};
    const std::string& word = arguments.front();
    if (FindOption(program, word) != nullptr)
        return {{word}, {}};
    if (!IsOption(word))
        return {{},
                fmt::format(
                    "there is no command {}: {}", word,
                    MeantOr(NearestWord(word, CommandNames(program)),
                            fmt::format("the commands are {}; see trevolt-cli --help", commands)))};
    return {
        {},
        fmt::format("there is no option {} before a command: {}", word,
                    MeantOr(NearestWord(word, LongNames(program)), "name one first: " + commands))};
}

} // namespace

std::size_t WordDistance(const std::string& a, const std::string& b) {
    // Rows of the table of distances between beginnings of both.
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        beforeLast.swap(last);
        last.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({change, last[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
    }
    return row.back();
}

std::string NearestWord(const std::string& word, const std::vector<std::string>& known) {
    const std::string small = WithSmallLetters(word);
    if (std::string begun = ShortestBegunBy(small, known); !begun.empty())
        return begun;
    std::size_t least = word.size() / 3 + 1;
    std::string nearest;
    for (const std::string& candidate : known) {
        const std::size_t distance = WordDistance(small, candidate);
        if (distance < least) {
            least = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

SCommandLine ArrangeWords(const CLI::App& program, const std::vector<std::string>& arguments) {
    if (!arguments.empty())
        for (const CLI::App* command :
             program.get_subcommands([](const CLI::App*) { return true; }))
            if (command->get_name() == arguments.front())
                return CCommandWords(*command).Arrange({arguments.begin() + 1, arguments.end()});
    return WithoutCommand(program, arguments);
}

} // namespace trevolt
