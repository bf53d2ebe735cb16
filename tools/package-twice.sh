#!/bin/sh
# Builds what is given out in two folders of different names, from the committed sources and with
# nothing that was compiled before: each package must have the same bytes in both.
#
#   tools/package-twice.sh
#
# It compiles everything twice and takes as long.
set -eu
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# No compiler's cache: it would give the second what the first compiled.
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
export CCACHE_DISABLE=1

first=$work/one
second=$work/deeper/down/the-second
for folder in "$first" "$second"; do
    mkdir -p "$folder"
    git archive HEAD | tar -x -C "$folder"
    echo "package-twice: building in $folder"
    "$folder/dev" package
done
diff -r "$first/dist" "$second/dist"
for folder in "$first" "$second"; do
    for program in "$folder"/dist/windows/Tools/Trevolt/bin/*.exe "$folder"/build/release/bin/trevolt-cli; do
        if grep -aqF "$work" "$program"; then
            echo "package-twice: $program tells where it was built" >&2
            exit 1
        fi
    done
done
echo "package-twice: the same bytes"
cat "$first/dist/SHA256SUMS"
