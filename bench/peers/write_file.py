#!/usr/bin/python3
"""Writes as many bytes to a new file, and prints the seconds that the writing took.

    write_file.py BYTES FILE

From one thread, since a file takes bytes from one at a time, and from memory that was touched.
"""
import os
import sys
import time

PIECE = bytes(bytearray(4 << 20))


def main():
    left = int(sys.argv[1])
    file = os.open(sys.argv[2], os.O_WRONLY | os.O_CREAT | os.O_EXCL)
    start = time.perf_counter()
    while left > 0:
        left -= os.write(file, memoryview(PIECE)[:left])
    print(f'{time.perf_counter() - start:.6f}')


if __name__ == '__main__':
    main()
