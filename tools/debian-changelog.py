#!/usr/bin/python3
"""Prints CHANGELOG.md as the changelog of a Debian package.

    debian-changelog.py MAINTAINER SECONDS

MAINTAINER is a name with its address; SECONDS since 1970 are the time of a version that has no day yet.
"""
import datetime
import pathlib
import re
import sys
import textwrap
from email.utils import format_datetime

CHANGELOG = pathlib.Path(__file__).resolve().parents[1] / 'CHANGELOG.md'
HEADING = re.compile(r'^## (?P<version>\S+) – (?P<day>.+)$', re.MULTILINE)


def versions(text):
    """Version, day and changes of each section; the changes without marks of links and line ends."""
    headings = list(HEADING.finditer(text))
    if not headings:
        raise SystemExit(f'{CHANGELOG}: no version found')
    ends = [heading.start() for heading in headings[1:]] + [len(text)]
    for heading, end in zip(headings, ends):
        changes = re.split(r'^- ', text[heading.end():end], flags=re.MULTILINE)[1:]
        plain = [re.sub(r'\[([^]]*)\]\([^)]*\)', r'\1', ' '.join(change.split()))
                 for change in changes]
        yield heading['version'], heading['day'], plain


def entry(version, day, changes, maintainer, undated):
    try:
        time = datetime.datetime.fromisoformat(day).replace(tzinfo=datetime.timezone.utc)
        distribution = 'unstable'
    except ValueError:
        time = datetime.datetime.fromtimestamp(undated, datetime.timezone.utc)
        distribution = 'UNRELEASED'
    lines = [textwrap.fill(change, 78, initial_indent='  * ', subsequent_indent='    ',
                           break_long_words=False, break_on_hyphens=False) for change in changes]
    return (f'trevolt ({version}) {distribution}; urgency=medium\n\n' + '\n'.join(lines) +
            f'\n\n -- {maintainer}  {format_datetime(time)}\n')


def main():
    if len(sys.argv) != 3:
        raise SystemExit(__doc__)
    maintainer, undated = sys.argv[1], int(sys.argv[2])
    text = CHANGELOG.read_text(encoding='utf-8')
    entries = [entry(*version, maintainer, undated) for version in versions(text)]
    sys.stdout.buffer.write('\n'.join(entries).encode())


if __name__ == '__main__':
    main()
