#!/bin/sh
# Cuts the power under a turn: what the command told as done must be whole on the disk.
#
#     tools/power-cut.sh PROGRAM [FILES]
#
# PROGRAM is trevolt-cli. A file system in a file is mounted; while the command turns FILES cabinets
# (300 by default) into it and when it has ended, what its disk holds is copied, as it would be found
# after a power cut, and the copy mounted and checked: every output that was told by then is there,
# and is the one that a run without a cut makes. The same without syncing must lose some, or the copy
# proves nothing. Last, a disk that is too small. Needs to be root, mkfs.ext4 and loop devices.
set -eu
export LC_ALL=C.UTF-8
program=$(realpath "$1")
files=${2:-300}
work=$(mktemp -d)

unmount() { # the folder, if something is mounted there
    if mountpoint -q "$1"; then
        umount "$1"
    fi
}

clean_up() {
    unmount "$work/disk"
    unmount "$work/found"
    rm -rf "$work"
}
trap clean_up EXIT

mkdir "$work/disk" "$work/found" "$work/source" "$work/wall" "$work/expected"
"$program" demo "$work/wall" >/dev/null
i=0
while [ "$i" -lt "$files" ]; do
    cp "$work/wall/Cab_01.9fcoef" "$work/source/cab$i.9fcoef"
    i=$((i + 1))
done
"$program" rotate --angle 90 --no-sync "$work/source" "$work/expected" >/dev/null

new_disk() { # bytes
    unmount "$work/disk"
    rm -f "$work/image"
    truncate -s "$1" "$work/image"
    mkfs.ext4 -q "$work/image"
    mount -o loop,commit=300 "$work/image" "$work/disk"
    mkdir "$work/disk/turned"
    sync -f "$work/disk"
}

# What the disk holds now, mounted; the journal is gone through as after a cut.
find_after_cut() {
    unmount "$work/found"
    cp --sparse=always "$work/image" "$work/copy"
    mount -o loop "$work/copy" "$work/found"
}

lost() { # the list of what was told: how many of it are missing or not whole
    count=0
    while read -r name; do
        cmp -s "$work/expected/$name" "$work/found/turned/$name" || count=$((count + 1))
    done <"$1"
    echo "$count"
}

told() { sed -n 's/^.* -> \(.*\)  (.*$/\1/p' "$work/log"; }

turn() { stdbuf -oL "$program" rotate --angle 90 "$@" "$work/source" "$work/disk/turned" >"$work/log"; }

fail() {
    echo "power-cut: $1" >&2
    exit 1
}

new_disk 512M
turn &
run=$!
cuts=0
while kill -0 "$run" 2>/dev/null; do
    told >"$work/told"
    [ -s "$work/told" ] || continue
    find_after_cut
    count=$(lost "$work/told")
    [ "$count" -eq 0 ] || fail "$count of $(wc -l <"$work/told") told files were lost midway"
    cuts=$((cuts + 1))
done
wait "$run"
told >"$work/told"
[ "$(wc -l <"$work/told")" -eq "$files" ] || fail "not all files were turned"
find_after_cut
count=$(lost "$work/told")
[ "$count" -eq 0 ] || fail "$count of $files files were lost after the run"
echo "synced: $cuts cuts during the run and one after it, none of $files told files lost"

new_disk 512M
turn --no-sync
told >"$work/told"
find_after_cut
count=$(lost "$work/told")
[ "$count" -gt 0 ] || fail "nothing was lost without syncing: the check proves nothing"
echo "unsynced: $count of $files told files lost"

new_disk 8M
if turn 2>"$work/errors"; then
    fail "a full disk was not noticed"
fi
told >"$work/told"
[ "$(wc -l <"$work/errors")" -eq $((files - $(wc -l <"$work/told"))) ] || fail "not every file was told of"
grep -vq 'No space left on device$' "$work/errors" && fail "a full disk was not named"
find_after_cut
[ "$(lost "$work/told")" -eq 0 ] || fail "a full disk lost what was told"
[ -z "$(find "$work/disk/turned" -name '.trevolt-*')" ] || fail "files under work were left on a full disk"
echo "full disk: $(wc -l <"$work/told") written, the others named"
