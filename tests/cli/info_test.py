"""The command info, held against values that NumPy makes of the files; cli_test.py runs these."""
import json
import math
import os
import shutil
import struct

import lz4.frame
import numpy as np

import coef_arrays
from cli_support import MAGICS, SAMPLES, CliTest, coef_file, posix_only

KEYS = ['type', 'name', 'path', 'status', 'kind', 'content', 'format_version', 'own_size', 'covered_pixels',
        'stored_bytes', 'raw_bytes', 'ratio', 'origin', 'chunks', 'extra_words', 'owner',
        'store_digest', 'default_pixels', 'values', 'problems', 'notes']


class Info(CliTest):
    def info(self, *arguments, status=0):
        """The objects of files, and the summary."""
        result = self.run_cli('info', '--json', *arguments)
        self.expect(result, status, err=[])
        objects = [json.loads(line) for line in self.lines(result.stdout)]
        for told in objects[:-1]:
            self.assertEqual(list(told), KEYS)
        summary = objects.pop()
        failed = sum(told['status'] == 'failed' for told in objects)
        self.assertEqual(summary, {'type': 'summary', 'version': 1,
                                   'end': 'failed' if status else 'done', 'exit_status': status,
                                   'whole': len(objects) - failed, 'failed': failed, 'errors': []})
        return objects

    def only(self, path, status=0):
        told, = self.info(path, status=status)
        self.assertEqual((told['name'], told['path']), (path.name, str(path)))
        self.assertEqual(told['status'], 'failed' if status else 'whole')
        return told

    def add_floats(self, name, values):
        """A .9fcoef of height × width × 9 values."""
        path = self.source / name
        height, width, _ = values.shape
        path.write_bytes(coef_file('.9fcoef', width, height, values.astype('<f4').tobytes()))
        return path

    def check_values(self, told, path):
        kind = coef_arrays.kind_of(path)
        values = coef_arrays.read_map(path)
        places = coef_arrays.values_of(kind)
        self.assertEqual([value['value'] for value in told['values']], [coef_arrays.VALUE_NAMES[k] for k in places])
        for value, k in zip(told['values'], places):
            plane = values[..., k]
            self.assertEqual(value['minimum'], float(plane.min()), (path, k))
            self.assertEqual(value['maximum'], float(plane.max()), (path, k))
            mean = plane.mean(dtype=np.float64)
            self.assertLess(abs(value['mean'] - mean), 1e-12, (path, k))
            self.assertEqual(value['outside_pixels'], int(((plane < 0) | (plane > 1)).sum()))
            self.assertEqual(value['nan_pixels'], 0)
        self.assertEqual(told['default_pixels'], coef_arrays.default_pixels(values, kind))

    def test_every_kind(self):
        self.expect(self.run_cli('demo', '--no-sync', self.folder / 'wall'), 0)
        paths = [*(self.folder / 'wall').iterdir(),
                 *(p for p in (SAMPLES / 'cabinet').iterdir() if p.suffix != '.csv')]
        self.assertEqual(len(paths), 18)
        for path, told in zip(paths, self.info(*paths)):
            kind = coef_arrays.kind_of(path)
            content = path.read_bytes()
            height, width, _ = coef_arrays.read_map(path).shape
            raw = coef_arrays.raw_bytes(kind)
            self.assertEqual((told['path'], told['status'], told['kind']),
                             (str(path), 'whole', kind[1:]))
            self.assertEqual(told['own_size'], {'width': width, 'height': height})
            self.assertEqual(told['stored_bytes'], len(content))
            self.assertEqual((told['problems'], told['notes']), ([], []))
            if kind == '.cccoef':
                for key in ('content', 'format_version', 'covered_pixels', 'raw_bytes', 'ratio'):
                    self.assertIsNone(told[key])
            else:
                self.assertEqual((told['content'], told['format_version']), (kind[1:], 1))
                self.assertEqual(told['covered_pixels'], width * height)
                self.assertEqual(told['raw_bytes'], width * height * raw)
                self.assertAlmostEqual(told['ratio'], width * height * raw / len(content))
            if kind in coef_arrays.WORDS:
                _, (x, y), records = coef_arrays.read_words(content, kind)
                self.assertEqual(told['origin'], {'x': x, 'y': y})
                self.assertEqual((told['chunks'], told['extra_words'], told['owner']),
                                 (records, False, None))
                self.assertEqual(told['store_digest'], coef_arrays.store_digest(path))
            else:
                for key in ('origin', 'chunks', 'extra_words', 'owner', 'store_digest'):
                    self.assertIsNone(told[key])
            self.check_values(told, path)

    def test_values_of_all_sorts(self):
        values = np.tile(coef_arrays.DEFAULT[:9], (70, 300, 1))
        values[3, 7] = [-0.25, 1.5, np.nan, np.inf, 1, 0, 0, 0, 1]
        values[69, 299, 8] = np.nan
        values[0, :, 1] = np.linspace(0, 1, 300)
        values[..., 6] = np.nan
        values[..., 7] = -1e30
        told = self.only(self.add_floats('odd.9fcoef', values))
        for k, value in enumerate(told['values']):
            plane = values[..., k].astype(np.float64)
            numbers = plane[~np.isnan(plane)]
            self.assertEqual(value['nan_pixels'], int(np.isnan(plane).sum()))
            self.assertEqual(value['outside_pixels'], int(((numbers < 0) | (numbers > 1)).sum()))
            for key, reckon in (('minimum', np.min), ('mean', np.mean), ('maximum', np.max)):
                expected = reckon(numbers) if numbers.size else math.nan
                if math.isfinite(expected):
                    self.assertTrue(math.isclose(value[key], expected, rel_tol=1e-7), (k, key))
                else:
                    self.assertIsNone(value[key])
        self.assertEqual(told['default_pixels'], 0)

    def test_origin_owner_and_extra_words(self):
        told = self.only(SAMPLES / 'awkward' / 'origin_1000_777.9wcoef')
        self.assertEqual(told['origin'], {'x': 1000, 'y': 777})
        self.assertEqual(told['chunks'], 6)
        plain = self.only(SAMPLES / 'awkward' / 'blocks_reversed.9wcoef')
        self.assertEqual(told['store_digest'], plain['store_digest'])
        content = bytearray((SAMPLES / 'cabinet' / 'Cab_07.3wcoef').read_bytes())
        content[69:85] = b'M\xfcller' + bytes(10)
        content[85] = 7
        path = self.source / 'owned.3wcoef'
        path.write_bytes(content)
        told = self.only(path)
        self.assertEqual(told['owner'], {'name': 'M\\xFCller', 'bytes': '4DFC6C6C6572' + '00' * 10,
                                         'flag': 7})
        self.assertIn('  owner     "M\\xFCller", flag 7',
                      self.lines(self.run_cli('info', path).stdout))

    def test_damaged_files_are_named_and_the_others_go_on(self):
        shutil.copy(SAMPLES / 'cabinet' / 'Cab_01.9fcoef', self.source / 'whole.9fcoef')
        shutil.copy(SAMPLES / 'awkward' / 'cut_short.9fcoef', self.source)
        (self.source / 'empty.12wcoef').write_bytes(b'')
        broken = bytearray((SAMPLES / 'cabinet' / 'Cab_06.9wcoef').read_bytes())
        broken[32:36] = struct.pack('<I', 30)  # six rows that no chunk holds
        (self.source / 'lacking.9wcoef').write_bytes(broken)
        (self.source / 'short.4wcoef').write_bytes(broken[:100])
        cut, empty, lacking, short, whole = self.info(self.source, status=1)
        self.assertEqual(whole['status'], 'whole')
        for told in (cut, empty, lacking, short):
            self.assertEqual((told['status'], len(told['problems'])), ('failed', 1))
        self.assertEqual((cut['covered_pixels'], cut['values'], cut['format_version']), (0, None, 1))
        self.assertIsNone(cut['ratio'])  # of what is left nothing can be said
        self.assertEqual(cut['own_size'], {'width': 40, 'height': 24})
        self.assertEqual((empty['stored_bytes'], empty['own_size'], empty['ratio']), (0, None, None))
        self.assertEqual(lacking['problems'], ['is incomplete: 240 pixels have no data'])
        self.assertEqual(lacking['covered_pixels'], 960)
        self.assertEqual((len(lacking['values']), lacking['default_pixels']), (9, None))
        self.assertEqual((short['content'], short['origin']), ('9wcoef', None))
        result = self.run_cli('info', self.source)
        self.expect(result, 1, err=[])
        self.assertIn('  problem   is incomplete: 240 pixels have no data',
                      self.lines(result.stdout))
        self.assertEqual(self.lines(result.stdout)[-1], '5 files, 4 with problems')

    def test_lines_fit_a_terminal(self):
        result = self.run_cli('info', 'Cab_09.12wcoef', 'Cab_01.9fcoef', cwd=SAMPLES / 'cabinet')
        self.expect(result, 0, err=[])
        lines = self.lines(result.stdout)
        self.assertEqual(max(map(len, lines)), 78)
        self.assertEqual(lines[:4], ['Cab_09.12wcoef', '  kind      .12wcoef', '  version   1',
                                     '  size      40 x 24 pixels'])
        values = coef_arrays.read_map(SAMPLES / 'cabinet' / 'Cab_01.9fcoef')[..., 4]
        row, = [line.split() for line in lines[30:] if line.startswith('  m11')]
        self.assertEqual(row, ['m11', f'{values.min():.6g}', f'{values.mean(dtype=float):.6g}',
                               f'{values.max():.6g}', '0', '0'])
        self.assertEqual(lines[-1], '2 files, 0 with problems')

    def test_folders_in_the_order_of_a_run(self):
        (self.source / 'below').mkdir()
        for name in ('b.3bcoef', 'a.3bcoef', 'below/c.3bcoef'):
            self.add(name, kind='.3bcoef')
        (self.source / 'notes.txt').write_text('x')
        names = lambda objects: [told['name'] for told in objects]
        self.assertEqual(names(self.info(self.source)), ['a.3bcoef', 'b.3bcoef'])
        self.assertEqual(names(self.info('-r', self.source)),
                         ['a.3bcoef', 'b.3bcoef', 'below/c.3bcoef'])

    def test_nothing_to_do_is_status_2(self):
        self.expect_words(self.run_cli('info', self.source), 2,
                          f'there is no coefficient file in {self.source}: give a folder that holds some')
        self.expect_words(self.run_cli('info', self.folder / 'none'), 2, 'does not exist')
        self.expect_words(self.run_cli('info'), 2, 'info needs a FILE')
        (self.source / 'notes.txt').write_text('x')
        self.expect_words(self.run_cli('info', self.source / 'notes.txt'), 2,
                          'is no coefficient file by its name')

    def test_a_map_without_pixels(self):
        path = self.source / 'none.3bcoef'
        path.write_bytes(MAGICS['.3bcoef'] + struct.pack('<IHH', 1, 0, 0) + lz4.frame.compress(b''))
        result = self.run_cli('info', path)
        self.expect(result, 1, err=[])
        self.assertIn('  problem   has no pixels', self.lines(result.stdout))
        told = self.only(path, status=1)
        self.assertEqual([told[key] for key in ('problems', 'covered_pixels', 'default_pixels',
                                                'values')], [['has no pixels'], 0, None, None])
        self.assertNotIn('default', result.stdout.decode())

    def test_a_share_is_never_rounded_up(self):
        path = self.source / 'a.3bcoef'
        path.write_bytes(coef_file('.3bcoef', 100, 30, b'\xff' * 2999 * 3 + b'\xff\xff\xfe'))
        self.assertIn('  default   2999 of 3000 pixels, 99.9 %',
                      self.lines(self.run_cli('info', path).stdout))

    def test_a_damaged_text_tells_no_defaults(self):
        for content, size in ((b'[T9COEF20]\nwid', 14),
                              (b'[T9COEF20]\nwidth=4\nheight=3\n1,2,x\n', 34), (b'x', 1)):
            path = self.source / 'a.cccoef'
            path.write_bytes(content)
            self.assertEqual(self.only(path, status=1)['default_pixels'], None)
            lines = self.lines(self.run_cli('info', path).stdout)
            self.assertIn(f'  stored    {size} byte{"" if size == 1 else "s"}', lines)
            self.assertEqual([line for line in lines if 'default' in line], [])

    @posix_only
    def test_names_without_a_text_are_told(self):
        shutil.copy(SAMPLES / 'cabinet' / 'Cab_04.3bcoef', self.source)
        with open(os.fsencode(self.source) + b'/odd\xff.3bcoef', 'wb'):
            pass
        told = 'passed over: its name is not valid UTF-8'
        result = self.run_cli('info', self.source)
        self.expect(result, 1, err=[])
        lines = self.lines(result.stdout)
        self.assertEqual(lines[:3], ['odd\\xFF.3bcoef', f'  problem   {told}', ''])
        self.assertEqual(lines[-1], '2 files, 1 with problems')
        odd, whole = self.info(self.source, status=1)
        self.assertEqual({key: value for key, value in odd.items() if value},
                         {'type': 'file', 'name': 'odd\\xFF.3bcoef', 'status': 'failed',
                          'problems': [told]})
        self.assertEqual(whole['status'], 'whole')
