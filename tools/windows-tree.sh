#!/bin/sh
# Lays out what a Windows machine gets: the programs, and the language files three folders above.
#
#   tools/windows-tree.sh BUILD-FOLDER TREE
#
# TREE is made anew. trevolt-cli.exe is laid beside Trevolt.exe where the build has made it.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=$1
tree=$2
programs=$tree/Tools/Trevolt/bin

rm -rf "$tree"
mkdir -p "$programs"
cp "$build/bin/Trevolt.exe" "$programs/"
[ ! -f "$build/bin/trevolt-cli.exe" ] || cp "$build/bin/trevolt-cli.exe" "$programs/"
x86_64-w64-mingw32-strip --preserve-dates "$programs"/*.exe
cp -R "$root/Language" "$tree/Language"
