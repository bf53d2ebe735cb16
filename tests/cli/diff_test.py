"""The command diff, held against differences that NumPy makes of the files; cli_test.py runs these."""
import json
import os
import shutil
import struct
import subprocess

import numpy as np

import coef_arrays
from cli_support import ANGLES, PROGRAM, SAMPLES, CliTest, coef_file, posix_only
from preview_test import ABOVE, LEFT, TOP, Picture

CABINET = SAMPLES / 'cabinet'
KEYS = ['type', 'a', 'b', 'status', 'angle', 'tolerance', 'size_a', 'size_b', 'pixels',
        'different_pixels', 'values', 'problems', 'notes']


class Diff(CliTest):
    def diff(self, *arguments, status):
        """The objects of pairs."""
        result = self.run_cli('diff', '--json', *arguments)
        self.expect(result, status, err=[])
        objects = [json.loads(line) for line in self.lines(result.stdout)]
        for pair in objects[:-1]:
            self.assertEqual(list(pair), KEYS)
        summary = objects.pop()
        count = lambda *states: sum(pair['status'] in states for pair in objects)
        self.assertEqual(summary, {'type': 'summary', 'version': 1,
                                   'end': 'failed' if status == 2 else 'done',
                                   'exit_status': status, 'same': count('same'),
                                   'different': count('different'),
                                   'on_one_side': count('only_a', 'only_b'),
                                   'failed': count('failed'), 'errors': []})
        return objects

    def add_floats(self, name, values):
        path = self.source / name
        height, width, _ = values.shape
        path.write_bytes(coef_file('.9fcoef', width, height, values.astype('<f4').tobytes()))
        return path

    def check_values(self, pair, a, b, places, tolerance=0.0):
        """Against arrays without NaN."""
        apart = np.abs(a.astype(np.float64) - b.astype(np.float64))[..., places]
        self.assertEqual(pair['pixels'], a.shape[0] * a.shape[1])
        self.assertEqual(pair['different_pixels'], int((apart > tolerance).any(axis=2).sum()))
        self.assertEqual([value['value'] for value in pair['values']], [coef_arrays.VALUE_NAMES[k] for k in places])
        for i, value in enumerate(pair['values']):
            plane = apart[..., i]
            self.assertEqual(value['different_pixels'], int((plane > tolerance).sum()))
            self.assertEqual((value['one_nan_pixels'], value['maximum']), (0, plane.max()))
            self.assertLess(abs(value['mean'] - plane.mean()), 1e-12)
            y, x = np.unravel_index(plane.argmax(), plane.shape)
            at = {'x': int(x), 'y': int(y)} if plane.max() > 0 else None
            self.assertEqual(value['maximum_at'], at)

    def cabinets(self):
        return sorted(p for p in CABINET.iterdir() if p.suffix != '.csv')

    def test_every_kind_with_itself_and_with_floats(self):
        floats = coef_arrays.read_map(CABINET / 'Cab_01.9fcoef')
        for path in self.cabinets():
            same, = self.diff(path, path, status=0)
            self.assertEqual((same['status'], same['different_pixels']), ('same', 0))
            if path.name == 'Cab_01.9fcoef':
                continue
            pair, = self.diff(CABINET / 'Cab_01.9fcoef', path, status=1)
            self.assertEqual(pair['size_a'], {'width': 40, 'height': 24})
            self.check_values(pair, floats, coef_arrays.read_map(path), list(range(9)))
            kind = coef_arrays.kind_of(path)
            notes = []
            if kind in ('.3fcoef', '.3bcoef', '.3wcoef', '.4wcoef'):
                notes.append(f'{path}: has the diagonal of the matrix only: its other values count as 0')
            if kind in ('.4wcoef', '.12wcoef'):
                notes.append(f'{CABINET / "Cab_01.9fcoef"}: has no virtual green: g0 to g2 of the '
                             'other are not compared')
            self.assertEqual(sorted(pair['notes']), sorted(notes))

    def test_virtual_green_is_compared_where_both_have_it(self):
        a, b = CABINET / 'Cab_08.4wcoef', CABINET / 'Cab_09.12wcoef'
        pair, = self.diff(a, b, status=1)
        self.check_values(pair, coef_arrays.read_map(a), coef_arrays.read_map(b), list(range(12)))
        a, b = CABINET / 'Cab_02.3fcoef', CABINET / 'Cab_04.3bcoef'
        pair, = self.diff(a, b, status=1)
        self.check_values(pair, coef_arrays.read_map(a), coef_arrays.read_map(b), [0, 4, 8])

    def test_tolerance(self):
        a = np.tile(coef_arrays.DEFAULT[:9], (5, 8, 1))
        b = a.copy()
        b[2, 3, 4] = 0.75
        b[4, 7, 1] = 0.125
        first, second = self.add_floats('a.9fcoef', a), self.add_floats('b.9fcoef', b)
        for tolerance, status in (('0', 1), ('0.125', 1), ('0.2499', 1), ('0.25', 0), ('1e3', 0)):
            pair, = self.diff('--tolerance', tolerance, first, second, status=status)
            self.assertEqual(pair['tolerance'], float(tolerance))
            self.check_values(pair, a, b, list(range(9)), float(tolerance))
        self.expect(self.run_cli('diff', '--tolerance', '0.25', 'a.9fcoef', 'b.9fcoef',
                                 cwd=self.source), 0,
                    ['a.9fcoef and b.9fcoef are the same within 0.25: 40 pixels'], [])
        result = self.run_cli('diff', '--tolerance', '0.2', 'a.9fcoef', 'b.9fcoef', cwd=self.source)
        self.expect(result, 1, err=[])
        lines = self.lines(result.stdout)
        self.assertEqual(lines[0], 'a.9fcoef and b.9fcoef differ: 1 of 40 pixels by more than 0.2')
        self.assertEqual(lines[6].split(), ['m11', '1', '0.00625', '0.25', '(3,', '2)', '0'])
        self.assertLessEqual(max(map(len, lines)), 80)
        for wrong in ('x', '-1', 'nan', 'inf', '', '1x'):
            self.expect(self.run_cli('diff', f'--tolerance={wrong}', first, second), 2)

    def test_what_is_no_number(self):
        a = np.tile(coef_arrays.DEFAULT[:9], (2, 3, 1))
        a[0, 0, 0] = np.nan
        b = a.copy()
        first = self.add_floats('a.9fcoef', a)
        self.diff(first, self.add_floats('b.9fcoef', b), status=0)
        b[1, 2, 0] = np.nan
        b[0, 1, 4] = np.inf
        pair, = self.diff('--tolerance', 5, first, self.add_floats('c.9fcoef', b), status=1)
        self.assertEqual(pair['different_pixels'], 2)
        self.assertEqual((pair['values'][0]['one_nan_pixels'], pair['values'][0]['different_pixels']), (1, 1))
        self.assertEqual((pair['values'][0]['maximum'], pair['values'][0]['maximum_at']), (0, None))
        self.assertEqual((pair['values'][4]['maximum'], pair['values'][4]['mean']), (None, None))
        self.assertEqual(pair['values'][4]['maximum_at'], {'x': 1, 'y': 0})

    def test_turns_of_every_kind(self):
        shutil.copytree(CABINET, self.source, dirs_exist_ok=True, ignore=lambda _, names: [
            name for name in names if name.endswith('.csv')])
        for angle in ANGLES:
            turned = SAMPLES / f'turned-{angle}'
            pairs = self.diff('--turned', angle, self.source, turned, status=0)
            self.assertEqual(len(pairs), 9)
            for pair in pairs:
                self.assertEqual((pair['angle'], pair['pixels']), (angle, 960))
                self.assertEqual(pair['size_a'], pair['size_b'])
        pairs = self.diff('--turned', 90, self.source, SAMPLES / 'turned-270', status=1)
        self.assertEqual(sorted({pair['status'] for pair in pairs}), ['only_a', 'only_b'])
        self.assertEqual(len(pairs), 18)
        pair, = self.diff('--turned', 90, CABINET / 'Cab_01.9fcoef',
                          SAMPLES / 'turned-270' / 'Cab_01-270°.9fcoef', status=1)
        self.assertEqual((pair['status'], pair['size_a']), ('different', pair['size_b']))
        pair, = self.diff(CABINET / 'Cab_01.9fcoef', SAMPLES / 'turned-90' / 'Cab_01-90°.9fcoef',
                          status=1)
        self.assertEqual((pair['status'], pair['pixels'], pair['values']), ('different', None, None))
        self.assertEqual((pair['size_a'], pair['size_b']),
                         ({'width': 40, 'height': 24}, {'width': 24, 'height': 40}))

    def test_a_wrong_pixel_of_a_turn_is_found(self):
        a = np.tile(coef_arrays.DEFAULT[:9], (3, 4, 1))
        a[1, 2, 0] = 0.5  # comes to (1, 2) of the turned map
        b = np.rot90(a, -1).copy()
        b[3, 0, 8] = 0.25
        pair, = self.diff('--turned', 90, self.add_floats('a.9fcoef', a),
                          self.add_floats('b.9fcoef', b), status=1)
        self.assertEqual(pair['different_pixels'], 1)
        self.assertEqual(pair['values'][8]['maximum_at'], {'x': 0, 'y': 3})

    def test_folders(self):
        for name in ('same', 'only_here', 'other', 'broken'):
            self.add(f'{name}.3bcoef')
        (self.source / 'below').mkdir()
        self.add('below/deep.3bcoef', kind='.3bcoef')
        shutil.copytree(self.source, self.target, dirs_exist_ok=True)
        (self.target / 'only_here.3bcoef').unlink()
        (self.target / 'only_there.3bcoef').write_bytes(b'')
        (self.target / 'other.3bcoef').write_bytes(coef_file('.3bcoef', 4, 3, bytes(36)))
        states = lambda pairs: [pair['status'] for pair in pairs]
        broken = self.target / 'broken.3bcoef'
        self.assertEqual(states(self.diff(self.source, self.target, status=1)),
                         ['same', 'only_a', 'different', 'same', 'only_b'])
        self.assertEqual(states(self.diff('-r', self.source, self.target, status=1)),
                         ['same', 'same', 'only_a', 'different', 'same', 'only_b'])
        broken.write_bytes(broken.read_bytes()[:-1])
        pairs = self.diff(self.source, self.target, status=2)
        self.assertEqual(states(pairs), ['failed', 'only_a', 'different', 'same', 'only_b'])
        self.assertEqual(len(pairs[0]['problems']), 1)
        self.assertIn(f'{broken}: cannot be read', pairs[0]['problems'][0].replace('\\', '/'))
        result = self.run_cli('diff', self.source, self.target)
        self.expect(result, 2)
        self.assertIn(f'{broken}: cannot be read', result.stderr.decode().replace('\\', '/'))
        lines = [line.replace('\\', '/') for line in self.lines(result.stdout)]
        self.assertIn(f'{self.source / "only_here.3bcoef"}: the second folder has no file for it',
                      lines)
        self.assertIn(f'{self.target / "only_there.3bcoef"}: the first folder has no file for it',
                      lines)
        self.assertEqual(lines[-1], '1 same, 1 different, 2 on one side only, 1 with problems')

    @posix_only
    def test_names_without_a_text_fail_and_the_others_are_compared(self):
        self.add('a.3bcoef')
        shutil.copytree(self.source, self.target, dirs_exist_ok=True)
        for folder in (self.source, self.target):
            shutil.copy(self.source / 'a.3bcoef', os.fsencode(folder) + b'/odd\xff.3bcoef')
        odd_a, odd_b, same = self.diff(self.source, self.target, status=2)
        told = 'passed over: its name is not valid UTF-8'
        names = [f'{folder}/odd\\xFF.3bcoef' for folder in (self.source, self.target)]
        for odd, sides in ((odd_a, (names[0], None)), (odd_b, (None, names[1]))):
            self.assertEqual((odd['a'], odd['b']), sides)
            self.assertEqual((odd['status'], odd['problems']), ('failed', [told]))
        self.assertEqual(same['status'], 'same')
        result = self.run_cli('diff', self.source, self.target)
        self.expect(result, 2, err=[f'{name}: {told}' for name in names])
        self.assertEqual(self.lines(result.stdout)[-1],
                         '1 same, 0 different, 0 on one side only, 2 with problems')

    def test_trouble_is_status_2(self):
        self.add('a.3bcoef')
        a = self.source / 'a.3bcoef'
        self.expect_words(self.run_cli('diff', a, self.source), 2,
                          'give two files or two folders')
        self.expect_words(self.run_cli('diff', a, self.source / 'none.3bcoef'), 2, 'does not exist')
        for sides in ((self.source, self.folder / 'none'), (self.folder / 'none', self.source),
                      (a, self.folder / 'none')):
            self.expect(self.run_cli('diff', *sides), 2, [],
                        [f'trevolt-cli: the source {self.folder / "none"} does not exist: check its path'])
        self.expect(self.run_cli('diff', a), 2, [],
                    ['trevolt-cli: diff needs an A and a B: see trevolt-cli diff --help'])
        self.expect(self.run_cli('diff', self.source, self.target), 2, [],
                    [f'trevolt-cli: there is no coefficient file in {self.target}: give a folder that holds some'])
        (self.source / 'notes.txt').write_text('x')
        self.expect_words(self.run_cli('diff', a, self.source / 'notes.txt'), 2,
                          'is no coefficient file by its name')
        (self.source / 'empty.3bcoef').write_bytes(b'')
        self.expect_words(self.run_cli('diff', a, self.source / 'empty.3bcoef'), 2,
                          'empty.3bcoef: cannot be read')
        self.expect_words(self.run_cli('diff', a, CABINET / 'Cab_01.9fcoef', '--turned', 45), 2,
                          '--turned')

    @posix_only
    def test_a_full_output_is_trouble(self):
        with open('/dev/full', 'wb') as full:
            result = subprocess.run(
                [*PROGRAM, 'diff', CABINET / 'Cab_01.9fcoef', CABINET / 'Cab_01.9fcoef'],
                stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(result.returncode, 2)
        self.assertIn('standard output cannot be written', result.stderr.decode())

    def test_picture(self):
        a, b = CABINET / 'Cab_01.9fcoef', CABINET / 'Cab_03.9bcoef'
        image = self.target / 'apart.png'
        self.diff(a, b, '--image', image, status=1)
        content = image.read_bytes()
        self.assertEqual(content[:8], b'\x89PNG\r\n\x1a\n')
        width, height = struct.unpack('>II', content[16:24])
        self.assertGreater(width, 200)
        self.assertGreater(height, 100)
        self.expect(self.run_cli('diff', a, b, '--image', image), 2, [],
                    [f'trevolt-cli: {image}: exists already: overwrite it, or choose another target'])
        self.expect(self.run_cli('diff', a, b, '--image', a), 2, [],
                    [f"trevolt-cli: --image: {a} does not end in .png: give the picture's name"])
        self.assertEqual(image.read_bytes(), content)
        self.diff(a, a, '--image', image, '--overwrite', '--no-sync', status=0)
        self.assertNotEqual(image.read_bytes(), content)
        self.diff(a, b, '--image', image, '--overwrite', '--range', '0,0.0001', status=1)
        self.assertIn(ABOVE, {Picture(image.read_bytes()).at(LEFT + x, TOP) for x in range(500)})
        self.expect_words(self.run_cli('diff', a, b, '--range', '0,1'), 2, '--image')
        self.expect_words(self.run_cli('diff', a, b, '--image', image, '--range', '1'), 2,
                          '--range: 1 is no range')
        self.expect_words(self.run_cli('diff', a, b, '--overwrite'), 2, '--image')
        self.expect_words(self.run_cli('diff', CABINET, CABINET, '--image', self.target / 'n.png'), 2,
                          '--image is of two files')
        pair, = self.diff(a, SAMPLES / 'turned-90' / 'Cab_01-90°.9fcoef', '--image',
                          self.target / 'n.png', status=1)
        self.assertEqual(pair['notes'], ['there is no picture of files that differ in size'])
        self.expect(self.run_cli('diff', a, SAMPLES / 'awkward' / 'cut_short.9fcoef', '--image',
                                 self.target / 'n.png'), 2)
        self.assertEqual(self.targets(), ['apart.png'])
