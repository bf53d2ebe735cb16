#!/bin/sh
# Runs words of ./dev on a machine that has nothing but Debian's base system: a folder made by
# debootstrap, with the committed sources unpacked in it, an empty environment, and namespaces of
# its own for mounts and processes, so that nothing of it outlives the run.
#
#   tools/bare-machine.sh [WORDS ...]
#
# Each argument is what follows ./dev, "test native" for example; without any, "run" and "test".
# Runs as root. Debian's package sources and apt's settings are those of this machine.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
[ $# -gt 0 ] || set -- run test
tools/setup.sh bare

# shellcheck disable=SC2016 # apt's own placeholders
debian=$(apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
    'Created-By: Packages' 'Origin: Debian' | sort -u)
release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
mirror=$(echo "$debian" | sed -n "s/^deb \(.*\) $release main\$/\1/p" | head -n 1)
if [ -z "$mirror" ]; then
    echo "bare-machine: apt knows no source of Debian's $release; does it need an update?" >&2
    exit 1
fi

mkdir -p build
machine=$(mktemp -d "$root/build/bare-machine.XXXXXX")
chmod 755 "$machine" # apt downloads as a user of its own
inside=
clean_up() {
    # unshare heeds no other signal; all that it started ends with it.
    [ -z "$inside" ] || kill -KILL "$inside" 2>/dev/null || true
    rm -rf --one-file-system "$machine"
}
trap clean_up EXIT
trap 'exit 130' INT TERM

echo "bare-machine: $release from $mirror"
if ! debootstrap --variant=minbase "$release" "$machine" "$mirror" >"$machine.log" 2>&1; then
    cat "$machine.log" >&2
    exit 1
fi
rm -f "$machine.log"

apt-config dump Acquire >"$machine/etc/apt/apt.conf.d/00machine"
echo "$debian" >"$machine/etc/apt/sources.list"
cp -L /etc/resolv.conf /etc/hosts "$machine/etc/"

mkdir "$machine/trevolt"
git archive HEAD | tar -x -C "$machine/trevolt"

# shellcheck disable=SC2016 # expanded by the inner shells
for words in "$@"; do
    echo "bare-machine: ./dev $words"
    unshare --mount --pid --fork --kill-child sh -euc '
        mount -t proc proc "$1/proc"
        mount -t sysfs -o ro sys "$1/sys"
        mount -t devpts devpts "$1/dev/pts"
        exec env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
            chroot "$1" sh -euc "cd /trevolt && ./dev $2" </dev/null
    ' sh "$machine" "$words" &
    inside=$!
    wait "$inside"
    inside=
done
