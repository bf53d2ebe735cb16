#!/usr/bin/python3
"""Turns a folder of coefficient files by 90° as a script with NumPy and LZ4 does it.

    turn_folder.py SOURCE TARGET

The peer of `trevolt-cli rotate --angle 90`: the eight binary and word kinds, each file whole, in the
layout that the command writes.
"""
import pathlib
import struct
import sys

import lz4.block
import lz4.frame
import numpy as np

# Extension: type and number of a pixel's values.
BINARY_KINDS = {'.9fcoef': ('<f4', 9), '.3fcoef': ('<f4', 3), '.9bcoef': ('u1', 9),
                '.3bcoef': ('u1', 3)}
BINARY_HEADER = struct.Struct('<16sIHH')

# Extension: words of a pixel, compressed sizes that a record lists.
WORD_KINDS = {'.9wcoef': (9, 9), '.3wcoef': (3, 9), '.4wcoef': (4, 12), '.12wcoef': (12, 12)}
WORD_HEADER_BYTES = 168
WORD_HEADER_AREA = struct.Struct('<IIIII')  # origin x and y, width, height, records
WORD_HEADER_AREA_AT = 20
RECORD = struct.Struct('<IIIHHI')  # block, x, y, width, height, bytes; then the planes' sizes
BLOCK_WIDTH, BLOCK_HEIGHT, GRID_COLUMNS = 256, 128, 512


def read_binary(data, value_type, values):
    """Header and pixels of a binary file."""
    header = BINARY_HEADER.unpack_from(data)
    raw = lz4.frame.decompress(memoryview(data)[BINARY_HEADER.size:])
    return header, np.frombuffer(raw, value_type).reshape(header[3], header[2], values)


def write_binary(header, pixels):
    height, width, _ = pixels.shape
    body = lz4.frame.compress(np.ascontiguousarray(pixels), store_size=True,
                              block_size=lz4.frame.BLOCKSIZE_MAX4MB, block_linked=False,
                              content_checksum=True)
    return BINARY_HEADER.pack(*header[:2], width, height) + body


def read_words(data, words, sizes_listed):
    """Header and planes, one a word, of a word file at origin (0, 0) whose chunks fill its area."""
    _, _, width, height, count = WORD_HEADER_AREA.unpack_from(data, WORD_HEADER_AREA_AT)
    planes = np.empty((words, height, width), dtype='<u2')
    record_bytes = RECORD.size + 4 * sizes_listed
    at = WORD_HEADER_BYTES + count * record_bytes
    view = memoryview(data)
    for i in range(count):
        record_at = WORD_HEADER_BYTES + i * record_bytes
        _, x, y, w, h, _ = RECORD.unpack_from(data, record_at)
        sizes = struct.unpack_from(f'<{words}I', data, record_at + RECORD.size)
        for plane, size in zip(planes, sizes):
            raw = lz4.block.decompress(view[at:at + size], uncompressed_size=2 * w * h)
            plane[y:y + h, x:x + w] = np.frombuffer(raw, dtype='<u2').reshape(h, w)
            at += size
    return data[:WORD_HEADER_BYTES], planes


def write_words(header, planes, sizes_listed):
    words, height, width = planes.shape
    records, chunks = [], []
    for x in range(0, width, BLOCK_WIDTH):
        for y in range(0, height, BLOCK_HEIGHT):
            piece = planes[:, y:y + BLOCK_HEIGHT, x:x + BLOCK_WIDTH]
            packed = [lz4.block.compress(np.ascontiguousarray(plane), store_size=False)
                      for plane in piece]
            sizes = [len(plane) for plane in packed]
            block = y // BLOCK_HEIGHT * GRID_COLUMNS + x // BLOCK_WIDTH
            records.append(RECORD.pack(block, x, y, piece.shape[2], piece.shape[1], sum(sizes)))
            records.append(struct.pack(f'<{sizes_listed}I', *sizes, *[0] * (sizes_listed - words)))
            chunks += packed
    turned_header = bytearray(header)
    WORD_HEADER_AREA.pack_into(turned_header, WORD_HEADER_AREA_AT, 0, 0, width, height,
                               len(records) // 2)
    return b''.join([turned_header, *records, *chunks])


def turn(data, extension):
    if extension in BINARY_KINDS:
        header, pixels = read_binary(data, *BINARY_KINDS[extension])
        return write_binary(header, np.rot90(pixels, -1))
    words, sizes_listed = WORD_KINDS[extension]
    header, planes = read_words(data, words, sizes_listed)
    return write_words(header, np.rot90(planes, -1, axes=(1, 2)), sizes_listed)


def main():
    source, target = map(pathlib.Path, sys.argv[1:])
    for path in sorted(source.iterdir()):
        turned = turn(path.read_bytes(), path.suffix)
        (target / f'{path.stem}-90°{path.suffix}').write_bytes(turned)


if __name__ == '__main__':
    main()
