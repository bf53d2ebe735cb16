#!/bin/sh
# Makes docs/coefficient-objects.md from the comments of the coefficient object's headers and from
# the list of slots. With --check nothing is written: the page must be what would be made.
set -eu
cd "$(dirname "$0")/.."
page=docs/coefficient-objects.md

make_page() {
    cat <<'TEXT'
# The coefficient objects, slot by slot

Made by `tools/slot-docs.sh` from the comments in `coef/ColorCorrectCoef.h` and
`coef/CNewChromaCorrectCoef.h` and from the list in `coef/ColorCorrectCoefSlots.h`; edit those.

A coefficient object is reached through `CColorCorrectCoef`, and its operations by their position.
Under the Itanium C++ ABI, which g++ follows on Linux and Windows, the destructor (slot 0) takes two
entries of the virtual table, so slot n is entry n + 1.

| kind | class | a pixel has | word file |
|---|---|---|---|
| brightness | `CCNewBrightCorrectCoef` | three gains | [`.3wcoef`](formats/3wcoef.md) |
| chroma | `CCNewChromaCorrectCoef` | a 3×3 matrix, an extra word | [`.9wcoef`](formats/9wcoef.md) |
| virtual-green brightness | `CVirtualGreenBrightCorrectCoef` | four gains | [`.4wcoef`](formats/4wcoef.md) |
| virtual-green chroma | `CVirtualGreenChromaCorrectCoef` | a 3×4 matrix | [`.12wcoef`](formats/12wcoef.md) |

A kind that does not offer a slot answers `E_FAIL`, `E_COEF_NOTIMPL` for slots 118 to 124, and the
default element for the pixel getters 33, 35, 111 and 113; it changes nothing.

The transfer table of slots 7 and 8 has 57 rows of 65536 entries (`coef/CaliOperationData.h`). The
chroma kind has one of its own; the virtual-green kinds use a caller's, which `SetTransferTable`
hands them; the brightness kind has none.

The transformations and the processing of the calibration library (38 to 43, 99 to 104) are offered
by no kind. Chroma answers 15, 89 to 91 and 122, which work with any element, as brightness does.

TEXT
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
    ' coef/ColorCorrectCoefSlots.h coef/ColorCorrectCoef.h coef/CNewChromaCorrectCoef.h |
        sed -e '$d'
}

if [ "${1:-}" = --check ]; then
    make_page | diff -u "$page" - || {
        echo "$page is not what tools/slot-docs.sh makes: run it and commit the page" >&2
        exit 1
    }
else
    make_page >"$page"
fi
