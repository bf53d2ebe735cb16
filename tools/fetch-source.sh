#!/bin/sh
# Unpacks the Debian source package of an installed library's version.
#
#   tools/fetch-source.sh PACKAGE FOLDER
#
# The source entries are derived from the machine's own package sources and kept, like the lists,
# beside FOLDER: nothing on the machine is changed.
set -eu
package=$1
folder=$2
work=$folder.work
rm -rf "$folder" "$work"
mkdir -p "$work/lists/partial" "$work/sources"
work=$(cd "$work" && pwd)

for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$list" ] || continue
    sed -n 's/^deb /deb-src /p' "$list" | grep -i debian >>"$work/sources/source.list" || true
done
for list in /etc/apt/sources.list.d/*.sources; do
    [ -f "$list" ] || continue
    grep -qi debian "$list" || continue
    sed 's/^Types:.*/Types: deb-src/' "$list" >"$work/sources/$(basename "$list")"
done

version=$(dpkg-query -W -f '${source:Version}' "lib$package-dev")
apt() {
    apt-get -qq -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$work/sources" \
        -o Dir::State::Lists="$work/lists" -o Dir::Cache::srcpkgcache= -o Dir::Cache::pkgcache= \
        -o APT::Sandbox::User=root "$@"
}
apt update
(cd "$work" && apt source "$package=$version" >/dev/null)
mv "$work/$package-${version%-*}" "$folder"
rm -rf "$work"
