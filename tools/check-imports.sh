#!/bin/sh
# Fails when a Windows program imports a DLL that Windows itself does not have.
#
#   tools/check-imports.sh OBJDUMP PROGRAM ...
set -eu
objdump=$1
shift
system='advapi32|bcrypt|comctl32|gdi32|kernel32|msvcrt|ole32|shell32|user32|uxtheme'
for program in "$@"; do
    imports=$("$objdump" -p "$program" | sed -n 's/^[[:space:]]*DLL Name: //p')
    if [ -z "$imports" ]; then
        echo "$program: no imports found" >&2
        exit 1
    fi
    foreign=$(echo "$imports" | grep -Eiv "^($system)\\.dll\$" || true)
    if [ -n "$foreign" ]; then
        echo "$program needs $foreign" >&2
        exit 1
    fi
done
