"""The command convert, its files written, read and reckoned by NumPy; cli_test.py runs these."""
import io
import json
import os
import struct

import lz4.block
import lz4.frame
import numpy as np

import cli_support
from cli_support import MAGICS, SAMPLES, CliTest, coef_file, posix_only

WIDTH, HEIGHT = 5, 4
DEFAULT = np.array([1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 0], np.float32)
NINE, DIAGONAL = list(range(9)), [0, 4, 8]
# What a kind stores, as what, and which values of a map these are.
FORMS = {
    '9fcoef': ('f4', NINE),
    '3fcoef': ('f4', DIAGONAL),
    '9bcoef': ('u1', NINE),
    '3bcoef': ('u1', DIAGONAL),
    '9wcoef': ('u2', NINE),
    '3wcoef': ('u2', DIAGONAL),
    '4wcoef': ('u2', [0, 4, 10, 8]),
    '12wcoef': ('u2', [0, 1, 9, 2, 3, 4, 10, 5, 6, 7, 11, 8]),
    'cccoef': ('text', NINE),
}
IDENTIFIERS = {
    '9wcoef': '8FB02E6F95C316408420FBC16614B30A',
    '3wcoef': '7F5D5581305A5849B7659E3D63B728E8',
    '4wcoef': '787D75E8A079D047AF6680F61B2FB479',
    '12wcoef': 'B652F1DF3F8A684CA538B724DACB6BF4',
}
LISTED_PLANES = {'9wcoef': 9, '3wcoef': 9, '4wcoef': 12, '12wcoef': 12}
LARGEST = {'u1': 255, 'u2': 65535}


def scaled(values, largest):
    """Rounded half away from zero, in float32, as float64."""
    with np.errstate(all='ignore'):
        product = (values * np.float32(largest)).astype(np.float64)
    return np.where(np.isfinite(product), np.trunc(product + np.copysign(0.5, product)), product)


def stored(kind, pixels):
    """What a file of the kind stores of a map; of text the values as they are."""
    item, places = FORMS[kind]
    values = pixels[..., places]
    if item not in LARGEST:
        return values
    wide = scaled(values, LARGEST[item])
    wide = np.where(np.abs(wide) < 2.0 ** 63, wide, 0)
    return np.mod(wide, LARGEST[item] + 1).astype(item)


def loaded(kind, values):
    """The map of what a file stores."""
    item, places = FORMS[kind]
    pixels = np.tile(DEFAULT, values.shape[:2] + (1,))
    pixels[..., places] = (values.astype(np.float32) / np.float32(LARGEST[item])
                           if item in LARGEST else values)
    return pixels


def word_file(kind, words):
    """A word file of one chunk."""
    height, width, count = words.shape
    planes = [lz4.block.compress(words[..., k].astype('<u2').tobytes(), store_size=False)
              for k in range(count)]
    sizes = [len(plane) for plane in planes] + [0] * (LISTED_PLANES[kind] - count)
    header = bytearray(168)
    header[:16] = bytes.fromhex(IDENTIFIERS[kind])
    header[16:40] = struct.pack('<6I', 1, 0, 0, width, height, 1)
    header[67] = 2 if kind in ('4wcoef', '12wcoef') else 0
    record = struct.pack('<IIIHHI', 0, 0, 0, width, height, sum(sizes))
    return bytes(header) + record + struct.pack(f'<{len(sizes)}I', *sizes) + b''.join(planes)


def word_values(kind, content):
    """The words of a file of one chunk."""
    assert content[:16] == bytes.fromhex(IDENTIFIERS[kind])
    assert content[67] == (2 if kind in ('4wcoef', '12wcoef') else 0)
    version, _, _, width, height, count = struct.unpack_from('<6I', content, 16)
    assert (version, count) == (1, 1)
    sizes = struct.unpack_from(f'<{LISTED_PLANES[kind]}I', content, 188)
    at, planes = 188 + 4 * len(sizes), []
    for size in sizes[:len(FORMS[kind][1])]:
        plane = lz4.block.decompress(content[at:at + size], uncompressed_size=width * height * 2)
        planes.append(np.frombuffer(plane, '<u2').reshape(height, width))
        at += size
    assert at == len(content)
    return np.stack(planes, axis=-1)


def text_file(pixels):
    lines = ['[T9COEF20]', f'width={pixels.shape[1]}', f'height={pixels.shape[0]}']
    for y, row in enumerate(pixels):
        for x, pixel in enumerate(row):
            if pixel.tobytes() != DEFAULT.tobytes():
                lines.append(', '.join([f'{x:5}', f'{y:5}',
                                        *(f'{float(value):.5f}' for value in pixel[:9])]))
    return ('\n'.join(lines) + '\n').encode()


def file_of(kind, pixels):
    values = stored(kind, pixels)
    if kind == 'cccoef':
        return text_file(pixels)
    if kind in IDENTIFIERS:
        return word_file(kind, values)
    return coef_file('.' + kind, pixels.shape[1], pixels.shape[0], values.tobytes())


def cleaned(values):
    """What the reader of a text makes of its values."""
    values = values.copy()
    with np.errstate(all='ignore'):
        values[values < np.float32(1e-5)] = 0
        values[values > np.float32(1.00001)] = 1
        for column in range(3):
            entries = values[..., column::3]
            total = entries[..., 0] + entries[..., 1] + entries[..., 2]
            over = total > np.float32(1.00001)
            entries[over] = entries[over] / total[over][:, None]
    return values


def differs(a, b):
    return (a != b) & ~(np.isnan(a) & np.isnan(b))


def lost(kind, pixels):
    """What the command is to count."""
    item, places = FORMS[kind]
    others = [k for k in range(12) if k not in places]
    diagonal, beside = [k for k in others if k < 9], [k for k in others if k >= 9]
    result = {'off_diagonal_pixels': (pixels[..., diagonal] != DEFAULT[diagonal]).any(-1).sum(),
              'beside_matrix_pixels': (pixels[..., beside] != DEFAULT[beside]).any(-1).sum(),
              'wrapped_values': 0, 'zeroed_values': 0, 'cleaned_values': 0, 'rounded_values': 0}
    values = pixels[..., places]
    if item in LARGEST:
        wide = scaled(values, LARGEST[item])
        isnt = ~(np.abs(wide) < 2.0 ** 63)
        out = ~isnt & ((wide < 0) | (wide > LARGEST[item]))
        back = loaded(kind, stored(kind, pixels))[..., places]
        result |= {'zeroed_values': isnt.sum(), 'wrapped_values': out.sum(),
                   'rounded_values': (~isnt & ~out & (back != values)).sum()}
    if item == 'text':
        lines = [pixel for pixel in pixels.reshape(-1, 12) if pixel.tobytes() != DEFAULT.tobytes()]
        given = np.array(lines)[:, :9]
        written = np.array([[np.float32(f'{float(value):.5f}') for value in line]
                            for line in given])
        is_cleaned = differs(cleaned(written), written)
        result |= {'cleaned_values': is_cleaned.sum(),
                   'rounded_values': (~is_cleaned & differs(written, given)).sum()}
    return {key: int(value) for key, value in result.items()}


def npy_bytes(array, version=None):
    stream = io.BytesIO()
    np.lib.format.write_array(stream, array, version=version)
    return stream.getvalue()


def clean_pixels():
    """A map that every kind but those of bytes and words holds of its own values."""
    random = np.random.default_rng(7)
    pixels = np.tile(DEFAULT, (HEIGHT, WIDTH, 1))
    steps = random.integers(100, 33000, (HEIGHT, WIDTH, 9))
    pixels[..., :9] = np.array([np.float32(f'{k / 1e5:.5f}') for k in steps.flat]).reshape(steps.shape)
    pixels[1, 2] = DEFAULT
    return pixels


def wild_pixels():
    pixels = clean_pixels()
    odd = [-0.2, 1.5, 1.00001, 1.002, 65536, np.nan, np.inf, -np.inf, 1e30, -1e-9, 0.999999, 0.3333333,
           1e-6, -0.0, 2.5 / 65535, 0.5 / 255, 1.40001]
    for k, value in enumerate(odd):
        pixels[k % HEIGHT, k % WIDTH, (3 * k) % 12] = value
    pixels[0, 4, 9:] = [0.25, 0.5, 0.75]
    pixels[3, 0, 11] = 0.5
    return pixels


def native_only(test):
    """The same on every system; a wrapper takes long to start."""
    def run(self, *args):
        if cli_support.IS_WRAPPED:
            self.skipTest('the same on every system')
        test(self, *args)
    run.__name__ = test.__name__
    return run


class Convert(CliTest):
    def convert(self, *arguments, **options):
        return self.run_cli('convert', '--no-sync', *arguments, **options)

    def objects(self, result):
        return [json.loads(line) for line in self.lines(result.stdout)]

    def expect_file(self, path, kind, pixels):
        """A file of the kind that holds what it can of the map."""
        content = path.read_bytes()
        if kind in IDENTIFIERS:
            np.testing.assert_array_equal(word_values(kind, content), stored(kind, pixels))
        elif kind == 'cccoef':
            self.assertEqual(content, text_file(pixels))
        else:
            self.assertEqual(content[:24], MAGICS['.' + kind] +
                             struct.pack('<IHH', 1, pixels.shape[1], pixels.shape[0]))
            self.assertEqual(lz4.frame.decompress(content[24:]), stored(kind, pixels).tobytes())

    def add_kinds(self):
        """A file of every kind; the map of each."""
        maps = {}
        for kind in FORMS:
            (self.source / f'from_{kind}.{kind}').write_bytes(file_of(kind, clean_pixels()))
            maps[kind] = loaded(kind, stored(kind, clean_pixels()))
        return maps

    def test_every_kind_becomes_every_kind(self):
        maps = self.add_kinds()
        targets = ['12wcoef', 'cccoef'] if cli_support.IS_WRAPPED else list(FORMS)
        for to in targets:
            folder = self.target / to
            result = self.convert('--to', to, '--json', self.source, folder)
            self.expect(result, 0, err=[])
            *files, summary = self.objects(result)
            self.assertEqual(summary, {'type': 'summary', 'version': 1, 'end': 'done',
                                       'exit_status': 0, 'written': 9, 'failed': 0, 'errors': []})
            told = {file['name'].split('.')[1]: file for file in files}
            self.assertEqual(set(told), set(FORMS))
            for kind, pixels in maps.items():
                with self.subTest(source=kind, target=to):
                    self.expect_file(folder / f'from_{kind}.{to}', to, pixels)
                    self.assertEqual(told[kind]['lost'], lost(to, pixels))
                    self.assertEqual(told[kind]['own_size'], {'width': WIDTH, 'height': HEIGHT})
                    self.assertIsNone(told[kind]['array'])

    def test_every_kind_becomes_an_array_of_the_map(self):
        maps = self.add_kinds()
        result = self.convert('--to', 'npy', '--json', self.source, self.target)
        self.expect(result, 0, err=[])
        for file in self.objects(result)[:-1]:
            self.assertEqual(file['array'], {'element': 'float32', 'shape': [HEIGHT, WIDTH, 12]})
            self.assertEqual((file['losses'], file['notes']), ([], []))
        for kind, pixels in maps.items():
            path = self.target / f'from_{kind}.npy'
            array = np.load(path, allow_pickle=False)
            self.assertEqual((array.dtype, array.flags.c_contiguous), (np.dtype('<f4'), True))
            np.testing.assert_array_equal(array.view('u4'), pixels.view('u4'), kind)
            self.assertEqual(path.read_bytes(), npy_bytes(pixels))

    def test_own_elements(self):
        self.add_kinds()
        self.expect(self.convert('--own', '--to', '.NPY', self.source, self.target), 0, err=[])
        for kind, (item, places) in FORMS.items():
            wanted = stored(kind, clean_pixels())
            array = np.load(self.target / f'from_{kind}.npy')
            self.assertEqual(array.dtype, np.dtype(item if item in LARGEST else 'f4'))
            self.assertEqual(array.shape, (HEIGHT, WIDTH, len(places)))
            np.testing.assert_array_equal(array, wanted)
        # ... and back: the same file, but for how LZ4 packs it.
        for kind in ('4wcoef',) if cli_support.IS_WRAPPED else FORMS:
            back = self.folder / f'back.{kind}'
            self.expect(self.convert(self.target / f'from_{kind}.npy', back), 0, err=[])
            self.expect_file(back, kind, clean_pixels())

    def test_arrays_of_numpy_become_every_kind_and_what_is_lost_is_counted(self):
        pixels = wild_pixels()
        np.save(self.source / 'wild.npy', pixels)
        for to in ['9wcoef', 'cccoef'] if cli_support.IS_WRAPPED else FORMS:
            result = self.convert('--json', self.source / 'wild.npy', self.target / f'wild.{to}')
            self.expect(result, 0, err=[])
            file = self.objects(result)[0]
            with self.subTest(target=to):
                self.expect_file(self.target / f'wild.{to}', to, pixels)
                self.assertEqual(file['lost'], lost(to, pixels))
                self.assertEqual(len(file['losses']), sum(map(bool, file['lost'].values())))
                self.assertEqual(file['default_pixels'], 1 if to == 'cccoef' else 0)

    def test_matrices_and_diagonals_stand_on_defaults(self):
        pixels = clean_pixels()
        np.save(self.source / 'nine.npy', pixels[..., :9])
        (self.source / 'three.npy').write_bytes(npy_bytes(np.array(pixels[..., [0, 4, 8]]), (2, 0)))
        self.expect(self.convert('--to', 'npy', self.source, self.target), 2)  # arrays are arrays
        self.expect(self.convert('--to', '12wcoef', self.source, self.target), 0, err=[])
        self.expect_file(self.target / 'nine.12wcoef', '12wcoef', pixels)
        self.expect_file(self.target / 'three.12wcoef', '12wcoef',
                         loaded('3fcoef', stored('3fcoef', pixels)))
        self.expect(self.convert(self.source / 'three.npy', self.target / 'map.npy'), 0, err=[])
        np.testing.assert_array_equal(np.load(self.target / 'map.npy'),
                                      loaded('3fcoef', stored('3fcoef', pixels)))

    @native_only
    def test_words_and_bytes_go_to_their_own_kind(self):
        for kind, other in (('9wcoef', '9bcoef'), ('4wcoef', '12wcoef'), ('9bcoef', '9fcoef')):
            array = stored(kind, clean_pixels())
            source = self.source / f'{kind}.npy'
            np.save(source, array)
            name = {'u1': 'uint8', 'u2': 'uint16'}[FORMS[kind][0]]
            self.expect(self.convert(source, self.target / f'a.{other}'), 1,
                        ['0 files converted, 1 failed'],
                        [f'{source}: its {array.shape[2]} {name} a pixel are those of .{kind}: '
                         'convert it to that kind first, or save values from 0 to 1 as '
                         'numpy.float32'])
        self.assertEqual(self.targets(), [])

    def test_arrays_that_are_no_maps_are_refused(self):
        floats = np.zeros((HEIGHT, WIDTH, 12), np.float32)
        whole = npy_bytes(floats)
        hostile = {
            'doubles': npy_bytes(floats.astype('f8')),
            'big-endian': npy_bytes(floats.astype('>f4')),
            'fortran': npy_bytes(np.asfortranarray(floats)),
            'flat': npy_bytes(floats[..., 0].copy()),
            'no-pixels': npy_bytes(floats[:0]),
            'objects': npy_bytes(np.array([[[{}] * 12]], object)),
            'records': npy_bytes(np.zeros((1, 1, 1), [('a', '<f4')])),
            'too-wide': npy_bytes(np.zeros((1, 65536, 3), np.uint8)),
            'cut': whole[:-1],
            'longer': whole + b'x',
            'lying': whole.replace(b'(4, 5, 12), }  ', b'(65535,65535,12)}'[:15]),
            'archive': b'PK\x03\x04' + whole,
            'nothing': b'',
        }
        words = {
            'doubles': "its values are of type '<f8': save them as numpy.float32 ('<f4')",
            'big-endian': "its values are of type '>f4'",
            'fortran': 'its values are in Fortran order: save what numpy.ascontiguousarray makes',
            'flat': "its shape is (4, 5): a map's is (height, width, values)",
            'no-pixels': 'its shape is (0, 5, 12): height and width are 1 to 65535',
            'objects': "its values are of type '|O'",
            'records': 'its header does not tell of one array of plain numbers',
            'too-wide': 'its shape is (1, 65536, 3): height and width are 1 to 65535',
            'cut': 'it is cut short: 959 of the 960 bytes of its values are there',
            'longer': '1 byte stands behind its values',
            'lying': 'its header does not tell of one array of plain numbers',
            'archive': 'it does not begin as a .npy file does',
            'nothing': 'it does not begin as a .npy file does',
        }
        for name, content in hostile.items():
            (self.source / f'{name}.npy').write_bytes(content)
        result = self.convert('--to', '9fcoef', self.source, self.target)
        self.expect(result, 1, ['0 files converted, 13 failed'])
        told = dict(line.split(': ', 1) for line in self.lines(result.stderr))
        for name, text in words.items():
            self.assertTrue(told[f'{name}.npy'].startswith('cannot be read: ' + text),
                            told[f'{name}.npy'])
        self.assertEqual(self.targets(), [])

    def test_damaged_files_are_named_and_the_others_go_on(self):
        result = self.convert('--to', 'npy', SAMPLES / 'awkward', self.target)
        self.expect(result, 1)
        # What stands beside a file has its name, too, and is none.
        self.assertEqual({line.split(':')[0] for line in self.lines(result.stderr)},
                         {'cut_short.9fcoef', 'version_2.9fcoef', 'blocks_reversed.9wcoef.csv',
                          'origin_1000_777.9wcoef.csv'})
        self.assertEqual(self.targets(),
                         ['blocks_reversed.npy', 'crlf.npy', 'origin_1000_777.npy'])
        self.assertIn('origin_1000_777.9wcoef: the converted file lacks its origin (1000, 777)',
                      self.lines(result.stdout))

    @native_only
    def test_lines_for_people(self):
        pixels = np.tile(DEFAULT, (1, 2, 1))
        pixels[0, 1, :3] = [1.5, 0.5, np.nan]
        np.save(self.source / 'a.npy', pixels)
        source, target = self.source / 'a.npy', self.target / 'a.3bcoef'
        self.expect(self.convert(source, target), 0,
                    [f'{source} -> {target}  (2 x 1)',
                     f'{source}: 1 pixel has entries off the diagonal, which .3bcoef does not hold',
                     f'{source}: 1 value is out of the range 0 to 1 and wrapped: the low 8 bits of '
                     'value x 255 stand there',
                     '1 file converted, 0 failed'], [])
        target = self.target / 'a.9wcoef'
        self.expect(self.convert(source, target), 0,
                    [f'{source} -> {target}  (2 x 1)',
                     f'{source}: 1 value is no number or beyond all integers and became 0',
                     f'{source}: 1 value is out of the range 0 to 1 and wrapped: the low 16 bits of '
                     'value x 65535 stand there',
                     f'{source}: 1 value is rounded to whole 65535ths',
                     '1 file converted, 0 failed'], [])
        self.expect(self.convert(target, self.target / 'b.12wcoef'), 0,
                    [f'{target} -> {self.target}/b.12wcoef  (2 x 1)',
                     f'{target}: it holds no values beside the matrix: those of .12wcoef are the '
                     'default 0, 1, 0', '1 file converted, 0 failed'], [])
        self.expect(self.convert('--own', target, self.target / 'b.npy'), 0,
                    [f'{target} -> {self.target}/b.npy  (2 x 1, uint16 of (1, 2, 9))',
                     '1 file converted, 0 failed'], [])
        target = self.target / 'a.cccoef'
        self.expect(self.convert(source, target), 0,
                    [f'{source} -> {target}  (2 x 1)',
                     f'{source}: 3 values are changed when the text is read, which takes values from '
                     '0 to 1 and columns whose sum is 1 at most',
                     f'{source}: 1 pixel is the default and has no line in the text',
                     '1 file converted, 0 failed'], [])

    def test_what_stands_stays_unless_it_is_to_be_replaced(self):
        np.save(self.source / 'a.npy', clean_pixels())
        source, target = self.source / 'a.npy', self.target / 'a.9fcoef'
        target.write_bytes(b'earlier')
        told = 'its output a.9fcoef exists already: overwrite it, or choose another target'
        self.expect(self.convert(source, target), 1, ['0 files converted, 1 failed'],
                    [f'{source}: its output {target} exists already: overwrite it, or choose another '
                     'target'])
        self.expect(self.convert('--to', '9fcoef', source, self.target), 1,
                    ['0 files converted, 1 failed'], [f'a.npy: {told}'])
        self.assertEqual(target.read_bytes(), b'earlier')
        self.expect(self.convert('--overwrite', source, target), 0, err=[])
        self.expect_file(target, '9fcoef', clean_pixels())
        target.write_bytes(b'earlier')
        self.expect(self.convert('--overwrite', '--to', '9fcoef', source, self.target), 0, err=[])
        self.expect_file(target, '9fcoef', clean_pixels())
        # Never the source itself.
        self.expect(self.convert('--overwrite', target, target), 1)
        self.expect(self.convert('--overwrite', '--to', '9fcoef', target, self.target), 2, [],
                    [f'trevolt-cli: the output a.9fcoef of {target} is one of the sources: choose another target'])
        self.expect_file(target, '9fcoef', clean_pixels())
        self.assertEqual(self.targets(), ['a.9fcoef'])

    def test_folders_in_folders(self):
        (self.source / 'row').mkdir()
        for name in ('a.9FCOEF', 'row/b.9fcoef.old', 'row/c.npy', 'notes.txt'):
            path = self.source / name
            path.write_bytes(npy_bytes(clean_pixels()) if name.endswith('npy')
                             else file_of('9fcoef', clean_pixels()))
        rounded = lost('9wcoef', clean_pixels())['rounded_values']
        self.expect(self.convert('--to', '9wcoef', '-r', self.source, self.target / 'new'), 0,
                    [line for name, to in (('a.9FCOEF', 'a.9wcoef'),
                                           ('row/b.9fcoef.old', 'row/b.9wcoef.old'),
                                           ('row/c.npy', 'row/c.9wcoef')) for line in (
                        f'{name} -> {to}  (5 x 4)',
                        f'{name}: {rounded} values are rounded to whole 65535ths')] +
                    ['3 files converted, 0 failed'], [])
        self.expect_file(self.target / 'new' / 'row' / 'c.9wcoef', '9wcoef', clean_pixels())

    @native_only
    def test_names_that_mislead_are_refused(self):
        source = self.source / 'a.3wcoef'
        source.write_bytes(file_of('3wcoef', clean_pixels()))
        told = ('trevolt-cli: the name {} does not tell which kind of file it is to be: end it in '
                '.npy or in the extension of one kind')
        both = self.target / 'a.3wcoef.12wcoef'  # read as the first, written as the second
        for name in (self.target / 'a.txt', both):
            self.expect(self.convert(source, name), 2, [], [told.format(name)])
        self.expect(self.convert(self.source / 'b.txt', self.target / 'a.npy'), 2, [],
                    [f'trevolt-cli: the source {self.source / "b.txt"} does not exist: check its path'])
        double = self.source / 'a.3wcoef.3bcoef'
        double.write_bytes(source.read_bytes())
        self.expect(self.convert('--to', '12wcoef', double, self.target), 2, [],
                    [f'trevolt-cli: {double} would become a.12wcoef.3bcoef, which tells another '
                     'kind: rename it'])
        array = self.source / 'a.npy'
        np.save(array, clean_pixels())
        self.expect(self.convert('--to', '9wcoef', source, array, self.target), 2, [],
                    [f'trevolt-cli: {source} and {array} would both become a.9wcoef: give each a target of its own'])
        self.assertEqual(self.targets(), [])

    @native_only
    def test_no_array_is_named_as_a_coefficient_file(self):
        content = file_of('3wcoef', clean_pixels())
        names = {'a.3wcoef.3bcoef': 'a.npy', 'b.3Wcoef.3wcoef.old': 'b.old.npy',
                 'c.3w.3wcoefcoef': 'c.npy'}
        for name in names:
            (self.source / name).write_bytes(content)
        self.expect(self.convert('--to', 'npy', self.source, self.target), 0, err=[])
        self.assertEqual(self.targets(), sorted(names.values()))
        self.expect(self.run_cli('rotate', '-a', 90, self.target, self.folder / 'new'), 2, [],
                    [f'trevolt-cli: there is no coefficient file in {self.target}: give a folder '
                     'that holds some'])
        (self.source / 'a.3wcoef').write_bytes(content)
        self.expect(self.convert('--to', 'npy', self.source, self.target), 2, [],
                    [f'trevolt-cli: {self.source}/a.3wcoef and {self.source}/a.3wcoef.3bcoef would both '
                     'become a.npy: give each a target of its own'])

    @posix_only
    def test_a_refused_folder_leaves_none_of_the_others(self):
        for folder in 'ab':
            (self.source / folder).mkdir()
            (self.source / folder / 'x.9bcoef').write_bytes(file_of('9bcoef', clean_pixels()))
        (self.target / 'b').symlink_to('nowhere')
        self.expect(self.convert('-r', '--to', 'npy', self.source, self.target), 2, [],
                    [f'trevolt-cli: the target folder {self.target}/b/ cannot be made, written to or '
                     'synced: No such file or directory: choose another'])
        self.assertEqual(self.targets(), ['b'])

    @posix_only
    def test_a_pipe_in_an_outputs_place_stays(self):
        (self.source / 'x.9bcoef').write_bytes(file_of('9bcoef', clean_pixels()))
        os.mkfifo(self.target / 'x.npy')
        self.expect(self.convert('--overwrite', '--to', 'npy', self.source, self.target), 1, None,
                    ['x.9bcoef: its output x.npy is neither a file nor a folder: choose another '
                     'target'])
        self.assertTrue((self.target / 'x.npy').is_fifo())

    @native_only
    def test_wrong_usage(self):
        self.add_kinds()
        one = self.source / 'from_9wcoef.9wcoef'
        several = ('trevolt-cli: one file becomes another; for several, for a folder of them and '
                   'into a folder, give the kind of the outputs with --to')
        for places in ((self.source, self.target / 'a.npy'), (one, self.target),
                       (one, self.source / 'from_3wcoef.3wcoef', self.target / 'a.npy')):
            self.expect(self.convert(*places), 2, [], [several])
        self.expect(self.convert('--own', one, self.target / 'a.9wcoef'), 2, [],
                    ['trevolt-cli: own elements are for .npy files alone: a kind has its own always'])
        self.expect(self.convert('--own', '--to', '9wcoef', one, self.target), 2, [],
                    ['trevolt-cli: own elements are for .npy files alone: a kind has its own always'])
        result = self.convert('--to', '9xcoef', one, self.target)
        self.expect_words(result, 2, '"9xcoef" is no kind: give one of its nine extensions, or npy')
        result = self.convert('--json', self.source, self.target / 'a.npy')
        self.expect(result, 2, err=[])
        self.assertEqual(self.objects(result)[0]['exit_status'], 2)
        self.assertEqual(self.targets(), [])
