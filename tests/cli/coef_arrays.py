"""Coefficient files as NumPy arrays, decoded here by another LZ4 front end and by no code of the
program."""
import hashlib
import struct

import lz4.block
import lz4.frame
import numpy as np

DEFAULT = np.array([1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 0], np.float32)
# What a kind stores: NumPy's type, and the map's value behind each stored one.
BINARY = {'.9fcoef': ('<f4', range(9)), '.3fcoef': ('<f4', (0, 4, 8)),
          '.9bcoef': ('u1', range(9)), '.3bcoef': ('u1', (0, 4, 8))}
WORDS = {'.9wcoef': (9, range(9)), '.3wcoef': (9, (0, 4, 8)), '.4wcoef': (12, (0, 4, 10, 8)),
         '.12wcoef': (12, (0, 1, 9, 2, 3, 4, 10, 5, 6, 7, 11, 8))}  # with the record's sizes
BLOCK = (256, 128)
VALUE_NAMES = [*(f'm{row}{column}' for row in range(3) for column in range(3)), 'g0', 'g1', 'g2']


def kind_of(path):
    return next(kind for kind in (*BINARY, *WORDS, '.cccoef') if kind in path.name.lower())


def values_of(kind):
    """The map's values that the kind stores, in the map's order."""
    return sorted({**BINARY, **WORDS, '.cccoef': (0, range(9))}[kind][1])


def raw_bytes(kind):
    if kind in BINARY:
        return np.dtype(BINARY[kind][0]).itemsize * len(BINARY[kind][1])
    return 2 * len(WORDS[kind][1]) if kind in WORDS else None


def read_binary(content, kind):
    width, height = struct.unpack('<HH', content[20:24])
    kept, values = BINARY[kind]
    stored = np.frombuffer(lz4.frame.decompress(content[24:]), kept)
    return stored.reshape(height, width, len(values)) / np.float32(1 if kept == '<f4' else 255)


def read_words(content, kind):
    """The words, and the header's origin and number of records."""
    sizes, values = WORDS[kind]
    x, y, width, height, records = struct.unpack('<5I', content[20:40])
    record_bytes = 20 + 4 * sizes
    words = np.zeros((height, width, len(values)), np.uint16)
    at = 168 + records * record_bytes
    for i in range(records):
        record = content[168 + i * record_bytes:][:record_bytes]
        _, left, top, columns, rows, total = struct.unpack('<IIIHHI', record[:20])
        planes = struct.unpack(f'<{sizes}I', record[20:])
        place = at
        for k in range(len(values)):
            plane = lz4.block.decompress(content[place:place + planes[k]],
                                         uncompressed_size=2 * columns * rows)
            words[top - y:top - y + rows, left - x:left - x + columns, k] = \
                np.frombuffer(plane, '<u2').reshape(rows, columns)
            place += planes[k]
        at += total
    return words, (x, y), records


def read_text(content):
    lines = content.decode().splitlines()
    width, height = (int(line.split('=')[1]) for line in lines[1:3])
    values = np.tile(DEFAULT[:9], (height, width, 1))
    for line in lines[3:]:
        fields = line.split(',')
        values[int(fields[1]), int(fields[0])] = [np.float32(field) for field in fields[2:]]
    return values


def read_map(path):
    """Height × width × 12 floats: what the kind does not store is 0 beside the matrix's diagonal, and
    the default behind the matrix."""
    kind, content = kind_of(path), path.read_bytes()
    if kind in BINARY:
        stored = read_binary(content, kind)
    elif kind in WORDS:
        stored = read_words(content, kind)[0] / np.float32(65535)
    else:
        stored = read_text(content)
    places = {**BINARY, **WORDS, '.cccoef': (0, range(9))}[kind][1]
    values = np.tile(DEFAULT, (*stored.shape[:2], 1))
    values[..., [k for k in range(9) if k not in places]] = 0
    if kind == '.4wcoef':
        values[..., [9, 11]] = 0
    values[..., list(places)] = stored
    return values


def store_digest(path):
    """The MD5 of whole blocks, row by row of them, defaults where the file ends."""
    kind = kind_of(path)
    words = read_words(path.read_bytes(), kind)[0]
    default = (DEFAULT[list(WORDS[kind][1])] * 65535).astype('<u2')
    digest = hashlib.md5()
    for top in range(0, words.shape[0], BLOCK[1]):
        for left in range(0, words.shape[1], BLOCK[0]):
            block = np.tile(default, (BLOCK[1], BLOCK[0], 1))
            piece = words[top:top + BLOCK[1], left:left + BLOCK[0]]
            block[:piece.shape[0], :piece.shape[1]] = piece
            digest.update(block.astype('<u2').tobytes())
    return digest.hexdigest().upper()


def default_pixels(values, kind):
    places = values_of(kind)
    return int((values[..., places] == DEFAULT[places]).all(axis=2).sum())
