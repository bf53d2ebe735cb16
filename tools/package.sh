#!/bin/sh
# Packs what was built into dist/, with the sums of all packages.
#
#   tools/package.sh VERSION
#
# For Linux the Debian package, and an archive of what is installed: a program that needs no other
# package, library and documents. For Windows the tree dist/windows with the installed documents beside
# it, as an archive and as an installer. Expects the builds of both systems. The same sources give
# the same bytes, wherever and whenever they are packed.
set -eu
cd "$(dirname "$0")/.."
version=$1
seconds=$(tools/source-date.sh)
linux=trevolt-$version-linux-x86_64
windows=trevolt-$version-windows-x86_64
umask 022
mkdir -p dist
rm -f dist/trevolt* dist/SHA256SUMS

tools/debian-package.sh build/release "$version" dist

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install build/release --prefix "$work/$linux" >/dev/null
rm "$work/$linux/bin/trevolt-cli" # a program of the same second would pass for up to date
cmake --install build/release --component standalone --prefix "$work/$linux" >/dev/null
strip "$work/$linux/bin/trevolt-cli"
tar --create --directory "$work" --sort=name --format=gnu --mtime="@$seconds" --owner=root:0 \
    --group=root:0 --numeric-owner "$linux" | gzip -9n >"dist/$linux.tar.gz"

cmake --install build/windows --component documents --prefix "$work/documents" >/dev/null
mkdir "$work/$windows"
cp -R dist/windows/. "$work/documents/share/doc/trevolt/." "$work/$windows/"
/usr/bin/python3 tools/pack-zip.py "$work/$windows" "dist/$windows.zip" "$seconds"
/usr/bin/python3 tools/windows-installer.py "$work/$windows" "$version" "$seconds" \
    "dist/$windows-setup.exe"

cd dist
sha256sum trevolt* >"$work/SHA256SUMS"
mv "$work/SHA256SUMS" .
ls -l trevolt*
