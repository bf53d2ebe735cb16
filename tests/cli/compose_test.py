"""The command compose; cli_test.py runs these. NumPy reckons the screens that are expected."""
import csv
import json
import os
import re
import shutil

import numpy

import cli_support
from cli_support import CABINETS, ROOT, SAMPLES, STORED_BYTES, CliTest, coef_file, posix_only

KINDS = ('.9fcoef', '.3fcoef', '.9bcoef', '.3bcoef', '.cccoef', '.9wcoef', '.3wcoef', '.4wcoef',
         '.12wcoef')
DIAGONAL = ('.3fcoef', '.3bcoef', '.3wcoef', '.4wcoef')
ON_DIAGONAL = (0, 4, 8)
OFF_DIAGONAL = (1, 2, 3, 5, 6, 7)
IDENTITY = numpy.array([1, 0, 0, 0, 1, 0, 0, 0, 1], numpy.float32)


def cabinet_pixels(seed, width, height, kind='.9fcoef'):
    """Whole 255ths, so low that no text reader changes them, as a file of the kind holds them."""
    steps = numpy.random.default_rng(seed).integers(0, 64, (height, width, 9))
    pixels = steps.astype(numpy.float32) / numpy.float32(255)
    if kind in DIAGONAL:
        pixels[:, :, OFF_DIAGONAL] = 0
    return pixels


def write_cabinet(path, pixels):
    """A file of the binary kind that the name ends with."""
    kind = path.suffix
    stored = pixels[:, :, ON_DIAGONAL] if kind in DIAGONAL else pixels
    if 'b' in kind[:3]:
        stored = numpy.rint(stored * 255).astype(numpy.uint8)
    height, width = pixels.shape[:2]
    path.write_bytes(coef_file(kind, width, height, stored.tobytes()))


def turned_pixels(pixels, angle):
    return numpy.rot90(pixels, -(angle // 90))


def empty_screen(width, height):
    return numpy.tile(IDENTITY, (height, width, 1))


def put(screen, pixels, x, y):
    height, width = pixels.shape[:2]
    screen[y:y + height, x:x + width] = pixels


class ScreenTest(CliTest):
    def setUp(self):
        super().setUp()
        self.screen = self.target / 'screen.9fcoef'

    def add_cabinet(self, name, seed, width=5, height=3):
        pixels = cabinet_pixels(seed, width, height, '.' + name.rsplit('.', 1)[1])
        write_cabinet(self.source / name, pixels)
        return pixels

    def pixels_of(self, path, width, height):
        """Of a .9fcoef file, whose header is checked."""
        raw = self.body(path, '.9fcoef', width, height)
        return numpy.frombuffer(raw, '<f4').reshape(height, width, 9)

    def expect_pixels(self, path, expected, tolerance=0):
        height, width = expected.shape[:2]
        numpy.testing.assert_allclose(self.pixels_of(path, width, height), expected, rtol=0,
                                      atol=tolerance)

    def expect_page_keys(self, heading, *objects):
        """The page shows objects with these keys behind a heading."""
        page = (ROOT / 'docs' / 'compose.md').read_text(encoding='utf-8')
        shown = re.findall(r'^\{.*\}$', page.split(f'\n{heading}\n')[1], re.MULTILINE)
        self.assertEqual([list(json.loads(line)) for line in shown[:len(objects)]],
                         [list(one) for one in objects])

    def objects(self, result, status):
        self.expect(result, status, err=[])
        return [json.loads(line) for line in self.lines(result.stdout)]


class Compose(ScreenTest):
    def compose(self, *arguments, **options):
        return self.run_cli('compose', self.screen, *arguments, cwd=self.source, **options)

    def test_cabinets_of_binary_kinds_turned_as_they_are_mounted(self):
        places = [('a.9fcoef', 0, 1, 0), ('b.3fcoef', 5, 0, 90), ('c.9bcoef', 8, 2, 180),
                  ('d.3bcoef', 13, 0, 270), ('e.9fcoef', 16, 5, 90)]
        expected = empty_screen(20, 11)
        for seed, (name, x, y, angle) in enumerate(places):
            put(expected, turned_pixels(self.add_cabinet(name, seed), angle), x, y)
        result = self.compose('--size', '20x11', 'a.9fcoef@0,1', 'b.3fcoef@5,0,90',
                              'c.9bcoef@8,2,180°', 'd.3bcoef@13,0,-90', 'e.9fcoef@16,5,90')
        self.expect(result, 0,
                    ['a.9fcoef -> 0,1,5,4  (5 x 3)',
                     'b.3fcoef -> 5,0,8,5  (5 x 3, turned by 90°)',
                     'c.9bcoef -> 8,2,13,5  (5 x 3, turned by 180°)',
                     'd.3bcoef -> 13,0,16,5  (5 x 3, turned by 270°)',
                     'e.9fcoef -> 16,5,19,10  (5 x 3, turned by 90°)',
                     f'{self.screen}: 145 of its pixels are in no file and have default values',
                     f'5 files put into {self.screen}  (20 x 11), 0 failed'], [])
        self.expect_pixels(self.screen, expected)

    def test_cabinets_of_all_kinds_by_their_known_pixels(self):
        words, known, x = [], [], 0
        for i, cabinet in enumerate(sorted((SAMPLES / 'cabinet').glob('*coef'))):
            angle = 90 * (i % 4)
            words.append(f'{cabinet}@{x},{i},{angle}')
            with open(f'{cabinet}.csv', encoding='utf-8') as table:
                known += [(x, i, angle, [float(value) for value in row])
                          for row in list(csv.reader(table))[1:]]
            x += 40 if angle % 180 == 0 else 24
        self.expect(self.compose(*words), 0, err=[])
        pixels = self.pixels_of(self.screen, x, 47)  # the lowest is the eighth, on its side
        self.assertEqual(len(known), 9 * 64)
        for left, top, angle, (column, row, *values) in known:
            at = {0: (column, row), 90: (23 - row, column), 180: (39 - column, 23 - row),
                  270: (row, 39 - column)}[angle]
            numpy.testing.assert_array_equal(pixels[top + int(at[1]), left + int(at[0])],
                                             numpy.array(values, numpy.float32))

    def test_screens_of_all_kinds(self):
        expected = empty_screen(9, 6)
        put(expected, self.add_cabinet('a.9bcoef', 1), 0, 0)
        put(expected, turned_pixels(self.add_cabinet('b.9fcoef', 2), 270), 6, 1)
        for kind in KINDS if not cli_support.IS_WRAPPED else KINDS[4:6]:
            with self.subTest(kind=kind):
                screen = self.target / f'screen{kind}'
                back = self.target / f'back_{kind[1:]}.9fcoef'
                self.expect(self.run_cli('compose', screen, 'a.9bcoef@0,0', 'b.9fcoef@6,1,270',
                                         cwd=self.source), 0, err=[])
                self.expect(self.run_cli('crop', screen, back, '--rect', '0,0,9,6'), 0, err=[])
                held = expected.copy()
                if kind in DIAGONAL:
                    held[:, :, OFF_DIAGONAL] = 0
                self.expect_pixels(back, held, 1e-5)

    def test_what_the_screens_kind_does_not_hold_is_told(self):
        self.add_cabinet('a.9fcoef', 1)
        bright = self.add_cabinet('b.9fcoef', 2)
        bright[0, 0, 0] = 1.5
        bright[2, 4, 8] = -0.25
        write_cabinet(self.source / 'b.9fcoef', bright)
        screen = self.target / 'screen.3bcoef'
        result = self.run_cli('compose', screen, 'a.9fcoef@0,0', 'b.9fcoef@5,0', cwd=self.source)
        self.expect(result, 0, err=[])
        self.assertEqual(self.lines(result.stdout)[2:-1],
                         [f'{screen}: 30 pixels have entries off the diagonal, which .3bcoef does '
                          'not hold',
                          f'{screen}: 2 values are out of the range 0 to 1 and wrapped: the low 8 '
                          'bits of value x 255 stand there'])

    def test_a_layout_is_the_table_that_rotate_takes(self):
        a, b = self.add_cabinet('a.9fcoef', 1), self.add_cabinet('b.9fcoef', 2)
        table = self.source / 'wall.csv'
        table.write_text('Name,x,y,Angle\r\na.9fcoef,3,0,180\r\nb.9fcoef,0,0,90\r\n')
        expected = empty_screen(8, 5)
        put(expected, turned_pixels(a, 180), 3, 0)
        put(expected, turned_pixels(b, 90), 0, 0)
        self.expect(self.run_cli('compose', self.screen, '--layout', table), 0, err=[])
        self.expect_pixels(self.screen, expected)
        moved = self.folder / 'moved.csv'
        shutil.copy(table, moved)
        again = self.target / 'again.9fcoef'
        self.expect(self.run_cli('compose', again, '--layout', moved, '--from', self.source), 0)
        self.assertEqual(again.read_bytes(), self.screen.read_bytes())
        result = self.run_cli('rotate', '-n', '--angles', table, self.source, self.target)
        self.expect(result, 0, ['a.9fcoef -> a-180°.9fcoef  (5 x 3 -> 5 x 3)',
                                'b.9fcoef -> b-90°.9fcoef  (5 x 3 -> 3 x 5)',
                                'dry run: 2 files would be turned, 0 failed, 1 entry passed over'],
                    [])

    def test_the_last_at_sign_is_the_place(self):
        pixels = self.add_cabinet('a@1,1.9fcoef', 1)
        self.expect(self.compose('a@1,1.9fcoef@0,0'), 0, err=[])
        self.expect_pixels(self.screen, pixels)

    def test_what_cannot_lie_so_is_named_and_nothing_written(self):
        for seed, name in enumerate('abc'):
            self.add_cabinet(f'{name}.9fcoef', seed)
        move = ': move one of them, or allow overlaps'
        cut = ': move it, or allow what is outside to be cut'
        self.expect(self.compose('a.9fcoef@0,0', 'b.9fcoef@4,2', 'c.9fcoef@5,-1,90',
                                 '--size', '8x5'), 2, [],
                    ['trevolt-cli: b.9fcoef takes 4,2,9,5, which is not all in the screen of 8 x 5'
                     + cut,
                     'trevolt-cli: c.9fcoef takes 5,-1,8,4, which is not all in the screen of 8 x 5'
                     + cut,
                     'trevolt-cli: a.9fcoef and b.9fcoef overlap in 4,2,5,3' + move,
                     'trevolt-cli: b.9fcoef and c.9fcoef overlap in 5,2,8,4' + move])
        self.assertEqual(self.targets(), [])

    def test_what_may_overlap_or_be_outside(self):
        expected = empty_screen(8, 5)
        put(expected, self.add_cabinet('a.9fcoef', 1), 0, 0)
        put(expected, self.add_cabinet('b.9fcoef', 2)[:, :4], 4, 2)
        put(expected, turned_pixels(self.add_cabinet('c.9fcoef', 3), 90)[1:], 5, 0)
        result = self.compose('a.9fcoef@0,0', 'b.9fcoef@4,2', 'c.9fcoef@5,-1,90', 'a.9fcoef@8,0',
                              '--size', '8x5', '--allow-overlap', '--allow-outside')
        self.expect(result, 0, err=[])
        self.expect_pixels(self.screen, expected)
        told = self.lines(result.stdout)
        self.assertEqual(told[1:-2],
                         ['a.9fcoef: 1 of its pixels is overwritten by later files',
                          'b.9fcoef -> 4,2,9,5  (5 x 3)',
                          'b.9fcoef: 3 of its pixels are outside the screen and cut',
                          'b.9fcoef: 6 of its pixels are overwritten by later files',
                          'c.9fcoef -> 5,-1,8,4  (5 x 3, turned by 90°)',
                          'c.9fcoef: 3 of its pixels are outside the screen and cut',
                          'a.9fcoef -> 8,0,13,3  (5 x 3)',
                          'a.9fcoef: lies wholly outside the screen of 8 x 5: none of its '
                          'pixels is there'])
        self.assertEqual(told[-1], f'3 files put into {self.screen}  (8 x 5), 1 outside, 0 failed')
        *files, summary = self.objects(self.compose(
            'b.9fcoef@4,2', 'a.9fcoef@8,0', '--size', '8x5', '--allow-outside', '--overwrite',
            '--json'), 0)
        self.assertEqual([file['status'] for file in files], ['placed', 'outside'])
        self.assertEqual([(file['cut_pixels'], file['overwritten_pixels']) for file in files],
                         [(3, 0), (15, 0)])
        self.assertEqual([summary[key] for key in ('placed', 'outside', 'failed')], [1, 1, 0])

    def test_a_damaged_cabinet(self):
        self.add_cabinet('a.9fcoef', 1)
        good = self.add_cabinet('b.9fcoef', 2)
        whole = (self.source / 'a.9fcoef').read_bytes()
        (self.source / 'a.9fcoef').write_bytes(whole[:-1])
        words = ('a.9fcoef@0,0', 'b.9fcoef@5,0')
        result = self.compose(*words)
        self.expect(result, 1, [])
        told = self.lines(result.stderr)
        self.assertEqual(told[0][:24], 'a.9fcoef: cannot be read')
        self.assertEqual(told[1:], ['trevolt-cli: nothing is written: 1 of 2 files failed'])
        self.assertEqual(self.targets(), [])
        result = self.compose('--lenient', *words)
        self.expect(result, 1, err=told[:1])
        self.assertEqual(self.lines(result.stdout)[-1],
                         f'1 file put into {self.screen}  (10 x 3), 1 failed; what could be read is '
                         'there, too')
        *_, summary = self.objects(self.compose('--lenient', '--overwrite', '--json', *words), 1)
        self.assertEqual((summary['placed'], summary['failed'], summary['output']),
                         (1, 1, str(self.screen)))
        expected = empty_screen(10, 3)
        put(expected, good, 5, 0)
        self.expect_pixels(self.screen, expected)

    def test_an_existing_output_stays_unless_it_may_be_replaced(self):
        pixels = self.add_cabinet('a.9fcoef', 1)
        self.screen.write_bytes(b'mine')
        self.expect(self.compose('a.9fcoef@0,0'), 1, [],
                    [f'trevolt-cli: {self.screen}: exists already: '
                     'overwrite it, or choose another target'])
        self.assertEqual(self.screen.read_bytes(), b'mine')
        self.expect(self.compose('--overwrite', '--no-sync', 'a.9fcoef@0,0'), 0, err=[])
        self.expect_pixels(self.screen, pixels)

    def test_wrong_usage_is_told(self):
        self.add_cabinet('a.9fcoef', 1)
        table = self.folder / 'wall.csv'
        table.write_text('a.9fcoef,0\nb.9fcoef,0,x\n')
        no_place = 'FILE@PLACE: {} has no place: give '
        for words, told in (
                ((), 'compose needs files: give FILE@X,Y for each, or --layout TABLE'),
                (('a.9fcoef',), no_place.format('a.9fcoef') + 'FILE@X,Y, and its angle where it is '
                 'turned, as Cab_01.9fcoef@160,0,90'),
                *(((f'a.9fcoef@{place}',), no_place.format(f'a.9fcoef@{place}') +
                   'X,Y or X,Y,ANGLE behind the @, in whole pixels, at most 65535')
                  for place in ('', '0', '0,', 'x,0', '0,0.5', '65536,0', '0,0,90,1')),
                (('a.9fcoef@0,0,45',), 'FILE@PLACE: a.9fcoef@0,0,45 has no angle: give 0, 90, 180, '
                 '270, -90 or -180'),
                (('@0,0',), 'FILE@PLACE: it has no name: give one'),
                (('gone.9fcoef@0,0',), 'the source gone.9fcoef does not exist: check its path'),
                (('a.9fcoef@0,0', '--size', '0x5'),
                 '--size: 0x5 is not a size: give WIDTHxHEIGHT in pixels'),
                (('a.9fcoef@0,0', '--layout', table), 'FILE@PLACE excludes --layout: give one of them'),
                (('a.9fcoef@0,0', '--from', self.source), '--from requires --layout: give both'),
                (('--layout', table), f'--layout: {table}: line 1: has 2 fields: give a file, its x '
                 'and its y, and its angle where it is turned, with commas between\n'
                 f'trevolt-cli: --layout: {table}: line 2: x is no coordinate: give whole pixels from '
                 '-65535 to 65535')):
            with self.subTest(words=words):
                self.expect(self.compose(*words), 2, [], f'trevolt-cli: {told}'.split('\n'))
            if cli_support.IS_WRAPPED and words:
                break
        self.assertEqual(self.targets(), [])

    def test_what_is_wrong_in_a_layout_is_told_with_its_line(self):
        for seed, name in enumerate(('a.9fcoef', 'b.9fcoef')):
            self.add_cabinet(name, seed)
        table = self.folder / 'wall.csv'
        given, row = f'--layout: {table}:', f'{table}: line 2:'
        coordinate = 'coordinate: give whole pixels from -65535 to 65535'
        fields = ('give a file, its x and its y, and its angle where it is turned, with commas '
                  'between')
        gone, text = self.source / 'gone.9fcoef', self.source / 'a.txt'
        for rows, told in (
                ('file,left,y\n', f'{given} line 1: left is no {coordinate}, or the heading '
                                  'file,x,y,angle'),
                ('file,x,y\na.9fcoef,0,\n', f'{given} line 2: has no {coordinate}'),
                ('file,x,y\na.9fcoef,0,0.5\n', f'{given} line 2: 0.5 is no {coordinate}'),
                ('file,x,y\na.9fcoef,0\n',
                 f'{given} line 2: has 2 fields, and the heading has 3: give as many'),
                ('file,x\n', f'{given} line 1: the heading has no y: {fields}'),
                ('a.9fcoef,0,0,0,0\n', f'{given} line 1: has 5 fields: {fields}'),
                ('a.9fcoef,0,0\na.9fcoef,9,0\n',
                 f'{given} line 2: a.9fcoef stands in line 1 already: keep one of the two'),
                ('a.9fcoef,0,0,90\nb.9fcoef,9,0,9\n',
                 f'{given} line 2: 9 is no angle: give 0, 90, 180, 270, -90 or -180'),
                ('*,0,0\n', f'{given} line 1: * has no place: give every file a row of its own'),
                (',0,0\n', f'{given} line 1: has no file: give its name'),
                ('file,x,y\n', f'{given} holds no row: give a file, its x and its y a line'),
                ('a.9fcoef,0,0\ngone.9fcoef,5,0\n',
                 f'{row} the source {gone} does not exist: check its path'),
                ('a.9fcoef,0,0\na.txt,5,0\n', f'{row} {text} is no coefficient file by its name: give one with '
                                                'one of the nine extensions'),
                ('a.9fcoef,0,0\nb.9fcoef,9,-1\n',
                 f'{row} b.9fcoef takes 9,-1,14,2, which is not all in the screen of 14 x 3: move it, or '
                 'allow what is outside to be cut'),
                ('a.9fcoef,0,0\nb.9fcoef,4,0\n',
                 f'{row} a.9fcoef and b.9fcoef overlap in 4,0,5,3: move one of them, or allow overlaps')):
            with self.subTest(rows=rows):
                table.write_text(rows)
                self.expect(self.compose('--layout', table, '--from', self.source), 2, [],
                            [f'trevolt-cli: {told}'])
            if cli_support.IS_WRAPPED:
                break
        self.assertEqual(self.targets(), [])

    @posix_only
    def test_a_pipe_is_refused_and_not_waited_for(self):
        pipe = self.folder / 'pipe.9fcoef'
        os.mkfifo(pipe)
        self.expect(self.compose(f'{pipe}@0,0'), 2, [],
                    [f'trevolt-cli: {pipe} is neither a file nor a folder: give a file'])
        self.expect(self.run_cli('crop', pipe, self.target / 'a.9fcoef', '--rect', '0,0,1,1'), 2, [],
                    [f'trevolt-cli: {pipe} is neither a file nor a folder: give a file'])

    def test_what_programs_are_told(self):
        self.add_cabinet('a.9fcoef', 1)
        self.add_cabinet('b.9fcoef', 2)
        file, other, summary = self.objects(
            self.compose('--json', './a.9fcoef@0,0,90', 'b.9fcoef@4,0'), 0)
        self.assertEqual(file, {
            'type': 'file', 'name': 'a.9fcoef', 'path': './a.9fcoef', 'status': 'placed', 'angle': 90,
            'own_size': {'width': 5, 'height': 3},
            'rect': {'left': 0, 'top': 0, 'right': 3, 'bottom': 5}, 'cut_pixels': 0,
            'overwritten_pixels': 0, 'problems': [], 'losses': [], 'notes': []})
        self.assertEqual(other['rect'], {'left': 4, 'top': 0, 'right': 9, 'bottom': 3})
        self.assertEqual(summary, {
            'type': 'summary', 'version': 1, 'end': 'done', 'exit_status': 0,
            'output': str(self.screen), 'size': {'width': 9, 'height': 5}, 'uncovered_pixels': 15,
            'placed': 2, 'outside': 0, 'failed': 0, 'losses': [], 'errors': []})
        self.expect_page_keys('## What programs are told', file, summary)
        (self.source / 'c.9fcoef').write_bytes(b'none')
        file, summary = self.objects(self.compose('--json', '--overwrite', 'c.9fcoef@0,0'), 1)
        self.assertEqual((file['status'], file['own_size'], file['rect'], len(file['problems'])),
                         ('failed', None, None, 1))
        self.assertEqual((summary['end'], summary['output'], summary['size'], summary['failed']),
                         ('failed', None, None, 1))
        file, _, summary = self.objects(
            self.compose('--json', '--overwrite', 'a.9fcoef@0,0', 'b.9fcoef@0,0'), 2)
        self.assertEqual((file['status'], summary['end'], len(summary['errors']), summary['placed']),
                         ('not_written', 'nothing_to_do', 1, 0))
        (self.source / 'row').mkdir()
        shutil.copy(self.source / 'a.9fcoef', self.source / 'row')
        table = self.source / 'wall.csv'
        table.write_text('row/a.9fcoef,0,0\n')
        file, _ = self.objects(self.compose('--json', '--overwrite', '--layout', table), 0)
        self.assertEqual((file['name'], file['path']),
                         ('row/a.9fcoef', f'{self.source}/row/a.9fcoef'))
