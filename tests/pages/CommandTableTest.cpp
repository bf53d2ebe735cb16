#include "cli/pages/CommandTable.h"

#include <algorithm>
#include <stdexcept>

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include "cli/Program.h"

namespace trevolt {
namespace {

std::string ReasonAgainst(const CLI::App& app) {
    try {
        (void)TableOf(app);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return {};
}

const SCommandOption& OptionNamed(const SCommand& command, const std::string& name) {
    const auto found =
        std::find_if(command.options.begin(), command.options.end(),
                     [&](const SCommandOption& option) { return option.name == name; });
    if (found == command.options.end())
        throw std::out_of_range(name);
    return *found;
}

TEST(CommandTable, HasEveryOptionOfTheProgramOnce) {
    int status = 0;
    const auto program = MakeProgram(status);
    const SCommandTable table = TableOf(*program);
    EXPECT_EQ(table.program.name, "trevolt-cli");
    EXPECT_EQ(table.program.options.size(), program->get_options().size());
    const auto apps = program->get_subcommands([](const CLI::App*) { return true; });
    ASSERT_EQ(table.commands.size(), apps.size());
    for (std::size_t i = 0; i < apps.size(); ++i) {
        EXPECT_EQ(table.commands[i].name, apps[i]->get_name());
        EXPECT_EQ(table.commands[i].description, apps[i]->get_description());
        EXPECT_EQ(table.commands[i].options.size() + table.commands[i].places.size(),
                  apps[i]->get_options().size());
    }
}

TEST(CommandTable, TellsWhatFillsPlacesAndValues) {
    int status = 0;
    const auto program = MakeProgram(status);
    const SCommandTable table = TableOf(*program);
    const SCommand& rotate = table.commands[0];
    ASSERT_EQ(rotate.places.size(), 2U);
    EXPECT_EQ(rotate.places[0].name, "SOURCE");
    EXPECT_EQ(rotate.places[0].filling, EFilling::File);
    EXPECT_TRUE(rotate.places[0].takesMany);
    EXPECT_EQ(rotate.places[1].filling, EFilling::Folder);
    EXPECT_FALSE(rotate.places[1].takesMany);
    EXPECT_EQ(PlacesFilling(rotate), EFilling::File);
    EXPECT_EQ(PlacesFilling(table.commands.back()), EFilling::Folder);

    const SCommandOption& angle = OptionNamed(rotate, "angle");
    EXPECT_EQ(angle.letter, "a");
    EXPECT_EQ(angle.group, "Turn");
    ASSERT_TRUE(angle.value.has_value());
    EXPECT_EQ(angle.value->filling, EFilling::Choice);
    EXPECT_EQ(angle.value->choices, (std::vector<std::string>{"90", "180", "270"}));
    EXPECT_EQ(OptionNamed(rotate, "manifest").value->filling, EFilling::File);
    EXPECT_EQ(OptionNamed(rotate, "manifest").letter, "");
    EXPECT_EQ(OptionNamed(rotate, "shard").value->filling, EFilling::Free);
    EXPECT_EQ(OptionNamed(rotate, "shard").value->name, "I/N");
    EXPECT_EQ(OptionNamed(rotate, "shard").defaultText, "1/1");
    EXPECT_FALSE(OptionNamed(rotate, "quiet").value.has_value());
}

TEST(CommandTable, KeepsGroupsTogether) {
    CLI::App app("Does it", "prog");
    app.set_help_flag();
    bool flag = false;
    for (const auto& [name, group] :
         {std::pair{"--a", "One"}, std::pair{"--b", "Two"}, std::pair{"--c", "One"}})
        app.add_flag(name, flag, "Text")->group(group);
    const SCommandTable table = TableOf(app);
    ASSERT_EQ(table.program.options.size(), 3U);
    EXPECT_EQ(table.program.options[1].name, "c");
    EXPECT_EQ(table.program.options[2].name, "b");
}

TEST(CommandTable, ReadsFootersAndLeavesTheProgramsToTheProgram) {
    CLI::App app("Does it", "prog");
    app.footer("Examples:\n  prog x\n      first\n      second\n\nStates:\n  0    done\n  130  "
               "not done");
    app.add_subcommand("plain", "Has the program's");
    app.add_subcommand("other", "Has its own")->footer("States:\n  1  bad");
    const SCommandTable table = TableOf(app);
    const auto& footer = table.program.footer;
    ASSERT_EQ(footer.size(), 2U);
    EXPECT_EQ(footer[0].title, "Examples");
    ASSERT_EQ(footer[0].entries.size(), 1U);
    EXPECT_EQ(footer[0].entries[0].term, "prog x");
    EXPECT_EQ(footer[0].entries[0].text, "first second");
    EXPECT_EQ(footer[1].title, "States");
    ASSERT_EQ(footer[1].entries.size(), 2U);
    EXPECT_EQ(footer[1].entries[0].term, "0");
    EXPECT_EQ(footer[1].entries[0].text, "done");
    EXPECT_EQ(footer[1].entries[1].term, "130");
    EXPECT_EQ(footer[1].entries[1].text, "not done");
    EXPECT_TRUE(table.commands[0].footer.empty());
    ASSERT_EQ(table.commands[1].footer.size(), 1U);
    EXPECT_EQ(table.commands[1].footer[0].entries[0].text, "bad");
}

TEST(CommandTable, RefusesFootersThatItCannotTellApart) {
    for (const std::string line : {"no title", "  term without a title", "    text without one",
                                   "Title:\n      text without a term", "Title:\n one space"}) {
        CLI::App app("Does it", "prog");
        app.footer(line);
        EXPECT_EQ(ReasonAgainst(app),
                  "no title, term or text: " + line.substr(line.find('\n') + 1));
    }
}

TEST(CommandTable, RefusesOptionsThatItCannotTellOf) {
    CLI::App unknown("Does it", "prog");
    std::string value;
    unknown.add_option("--colour", value, "Text")->type_name("COLOUR");
    EXPECT_EQ(ReasonAgainst(unknown), "what fills COLOUR is not known: add it to the value names");

    CLI::App unnamed("Does it", "prog");
    bool flag = false;
    unnamed.add_flag("-x", flag, "Text");
    EXPECT_EQ(ReasonAgainst(unnamed), "-x has no long name");
}

} // namespace
} // namespace trevolt
