#include "cli/HelpText.h"

#include <algorithm>
#include <sstream>

#include <gtest/gtest.h>

#include "cli/Program.h"

namespace trevolt {
namespace {

bool TellsAll(const CLI::Option& option) {
    return !option.get_group().empty() && option.get_group() != "Options" &&
           !option.get_description().empty() &&
           (option.get_items_expected_max() == 0) == option.get_type_name().empty();
}

void ExpectNarrow(const std::string& help) {
    std::istringstream lines(help);
    std::string line;
    while (std::getline(lines, line)) {
        const auto continued =
            std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) == 0x80; });
        EXPECT_LE(line.size() - static_cast<std::size_t>(continued), kHelpColumns) << line;
    }
}

TEST(HelpText, IsNarrowAndEveryOptionTellsItself) {
    int status = 0;
    const auto program = MakeProgram(status);
    auto commands = program->get_subcommands([](CLI::App*) { return true; });
    ASSERT_EQ(commands.size(), 9U);
    commands.push_back(program.get());
    for (const CLI::App* command : commands) {
        const std::string help = HelpText(*command);
        ExpectNarrow(help);
        for (const CLI::Option* option : command->get_options()) {
            EXPECT_TRUE(TellsAll(*option)) << option->get_name();
            EXPECT_NE(help.find(OptionTitle(*option)), std::string::npos) << option->get_name();
        }
    }
}

TEST(HelpText, WrapsTextsAndPutsLongTitlesAboveThem) {
    CLI::App app("Does something", "prog");
    app.set_help_flag();
    bool flag = false;
    std::string value;
    app.add_flag("--short,-s", flag,
                 "One two three four five six seven eight nine ten eleven twelve")
        ->group("Some");
    app.add_option("--a-very-long-name-of-one", value, "Text")
        ->type_name("A|B")
        ->default_str("A")
        ->group("Some");
    app.footer("The end");
    EXPECT_EQ(HelpText(app),
              "Usage: prog [OPTIONS] COMMAND ...\n"
              "\n"
              "Does something.\n"
              "\n"
              "Some:\n"
              "  -s, --short                One two three four five six seven eight nine ten\n"
              "                             eleven twelve\n"
              "  --a-very-long-name-of-one A|B\n"
              "                             Text (default: A)\n"
              "\n"
              "The end\n");
}

TEST(HelpText, NamesThePlacesOfACommand) {
    int status = 0;
    const auto program = MakeProgram(status);
    EXPECT_EQ(UsageText(*program->get_subcommand("rotate")),
              "trevolt-cli rotate [OPTIONS] SOURCE... TARGET");
    EXPECT_EQ(UsageText(*program->get_subcommand("demo")), "trevolt-cli demo [OPTIONS] FOLDER");
}

} // namespace
} // namespace trevolt
