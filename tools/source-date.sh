#!/bin/sh
# Prints the time, in seconds since 1970, that everything in the packages bears: the day of the newest
# version in CHANGELOG.md, and before it has one the time of the commit. Where there is no repository,
# as in an unpacked archive of it, that is the time of the changelog itself. SOURCE_DATE_EPOCH in the
# environment comes before all.
set -eu
cd "$(dirname "$0")/.."
if [ -n "${SOURCE_DATE_EPOCH:-}" ]; then
    echo "$SOURCE_DATE_EPOCH"
    exit 0
fi
day=$(sed -n '/^## /{s/^## [^ ]* – \([0-9]*-[0-9]*-[0-9]*\)$/\1/p;q}' CHANGELOG.md)
if [ -n "$day" ]; then
    date --utc --date="$day" +%s
else
    git log -1 --format=%ct 2>/dev/null || stat --format=%Y CHANGELOG.md
fi
