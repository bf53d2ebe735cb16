#!/bin/sh
# Writes the report of a demo wall with two damaged cabinets, and looks at it in a browser: pictures of
# the page for people, and checks of what the browser makes of it.
#
#   tools/report-page.sh PROGRAM FOLDER
#
# PROGRAM is trevolt-cli; the page and light.png, dark.png, narrow.png and paper.pdf come to FOLDER.
set -eu

program=$(realpath "$1")
rm -rf "$2"
mkdir -p "$2"
cd "$2"
folder=$PWD

fail() {
    echo "report: $1" >&2
    exit 1
}

profile=$(mktemp -d)
trap 'rm -rf "$profile"' EXIT

browse() { # page, options; a profile of its own each time, so that nothing is kept
    page=$1
    shift
    rm -rf "$profile"
    timeout 120 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
        --disable-background-networking --disable-component-update --disable-sync \
        --hide-scrollbars --user-data-dir="$profile" "$@" "file://$folder/$page" 2>browser.log ||
        fail "the browser failed: $(tail -n 3 browser.log)"
}

"$program" demo wall >/dev/null
head -c 3000 wall/Cab_01.9fcoef >'wall/Cab_10 <cut> & "short".9fcoef'
printf 'no cabinet' >wall/Cab_11.3bcoef
touch wall/notes.txt
status=0
"$program" rotate --angle 90 --quiet --report run.html wall turned 2>/dev/null || status=$?
[ "$status" -eq 1 ] || fail "the run's exit status is $status and not 1"

browse run.html --window-size=1280,1700 --screenshot=light.png
browse run.html --window-size=1280,1700 --blink-settings=preferredColorScheme=0 --screenshot=dark.png
browse run.html --window-size=500,2600 --screenshot=narrow.png
browse run.html --no-pdf-header-footer --print-to-pdf=paper.pdf
for file in light.png dark.png narrow.png paper.pdf; do
    [ -s "$file" ] || fail "$file is missing"
done
cmp -s light.png dark.png && fail "the page is the same in the dark"

# What the browser makes of a copy that may run a script.
{
    grep -v 'http-equiv="Content-Security-Policy"' run.html | sed 's| loading="lazy"||'
    cat <<'SCRIPT'
<script>
const shows = image => image.complete && image.naturalWidth > 0;
document.body.dataset.pictures = [...document.images].filter(shows).length;
document.body.dataset.wide = document.documentElement.scrollWidth > innerWidth;
</script>
SCRIPT
} >watched.html
browse watched.html --window-size=500,2600 --virtual-time-budget=5000 --dump-dom >dom.html

/usr/bin/python3 - dom.html <<'CHECK'
import re
import sys

page = open(sys.argv[1], encoding='utf-8').read()
wanted = {
    'rows': (len(re.findall(r'<tr id="f\d+"', page)), 11),
    'failed files': (len(re.findall(r'badge bad">failed<', page)), 2),
    'pictures that show': (re.search(r'data-pictures="(\d+)"', page)[1], '18'),
    'wider than a phone': (re.search(r'data-wide="(\w+)"', page)[1], 'false'),
    'links to failed files': (re.findall(r'<li><a href="#(f\d+)"', page), ['f10', 'f11']),
    'the odd name': ('Cab_10 &lt;cut&gt; &amp; "short".9fcoef</bdi>' in page, True),
}
for what, (found, expected) in wanted.items():
    if found != expected:
        sys.exit(f'report: {what}: {found} and not {expected}')
CHECK
echo "the page is $folder/run.html, its pictures lie beside it"
