#include <gtest/gtest.h>

#include "cli/pages/Pages.h"
#include "tests/pages/SmallTable.h"

namespace trevolt {
namespace {

TEST(BashCompletion, OffersEachCommandWhatItTakes) {
    EXPECT_EQ(
        BashCompletion(SmallTable()),
        R"text(# Completion of some-prog for bash, made by ./dev pages of the program's own options.

_some_prog() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} i
    # --option=value comes as three words.
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    # Behind -- no word is an option.
    local ended=
    for ((i = 2; i < COMP_CWORD; ++i)); do
        [[ ${COMP_WORDS[i]} != -- ]] || ended=yes before=
    done

    # The words that fit, or what readline completes by itself: names of files or folders.
    local words= names= command=
    ((COMP_CWORD == 1)) || command=${COMP_WORDS[1]}
    case "$command $before" in
    ' '*) words='turn make --help' ;;
    'turn --angle' | 'turn -a') words='90 180' ;;
    'turn --table') names=default ;;
    'turn '*)
        if [[ $word == -* && -z $ended ]]; then
            words='--angle --table --no-go'
        else
            names=default
        fi
        ;;
    'make --in') names=dirnames ;;
    'make --jobs' | 'make -j') : ;;
    'make '*)
        if [[ $word == -* && -z $ended ]]; then
            words='--in --jobs'
        else
            names=dirnames
        fi
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    [[ -z $names ]] || compopt -o "$names"
}

complete -F _some_prog some-prog
)text");
}

} // namespace
} // namespace trevolt
