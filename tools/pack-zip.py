#!/usr/bin/python3
"""Packs a folder so that the same files give the same bytes.

    pack-zip.py FOLDER ARCHIVE SECONDS

The archive holds FOLDER itself. Its entries are sorted and bear the time SECONDS since 1970.
"""
import datetime
import pathlib
import sys
import zipfile

REGULAR_FILE = 0o100644


def main():
    if len(sys.argv) != 4:
        raise SystemExit(__doc__)
    folder, archive, seconds = pathlib.Path(sys.argv[1]), sys.argv[2], int(sys.argv[3])
    time = datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc).timetuple()[:6]
    files = sorted((path.relative_to(folder.parent).as_posix(), path)
                   for path in folder.rglob('*') if path.is_file())
    with zipfile.ZipFile(archive, 'w') as packed:
        for name, path in files:
            entry = zipfile.ZipInfo(name, time)
            entry.create_system = 3 # which gives the next its meaning
            entry.external_attr = REGULAR_FILE << 16
            packed.writestr(entry, path.read_bytes(), zipfile.ZIP_DEFLATED, 9)


if __name__ == '__main__':
    main()
