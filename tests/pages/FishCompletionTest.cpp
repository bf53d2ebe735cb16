#include <gtest/gtest.h>

#include "cli/pages/Pages.h"
#include "tests/pages/SmallTable.h"

namespace trevolt {
namespace {

TEST(FishCompletion, OffersEachCommandWhatItTakes) {
    EXPECT_EQ(
        FishCompletion(SmallTable()),
        R"text(# Completion of some-prog for fish, made by ./dev pages of the program's own options.

function __some_prog_calls --description 'Whether the first word is this one, or still missing where none is given'
    set -l words (commandline -opc)
    test "$words[2]" = "$argv[1]"
end

complete -c some-prog -f

complete -c some-prog -n '__some_prog_calls' -a turn -d 'Turn it'
complete -c some-prog -n '__some_prog_calls' -a make -d 'Make it'
complete -c some-prog -n '__some_prog_calls' -s h -l help -d 'Print this help'

complete -c some-prog -n '__some_prog_calls turn' -F
complete -c some-prog -n '__some_prog_calls turn' -s a -l angle -r -f -a '90 180' -d 'How: 90° or so'
complete -c some-prog -n '__some_prog_calls turn' -l table -r -F -d 'A \\ and a ]'
complete -c some-prog -n '__some_prog_calls turn' -s n -l no-go -d 'Don\'t'

complete -c some-prog -n '__some_prog_calls make' -f -a '(__fish_complete_directories)'
complete -c some-prog -n '__some_prog_calls make' -l in -r -f -a '(__fish_complete_directories)' -d 'Beside'
complete -c some-prog -n '__some_prog_calls make' -s j -l jobs -r -f -d 'How many'
)text");
}

} // namespace
} // namespace trevolt
