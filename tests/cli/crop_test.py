"""The command crop, and screens that are composed and taken apart again; cli_test.py runs these."""
import csv

import numpy

import cli_support
from cli_support import SAMPLES, posix_only
from compose_test import (DIAGONAL, KINDS, OFF_DIAGONAL, ScreenTest, cabinet_pixels, turned_pixels,
                          write_cabinet)


class Crop(ScreenTest):
    def setUp(self):
        super().setUp()
        self.wall = self.source / 'wall.9fcoef'
        self.pixels = cabinet_pixels(9, 12, 7)
        write_cabinet(self.wall, self.pixels)

    def crop(self, target, *arguments, **options):
        return self.run_cli('crop', self.wall, target, *arguments, **options)

    def test_a_rectangle_by_every_turn(self):
        for angle in (0, 90, 180, 270):
            turn = ('--turn', angle) if angle else ()
            piece = self.target / f'piece_{angle}.9fcoef'
            expected = turned_pixels(self.pixels[1:6, 2:11], angle)
            height, width = expected.shape[:2]
            told = f', turned by {angle}°' if angle else ''
            self.expect(self.crop(piece, '--rect', '2,1,11,6', *turn), 0,
                        [f'2,1,11,6 -> {piece.name}  ({width} x {height}{told})',
                         f'1 file cut out of {self.wall}  (12 x 7), 0 failed'], [])
            self.expect_pixels(piece, expected)

    def test_every_kind_to_every_kind(self):
        cabinets = sorted((SAMPLES / 'cabinet').glob('*coef'))
        if cli_support.IS_WRAPPED:
            cabinets = cabinets[5:6]
        for i, cabinet in enumerate(cabinets):
            whole = self.target / f'whole_{i}.9fcoef'
            self.expect(self.run_cli('crop', cabinet, whole, '--rect', '0,0,40,24'), 0, err=[])
            pixels = self.pixels_of(whole, 40, 24)
            kind = KINDS[(i * 4 + 1) % 9]  # each once
            piece = self.target / f'piece_{i}{kind}'
            back = self.target / f'back_{i}.9fcoef'
            self.expect(self.run_cli('crop', cabinet, piece, '--rect', '3,2,40,20', '--turn', 90), 0,
                        err=[])
            self.expect(self.run_cli('crop', piece, back, '--rect', '0,0,18,37'), 0, err=[])
            expected = turned_pixels(pixels[2:20, 3:40], 90).copy()
            if kind in DIAGONAL:
                expected[:, :, OFF_DIAGONAL] = 0
            self.expect_pixels(back, expected, 0.5 / 255 + 1e-6 if 'b' in kind[:3] else 1e-5)

    def test_awkward_samples_by_their_known_pixels(self):
        awkward = SAMPLES / 'awkward'
        whole = {'blocks_reversed.9wcoef': awkward / 'blocks_reversed.9wcoef.csv',
                 'origin_1000_777.9wcoef': awkward / 'origin_1000_777.9wcoef.csv',
                 'crlf.cccoef': SAMPLES / 'cabinet' / 'Cab_05.cccoef.csv'}
        for name, table in whole.items():
            with open(table, encoding='utf-8') as rows:
                known = [list(map(float, row)) for row in list(csv.reader(rows))[1:]]
            left, top = (200, 100) if '9w' in name else (7, 5)  # across a store's blocks
            right, bottom = (300, 140) if '9w' in name else (40, 24)
            piece = self.target / f'{name}.9fcoef'
            self.expect(self.run_cli('crop', awkward / name, piece, '--rect',
                                     f'{left},{top},{right},{bottom}'), 0, err=[])
            pixels = self.pixels_of(piece, right - left, bottom - top)
            seen = [row for row in known if row[0] >= left and row[1] >= top]
            self.assertGreater(len(seen), 5)
            for x, y, *values in seen:
                numpy.testing.assert_array_equal(pixels[int(y) - top, int(x) - left],
                                                 numpy.array(values, numpy.float32))
        damaged = ('cut_short.9fcoef', 'version_2.9fcoef')
        for name in damaged:
            self.expect_words(self.run_cli('crop', awkward / name, self.target / 'no.9fcoef',
                                           '--rect', '0,0,1,1'), 1, 'the source failed')
        self.assertEqual(self.targets(), sorted(f'{name}.9fcoef' for name in whole))
        result = self.run_cli('preview', '--json', *(awkward / name for name in (*whole, *damaged)),
                              self.target / 'all.png')
        *files, summary = self.objects(result, 1)
        self.assertEqual({file['name'] for file in files if file['status'] == 'shown'}, set(whole))
        self.assertEqual({file['name'] for file in files if file['status'] == 'failed'},
                         set(damaged))
        self.assertEqual((summary['shown'], summary['failed']), (3, 2))

    def test_a_rectangle_outside_is_refused_with_the_maps_size(self):
        piece = self.target / 'piece.9fcoef'
        for rect in ('-1,0,5,5', '0,-1,5,5', '0,0,13,5', '0,0,5,8'):
            self.expect(self.crop(piece, '--rect', rect), 2, [],
                        [f'trevolt-cli: the rectangle {rect} of piece.9fcoef is not in the map of '
                         '12 x 7: choose another rectangle'])
        self.assertEqual(self.targets(), [])

    def test_wrong_usage_is_told(self):
        piece = self.target / 'piece.9fcoef'
        rect = ('--rect', '0,0,1,1')
        for words, told in (
                ((), 'crop needs a rectangle: give --rect LEFT,TOP,RIGHT,BOTTOM, or --layout TABLE'),
                (('--turn', 90), '--turn requires --rect: give both'),
                (('--cabinet', '5x5', *rect), '--cabinet requires --layout: give both'),
                (('--layout', 'x', *rect), '--rect excludes --layout: give one of them'),
                ((*rect, '--turn', 0), '--turn: 0 turns nothing: give 90, 180, 270, -90 or -180'),
                *((('--rect', text), f'--rect: {text} is no rectangle: give LEFT,TOP,RIGHT,BOTTOM in '
                   'whole pixels, at most 65535')
                  for text in ('1', '1,2,3', '1,2,3,4,5', 'a,0,1,1', '0,0,1,1.5', '0,0,65536,1')),
                *((('--rect', text), f'--rect: {text} has no pixels: give LEFT,TOP,RIGHT,BOTTOM, right '
                   'and bottom exclusive') for text in ('1,0,1,5', '0,5,1,5', '3,0,2,1')),
                (('--rect', ''), '--rect: it is empty: give LEFT,TOP,RIGHT,BOTTOM')):
            with self.subTest(words=words):
                self.expect(self.crop(piece, *words), 2, [], [f'trevolt-cli: {told}'])
            if cli_support.IS_WRAPPED:
                break
        self.assertEqual(self.targets(), [])

    def test_a_damaged_source(self):
        whole = self.wall.read_bytes()
        self.wall.write_bytes(whole[:-1])
        piece = self.target / 'piece.9fcoef'
        result = self.crop(piece, '--rect', '0,0,1,1')
        self.expect(result, 1, [])
        self.assertEqual(self.lines(result.stderr)[0][:len(str(self.wall)) + 16],
                         f'{self.wall}: cannot be read')
        self.assertEqual(self.lines(result.stderr)[1:],
                         ['trevolt-cli: nothing is written: the source failed'])
        self.assertEqual(self.targets(), [])
        result = self.crop(piece, '--rect', '0,0,1,1', '--lenient')
        self.expect(result, 1, ['0,0,1,1 -> piece.9fcoef  (1 x 1)',
                                f'1 file cut out of {self.wall}  (12 x 7), 0 failed; what could not '
                                'be read of it is default'])
        self.expect_pixels(piece, numpy.array([[[1, 0, 0, 0, 1, 0, 0, 0, 1]]], numpy.float32))

    def test_a_composed_screen_comes_apart_into_its_cabinets(self):
        cabinets = sorted((SAMPLES / 'cabinet').glob('*coef'))
        table = self.source / 'layout.csv'
        rows = [f'{cabinet.name},{40 * (i % 3)},{40 * (i // 3)},{90 * (i % 4)}\n'
                for i, cabinet in enumerate(cabinets)]
        table.write_text('file,x,y,angle\n' + ''.join(rows))
        screen = self.target / 'screen.9fcoef'
        self.expect(self.run_cli('compose', screen, '--layout', table, '--from',
                                 SAMPLES / 'cabinet'), 0, err=[])
        back = self.folder / 'back'
        result = self.run_cli('crop', screen, back, '--layout', table, '--from', SAMPLES / 'cabinet')
        self.expect(result, 0, err=[])
        told = self.lines(result.stdout)
        self.assertEqual(len(told), 12)
        self.assertEqual(told[9:11], [f'{screen}: it holds no values beside the matrix: those of '
                                      f'{kind} are the default 0, 1, 0'
                                      for kind in ('.4wcoef', '.12wcoef')])
        self.assertEqual(sorted(path.name for path in back.iterdir()),
                         [cabinet.name for cabinet in cabinets])
        for cabinet in cabinets if not cli_support.IS_WRAPPED else cabinets[:2]:
            kept, made = (self.target / f'{name}_{cabinet.name[:6]}.9fcoef' for name in ('a', 'b'))
            for path, out in ((cabinet, kept), (back / cabinet.name, made)):
                self.expect(self.run_cli('crop', path, out, '--rect', '0,0,40,24'), 0, err=[])
            self.assertEqual(kept.read_bytes(), made.read_bytes())
        others = self.folder / 'others'
        self.expect(self.run_cli('crop', screen, others, '--layout', table, '--cabinet', '40x24'), 0,
                    err=[])
        for cabinet in cabinets:
            self.assertEqual((others / cabinet.name).read_bytes(),
                             (back / cabinet.name).read_bytes())
        result = self.run_cli('crop', screen, others, '--layout', table, '--cabinet', '40x24')
        self.expect(result, 1, [f'0 files cut out of {screen}  (120 x 120), 9 failed'])
        self.assertEqual(len(self.lines(result.stderr)), 9)

    def test_a_table_whose_files_are_missing_needs_a_size(self):
        table = self.source / 'layout.csv'
        table.write_text('a.9fcoef,0,0\n')
        result = self.crop(self.folder / 'back', '--layout', table)
        self.expect(result, 2, [])
        self.assertEqual(self.lines(result.stderr)[1:],
                         ['trevolt-cli: not every file of the table tells its size: give --cabinet '
                          'WIDTHxHEIGHT, or --from the folder of the files'])
        self.expect(self.crop(self.folder / 'back', '--layout', table, '--cabinet', '3x2'), 0,
                    ['0,0,3,2 -> a.9fcoef  (3 x 2)',
                     f'1 file cut out of {self.wall}  (12 x 7), 0 failed'], [])

    def test_a_name_from_the_root_is_refused_and_nothing_written(self):
        table = self.source / 'layout.csv'
        table.write_text(f'a.9fcoef,0,0\n{self.source}/b.9fcoef,3,0\n')
        back = self.folder / 'back'
        self.expect(self.crop(back, '--layout', table, '--cabinet', '3x2'), 2, [],
                    [f'trevolt-cli: {table}: line 2: the output {self.source}/b.9fcoef is not below the '
                     'target folder: name it relative to that'])
        for row, told in (
                ('../b.9fcoef,3,0', 'the output ../b.9fcoef is not below the target folder: name it '
                                    'without ..'),
                ('b.txt,3,0', 'the output b.txt is no coefficient file by its name: give one of the nine '
                              'extensions'),
                ('b.9fcoef,10,0', 'the rectangle 10,0,13,2 of b.9fcoef is not in the map of 12 x 7: '
                                  'correct the row')):
            table.write_text(f'a.9fcoef,0,0\n{row}\n')
            self.expect(self.crop(back, '--layout', table, '--cabinet', '3x2'), 2, [],
                        [f'trevolt-cli: {table}: line 2: {told}'])
        self.assertFalse(back.exists())

    @posix_only
    def test_a_folder_that_takes_no_file_is_seen_before_the_source_is_read(self):
        self.wall.write_bytes(self.wall.read_bytes()[:-1])
        table = self.source / 'layout.csv'
        table.write_text('a.9fcoef,0,0\n')
        self.target.chmod(0o500)
        self.addCleanup(self.target.chmod, 0o700)
        for target in (self.target, self.target / 'new'):
            self.expect(self.crop(target, '--layout', table, '--cabinet', '3x2', is_bound=True), 1, [],
                        [f'trevolt-cli: the folder {target} cannot be made, written to or synced: '
                         'Permission denied: choose another'])

    def test_files_that_told_their_sizes_stay(self):
        cabinet = self.source / 'a.9fcoef'
        write_cabinet(cabinet, cabinet_pixels(1, 5, 3))
        kept = cabinet.read_bytes()
        table = self.source / 'layout.csv'
        table.write_text('a.9fcoef,0,0\n')
        words = ('--layout', table, '--overwrite')
        self.expect(self.crop(self.source, *words), 1,
                    [f'0 files cut out of {self.wall}  (12 x 7), 1 failed'],
                    ['a.9fcoef: is one of the inputs, which stay as they are: choose another name'])
        self.assertEqual(cabinet.read_bytes(), kept)
        self.expect(self.crop(self.source, *words, '--cabinet', '5x3'), 0, err=[])
        self.expect_pixels(cabinet, self.pixels[:3, :5])

    def test_what_programs_are_told(self):
        piece = self.target / 'piece.3bcoef'
        file, summary = self.objects(
            self.crop(piece, '--json', '--rect', '2,1,11,6', '--turn', 90), 0)
        self.assertEqual(file, {
            'type': 'file', 'name': 'piece.3bcoef', 'output': 'piece.3bcoef', 'status': 'written',
            'angle': 90,
            'rect': {'left': 2, 'top': 1, 'right': 11, 'bottom': 6},
            'turned_size': {'width': 5, 'height': 9}, 'problems': [],
            'losses': ['45 pixels have entries off the diagonal, which .3bcoef does not hold'],
            'notes': []})
        self.assertEqual(summary, {
            'type': 'summary', 'version': 1, 'end': 'done', 'exit_status': 0,
            'path': str(self.wall), 'own_size': {'width': 12, 'height': 7}, 'written': 1, 'failed': 0,
            'problems': [], 'losses': [], 'notes': [], 'errors': []})
        self.expect_page_keys('### Of a crop', file, summary)
        file, summary = self.objects(self.crop(piece, '--json', '--rect', '0,0,1,1'), 1)
        self.assertEqual((file['status'], file['output'], file['problems'], summary['end'],
                          summary['written'], summary['failed']),
                         ('failed', None, ['exists already: overwrite it, or choose another target'],
                          'failed', 0, 1))
        file, summary = self.objects(self.crop(piece, '--json', '--overwrite', '--rect', '0,0,99,1'), 2)
        self.assertEqual((file['status'], file['turned_size'], len(summary['errors'])),
                         ('not_written', None, 1))
        table = self.source / 'wrong.csv'
        table.write_text('a.9fcoef\n', encoding='ascii')
        summary, = self.objects(self.crop(self.target, '--json', '--layout', table), 2)
        self.assertEqual((summary['path'], summary['end'], len(summary['errors'])),
                         (str(self.wall), 'nothing_to_do', 1))
