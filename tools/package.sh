#!/bin/sh
# Packs what was built into dist/: one archive a system.
#
#   tools/package.sh VERSION
#
# For Linux that is what is installed: program, library and documents. For Windows it is the tree
# dist/windows with the installed documents beside it. Expects the builds of both systems.
set -eu
cd "$(dirname "$0")/.."
version=$1
linux=trevolt-$version-linux-x86_64
windows=trevolt-$version-windows-x86_64
rm -rf "dist/$linux" "dist/$windows" "dist/$linux.tar.gz" "dist/$windows.zip"

cmake --install build/release --prefix "dist/$linux" >/dev/null

documents=$(mktemp -d)
trap 'rm -rf "$documents"' EXIT
cmake --install build/windows --component documents --prefix "$documents" >/dev/null
mkdir -p "dist/$windows"
cp -r dist/windows/. "$documents/share/doc/trevolt/." "dist/$windows/"

cd dist
cmake -E tar czf "$linux.tar.gz" "$linux"
cmake -E tar cf "$windows.zip" --format=zip "$windows"
rm -rf "$linux" "$windows"
ls -l "$linux.tar.gz" "$windows.zip"
