#!/bin/sh
# Runs words of ./dev on a machine that has nothing but Debian's base system, with the committed sources
# unpacked in it.
#
#   tools/bare-machine.sh [WORDS ...]
#
# Each argument is what follows ./dev, "test native" for example; without any, "run" and "test".
# Runs as root.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
# shellcheck source=tools/bare-system.sh
. tools/bare-system.sh
[ $# -gt 0 ] || set -- run test
tools/setup.sh bare

mkdir -p build
machine=$(mktemp -d "$root/build/bare-machine.XXXXXX")
trap 'remove_bare_system "$machine"' EXIT
trap 'exit 130' INT TERM
make_bare_system "$machine"

mkdir "$machine/trevolt"
git archive HEAD | tar -x -C "$machine/trevolt"

for words in "$@"; do
    echo "bare-machine: ./dev $words"
    run_in_bare_system "$machine" "cd /trevolt && ./dev $words"
done
