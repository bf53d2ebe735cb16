#!/bin/sh
# Fails when an object file, which is compiled for some processors only, has functions that the
# linker may take for the rest of the program.
#
#   tools/check-own-code.sh NM OBJECT
set -eu
nm=$1
object=$2
symbols=$("$nm" --demangle --extern-only --defined-only "$object")
if [ -z "$symbols" ]; then
    echo "$object: no symbols found" >&2
    exit 1
fi
functions=$(printf '%s\n' "$symbols" | grep ' [TWiu] ' || true)
if [ -n "$functions" ]; then
    printf '%s has functions for others:\n%s\n' "$object" "$functions" >&2
    exit 1
fi
