#!/bin/sh
# Runs clang-tidy and passes on all it says but for its counts of what it kept to itself.
#
#   tools/tidy.sh CLANG-TIDY-OPTION ... SOURCE
set -eu
status=0
said=$(clang-tidy --quiet "$@" 2>&1) || status=$?
printf '%s' "$said" | grep -Ev '^[0-9]+ warnings? generated\.$' || true
exit "$status"
