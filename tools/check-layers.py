#!/usr/bin/env python3
"""Checks that no source includes a header of a folder that its own folder's target does not use.

What a folder may include is what its CMakeLists.txt names as trevolt_<folder>. A public header
belongs to the folder that has its source; one without a source may be included by all.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
INCLUDE = re.compile(r'^\s*#\s*include\s+["<]([a-z][a-z0-9]*/[^">]+)[">]', re.MULTILINE)
SYSTEM = ("CLI/", "fmt/", "openssl/", "sanitizer/", "stb/", "sys/", "xxhash/")
FOLDERS = {
    list_file.parent.name: list_file.parent
    for folders in ("*", "app/*", "cli/*")
    for list_file in sorted(ROOT.glob(f"{folders}/CMakeLists.txt"))
    if list_file.parent.name not in ("tests", "bench", "fuzz", "examples")
}
OWNERS = {f"trevolt/{source.stem}.h": name for name, folder in FOLDERS.items()
          for source in folder.glob("*.cpp")}
OWNERS |= {str(header.relative_to(ROOT)): name for name, folder in FOLDERS.items()
           for header in folder.glob("*.h")}


def is_file(path):
    return path.is_file()


def main():
    problems, seen = [], 0
    for name, folder in FOLDERS.items():
        used = set(re.findall(r"\btrevolt_([a-z0-9]+)\b", (folder / "CMakeLists.txt").read_text()))
        public = [ROOT / "include" / header for header, owner in OWNERS.items()
                  if owner == name and header.startswith("trevolt/")]
        for source in sorted([*folder.glob("*.h"), *folder.glob("*.cpp"), *filter(is_file, public)]):
            for header in INCLUDE.findall(source.read_text(encoding="utf-8")):
                if header.startswith(SYSTEM):
                    continue
                seen += 1
                is_public = header.startswith("trevolt/") and is_file(ROOT / "include" / header)
                owner = OWNERS.get(header, name if is_public else "nobody")
                if owner != name and owner not in used:
                    problems.append(f"{source.relative_to(ROOT)} includes {header}, "
                                    f"but {name} does not use {owner}")
    if seen == 0:
        problems.append("no include was found to check")
    print("\n".join(problems) or f"{seen} includes go where they may")
    return 1 if problems else 0


sys.exit(main())
