# shellcheck shell=sh
# Debian's base system in a folder: functions for the scripts that try something on a machine that has
# nothing else. They run as root; Debian's package sources and apt's settings are those of this machine.
#
#   . tools/bare-system.sh

bare_system_inside=

# make_bare_system FOLDER: which is there and empty.
make_bare_system() {
    # shellcheck disable=SC2016 # apt's own placeholders
    debian=$(apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' | sort -u)
    release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
    mirror=$(echo "$debian" | sed -n "s/^deb \(.*\) $release main\$/\1/p" | head -n 1)
    if [ -z "$mirror" ]; then
        echo "bare-system: apt knows no source of Debian's $release; does it need an update?" >&2
        return 1
    fi
    chmod 755 "$1" # apt downloads as a user of its own
    echo "bare-system: $release from $mirror"
    if ! debootstrap --variant=minbase "$release" "$1" "$mirror" >"$1.log" 2>&1; then
        cat "$1.log" >&2
        rm -f "$1.log"
        return 1
    fi
    rm -f "$1.log"
    apt-config dump Acquire >"$1/etc/apt/apt.conf.d/00machine"
    echo "$debian" >"$1/etc/apt/sources.list"
    cp -L /etc/resolv.conf /etc/hosts "$1/etc/"
}

# run_in_bare_system FOLDER COMMANDS: a shell's, in an empty environment, and in namespaces of its own
# for mounts and processes, so that nothing of it outlives the run.
run_in_bare_system() {
    # shellcheck disable=SC2016 # expanded by the inner shells
    unshare --mount --pid --fork --kill-child sh -euc '
        mount -t proc proc "$1/proc"
        mount -t sysfs -o ro sys "$1/sys"
        mount -t devpts devpts "$1/dev/pts"
        exec env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
            chroot "$1" sh -euc "$2" </dev/null
    ' sh "$1" "$2" &
    bare_system_inside=$!
    wait "$bare_system_inside"
    bare_system_inside=
}

# remove_bare_system FOLDER: for the trap of the script's end.
remove_bare_system() {
    # unshare heeds no other signal; all that it started ends with it.
    [ -z "$bare_system_inside" ] || kill -KILL "$bare_system_inside" 2>/dev/null || true
    rm -rf --one-file-system "$1"
}
