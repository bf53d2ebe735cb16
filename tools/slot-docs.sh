#!/bin/sh
# Puts the list of a coefficient object's slots, made from the comments of its headers and from
# coef/ColorCorrectCoefSlots.h, into docs/coefficient-objects.md between its two marks. With --check
# nothing is written: the page must be as it would be made.
set -eu
cd "$(dirname "$0")/.."
page=docs/coefficient-objects.md
begin='<!-- Made by tools/slot-docs.sh; edit the comments of the headers. -->'
end='<!-- What follows is written by hand again. -->'

make_slots() {
    awk '
        # The list of slots: X(number, name, kinds)
        FNR == NR {
            if (match($0, /X\([0-9]+, [A-Za-z0-9]+, [A-Za-z |]+\)/)) {
                split(substr($0, RSTART + 2, RLENGTH - 3), part, ", ")
                kinds[part[1]] = part[3]
            }
            next
        }
        function kinds_of(slot,   text) {
            text = slot in kinds ? kinds[slot] : "kAllKinds"
            gsub(/ \| /, ", ", text)
            gsub(/kAllKinds/, "all kinds", text)
            gsub(/kNoKind/, "no kind", text)
            gsub(/kGreenBright/, "virtual-green brightness", text)
            gsub(/kGreenChroma/, "virtual-green chroma", text)
            gsub(/kBright/, "brightness", text)
            gsub(/kChroma/, "chroma", text)
            return text
        }
        /^\/\/ Said once for all:/ { conventions = 1; print "## Said once for all"; print ""; next }
        conventions && /^\/\/$/ { conventions = 0; print "" }
        conventions { print substr($0, 4); next }
        /^    \/\/ ---- (fields|access)/ { heading = ""; next }
        /^    \/\/ ---- / {
            sub(/^    \/\/ ---- /, ""); sub(/ ----$/, "")
            heading = $0
            next
        }
        /^    \/\// && !/^    \/\/\// { if (heading != "") note = note substr($0, 8) "\n"; next }
        /^    \/\/\/ \[[0-9]+\]/ {
            slot = $2
            gsub(/[\[\]]/, "", slot)
            sub(/^    \/\/\/ \[[0-9]+\] /, "")
            text = $0
            next
        }
        slot != "" && declaration == "" && /^    \/\/\// { text = text "\n" substr($0, 9); next }
        slot != "" {
            line = $0
            sub(/^ +/, "", line)
            sub(/^virtual /, "", line)
            declaration = declaration == "" ? line : declaration " " line
            if (line !~ /;$/)
                next
            sub(/( = 0)?;$/, "", declaration)
            name = declaration
            sub(/\(.*/, "", name)
            sub(/.* /, "", name)
            if (heading != "") {
                printf "## %s%s\n\n", toupper(substr(heading, 1, 1)), substr(heading, 2)
                sub(/^\n/, "", note)
                if (note != "")
                    printf "%s\n", note
                heading = note = ""
            }
            printf "### %s `%s` (%s)\n\n```cpp\n%s\n```\n\n%s\n\n", slot, name, kinds_of(slot),
                declaration, text
            slot = declaration = ""
        }
    ' coef/ColorCorrectCoefSlots.h include/trevolt/ColorCorrectCoef.h coef/CNewChromaCorrectCoef.h |
        sed -e '$d'
}

make_page() {
    for mark in "$begin" "$end"; do
        if ! grep -qxF -e "$mark" "$page"; then
            echo "$page lacks the line $mark" >&2
            return 1
        fi
    done
    sed "\|^$begin\$|q" "$page"
    echo
    make_slots
    echo
    sed -n "/^$end\$/,\$p" "$page"
}

made=$(mktemp)
trap 'rm -f "$made"' EXIT
make_page >"$made"
if [ "${1:-}" != --check ]; then
    cp "$made" "$page"
elif ! diff -u "$page" "$made"; then
    echo "$page is not what tools/slot-docs.sh makes: run it and commit the page" >&2
    exit 1
fi
