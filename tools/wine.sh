#!/bin/sh
# Runs a Windows program through Wine, in a prefix of the build folder that is made once.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
# Wine maps file names through the locale; this one is part of Debian's base system.
export LC_ALL=C.UTF-8
export WINEPREFIX="${TREVOLT_WINEPREFIX:-$root/build/wine-prefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="mscoree,mshtml="
if [ ! -f "$WINEPREFIX/made" ]; then
    mkdir -p "$WINEPREFIX"
    (
        flock 9
        if [ ! -f "$WINEPREFIX/made" ]; then
            DISPLAY='' wine wineboot -i >/dev/null 2>&1
            # What was started without a display must not serve the first run that has one.
            wineserver -k || true
            wineserver -w
            touch "$WINEPREFIX/made"
        fi
    ) 9>"$WINEPREFIX.lock"
fi
exec wine "$@"
