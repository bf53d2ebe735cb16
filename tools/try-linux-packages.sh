#!/bin/sh
# Tries what dist/ holds for Linux on a machine that has nothing but Debian's base system.
#
#   tools/try-linux-packages.sh
#
# The archive is unpacked there, and its program must start as it is; then the Debian package is
# installed with what it depends on, used, and removed again. Each makes a wall and turns it, and the
# outputs of both are the same. Runs as root.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
# shellcheck source=tools/bare-system.sh
. tools/bare-system.sh
tools/setup.sh bare

mkdir -p build
machine=$(mktemp -d "$root/build/bare-packages.XXXXXX")
trap 'remove_bare_system "$machine"' EXIT
trap 'exit 130' INT TERM
make_bare_system "$machine"
mkdir "$machine/packages"
cp dist/trevolt* dist/SHA256SUMS "$machine/packages/"

# shellcheck disable=SC2016 # expanded on the machine
functions='unwanted() { # what must not be there
    echo "try-linux-packages: $1" >&2
    exit 1
}
turn() { # program, folder
    "$1" --version
    mkdir -p "$2/turned"
    "$1" demo "$2/wall"
    "$1" rotate --angle 90 "$2/wall" "$2/turned"
}'

echo "try-linux-packages: the archive"
run_in_bare_system "$machine" "$functions
    cd /packages
    sha256sum --check SHA256SUMS
    if dpkg-query --status libssl3 2>/dev/null; then unwanted 'the machine is not bare'; fi
    tar -xf trevolt-*-linux-x86_64.tar.gz -C /opt
    turn /opt/trevolt-*/bin/trevolt-cli /archive
    for name in Apache-2.0 CLI11 LZ4 OpenSSL fmt xxHash; do
        [ -s /opt/trevolt-*/share/doc/trevolt/licences/\$name.txt ] || unwanted \"no licence of \$name\"
    done"

echo "try-linux-packages: the Debian package"
run_in_bare_system "$machine" "$functions
    export DEBIAN_FRONTEND=noninteractive
    cd /packages
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends ./trevolt_*.deb >/dev/null
    [ -z \"\$(dpkg --verify trevolt)\" ] || unwanted 'files are not as they were packed'
    turn trevolt-cli /package
    diff -r /archive /package
    apt-get purge -y -qq trevolt >/dev/null
    if find / -xdev -path /packages -prune -o -path /opt -prune -o -name '*trevolt*' -print | grep .; then
        unwanted 'files are left'
    fi"
echo "try-linux-packages: both turned the same wall"
