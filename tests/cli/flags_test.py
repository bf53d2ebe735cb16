"""Each flag of the command rotate, and what it prints for programs; cli_test.py runs these."""
import fcntl
import json
import os
import pathlib
import pty
import shutil
import struct
import subprocess
import termios

import jsonschema

import cli_support
from cli_support import (MAGICS, PROGRAM, ROOT, SAMPLES, CliTest, coef_file, posix_only,
                         raw_elements, turned)

SCHEMA = json.loads((ROOT / 'docs' / 'rotate.schema.json').read_text(encoding='utf-8'))
LINE = '{0}.3bcoef -> {0}-{1}°.3bcoef  (4 x 3 -> 3 x 4)'


def turn_lines(names, angle=90):
    return [LINE.format(name, angle) for name in names]


class Flags(CliTest):
    def rotate_places(self, *arguments, **options):
        return self.run_cli('rotate', *arguments, **options)

    def add_all(self, *names):
        for name in names:
            path = self.source / f'{name}.3bcoef'
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(coef_file('.3bcoef', 4, 3, raw_elements(4, 3, 3)))

    def tree(self, folder):
        return sorted(p.relative_to(folder).as_posix() for p in folder.rglob('*') if p.is_file())

    def test_every_form_of_an_angle(self):
        self.add('a.3bcoef', 2, 2)
        forms = {('--angle', '90'): 90, ('--angle=180°',): 180, ('-a', '270'): 270,
                 ('-a', '-90'): 270, ('--angle', '-180°'): 180, ('--angle=-90',): 270,
                 ('-a-180',): 180, ('-a90',): 90}
        if cli_support.IS_WRAPPED:
            forms = {('--angle=180°',): 180, ('-a', '-90'): 270}
        for form, angle in forms.items():
            self.expect(self.rotate_places('-n', *form, self.source, self.target), 0,
                        [f'a.3bcoef -> a-{angle}°.3bcoef  (2 x 2 -> 2 x 2)',
                         f'dry run: 1 file would be turned by {angle}°, 0 failed'], [])

    def test_short_flags_and_flags_behind_the_places(self):
        self.add('a.3bcoef')
        self.expect(self.rotate_places(self.source, self.target, '-qa', 90, '-j', 2, '-s4x3'), 0,
                    [], [])
        self.assertEqual(self.targets(), ['a-90°.3bcoef'])

    def test_what_stands_is_kept_replaced_or_skipped(self):
        raw = self.add('a.3bcoef')
        self.add('b.3bcoef')
        output = self.target / 'a-90°.3bcoef'
        output.write_bytes(b'earlier')
        told = 'a.3bcoef: its output a-90°.3bcoef exists already: overwrite it, or choose another target'
        result = self.rotate('--dry-run')
        self.expect(result, 1, [*turn_lines('b'), 'dry run: 1 file would be turned by 90°, 1 failed'])
        self.assertEqual(len(self.lines(result.stderr)), 1)
        self.assertIn(told, self.lines(result.stderr)[0])
        result = self.rotate()
        self.expect(result, 1, [*turn_lines('b'), '1 file turned by 90°, 1 failed'])
        self.assertIn(told, self.lines(result.stderr)[0])
        self.expect(self.rotate('--skip-existing'), 0,
                    ['a.3bcoef: skipped: its output exists already',
                     'b.3bcoef: skipped: its output exists already',
                     '0 files turned by 90°, 0 failed, 2 skipped'], [])
        self.assertEqual(output.read_bytes(), b'earlier')
        (self.target / 'b-90°.3bcoef').unlink()
        self.expect(self.rotate('--skip-existing'), 0,
                    ['a.3bcoef: skipped: its output exists already', *turn_lines('b'),
                     '1 file turned by 90°, 0 failed, 1 skipped'], [])
        self.expect(self.rotate('--overwrite'), 0,
                    [*turn_lines('ab'), '2 files turned by 90°, 0 failed'], [])
        self.assertEqual(self.body(output, '.3bcoef', 3, 4), turned(90, 4, 3, raw, 3)[2])

    def test_the_demo_wall_replaces_nothing_unasked(self):
        wall = self.folder / 'wall'
        self.expect(self.run_cli('demo', wall), 0)
        cabinet = wall / 'Cab_01.9fcoef'
        whole = cabinet.read_bytes()
        cabinet.write_bytes(b'mine')
        self.expect_words(self.run_cli('demo', wall), 1,
                          f'trevolt-cli: {wall}: its output Cab_01.9fcoef exists already')
        self.assertEqual(cabinet.read_bytes(), b'mine')
        self.expect(self.run_cli('demo', '--overwrite', wall), 0, [f'demo wall written to {wall}'], [])
        self.assertEqual(cabinet.read_bytes(), whole)

    def test_verified_outputs_are_the_same(self):
        for cabinet in (SAMPLES / 'cabinet').iterdir():
            if cabinet.suffix != '.csv':
                shutil.copy(cabinet, self.source)
        plain = self.rotate()
        self.expect(plain, 0, err=[])
        outputs = {p.name: p.read_bytes() for p in self.target.iterdir()}
        self.expect(self.rotate('--verify', '--overwrite'), 0, self.lines(plain.stdout), [])
        self.assertEqual({p.name: p.read_bytes() for p in self.target.iterdir()}, outputs)

    def test_an_origin_is_kept_or_turned_within_the_wall(self):
        name = 'origin_1000_777.9wcoef'
        shutil.copy(SAMPLES / 'awkward' / name, self.source)  # 300 x 140 pixels
        again = self.folder / 'again'
        for flags, origin in ((['--keep-extras'], '1000, 777'),
                              (['--keep-extras', '--wall', '4000x2000'], '1083, 1000')):
            self.expect(self.rotate('--overwrite', *flags), 0,
                        ['origin_1000_777.9wcoef -> origin_1000_777-90°.9wcoef  '
                         '(300 x 140 -> 140 x 300)', '1 file turned by 90°, 0 failed'], [])
            result = self.rotate_places('-na', 90, self.target, again)
            self.expect(result, 0, err=[])
            self.assertEqual(self.lines(result.stdout)[1],
                             f'origin_1000_777-90°.9wcoef: the turned file lacks its origin ({origin})')

    def test_times_are_kept_where_wanted(self):
        self.add('a.3bcoef')
        old = 1_000_000_000_000_000_000
        os.utime(self.source / 'a.3bcoef', ns=(old, old))
        output = self.target / 'a-90°.3bcoef'
        self.expect(self.rotate(), 0)
        self.assertNotEqual(output.stat().st_mtime_ns, old)
        self.expect(self.rotate('--keep-times', '--overwrite'), 0, err=[])
        self.assertEqual(output.stat().st_mtime_ns, old)

    def test_folders_of_folders(self):
        self.add_all('a', 'row 1/b', 'row 1/deep/c')
        (self.source / 'row 1' / 'notes.txt').write_text('x')
        self.expect(self.rotate('--verbose'), 0,
                    ['row 1: passed over: a folder', *turn_lines('a'),
                     '1 file turned by 90°, 0 failed, 1 entry passed over'], [])
        self.expect(self.rotate('--overwrite'), 0,
                    [*turn_lines('a'), '1 file turned by 90°, 0 failed, 1 entry passed over'], [])
        lines = ['row 1/notes.txt: passed over: no coefficient file by its name',
                 *turn_lines(['a', 'row 1/b', 'row 1/deep/c']),
                 '3 files turned by 90°, 0 failed, 1 entry passed over']
        self.expect(self.rotate('-rv', '--overwrite'), 0, lines, [])
        self.assertEqual(self.tree(self.target),
                         ['a-90°.3bcoef', 'row 1/b-90°.3bcoef', 'row 1/deep/c-90°.3bcoef'])

    def test_passed_over_entries_are_named_where_nothing_is_left(self):
        (self.source / 'notes.txt').write_text('x')
        self.expect(self.rotate('-v'), 2,
                    ['notes.txt: passed over: no coefficient file by its name'],
                    [f'trevolt-cli: there is no coefficient file in {self.source}: give a folder that holds some'])

    def test_files_and_folders_together(self):
        self.add_all('a', 'b', 'more/c')
        other = self.folder / 'made' / 'here'
        self.expect(self.rotate_places('-a', 180, self.source / 'b.3bcoef', self.source / 'more', other),
                    0, ['b.3bcoef -> b-180°.3bcoef  (4 x 3 -> 4 x 3)',
                        'c.3bcoef -> c-180°.3bcoef  (4 x 3 -> 4 x 3)',
                        '2 files turned by 180°, 0 failed'], [])
        self.assertEqual(self.tree(other), ['b-180°.3bcoef', 'c-180°.3bcoef'])

    def test_folders_with_names_of_commands_and_flags(self):
        self.add('a.3bcoef')
        for name in ('demo', 'rotate', '-a'):
            shutil.copytree(self.source, self.folder / name)
        self.expect(self.rotate_places('-n', '-a', 90, 'demo', 'verify', cwd=self.folder), 0, err=[])
        self.expect(self.rotate_places('-n', '-a', 90, '--', 'rotate', '-a', cwd=self.folder), 0, err=[])
        self.expect(self.rotate_places('-n', '-a', 90, '--', '-a', 'new', cwd=self.folder), 0, err=[])

    def test_a_text_in_place_of_the_angle(self):
        self.add('a.b.3bcoef')
        self.expect(self.rotate('--suffix', 'cw'), 0,
                    ['a.b.3bcoef -> a-cw.b.3bcoef  (4 x 3 -> 3 x 4)',
                     '1 file turned by 90°, 0 failed'], [])
        self.assertEqual(self.targets(), ['a-cw.b.3bcoef'])

    def test_shards_take_every_file_once(self):
        names = [f'cab{i}' for i in range(5)]
        self.add_all(*names)
        for number, taken in ((1, names[::2]), (2, names[1::2])):
            self.expect(self.rotate('--shard', f'{number}/2'), 0,
                        [*turn_lines(taken), f'{len(taken)} files turned by 90°, 0 failed'], [])
        self.assertEqual(self.targets(), [f'{name}-90°.3bcoef' for name in names])

    def test_a_folder_in_an_outputs_place_stays(self):
        self.add_all('a')
        (self.target / 'a-90°.3bcoef').mkdir()
        for flags in ([], ['--overwrite'], ['--skip-existing']):
            self.expect(self.rotate(*flags), 1, ['0 files turned by 90°, 1 failed'],
                        ['a.3bcoef: its output a-90°.3bcoef is a folder: choose another target'])
        for flags in (['-n'], ['-n', '--overwrite']):
            self.expect(self.rotate(*flags), 1, ['dry run: 0 files would be turned by 90°, 1 failed'],
                        ['a.3bcoef: its output a-90°.3bcoef is a folder: choose another target'])

    def test_listed_files_open(self):
        self.add_all('a', 'b', 'more/c')
        (self.source / 'notes.txt').write_text('x')
        missing = self.folder / 'missing'
        as_listed = lambda *names: [os.path.join(self.source, f'{name}.3bcoef') for name in names]
        listed = lambda *flags: self.rotate_places('--list', '-a', 90, *flags, self.source, missing)
        slashes = lambda lines: [line.replace('\\', '/') for line in lines]
        if not cli_support.IS_WRAPPED:
            self.expect(listed(), 0, as_listed('a', 'b'), [])
            self.expect(self.rotate_places('--list', self.source), 0, as_listed('a', 'b'), [])
            self.expect(self.rotate_places('--list', '--skip-existing', self.source, missing), 2, [],
                        ['trevolt-cli: rotate needs an angle: give --angle 90, 180 or 270, or --angles '
                         'TABLE'])
            self.expect(listed('-r', '--shard', '2/2'), 0, as_listed('b'), [])
            self.expect(self.rotate_places('--list', '-a', 90, self.source), 0, as_listed('a', 'b'), [])
            self.expect(self.rotate_places('-a', 90, self.source, '--list', self.source / 'more', missing),
                        0, as_listed('a', 'b', 'more/c'), [])
            self.expect(self.rotate_places('--list', '-a', 90), 2, [],
                        ['trevolt-cli: rotate needs a SOURCE and a TARGET: see trevolt-cli rotate --help'])
            (self.target / 'a-90°.3bcoef').write_bytes(b'earlier')
            self.expect(self.rotate('--list', '--skip-existing'), 0, as_listed('b'), [])
            self.expect(self.rotate('--list'), 0, as_listed('a', 'b'), [])
            (self.target / 'b-90°.3bcoef').mkdir()  # which fails the run
            self.expect(self.rotate('--list', '--skip-existing'), 0, as_listed('b'), [])
        result = listed('-r', '-v', '-0')
        self.expect(result, 0,
                    err=['notes.txt: passed over: no coefficient file by its name'])
        names = result.stdout.decode('utf-8').split('\0')
        self.assertEqual(slashes(names), [*slashes(as_listed('a', 'b', 'more/c')), ''])
        for name in names[:-1]:
            self.assertTrue(pathlib.Path(name.replace('\\', '/')).is_file(), name)
        self.assertFalse(missing.exists())

    @posix_only
    def test_odd_names_are_listed_as_they_are_and_told_escaped(self):
        odd = 'a\n\x1b[2J\u202eb'
        self.add_all(odd)
        name = f'{odd}.3bcoef'.encode()
        result = self.rotate('--list', '-0')
        self.expect(result, 0, err=[])
        self.assertEqual(result.stdout, os.fsencode(self.source) + b'/' + name + b'\0')
        shown = 'a\\x0A\\x1B[2J\\u202Eb'
        self.expect(self.rotate(), 0, [*turn_lines([shown]), '1 file turned by 90°, 0 failed'], [])
        self.assertEqual(self.targets(), [f'{odd}-90°.3bcoef'])
        (self.source / f'{odd}.3bcoef').write_bytes(b'damaged')
        result = self.rotate('--overwrite')
        self.expect(result, 1)
        self.assertTrue(self.lines(result.stderr)[0].startswith(f'{shown}.3bcoef: '), result.stderr)

    @posix_only
    def test_a_listed_name_that_is_not_utf8_is_told(self):
        self.add('a.3bcoef')
        shutil.copy(self.source / 'a.3bcoef', os.fsencode(self.source) + b'/b\xff.3bcoef')
        self.expect(self.rotate('--list'), 1, [f'{self.source}/a.3bcoef'],
                    ['b\\xFF.3bcoef: passed over: its name is not valid UTF-8'])

    def test_a_dry_run_writes_nothing_and_tells_the_same(self):
        self.add_all('a', 'row/b')
        (self.source / 'damaged.3bcoef').write_bytes(b'damaged')
        new = self.folder / 'new'
        run = lambda *flags: self.rotate_places('-ra', 90, '--size', '5x2', *flags, self.source, new)
        dry = run('-n', '--manifest', self.folder / 'sums')
        self.assertFalse(new.exists())
        self.assertFalse((self.folder / 'sums').exists())
        real = run()
        self.expect(dry, 1, self.lines(real.stdout)[:-1] +
                    ['dry run: 2 files would be turned by 90°, 1 failed'], self.lines(real.stderr))
        self.assertEqual(self.lines(real.stdout)[-1], '2 files turned by 90°, 1 failed')

    def test_a_quiet_run_tells_what_goes_wrong(self):
        self.add('a.3bcoef')
        self.expect(self.rotate('--quiet'), 0, [], [])
        (self.source / 'damaged.3bcoef').write_bytes(b'damaged')
        (self.source / 'notes.txt').write_text('x')
        result = self.rotate('-q', '--overwrite')
        self.expect(result, 1, [])
        self.assertEqual([line.split(':')[0] for line in self.lines(result.stderr)],
                         ['damaged.3bcoef'])

    def test_what_is_told_is_the_same_for_any_number_of_jobs(self):
        self.add_all(*(f'cab{i}' for i in range(12)), 'row/a', 'row/b')
        (self.source / 'cab5x.3bcoef').write_bytes(b'damaged')
        (self.source / 'notes.txt').write_text('x')
        (self.target / 'cab3-90°.3bcoef').write_bytes(b'earlier')
        for flags in (['-n'], ['-nv'], ['-n', '--json'], ['--list'], ['-n', '--skip-existing']):
            one = self.rotate('-r', *flags, '--jobs', 1)
            for jobs in ((3,) if cli_support.IS_WRAPPED else (2, 3, 16)):
                self.expect(self.rotate('-r', *flags, '--jobs', jobs), one.returncode,
                            self.lines(one.stdout), self.lines(one.stderr))

    def test_wildcards(self):
        self.add_all('a', 'b', 'c*')if not cli_support.IS_WRAPPED else self.add_all('a', 'b')
        pattern = f'{self.source}/*.3bcoef'
        if cli_support.IS_WRAPPED:
            self.expect(self.rotate_places('-na', 90, pattern, self.target), 0,
                        [*turn_lines('ab'), 'dry run: 2 files would be turned by 90°, 0 failed'], [])
            self.expect(self.rotate_places('-na', 90, f'{self.source}/x*', self.target), 2, [],
                        [f'trevolt-cli: SOURCE: {self.source}/x* stands for no file or folder: '
                         'check it'])
            return
        self.expect(self.rotate_places('-na', 90, pattern, self.target), 2, [],
                    [f'trevolt-cli: the source {pattern} does not exist: check its path'])
        self.expect(self.rotate_places('-na', 90, f'{self.source}/c*.3bcoef', self.target), 0,
                    [*turn_lines(['c*']), 'dry run: 1 file would be turned by 90°, 0 failed'], [])


class Angles(CliTest):
    """A wall whose cabinets are mounted in different ways."""

    def setUp(self):
        super().setUp()
        self.table = self.folder / 'mounting.csv'
        self.raws = {name: self.add(f'{name}.3bcoef', 4 + i)
                     for i, name in enumerate('abcd')}

    def rotate_by(self, table, *arguments):
        self.table.write_bytes(table.encode())
        return self.run_cli('rotate', '--angles', self.table, *arguments, self.source, self.target)

    def test_each_file_is_turned_by_its_row(self):
        result = self.rotate_by('file,angle\r\na.3bcoef,0\r\n"b.3bcoef",90°\r\nc.3bcoef,-180\r\n'
                                '*,-90\r\n')
        self.expect(result, 0, ['a.3bcoef -> a-0°.3bcoef  (4 x 3 -> 4 x 3)',
                                'b.3bcoef -> b-90°.3bcoef  (5 x 3 -> 3 x 5)',
                                'c.3bcoef -> c-180°.3bcoef  (6 x 3 -> 6 x 3)',
                                'd.3bcoef -> d-270°.3bcoef  (7 x 3 -> 3 x 7)',
                                '4 files turned, 0 failed'], [])
        self.assertEqual((self.target / 'a-0°.3bcoef').read_bytes(),
                         (self.source / 'a.3bcoef').read_bytes())
        for name, angle, width, height in (('b', 90, 3, 5), ('c', 180, 6, 3), ('d', 270, 3, 7)):
            own_width = {'b': 5, 'c': 6, 'd': 7}[name]
            self.assertEqual(
                self.body(self.target / f'{name}-{angle}°.3bcoef', '.3bcoef', width, height),
                turned(angle, own_width, 3, self.raws[name], 3)[2])

    @posix_only
    def test_a_table_may_come_through_a_pipe(self):
        reading, writing = os.pipe()
        os.write(writing, b'*,180\n')
        os.close(writing)
        with os.fdopen(reading):
            result = self.run_cli('rotate', '--angles', f'/dev/fd/{reading}', self.source,
                                  self.target, pass_fds=(reading,))
        self.expect(result, 0, None, [])
        self.assertEqual(self.targets(), [f'{name}-180°.3bcoef' for name in 'abcd'])

    @posix_only
    def test_a_table_that_is_too_large_is_told_through_a_pipe_as_well(self):
        self.table.write_bytes(b'*,90\n'.ljust((64 << 20) + 1, b'\n'))
        with subprocess.Popen(['cat', self.table], stdout=subprocess.PIPE) as giver:
            piped = self.run_cli('rotate', '-n', '--angles', '/dev/stdin', self.source, self.target,
                                 stdin=giver.stdout)
        for result, table in ((piped, '/dev/stdin'),
                              (self.run_cli('rotate', '-n', '--angles', self.table, self.source,
                                            self.target), self.table)):
            self.expect(result, 2, [], [f'trevolt-cli: --angles: {table}: cannot be read whole: '
                                        'give a file of 67108864 bytes at most'])

    def test_what_does_not_fit_is_named_before_anything_is_written(self):
        given = f'--angles: {self.table}:'
        table = f'the table of angles {self.table}'
        fields = 'fields are separated by commas, and this row has {}: save the table with commas between'
        angle = 'is no angle: give 0, 90, 180, 270, -90 or -180'
        for text, told in (
                ('a.3bcoef,90\nb.3bcoef,90\nx.3bcoef,90\n d.3bcoef,0\n',
                 [f'{table} has no row for c.3bcoef: add one, or a row for *',
                  f'{table} has no row for d.3bcoef: add one, or a row for *',
                  f'{table} names  d.3bcoef in line 4, which is no file of the sources: correct the row, '
                  'also the blanks around the name',
                  f'{table} names x.3bcoef in line 3, which is no file of the sources: correct the row']),
                ('a.3bcoef,45\n*\na.3bcoef,0\na.3bcoef,90\n*,\n,0\nb.3bcoef,1,2\n',
                 [f'{given} line 1: 45 {angle}, or the heading file,angle',
                  f'{given} line 2: has 1 field: give a file and its angle, with a comma between',
                  f'{given} line 4: a.3bcoef stands in line 3 already: keep one of the two',
                  f'{given} line 5: has no angle: give 0, 90, 180, 270, -90 or -180',
                  f'{given} line 6: has no file: give its name, or * for all that have no row',
                  f'{given} line 7: has 3 fields: give a file and its angle, with a comma between']),
                ('file,angle\n', [f'{given} holds no row: give a file and its angle a line']),
                ('file,angle\na.3bcoef\n',
                 [f'{given} line 2: has 1 field, and the heading has 2: give as many']),
                ('file,x,y\n', [f'{given} line 1: the heading has no angle: give a file and its angle, '
                                'with a comma between']),
                ('file;angle\na.3bcoef\t90\n', [f'{given} line 1: {fields.format("semicolons")}',
                                                f'{given} line 2: {fields.format("tabs")}']),
                ('"a.3bcoef"x,90\n*,90\n"b,90\n',
                 [f'{given} line 1: text follows a closing quote: put two quotes for one',
                  f'{given} line 3: a quote is not closed: put one behind the field, or two for one in '
                  'it'])):
            with self.subTest(text=text):
                self.expect(self.rotate_by(text), 2, [], [f'trevolt-cli: {line}' for line in told])
        self.assertEqual(self.targets(), [])

    def test_a_table_that_is_no_text_is_told_once(self):
        for content, told in (
                ('*,90\n'.encode('utf-16'), 'holds zero bytes, as no table does: save it as text, in UTF-8'),
                ((SAMPLES / 'cabinet' / 'Cab_01.9fcoef').read_bytes(),
                 'holds zero bytes, as no table does: save it as text, in UTF-8'),
                (b'\xff.3bcoef,90\n', "line 1: the file's name is not valid UTF-8: save the table as "
                                      'UTF-8')):
            self.table.write_bytes(content)
            result = self.run_cli('rotate', '--angles', self.table, self.source, self.target)
            self.expect(result, 2, [], [f'trevolt-cli: --angles: {self.table}: {told}'])

    @posix_only
    def test_a_table_that_cannot_be_read_is_told_with_the_reason(self):
        self.table.touch()
        self.table.chmod(0)
        for table, reason in ((self.table, 'Permission denied'), (self.source, 'Is a directory'),
                              (self.folder / 'gone', 'No such file or directory')):
            result = self.run_cli('rotate', '--angles', table, self.source, self.target, is_bound=True)
            self.expect(result, 2, [], [f'trevolt-cli: --angles: {table}: cannot be opened: {reason}: '
                                        'give a file that can be read'])
        self.assertEqual(self.targets(), [])

    def test_a_file_in_a_folder_is_named_with_it(self):
        (self.source / 'row').mkdir()
        shutil.move(self.source / 'a.3bcoef', self.source / 'row')
        result = self.rotate_by('row/a.3bcoef,180\n*,90\n', '-r', '--shard', '4/4')
        self.expect(result, 0, ['row/a.3bcoef -> row/a-180°.3bcoef  (4 x 3 -> 4 x 3)',
                                '1 file turned, 0 failed'], [])


class Json(CliTest):
    def objects(self, output):
        """The objects of a run, each held against the schema."""
        validator = jsonschema.Draft202012Validator(SCHEMA)
        objects = [json.loads(line) for line in self.lines(output)]
        for one in objects:
            validator.validate(one)
        return objects

    def run_json(self, status, *arguments):
        result = self.rotate('--json', *arguments)
        self.expect(result, status, err=[])
        return self.objects(result.stdout)

    def summary(self, **values):
        return {'type': 'summary', 'version': 1, 'end': 'done', 'exit_status': 0, 'written': 0,
                'failed': 0, 'skipped': 0, 'passed_over': 0, 'errors': [],
                'manifest_error': None, 'report_error': None} | values

    def test_the_schema_refuses_what_is_none(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)
        validator = jsonschema.Draft202012Validator(SCHEMA)
        whole = self.summary()
        self.assertTrue(validator.is_valid(whole))
        for change in ({'more': 1}, {'type': 'plan'}, {'end': 'failed'}, {'failed': 1},
                       {'exit_status': 2}, {'errors': ['x']}, {'written': -1}, {'version': 2}):
            self.assertFalse(validator.is_valid(whole | change), change)
        for key in whole:
            self.assertFalse(validator.is_valid({k: v for k, v in whole.items() if k != key}), key)

    def test_success_and_what_the_page_shows(self):
        self.add('a.3bcoef')
        (self.source / 'notes.txt').write_text('x')
        size = lambda width, height: {'width': width, 'height': height}
        plan, file, summary = self.run_json(0, '--size', '5x2')
        self.assertEqual(plan | {'program': ''}, {
            'type': 'plan', 'version': 1, 'program': '', 'sources': [str(self.source)],
            'target': str(self.target), 'dry_run': False, 'shard': {'number': 1, 'count': 1},
            'files': 1, 'passed_over': [{'name': 'notes.txt',
                                         'reason': 'no coefficient file by its name'}]})
        self.assertEqual(file, {
            'type': 'file', 'name': 'a.3bcoef', 'output': 'a-90°.3bcoef', 'status': 'turned',
            'angle': 90, 'own_size': size(4, 3), 'size': size(5, 2), 'turned_size': size(2, 5),
            'problems': [], 'losses': [],
            'notes': ['its own size is 4 x 3, it was turned at 5 x 2: 4 of its pixels are cut off, '
                      '2 are filled with defaults']})
        self.assertEqual(summary, self.summary(written=1, passed_over=1))
        page = (ROOT / 'docs' / 'json.md').read_text(encoding='utf-8')
        shown = [json.loads(line) for line in page.split('```')[1].splitlines() if line[:1] == '{']
        self.assertEqual([list(one) for one in shown], [list(plan), list(file), list(summary)])
        for one in shown:
            jsonschema.Draft202012Validator(SCHEMA).validate(one)

    def test_a_mixture(self):
        self.add('a.3bcoef')
        self.add('b.3bcoef')
        (self.source / 'c.3bcoef').write_bytes(b'damaged')
        self.expect(self.rotate('--shard', '1/3'), 0)
        objects = self.run_json(1, '--skip-existing', '--dry-run')
        self.assertTrue(objects[0]['dry_run'])
        self.assertEqual([(one['status'], one['output'], one['own_size'] is None, len(one['problems']))
                          for one in objects[1:-1]],
                         [('skipped', None, True, 0), ('turned', 'b-90°.3bcoef', False, 0),
                          ('failed', None, True, 1)])
        self.assertEqual(objects[-1], self.summary(end='failed', exit_status=1, written=1, failed=1,
                                                   skipped=1))

    def test_failure_alone_and_a_lenient_one(self):
        shutil.copy(SAMPLES / 'awkward' / 'cut_short.9fcoef', self.source)
        for flags, output in (([], None), (['--lenient'], 'cut_short-90°.9fcoef')):
            _, file, summary = self.run_json(1, *flags)
            self.assertEqual((file['status'], file['output']), ('failed', output))
            self.assertEqual(summary, self.summary(end='failed', exit_status=1, failed=1,
                                                   written=0 if output is None else 1))

    def test_nothing_to_do(self):
        self.assertEqual(self.run_json(2), [
            self.summary(end='nothing_to_do', exit_status=2,
                         errors=[f'there is no coefficient file in {self.source}: give a folder that holds some'])])

    @posix_only
    def test_names_of_all_sorts(self):
        for name in ('quote"\\.3bcoef', 'a\nb.3bcoef', '\x1b\u202e箱.3bcoef'):
            self.add(name)
        shutil.copy(self.source / 'a\nb.3bcoef', os.fsencode(self.source) + b'/x\xff.3bcoef')
        objects = self.run_json(1)
        self.assertEqual([one['name'] for one in objects[1:-1]],
                         ['x\\xFF.3bcoef', '\x1b\u202e箱.3bcoef', 'a\nb.3bcoef', 'quote"\\.3bcoef'])
        self.assertEqual({one['angle'] for one in objects[1:-1]}, {90})
        table = self.folder / 'angles.csv'
        table.write_text('*,180\n')
        result = self.run_cli('rotate', '--json', '--angles', table, self.source, self.target)
        self.expect(result, 1, err=[])
        self.assertEqual([one['angle'] for one in self.objects(result.stdout)[1:-1]],
                         [0, 180, 180, 180])  # no row names what is no text

    @posix_only
    def test_a_manifest_that_does_not_come_to_stand(self):
        self.add('a.3bcoef')
        sums = self.folder / 'sums'
        sums.write_text('kept')
        self.assertEqual(self.run_json(2, '--manifest', sums), [
            self.summary(end='nothing_to_do', exit_status=2,
                         errors=[f'the manifest {sums} exists already: choose another name'])])

    @posix_only
    def test_an_interrupted_run(self):
        out = self.interrupted_rotate()
        objects = self.objects(out)
        written = len(self.targets())
        self.assertLess(written, 200)
        self.assertEqual(objects[0]['files'], 200)
        self.assertEqual([one['output'] for one in objects[1:-1]], self.targets())
        self.assertEqual(objects[-1],
                         self.summary(end='interrupted', exit_status=130, written=written))


class Progress(CliTest):
    """What a terminal shows while a run is under way."""

    def on_terminal(self, *arguments, columns=60):
        """The program's status and what a terminal at its standard error gets."""
        master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack('HHHH', 24, columns, 0, 0))
        result = subprocess.run([*PROGRAM, 'rotate', '-a', '90', *arguments, self.source, self.target],
                                stdout=subprocess.PIPE, stderr=slave, timeout=60)
        os.close(slave)
        shown = b''
        try:
            while piece := os.read(master, 65536):
                shown += piece
        except OSError:  # the terminal's other end is closed
            pass
        os.close(master)
        return result.returncode, shown.decode('utf-8')

    @posix_only
    def test_a_bar_on_a_terminal(self):
        for i in range(3):
            self.add(f'cab{i}.3bcoef')
        for columns, first in ((60, f'[{"-" * 36}]    0 %  0 of 3 files'),
                               (30, '  0 %  0 of 3 files'), (10, '0 of 3 fi')):
            status, shown = self.on_terminal('--overwrite', columns=columns)
            self.assertEqual(status, 0)
            bars = [text for text in shown.split('\r') if text.strip(' ')]
            self.assertEqual(len(bars), 3)
            self.assertTrue(bars[0].startswith(first), bars)
            self.assertTrue(all(len(text) < columns for text in bars), bars)
            self.assertEqual(shown[-len(bars[-1]) - 2:], '\r' + ' ' * len(bars[-1]) + '\r')

    @posix_only
    def test_no_bar_where_nobody_wants_one(self):
        self.add('a.3bcoef')
        self.add('b.3bcoef')
        for flags in (['-q'], ['--json'], ['--list']):
            self.assertEqual(self.on_terminal('--overwrite', *flags), (0, ''))
