// A program with one command of each kind of option, told in texts that every page has to escape.
#pragma once

#include "cli/pages/CommandTable.h"

namespace trevolt {

inline SCommandTable SmallTable() {
    const SCommandOption help{"h", "help", "Help", "Print this help", "", {}};
    SCommandTable table;
    table.program = {"some-prog", "Does it all", {}, {help}, {{"Exit states", {{"0", "done"}}}}};
    table.commands.push_back(
        {"turn",
         "Turn it",
         {{"SOURCE", "Places", "It's all [here]", EFilling::File, true},
          {"TARGET", "Places", "There", EFilling::Folder, false}},
         {{"a", "angle", "Turn", "How: 90\u00B0 or so", "90",
           SOptionValue{"90|180", EFilling::Choice, {"90", "180"}}},
          {"", "table", "Turn", "A \\ and a ]", "", SOptionValue{"FILE", EFilling::File, {}}},
          {"n", "no-go", "Report", "Don't", "", {}}},
         {{"Examples", {{"some-prog turn x", ".dotted 'text'"}}}}});
    table.commands.push_back(
        {"make",
         "Make it",
         {{"FOLDER", "Places", "Where", EFilling::Folder, false}},
         {{"", "in", "Places", "Beside", "here.", SOptionValue{"FOLDER", EFilling::Folder, {}}},
          {"j", "jobs", "Work", "How many", "", SOptionValue{"N", EFilling::Free, {}}}},
         {}});
    return table;
}

} // namespace trevolt
