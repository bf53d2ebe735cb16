"""What people mistype and forget, and what stands in their way; cli_test.py runs these."""
import os
import re
import resource
import shutil
import struct
import subprocess

import cli_support
from cli_support import SAMPLES, CliTest, posix_only

NO_ANGLE = 'rotate needs an angle: give --angle 90, 180 or 270, or --angles TABLE'
NOT_AN_ANGLE = '--angle: {} is no angle: give 90, 180, 270, -90 or -180'
NOT_A_SIZE = '--size: {} is not a size: give WIDTHxHEIGHT in pixels'
NO_OPTION = 'there is no option {} for rotate: {}'
PLACES = 'rotate needs a SOURCE and a TARGET: see trevolt-cli rotate --help'
TURN = ('rotate', '-a', '90')
BOTH = ('{S}', '{T}')

# Arguments and what is told, both with {S} and {T} for source and target, {F} for a file of the source,
# {M} for what is missing, {X} for a text file, {D} for the folder of all. Each ends with status 2, and
# the first of each kind are tried under Wine, too.
USAGE = {
    'nothing': [((), 'name a command: rotate, compose, crop, convert, info, diff, preview, verify, demo; see trevolt-cli --help')],
    'command': [
        (('rotat', *BOTH), 'there is no command rotat: did you mean rotate?'),
        (('Rotate', *BOTH), 'there is no command Rotate: did you mean rotate?'),
        (('turn', *BOTH), 'there is no command turn: the commands are rotate, compose, crop, convert, info, diff, preview, verify, demo'),
        (('--angle', '90', *BOTH), 'there is no option --angle before a command: name one first: '
                                   'rotate, compose, crop, convert, info, diff, preview, verify, demo'),
        (('', *BOTH), 'there is no command : the commands are rotate, compose, crop, convert, info, diff, preview, verify, demo'),
    ],
    'flag': [
        (('rotate', '--angel', '90', *BOTH), NO_OPTION.format('--angel', 'did you mean --angle?')),
        (('rotate', '-angle', '90', *BOTH), NO_OPTION.format('-angle', 'did you mean --angle?')),
        ((*TURN, '--over-write', *BOTH), NO_OPTION.format('--over-write', 'did you mean --overwrite?')),
        ((*TURN, '--skip_existing', *BOTH),
         NO_OPTION.format('--skip_existing', 'did you mean --skip-existing?')),
        ((*TURN, '--frobnicate', *BOTH), NO_OPTION.format('--frobnicate', 'see trevolt-cli rotate --help')),
        ((*TURN, '-x', *BOTH), NO_OPTION.format('-x', 'see trevolt-cli rotate --help')),
        ((*TURN, '--jbos=2'), NO_OPTION.format('--jbos', 'did you mean --jobs?')),
        (('rotate', '-90', *BOTH), NO_OPTION.format('-90', 'see trevolt-cli rotate --help')),
        (('demo', '--force', '{T}'), 'there is no option --force for demo: see trevolt-cli demo --help'),
        ((*TURN, '--lenient=yes', *BOTH), '--lenient takes no value: leave out =yes'),
        ((*TURN, '-a', '180', *BOTH), '--angle is given twice: give it once'),
    ],
    'missing': [
        (('rotate', *BOTH), NO_ANGLE),
        (('rotate',), PLACES),
        ((*TURN, '{S}'), PLACES),
        ((*BOTH, 'rotate'), 'there is no command {S}: the commands are rotate, compose, crop, convert, info, diff, preview, verify, demo'),
        (('rotate', *BOTH, '--angle'), '--angle has no value: give 90|180|270'),
        ((*TURN, '--size', '--lenient', *BOTH), '--size has no value: give WIDTHxHEIGHT'),
        (('verify',), 'verify needs a MANIFEST: see trevolt-cli verify --help'),
        (('demo',), 'demo needs a FOLDER: see trevolt-cli demo --help'),
        (('verify', '{X}', '{X}'), '{X} is one word too many for verify: see trevolt-cli verify --help'),
        (('demo', '{T}', '{S}'), '{S} is one word too many for demo: see trevolt-cli demo --help'),
    ],
    'angle': [
        *((('rotate', f'--angle={text}', *BOTH), NOT_AN_ANGLE.format(text))
          for text in ('45', '360', '0x5A', '+90', '90.0', '-270', 'right')),
        (('rotate', '--angle', '0', *BOTH), '--angle: 0 turns nothing: give 90, 180, 270, -90 or -180'),
        (('rotate', '--angle', '', *BOTH), '--angle: it is empty: give 90|180|270'),
        ((*TURN, '--angles', '{X}', *BOTH), '--angle excludes --angles: give one of them'),
        (('rotate', '--angles', '{M}', *BOTH), '{M}: cannot be opened: No such file or directory'),
        (('rotate', '--angles', '{S}', *BOTH), '{S}: cannot be opened: Is a directory'),
        (('rotate', '--angles', '{X}', *BOTH),
         '{X}: line 1: has 1 field: give a file and its angle, with a comma between'),
    ],
    'value': [
        ((*TURN, '--size', '', *BOTH), '--size: it is empty: give WIDTHxHEIGHT'),
        *(((*TURN, f'--size={text}', *BOTH), NOT_A_SIZE.format(text))
          for text in ('8', '8x', '0x8', '-8x8', '8*8')),
        ((*TURN, '-s', '65536x1', *BOTH), '--size: 65536x1 is above 65535 in one direction: give less'),
        ((*TURN, '--max-size', '2x2', '-s', '3x2', *BOTH),
         '--size: 3x2 is above --max-size 2x2: give one that fits'),
        ((*TURN, '-j', '0', *BOTH), '--jobs: 0 is no number of threads: give 1 to 256'),
        ((*TURN, '-j', '0x2', *BOTH), '--jobs: 0x2 is no number of threads: give 1 to 256'),
        ((*TURN, '--shard', '3/2', *BOTH),
         '--shard: 3/2 is no part of a run: give I/N, with I from 1 to N'),
        ((*TURN, '--shard', '0/2', *BOTH),
         '--shard: 0/2 is no part of a run: give I/N, with I from 1 to N'),
        ((*TURN, '--suffix', 'a/b', *BOTH),
         '--suffix: "a/b" cannot stand in a name: give letters, digits, - or _'),
        ((*TURN, '--suffix', '', *BOTH), '--suffix: it is empty: give TEXT'),
        ((*TURN, '--max-memory', '1GB', *BOTH),
         '--max-memory: 1GB is no number of bytes: give one, or one with K, M, G or T'),
        ((*TURN, '--wall', '9x9', *BOTH), '--wall requires --keep-extras: give both'),
        ((*TURN, '--keep-extras', '--wall', '9', *BOTH),
         '--wall: 9 is not a size: give WIDTHxHEIGHT in pixels'),
    ],
    'together': [
        ((*TURN, '--overwrite', '--skip-existing', *BOTH),
         '--overwrite excludes --skip-existing: give one of them'),
        ((*TURN, '--json', '-q', *BOTH), '--json excludes --quiet: give one of them'),
        ((*TURN, '--json', '--list', *BOTH), '--list excludes --json: give one of them'),
        ((*TURN, '-qv', *BOTH), '--quiet excludes --verbose: give one of them'),
        ((*TURN, '-0', *BOTH), '--null requires --list: give both'),
        ((*TURN, '--manifest', '', *BOTH), '--manifest: it is empty: give FILE'),
    ],
    'place': [
        ((*TURN, '{M}', '{T}'), 'the source {M} does not exist: check its path'),
        ((*TURN, '{X}', '{T}'), 'the source {X} is no coefficient file by its name'),
        ((*TURN, '{S}', '{X}'), 'the target {X} is not a folder: choose another'),
        ((*TURN, '{S}', '{S}'), 'source and target are the same folder: choose another target'),
        ((*TURN, '', '{T}'), 'SOURCE: it is empty: give a file or folder'),
        ((*TURN, '{S}', ''), 'TARGET: it is empty: give a folder'),
        (('rotate', '--version'), '--version stands without a command: call trevolt-cli --version'),
        ((*TURN, '{S}', '{F}', '{T}'), '{F} is named twice as a source: name it once'),
        ((*TURN, '{T}', '{M}'), 'there is no coefficient file in {T}: give a folder that holds some'),
        ((*TURN, '--screen', *BOTH), 'a whole screen is exactly one coefficient file, but {S} holds 2: give '
         'one file'),
        ((*TURN, '--manifest', '{X}', *BOTH), 'the manifest {X} exists already: choose another name'),
        ((*TURN, '--manifest', '{M}', '{S}', '{M}'), 'the manifest {M} is the target: choose another name'),
        ((*TURN, '--report', '{M}.html', '{S}', '{M}.html'),
         'the report {M}.html is the target: choose another name'),
        ((*TURN, '--manifest', '{M}/sums', *BOTH), 'the manifest {M}/sums lies in the folder {M}/, which does not exist: make it, or choose another'),
        ((*TURN, '--report', '{M}/a.html', *BOTH), 'the report {M}/a.html lies in the folder {M}/, which does not exist: make it, or choose another'),
        ((*TURN, '--manifest', '{X}/sums', *BOTH), 'the manifest {X}/sums lies in {X}/, which is no folder: choose another'),
        ((*TURN, '--manifest', '{D}', *BOTH), 'the manifest {D} is a folder: give the name of a file'),
        ((*TURN, '--manifest', '{T}', *BOTH), 'the manifest {T} is the target: choose another name'),
        (('verify', '{M}'), 'the manifest {M} cannot be read: No such file or directory'),
        (('demo', '{X}'), '{X}: the folder cannot be made, written to or synced: Not a directory'),
        (('demo', ''), 'FOLDER: it is empty: give a folder'),
        (('verify', ''), 'MANIFEST: it is empty: give a file'),
    ],
}


class Mistakes(CliTest):
    def setUp(self):
        super().setUp()
        for name in ('a.3bcoef', 'b.3bcoef'):
            self.add(name)
        self.text = self.folder / 'notes.txt'
        self.text.write_text('some notes\n')
        self.places = {'{S}': self.source, '{T}': self.target, '{F}': self.source / 'a.3bcoef',
                       '{M}': self.folder / 'missing', '{X}': self.text, '{D}': self.folder}
        self.before = self.state()

    def state(self):
        return {str(path): (path.read_bytes() if path.is_file() and not path.is_symlink() else None)
                for path in self.folder.rglob('*')}

    def fill(self, text):
        for place, path in self.places.items():
            text = text.replace(place, str(path))
        return text

    def expect_told(self, result, status, told):
        """The mistake in the first line, and nothing done."""
        errors = self.lines(result.stderr)
        self.expect(result, status, [])
        self.assertTrue(errors, 'nothing is told')
        self.assertIn(self.fill(told), errors[0])
        for line in errors:
            self.assertTrue(line.startswith('trevolt-cli: '), line)
        self.assertEqual(self.state(), self.before)

    def test_wrong_usage_is_named_and_nothing_is_done(self):
        tried = 0
        for kind, mistakes in USAGE.items():
            for arguments, told in mistakes[:2] if cli_support.IS_WRAPPED else mistakes:
                with self.subTest(kind=kind, arguments=arguments):
                    result = self.run_cli(*map(self.fill, arguments))
                    self.expect_told(result, 2, told)
                    tried += 1
        self.assertGreaterEqual(tried, 15 if cli_support.IS_WRAPPED else 60)

    def test_what_an_option_would_be_is_told_exactly(self):
        self.expect(self.run_cli('rotate', '--angel', 90, self.source, self.target), 2, [],
                    ['trevolt-cli: there is no option --angel for rotate: did you mean --angle?'])

    def test_the_mistyped_is_named_before_the_missing_and_the_wrong(self):
        self.expect_told(self.run_cli('rotate', '--angle', 45, '--lenint'), 2,
                         'there is no option --lenint for rotate: did you mean --lenient?')
        self.expect_told(self.run_cli('rotate', '--angle', 45), 2, '45 is no angle')

    @posix_only
    def test_a_mistyped_word_moves_no_cursor(self):
        self.expect(self.run_cli('rotate', '--\x1b[2J\u202e', self.source), 2, [],
                    ['trevolt-cli: there is no option --\\x1B[2J\\u202E for rotate: '
                     'see trevolt-cli rotate --help'])

    @posix_only
    def test_arguments_that_are_no_text_are_told(self):
        for arguments, told in (((b'\xff', self.target), 'SOURCE: the name \\xFF is not valid UTF-8: rename it'),
                                ((self.source, b'\xff'), 'TARGET: the name \\xFF is not valid UTF-8: rename it'),
                                ((b'--\xff', self.source), 'there is no option --\\xFF for rotate')):
            result = subprocess.run([*cli_support.PROGRAM, *TURN, *arguments], capture_output=True)
            self.expect_told(result, 2, told)

    @posix_only
    def test_places_that_are_no_files(self):
        os.mkfifo(self.folder / 'pipe.3bcoef')
        for folder in (self.folder, self.source):
            (folder / 'nowhere.3bcoef').symlink_to(self.folder / 'gone')
        (self.folder / 'circle').symlink_to(self.folder / 'circle')
        self.before = self.state()
        for source, told in (('pipe.3bcoef', 'is neither a file nor a folder'),
                             ('nowhere.3bcoef', 'does not exist'),
                             ('circle', 'Too many levels of symbolic links')):
            self.expect_told(self.run_cli(*TURN, self.folder / source, self.target), 2, told)
        self.expect(self.run_cli(*TURN, '-n', self.source, self.target), 1,
                    err=['nowhere.3bcoef: cannot be read: E_COEF_OPENFAILED (0xE0830011): '
                     'the file could not be opened: No such file or directory'])
        self.assertEqual(self.state(), self.before)

    def test_every_command_tells_a_binary_file_of_more_pixels_than_any_has(self):
        large = self.source / 'a.3bcoef'
        header = bytearray(large.read_bytes())
        for size, is_told in (((65535, 32768), False), ((65535, 32769), True)):
            header[20:24] = struct.pack('<HH', *size)
            large.write_bytes(header)
            self.before = self.state()
            told = 'its size {} x {} has more than 2147483647 pixels'.format(*size)
            for arguments in ((*TURN, large, self.target), ('info', large),
                              ('convert', '--to', 'npy', large, self.target),
                              ('preview', large, self.folder / 'a.png'), ('diff', large, large),
                              ('crop', large, self.target / 'c.3bcoef', '--rect', '0,0,1,1'),
                              ('compose', self.target / 'c.3bcoef', f'{large}@0,0')):
                with self.subTest(command=arguments[0], size=size):
                    result = self.run_cli(*arguments)
                    self.assertEqual(told in (result.stdout + result.stderr).decode(), is_told)
                    self.assertIn(result.returncode, (1, 2))
                    self.assertEqual(self.state(), self.before)
        self.expect(self.run_cli(*TURN, '--lenient', '--size', '2x2', large, self.target), 1,
                    ['0 files turned by 90°, 1 failed'], [f'a.3bcoef: {told}'])

    def test_two_inputs_for_one_output(self):
        other = self.folder / 'other'
        shutil.copytree(self.source, other)
        self.before = self.state()
        result = self.run_cli(*TURN, self.source, other, self.target)
        self.expect(result, 2, [])
        self.assertIn('would both become a-90°.3bcoef', self.lines(result.stderr)[0])
        self.assertEqual(len(self.lines(result.stderr)), 2)
        self.assertEqual(self.state(), self.before)

    def test_an_output_on_a_source(self):
        self.add('a-90°.3bcoef')
        self.before = self.state()
        self.expect_told(self.run_cli(*TURN, '--overwrite', self.source / 'a.3bcoef',
                                      self.source / 'a-90°.3bcoef', self.source), 2,
                         'is one of the sources')

    @posix_only
    def test_places_that_may_not_be_read_or_written(self):
        closed = self.source / 'a.3bcoef'
        closed.chmod(0)
        self.expect(self.run_cli(*TURN, closed, self.target, is_bound=True), 1, ['0 files turned by 90°, 1 failed'],
                    ['a.3bcoef: cannot be read: E_COEF_OPENFAILED (0xE0830011): '
                     'the file could not be opened: Permission denied'])
        closed.chmod(0o600)
        self.target.chmod(0o500)
        self.addCleanup(self.target.chmod, 0o700)
        shut = 'lies in the folder {T}/, where no file can be made: Permission denied: choose another'
        target = ('the target folder {} cannot be made, written to or synced: Permission denied: '
                  'choose another')
        a, b = self.source / 'a.3bcoef', self.source / 'b.3bcoef'
        rect = ('--rect', '0,0,1,1')
        for arguments, status, told in (
                ((*TURN, *BOTH), 2, target.format('{T}/')),
                ((*TURN, '--manifest', '{T}/sums', '{S}', '{D}/new'), 2, 'the manifest {T}/sums ' + shut),
                ((*TURN, '-n', '--manifest', '{T}/sums', '{S}', '{D}/new'), 2,
                 'the manifest {T}/sums ' + shut),
                ((*TURN, '--report', '{T}/run.html', '{S}', '{D}/new'), 2,
                 'the report {T}/run.html ' + shut),
                (('convert', '--to', '9fcoef', *BOTH), 2, target.format('{T}/')),
                (('compose', '{T}/w.9fcoef', f'{a}@0,0'), 1, '{T}/w.9fcoef: ' + shut),
                (('preview', a, '{T}/a.png'), 1, '{T}/a.png: ' + shut),
                (('diff', a, b, '--image', '{T}/a.png'), 2, '{T}/a.png: ' + shut),
                (('demo', '{T}'), 1, '{T}: the folder cannot be made, written to or synced: '
                                     'Permission denied: choose another')):
            with self.subTest(arguments=arguments):
                self.expect(self.run_cli(*(self.fill(str(word)) for word in arguments),
                                         is_bound=True), status, [],
                            ['trevolt-cli: ' + self.fill(told)])
        self.expect(self.run_cli('crop', a, self.target / 'p.3bcoef', *rect, is_bound=True), 1,
                    [f'0 files cut out of {a}, 1 failed'], [self.fill('p.3bcoef: ' + shut)])
        self.expect(self.run_cli('convert', a, self.target / 'a.9fcoef', is_bound=True), 1,
                    ['0 files converted, 1 failed'],
                    [self.fill(f'{a}: its output {{T}}/a.9fcoef ' + shut)])
        self.assertEqual(self.state(), self.before)
        self.source.chmod(0)
        self.addCleanup(self.source.chmod, 0o700)
        for command in (('info', a), ('crop', a, self.folder / 'p.3bcoef', *rect),
                        ('compose', self.folder / 'w.9fcoef', f'{a}@0,0')):
            self.expect(self.run_cli(*command, is_bound=True), 2, [],
                        [f'trevolt-cli: the source {a} cannot be looked at: Permission denied: '
                         'check its path and its rights'])

    @posix_only
    def test_what_stands_in_the_place_of_a_file_for_the_end(self):
        os.mkfifo(self.target / 'pipe.html')
        (self.folder / 'link').symlink_to(self.folder / 'gone')
        (self.folder / 'folder.html').mkdir()
        self.before = self.state()
        long = 'n' * 256
        for flags, told in (
                (('--manifest', '/dev/null'),
                 'the manifest /dev/null is neither a file nor a folder: choose another name'),
                (('--manifest', '{D}/link'), 'the manifest {D}/link exists already: choose another name'),
                (('--manifest', f'{{D}}/{long}'), f'the manifest {{D}}/{long} is no name that the system '
                                                  'takes: File name too long: choose another'),
                (('--overwrite', '--report', '{T}/pipe.html'),
                 'the report {T}/pipe.html is neither a file nor a folder: choose another name'),
                (('--overwrite', '--report', '{D}/folder.html'),
                 'the report {D}/folder.html is a folder: give the name of a file')):
            for dry in ((), ('-n',)) if '--manifest' in flags else ((),):
                with self.subTest(flags=flags, dry=dry):
                    self.expect(self.run_cli(*TURN, *dry, *map(self.fill, flags), self.source,
                                             self.target), 2, [], ['trevolt-cli: ' + self.fill(told)])
        self.assertEqual(self.state(), self.before)

    @posix_only
    def test_a_full_disk_loses_nothing(self):
        (self.target / 'a-90°.3bcoef').write_bytes(b'earlier')
        self.before = self.state()
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (0, 0))
        self.expect(self.run_cli(*TURN, '--overwrite', self.source, self.target, preexec_fn=limit), 1,
                    ['0 files turned by 90°, 2 failed'],
                    [f'{name}.3bcoef: cannot be written: File too large' for name in 'ab'])
        self.assertEqual(self.state(), self.before)

    @posix_only
    def test_a_place_where_nothing_can_be_made_is_told_with_the_reason(self):
        result = self.run_cli(*TURN, self.source, '/proc/new')
        self.expect_told(result, 2, 'the target folder /proc/new')
        self.assertRegex(self.lines(result.stderr)[0], ': (No such file|Operation not|Permission)')

    def test_damaged_and_foreign_files_are_named_and_the_others_turned(self):
        shutil.copy(SAMPLES / 'awkward' / 'cut_short.9fcoef', self.source)
        (self.source / 'empty.9fcoef').write_bytes(b'')
        (self.source / 'text.3bcoef').write_text('some notes')
        result = self.run_cli(*TURN, self.source, self.target)
        self.expect(result, 1)
        self.assertEqual(self.lines(result.stdout)[-1], '2 files turned by 90°, 3 failed')
        for line, name in zip(self.lines(result.stderr),
                              ('cut_short.9fcoef', 'empty.9fcoef', 'text.3bcoef'), strict=True):
            self.assertTrue(re.match(re.escape(name) + r': cannot be read: E_\w+ \(0x[0-9A-F]{8}\): ',
                                     line), line)
        self.assertEqual(self.targets(), ['a-90°.3bcoef', 'b-90°.3bcoef'])

    @posix_only
    def test_names_that_leave_no_room(self):
        long = 'n' * 240 + '.3bcoef'
        shutil.copy(self.source / 'a.3bcoef', self.source / long)
        self.before = self.state()
        for dry, would_be, target in (((), '', self.target), (('-n',), 'would be ', self.target),
                                      (('-n',), 'would be ', self.folder / 'new' / 'target')):
            self.expect(self.run_cli(*TURN, *dry, '--suffix', 'x' * 20, self.source / long, target), 1,
                        [f'{"dry run: " if dry else ""}0 files {would_be}turned by 90°, 1 failed'],
                        [f'{long}: cannot be given its final name in the target folder: '
                         'File name too long'])
        deep = '/'.join([str(self.folder), *['d' * 200] * 19, ''])
        deep += 'e' * (4085 - len(deep))  # of 4095 bytes that a path may have
        self.expect(self.run_cli(*TURN, '-n', self.source / 'a.3bcoef', deep), 1,
                    ['dry run: 0 files would be turned by 90°, 1 failed'],
                    ['a.3bcoef: cannot be given its final name in the target folder: '
                     'File name too long'])
        self.assertEqual(self.state(), self.before)
