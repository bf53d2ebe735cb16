#!/bin/sh
# Packs the built programs into dist/: one archive a system.
#
#   tools/package.sh VERSION
#
# Expects build/release/bin/trevolt-cli and the tree dist/windows.
set -eu
cd "$(dirname "$0")/.."
version=$1
papers="README.md CHANGELOG.md LICENSE docs"

linux=trevolt-$version-linux-x86_64
windows=trevolt-$version-windows-x86_64
rm -rf "dist/$linux" "dist/$windows" "dist/$linux.tar.gz" "dist/$windows.zip"

mkdir -p "dist/$linux/bin"
cp build/release/bin/trevolt-cli "dist/$linux/bin/"
# shellcheck disable=SC2086 # the list is meant to be split
cp -r $papers "dist/$linux/"

mkdir -p "dist/$windows"
cp -r dist/windows/. "dist/$windows/"
# shellcheck disable=SC2086
cp -r $papers "dist/$windows/"

cd dist
cmake -E tar czf "$linux.tar.gz" "$linux"
cmake -E tar cf "$windows.zip" --format=zip "$windows"
rm -rf "$linux" "$windows"
ls -l "$linux.tar.gz" "$windows.zip"
