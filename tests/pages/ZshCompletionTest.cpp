#include <gtest/gtest.h>

#include "cli/pages/Pages.h"
#include "tests/pages/SmallTable.h"

namespace trevolt {
namespace {

TEST(ZshCompletion, OffersEachCommandWhatItTakes) {
    EXPECT_EQ(ZshCompletion(SmallTable()),
              R"text(#compdef some-prog
# Completion of some-prog for zsh, made by ./dev pages of the program's own options.

_some-prog() {
    local curcontext=$curcontext state state_descr line ret=1
    typeset -A opt_args
    _arguments -C \
        '(-h --help)'{-h,--help}'[Print this help]' \
        '1:command:->command' \
        '*::argument:->arguments' && ret=0
    case $state in
    command)
        local -a commands=(
            'turn:Turn it'
            'make:Make it'
        )
        _describe -t commands command commands && ret=0
        ;;
    arguments)
        case $words[1] in
        turn)
            _arguments -s -S \
                '(-a --angle)'{-a+,--angle=}'[How\: 90° or so]:90|180:(90 180)' \
                '--table=[A \\ and a \]]:FILE:_files' \
                '(-n --no-go)'{-n,--no-go}'[Don'\''t]' \
                '*:SOURCE or TARGET:_files' \
                && ret=0
            ;;
        make)
            _arguments -s -S \
                '--in=[Beside]:FOLDER:_files -/' \
                '(-j --jobs)'{-j+,--jobs=}'[How many]:N:' \
                '1:FOLDER:_files -/' \
                && ret=0
            ;;
        esac
        ;;
    esac
    return ret
}

_some-prog "$@"
)text");
}

} // namespace
} // namespace trevolt
