#!/bin/sh
# Runs a Windows program with windows: on an X server of its own that nobody sees, in a Wine prefix
# of its own in which Wine draws the title bars.
#
#   tools/with-display.sh PROGRAM [ARGUMENT ...]
#
# TREVOLT_DPI sets the screen's resolution (96 is 100 %). One run at a time per prefix; others wait.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
TREVOLT_WINEPREFIX=${TREVOLT_WINEPREFIX:-$root/build/wine-prefix}-window
export TREVOLT_WINEPREFIX
mkdir -p "$(dirname "$TREVOLT_WINEPREFIX")"
exec 8>"$TREVOLT_WINEPREFIX.run"
flock 8

# A Wine server that outlives its display would serve the next run without one.
end_wine() { WINEPREFIX=$TREVOLT_WINEPREFIX sh -c 'wineserver -k; wineserver -w' 2>/dev/null 8>&- || true; }
end_wine

number_file=$(mktemp)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$number_file" 8>&- 2>/dev/null &
server=$!
clean_up() {
    end_wine
    kill "$server" 2>/dev/null || true
    rm -f "$number_file"
}
trap clean_up EXIT
trap 'exit 130' INT TERM

tries=100
until [ -s "$number_file" ]; do
    tries=$((tries - 1))
    if [ "$tries" -eq 0 ] || ! kill -0 "$server" 2>/dev/null; then
        echo "with-display: Xvfb did not start" >&2
        exit 1
    fi
    sleep 0.1
done
DISPLAY=:$(cat "$number_file")
export DISPLAY

set_value() { # key name type data
    "$root/tools/wine.sh" reg add "$1" /v "$2" /t "$3" /d "$4" /f >/dev/null 8>&-
}
set_value 'HKCU\Control Panel\Desktop' LogPixels REG_DWORD "${TREVOLT_DPI:-96}"
# The desktop came up at the former run's resolution and would place windows by it.
end_wine
set_value 'HKCU\Software\Wine\X11 Driver' Managed REG_SZ N
# On Windows the window's font has every script; here others stand in for it.
links='Waree.ttf,Waree\0DroidSansFallbackFull.ttf,Droid Sans Fallback\0NanumGothic.ttf,NanumGothic'
fonts='HKLM\Software\Microsoft\Windows NT\CurrentVersion'
for font in 'Segoe UI' Tahoma; do
    set_value 'HKCU\Software\Wine\Fonts\Replacements' "$font" REG_SZ 'DejaVu Sans'
done
for font in 'DejaVu Sans' 'DejaVu Sans Bold'; do
    set_value "$fonts\FontLink\SystemLink" "$font" REG_MULTI_SZ "$links"
done
# The signs on the title bar's buttons.
set_value "$fonts\Fonts" 'Marlett (TrueType)' REG_SZ 'Z:\usr\share\wine\fonts\marlett.ttf'
"$root/tools/wine.sh" "$@" 8>&-
