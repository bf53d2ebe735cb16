#!/bin/sh
# Builds what dist/ holds once more, from the committed sources, in another folder and with nothing that
# was compiled before: each package must have the same bytes.
#
#   tools/package-again.sh
#
# dist/ must be what ./dev package made of the same sources. Everything is compiled, which takes long.
set -eu
cd "$(dirname "$0")/.."
if [ -n "$(git status --porcelain)" ]; then
    echo "package-again: the sources are not as they were committed" >&2
    exit 1
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
again=$work/another/folder/with-a-longer-name
mkdir -p "$again"
git archive HEAD | tar -x -C "$again"

# A compiler's cache would give what was compiled elsewhere.
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
CCACHE_DISABLE=1 "$again/dev" package

diff -r dist "$again/dist"
if grep -rlaF -e "$work" -e "$PWD" "$again/dist/windows" "$again/build/release/bin" dist/windows; then
    echo "package-again: these tell where they were built" >&2
    exit 1
fi
echo "package-again: the same bytes"
