#!/bin/sh
# Runs a Windows program through Wine, in a prefix of the build folder that is made once.
#
# TREVOLT_WINE_LINGER sets for how many seconds Wine's server outlives the last program (60).
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
# Wine maps file names through the locale; this one is part of Debian's base system.
export LC_ALL=C.UTF-8
export WINEPREFIX="${TREVOLT_WINEPREFIX:-$root/build/wine-prefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="mscoree,mshtml="

make_prefix() {
    DISPLAY='' wine wineboot -i >/dev/null 2>&1
    # What was started without a display must not serve the first run that has one.
    wineserver -k || true
    wineserver -w
    touch "$WINEPREFIX/made"
}

# Debian's Wine lets its server end with the last program, and a program that comes just then is cut
# off from it. A server that stays is started before any program. Its helpers come with the first
# program: here one without streams of the caller, whose pipes would end only with them. What hinders
# that one is told by the caller's own.
keep_server() {
    if wineserver -p"${TREVOLT_WINE_LINGER:-60}" 2>/dev/null; then
        wine cmd /c exit </dev/null >/dev/null 2>&1 || true
    fi
}

mkdir -p "$WINEPREFIX"
(
    flock 9
    if [ ! -f "$WINEPREFIX/made" ]; then
        make_prefix 9>&-
    fi
    keep_server 9>&-
) 9>"$WINEPREFIX.lock"
exec wine "$@"
