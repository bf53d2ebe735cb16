// A coefficient file of any kind, loaded into a map as the commands that look at one load it, and
// nothing besides:
//
//   load-map FILE
#include <cstdio>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "app/rotation/CoefFile.h"
#include "platform/ConsoleProgram.h"
#include "trevolt/Utf8.h"

namespace trevolt {

int StatusWithoutMemory(std::string_view /*firstArgument*/) noexcept { return 1; }

int ConsoleMain(const std::vector<std::string>& arguments) {
    if (arguments.size() != 1) {
        fmt::print(stderr, "load-map: FILE is wanted\n");
        return 2;
    }
    const SCoefLoad load = LoadCoefFile(Utf8ToWide(arguments[0]).value_or(L""));
    for (const std::string& problem : load.problems)
        fmt::print(stderr, "load-map: {}\n", problem);
    return load.problems.empty() ? 0 : 1;
}

} // namespace trevolt
