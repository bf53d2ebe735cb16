#!/bin/sh
# Unpacks Debian's binary packages of another architecture.
#
#   tools/fetch-libraries.sh ARCHITECTURE FOLDER PACKAGE ...
#
# They come from the machine's own package sources; lists and archives stay beside FOLDER until it
# is there, and nothing on the machine is changed.
set -eu
architecture=$1
folder=$2
shift 2
work=$folder.work
rm -rf "$folder" "$work"
mkdir -p "$work/state/lists/partial" "$work/cache/archives/partial" "$work/tree"
work=$(cd "$work" && pwd)

apt() {
    apt-get -qq -o APT::Architecture="$architecture" -o APT::Architectures="$architecture" \
        -o Dir::State="$work/state" -o Dir::State::status=/dev/null -o Dir::Cache="$work/cache" \
        -o APT::Sandbox::User=root "$@"
}
apt update
(cd "$work" && apt download "$@" >/dev/null)
for archive in "$work"/*.deb; do
    dpkg-deb --extract "$archive" "$work/tree"
done
mv "$work/tree" "$folder"
rm -rf "$work"
