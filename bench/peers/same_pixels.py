#!/usr/bin/python3
"""Tells whether the files of two folders, in the order of their names, hold the same pixels.

    same_pixels.py FOLDER FOLDER

Ends with 1 and names the first that do not. Their bytes and names do not matter, so the outputs of two
programs can be compared that compress in their own ways, and files with some that were turned back.
"""
import pathlib
import sys

import numpy as np

import turn_folder


def pixels_of(path):
    data = path.read_bytes()
    if path.suffix in turn_folder.BINARY_KINDS:
        return turn_folder.read_binary(data, *turn_folder.BINARY_KINDS[path.suffix])[1]
    return turn_folder.read_words(data, *turn_folder.WORD_KINDS[path.suffix])[1]


def is_same(one, other):
    # As bytes: a float that is no number equals nothing, not even itself.
    a, b = pixels_of(one), pixels_of(other)
    return (one.suffix == other.suffix and a.shape == b.shape and a.tobytes() == b.tobytes())


def main():
    folders = [sorted(pathlib.Path(folder).iterdir()) for folder in sys.argv[1:]]
    if not folders[0] or len(folders[0]) != len(folders[1]):
        sys.exit(f'{len(folders[0])} files beside {len(folders[1])}')
    for one, other in zip(*folders):
        if not is_same(one, other):
            sys.exit(f'{one.name} and {other.name} hold other pixels')


if __name__ == '__main__':
    main()
