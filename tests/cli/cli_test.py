#!/usr/bin/python3
"""Tests of the trevolt-cli program as its users run it.

    cli_test.py PROGRAM [--wrapper COMMAND] [--recorder LIBRARY] [unittest options]

The wrapper starts the program, for example Wine for the Windows build; tests whose subject is a
POSIX system are then passed over. The recorder is what CallRecorder.cpp makes. Expected values are
made here and not by the program: bodies are packed and unpacked by another LZ4 implementation's
front end.
"""
import errno
import hashlib
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest

import lz4.frame

sys.dont_write_bytecode = True  # the source stays as it is
import cli_support
from cli_support import (ANGLES, CABINETS, MAGICS, PROGRAM, ROOT, SAMPLES, STORED_BYTES, UNCOUNTED,
                         CliTest, coef_file, pixel_bytes, posix_only, raw_elements, turned,
                         with_recorder)
from compose_test import Compose
from crop_test import Crop
from convert_test import Convert
from diff_test import Diff
from flags_test import Angles, Flags, Json, Progress
from info_test import Info
from json_test import CommonJson
from lines_test import CommonLines
from mistakes_test import Mistakes
from preview_test import Preview
from report_test import Report


class Usage(CliTest):
    def test_version_and_help(self):
        result = self.run_cli('--version')
        self.expect(result, 0)
        project = (ROOT / 'CMakeLists.txt').read_text(encoding='utf-8')
        version = re.search(r'^project\(.* VERSION (\S+) ', project, re.MULTILINE).group(1)
        self.assertEqual(self.lines(result.stdout), [f'trevolt-cli {version}'])
        result = self.run_cli('rotate', '--help')
        self.expect(result, 0)
        for word in ('--angle', '--size', '--screen', '--lenient', '--jobs', '--manifest', '--max-memory',
                     '--max-file-size', '--max-size', '--no-sync', 'SOURCE...', 'TARGET',
                     'Examples:', 'Exit states:', '(default: '):
            self.assertIn(word, result.stdout.decode())
        for line in self.lines(result.stdout):
            self.assertLessEqual(len(line), 80, line)

    def test_wrong_usage_is_status_2(self):
        self.add('a.3bcoef')
        for arguments in ((), ('turn',), ('rotate',), ('rotate', '--angle', 90),
                          ('rotate', '--angle', 90, self.source),
                          ('rotate', self.source, self.target),
                          ('rotate', '--angle', 45, self.source, self.target),
                          ('rotate', '--angle', 0, self.source, self.target),
                          ('rotate', '--angle', 360, self.source, self.target),
                          ('rotate', '--angle', 'x', self.source, self.target),
                          ('rotate', '--angle', 90, '--jobs', 0, self.source, self.target),
                          ('rotate', '--angle', 90, '--jobs', 257, self.source, self.target),
                          ('rotate', '--angle', 90, '--unknown', self.source, self.target),
                          ('demo',),
                          ('rotate', '--angle', 90, '--manifest', '', self.source, self.target),
                          ('verify',), ('verify', self.folder / 'none', 'more')):
            with self.subTest(arguments=arguments):
                self.expect(self.run_cli(*arguments), 2)
        self.assertEqual(self.targets(), [])

    def test_sizes_are_checked_by_name(self):
        self.add('a.3bcoef')
        for size in ('65536x1', '1x65536', '99999999999999999999x1', '70000x70000'):
            self.expect_words(self.rotate('--size', size), 2,
                              f'{size} is above 65535 in one direction: give less')
        for size in ('0x5', '5x0', '-5x5', '-99999999999999999999x5', '+5x5', '5', 'x', '5x', 'x5', '5x5x5', '5 x5', '5.0x5', 'ax5'):
            self.expect_words(self.rotate(f'--size={size}'), 2,
                              f'{size} is not a size: give WIDTHxHEIGHT in pixels')
        self.assertEqual(self.targets(), [])
        self.expect(self.rotate('--size', '4X3'), 0)

    def test_missing_folders_are_named(self):
        self.add('a.3bcoef')
        missing = self.folder / 'missing'
        self.expect_words(self.run_cli('rotate', '--angle', 90, missing, self.target), 2,
                          f'the source {missing} does not exist: check its path')
        file = self.source / 'a.3bcoef'
        self.expect_words(self.run_cli('rotate', '--angle', 90, self.source, file), 2,
                          'is not a folder')

    def test_the_same_folder_is_refused(self):
        self.add('a.3bcoef')
        for same in (self.source, self.source / '.', self.target / '..' / 'source'):
            self.expect_words(self.run_cli('rotate', '--angle', 90, self.source, same), 2,
                              'source and target are the same folder')
        self.assertEqual([p.name for p in self.source.iterdir()], ['a.3bcoef'])

    @posix_only
    def test_the_same_folder_is_refused_through_a_link(self):
        self.add('a.3bcoef')
        link = self.folder / 'link'
        link.symlink_to(self.source)
        self.expect_words(self.run_cli('rotate', '--angle', 90, self.source, link), 2, 'same folder')

    def test_nothing_to_do(self):
        (self.source / 'notes.txt').write_text('x')
        (self.source / 'x.9fcoef').mkdir()
        self.expect_words(self.rotate(), 2, f'there is no coefficient file in {self.source}: give a folder that holds some')

    @posix_only
    def test_a_folder_name_that_is_not_utf8_is_refused(self):
        odd = os.fsencode(self.folder) + b'/odd\xff'
        os.mkdir(odd)
        for arguments in ((odd, self.target), (self.source, odd)):
            result = subprocess.run([*PROGRAM, 'rotate', '--angle', '90', *arguments],
                                    capture_output=True)
            self.expect_words(result, 2, 'odd\\xFF is not valid UTF-8: rename it')


class Turn(CliTest):
    def test_every_kind_by_every_angle(self):
        raws = {kind: self.add('cab' + kind, 5, 3) for kind in MAGICS}
        for angle in ANGLES:
            result = self.rotate(angle=angle)
            width, height = (5, 3) if angle == 180 else (3, 5)
            self.expect(result, 0,
                        [f'cab{kind} -> cab-{angle}°{kind}  (5 x 3 -> {width} x {height})'
                         for kind in sorted(MAGICS)] + [f'4 files turned by {angle}°, 0 failed'],
                        [])
            for kind, raw in raws.items():
                expected = turned(angle, 5, 3, raw, STORED_BYTES[kind])
                self.assertEqual(
                    self.body(self.target / f'cab-{angle}°{kind}', kind, *expected[:2]),
                    expected[2])

    def test_the_samples_turn_to_the_given_ones(self):
        for kind, name in CABINETS.items():
            shutil.copy(SAMPLES / 'cabinet' / (name + kind), self.source)
        for angle in ANGLES:
            self.expect(self.rotate(angle=angle), 0)
            width, height = (40, 24) if angle == 180 else (24, 40)
            for kind, name in CABINETS.items():
                output = f'{name}-{angle}°{kind}'
                self.assertEqual(self.body(self.target / output, kind, width, height),
                                 self.body(SAMPLES / f'turned-{angle}' / output, kind, width, height))

    @posix_only
    def test_a_thousand_mixed_cabinets_take_the_memory_of_those_in_work(self):
        cabinets = sorted(p for p in (SAMPLES / 'cabinet').iterdir() if p.suffix != '.csv')
        self.assertEqual(len(cabinets), 9)

        def add_copies(numbers):
            for i in numbers:
                cabinet = cabinets[i % 9]
                os.symlink(cabinet, self.source / f'{i:04}{cabinet.suffix}')

        # A sanitizer keeps a record of every thread, and those that sync come and go. What it lays
        # beside every allocation is as much as most of them are.
        options, kib_a_file = (['--no-sync'], 2) if 'ASAN_OPTIONS' in os.environ else ([], 1)

        def turn(jobs):
            """The peak memory in KiB, the output lines and the outputs of a run."""
            target = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
            peak, _, run = self.measured_rotate(target, '--jobs', jobs, *options)
            self.assertEqual((run.returncode, run.stderr), (0, b''))
            outputs = {p.name: p.read_bytes() for p in target.iterdir()}
            return peak, self.lines(run.stdout), outputs

        add_copies(range(100))
        # How many files wait for the disk together is chance on a busy machine, and no growth.
        peak_of_hundred = max(turn(1)[0] for _ in range(3))
        peak_of_two_and_hundred, _, _ = turn(2)
        add_copies(range(100, 1000))
        peak_of_two, lines, outputs = turn(2)
        self.assertEqual(lines[-1], '1000 files turned by 90°, 0 failed')
        self.assertEqual(len(outputs), 1000)
        peak, lines_one_by_one, outputs_one_by_one = turn(1)
        self.assertEqual(lines, lines_one_by_one)
        self.assertEqual(outputs, outputs_one_by_one)
        least = min(peak, turn(1)[0])
        self.assertLess(least - peak_of_hundred, 900 * kib_a_file)
        # Which files are in work together is chance, and a huge page the least that they take more.
        self.assertLess(peak_of_two - peak_of_two_and_hundred, 3 * 2048)

    @posix_only
    def test_ten_thousand_files_are_all_turned_and_told(self):
        if 'ASAN_OPTIONS' in os.environ:
            self.skipTest('takes long under a sanitizer')
        if os.access('/dev/shm', os.W_OK):  # where files are made in half the time
            folder = pathlib.Path(tempfile.mkdtemp(dir='/dev/shm'))
            self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
            self.source, self.target = folder / 'source', folder / 'target'
            self.source.mkdir()
            self.target.mkdir()
        count = 10000
        raw = self.add('cab00000.3bcoef')
        for i in range(1, count):
            os.link(self.source / 'cab00000.3bcoef', self.source / f'cab{i:05}.3bcoef')
        self.expect(self.rotate('--no-sync'), 0,
                    [*(f'cab{i:05}.3bcoef -> cab{i:05}-90°.3bcoef  (4 x 3 -> 3 x 4)'
                       for i in range(count)), f'{count} files turned by 90°, 0 failed'], [])
        self.assertEqual(self.targets(), [f'cab{i:05}-90°.3bcoef' for i in range(count)])
        first = self.target / 'cab00000-90°.3bcoef'
        self.assertEqual(self.body(first, '.3bcoef', 3, 4), turned(90, 4, 3, raw, 3)[2])
        self.assertEqual({path.read_bytes() for path in self.target.iterdir()},
                         {first.read_bytes()})

    @posix_only
    def test_many_threads_take_little_memory_beside_the_file(self):
        side = 2600
        bytes_of_body = side * side * 36
        (self.source / 'a.9fcoef').write_bytes(coef_file('.9fcoef', side, side, bytes(bytes_of_body)))
        peak, _, run = self.measured_rotate(self.target, '--jobs', 64)
        self.assertEqual((run.returncode, run.stderr), (0, b''))
        self.assertLess(peak * 1024, 2.2 * bytes_of_body + 64e6)

    @posix_only
    def test_a_further_cabinet_takes_few_page_faults(self):
        if 'ASAN_OPTIONS' in os.environ:
            self.skipTest('sanitizers have a heap of their own')
        wide = self.folder / 'wide.9fcoef'
        wide.write_bytes(coef_file('.9fcoef', 128, 128, os.urandom(128 * 128 * 36)))
        word, = (SAMPLES / 'cabinet').glob('*.9wcoef')
        for cabinet in (wide, word):
            faults = []
            for count in (20, 60):
                for link in self.source.iterdir():
                    link.unlink()
                for i in range(count):
                    os.symlink(cabinet, self.source / f'{i:02}{cabinet.suffix}')
                _, count_of_run, run = self.measured_rotate(self.target, '--overwrite')
                self.assertEqual((run.returncode, run.stderr), (0, b''))
                faults.append(count_of_run)
            self.assertLess((faults[1] - faults[0]) / 40, 40, cabinet.name)

    def test_every_form_of_frame_is_read(self):
        raw = raw_elements(90, 80, 9)
        forms = (dict(), dict(content_checksum=True), dict(block_checksum=True),
                 dict(block_linked=False), dict(store_size=False),
                 dict(compression_level=12), dict(compression_level=-5),
                 dict(block_size=lz4.frame.BLOCKSIZE_MAX4MB),
                 dict(content_checksum=True, block_checksum=True, store_size=False))
        for i, form in enumerate(forms):
            (self.source / f'cab{i}.9bcoef').write_bytes(coef_file('.9bcoef', 90, 80, raw, **form))
        self.expect(self.rotate(), 0)
        expected = turned(90, 90, 80, raw, 9)
        for i in range(len(forms)):
            self.assertEqual(self.body(self.target / f'cab{i}-90°.9bcoef', '.9bcoef', 80, 90),
                             expected[2])

    @posix_only
    def test_the_lz4_tool_reads_what_is_written(self):
        raw = self.add('cab.9fcoef', 30, 20)
        self.expect(self.rotate(angle=180), 0)
        output = self.target / 'cab-180°.9fcoef'
        unpacked = subprocess.run(f'tail -c +25 "{output}" | lz4 -d', shell=True, check=True,
                                  capture_output=True).stdout
        self.assertEqual(unpacked, turned(180, 30, 20, raw, 36)[2])

    def test_one_file_is_counted_in_the_singular(self):
        self.add('a.3bcoef', 2, 2)
        self.expect(self.rotate(), 0, ['a.3bcoef -> a-90°.3bcoef  (2 x 2 -> 2 x 2)',
                                       '1 file turned by 90°, 0 failed'], [])

    def test_a_given_size_cuts_and_fills(self):
        large = self.add('large.3bcoef', 10, 10)
        self.add('small.3bcoef', 1, 1)
        self.expect(self.rotate('--size', '8x6'), 0,
                    ['large.3bcoef -> large-90°.3bcoef  (8 x 6 -> 6 x 8)',
                     'large.3bcoef: its own size is 10 x 10, it was turned at 8 x 6: '
                     '52 of its pixels are cut off',
                     'small.3bcoef -> small-90°.3bcoef  (8 x 6 -> 6 x 8)',
                     'small.3bcoef: its own size is 1 x 1, it was turned at 8 x 6: '
                     '47 are filled with defaults',
                     '2 files turned by 90°, 0 failed'])
        cut = b''.join(large[y * 30:y * 30 + 24] for y in range(6))
        self.assertEqual(self.body(self.target / 'large-90°.3bcoef', '.3bcoef', 6, 8),
                         turned(90, 8, 6, cut, 3)[2])
        filled = pixel_bytes(0, 0, 3) + b'\xff' * (8 * 6 - 1) * 3
        self.assertEqual(self.body(self.target / 'small-90°.3bcoef', '.3bcoef', 6, 8),
                         turned(90, 8, 6, filled, 3)[2])

    def test_a_screen_is_exactly_one_file(self):
        self.add('a.3bcoef')
        self.expect(self.rotate('--screen'), 0)
        (self.target / 'a-90°.3bcoef').unlink()
        self.add('b.3bcoef')
        self.expect_words(self.rotate('--screen'), 2,
                          f'a whole screen is exactly one coefficient file, but {self.source} holds 2')
        self.assertEqual(self.targets(), [])

    def test_the_source_stays_as_it_is(self):
        for kind in MAGICS:
            self.add('cab' + kind)
        (self.source / 'damaged.3bcoef').write_bytes(b'damaged')
        (self.source / 'notes.txt').write_text('x')
        state = lambda: {p.name: (p.read_bytes(), p.stat().st_mtime_ns)
                         for p in self.source.iterdir()}
        before = state()
        self.expect(self.rotate('--lenient', '--size', '4x3', '--jobs', 3), 1)
        self.assertEqual(state(), before)

    def test_output_lines_are_the_same_for_any_number_of_jobs(self):
        for i in range(25):
            self.add(f'cab{i}.9bcoef', 100 - 3 * i, 30)
        for name in ('cab1x.9bcoef', 'zz.3bcoef'):
            (self.source / name).write_bytes(b'damaged')
        one = self.rotate()
        self.expect(one, 1)
        for jobs in (2, 3, 8, 256):
            more = self.rotate('--overwrite', '--jobs', jobs)
            self.expect(more, 1, self.lines(one.stdout), self.lines(one.stderr))
        self.assertEqual(len(self.targets()), 25)


    @posix_only
    def test_the_threads_that_the_system_gives_do_the_work(self):
        for i in range(20):
            self.add(f'cab{i:02}.3bcoef', 4, 3)

        def leave_room_for_two_stacks():
            resource.setrlimit(resource.RLIMIT_STACK, (100 << 30, 100 << 30))
            resource.setrlimit(resource.RLIMIT_AS, (250 << 30, 250 << 30))
        if self.run_cli('--version', preexec_fn=leave_room_for_two_stacks).returncode != 0:
            self.skipTest('the program itself reserves more than that')
        self.expect(self.rotate('--jobs', 256, preexec_fn=leave_room_for_two_stacks), 0,
                    [f'cab{i:02}.3bcoef -> cab{i:02}-90°.3bcoef  (4 x 3 -> 3 x 4)'
                     for i in range(20)] + ['20 files turned by 90°, 0 failed'], [])


class Names(CliTest):
    def test_names_of_all_sorts_under_every_locale(self):
        names = ['A.9FCOEF', 'a.b.3bcoef', '箱体-屏幕.9bcoef', 'wall 90°.3fcoef', '.3bcoef',
                 'x.9fcoef.bak', 'Ä é.3BcOeF', "quote'$x.3bcoef"]
        for name in names:
            self.add(name)
        (self.source / 'folder.9fcoef').mkdir()
        (self.source / 'x19fcoef').write_bytes(b'')
        outputs = sorted(['A-90°.9FCOEF', 'a-90°.b.3bcoef', '箱体-屏幕-90°.9bcoef',
                          'wall 90°-90°.3fcoef', '-90°.3bcoef', 'x-90°.9fcoef.bak',
                          'Ä é-90°.3BcOeF', "quote'$x-90°.3bcoef"])
        # Wine turns arguments and names by the locale; the program itself never looks at it.
        for locale in ('C.UTF-8',) if cli_support.IS_WRAPPED else ('C', 'C.UTF-8', 'POSIX', 'no_SUCH.locale'):
            with self.subTest(locale=locale):
                result = self.rotate(locale=locale)
                self.expect(result, 0, err=[])
                self.assertEqual(self.targets(), outputs)
                self.assertEqual([line.split(' -> ')[0] for line in self.lines(result.stdout)[:-1]],
                                 sorted(names))
                for name in outputs:
                    (self.target / name).unlink()

    @posix_only
    def test_a_folder_name_in_any_script_under_the_c_locale(self):
        self.add('a.3bcoef')
        named = self.folder / '目标 90°'
        named.mkdir()
        self.expect(self.run_cli('rotate', '--angle', 90, self.source, named, locale='C'), 0)
        self.assertEqual([p.name for p in named.iterdir()], ['a-90°.3bcoef'])

    @posix_only
    def test_a_file_name_that_is_not_utf8_is_reported(self):
        self.add('a.3bcoef')
        odd = os.fsencode(self.source) + b'/b\xff\xe9.3bcoef'
        shutil.copy(self.source / 'a.3bcoef', odd)
        for locale in ('C', 'C.UTF-8'):
            self.expect(self.rotate('--overwrite', locale=locale), 1,
                        ['a.3bcoef -> a-90°.3bcoef  (4 x 3 -> 3 x 4)',
                         '1 file turned by 90°, 1 failed'],
                        ['b\\xFF\\xE9.3bcoef: passed over: its name is not valid UTF-8'])

    @posix_only
    def test_a_folder_whose_name_is_not_utf8_fails_where_folders_are_searched(self):
        self.add('a.3bcoef')
        odd = os.fsencode(self.source) + b'/caf\xe9'
        os.mkdir(odd)
        shutil.copy(self.source / 'a.3bcoef', odd + b'/b.3bcoef')
        shutil.copy(self.source / 'a.3bcoef', os.fsencode(self.source) + b'/\xff.txt')
        os.symlink(odd, os.fsencode(self.source) + b'/link\xe9')
        told = ('caf\\xE9/: passed over with all that it holds: the folder\'s name is not valid '
                'UTF-8')
        result = self.rotate('-r', '--verbose')
        self.expect(result, 1, err=[told])
        out = self.lines(result.stdout)
        self.assertEqual(out[-1], '1 file turned by 90°, 1 failed, 2 entries passed over')
        self.assertLessEqual({'\\xFF.txt: passed over: no coefficient file by its name',
                              'link\\xE9: passed over: a link to a folder'}, set(out))
        self.expect(self.rotate('--list', '-r'), 1, [f'{self.source}/a.3bcoef'], [told])
        *_, summary = map(json.loads, self.rotate('-r', '--json', '--overwrite').stdout.splitlines())
        self.assertEqual((summary['exit_status'], summary['failed']), (1, 1))
        for command in (['convert', '--to', '9fcoef', '-r', self.source, self.target],
                        ['preview', '-r', self.source, self.folder / 'wall.png']):
            self.expect(self.run_cli(*command), 1, err=[told])
        result = self.run_cli('info', '-r', self.source)
        self.expect(result, 1, err=[])
        self.assertIn(f"  problem   {told.split(': ', 1)[1]}", self.lines(result.stdout))
        self.expect(self.run_cli('diff', '-r', self.source, self.source), 2,
                    err=[f'{self.source}/{told}'] * 2)
        self.expect(self.rotate('--list', '--verbose'), 0, [f'{self.source}/a.3bcoef'], [
            f'{name}: passed over: {reason}' for name, reason in (
                ('\\xFF.txt', 'no coefficient file by its name'), ('caf\\xE9', 'a folder'),
                ('link\\xE9', 'a folder'))])

    @posix_only
    def test_what_is_no_file_is_passed_over(self):
        self.add('a.3bcoef')
        os.mkfifo(self.source / 'pipe.3bcoef')
        (self.source / 'device.3bcoef').symlink_to('/dev/null')
        (self.source / 'folder.3bcoef').symlink_to(self.folder)
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(str(self.source / 'socket.3bcoef'))
            self.expect(self.rotate(), 0, err=[])
        self.assertEqual(self.targets(), ['a-90°.3bcoef'])

    def test_names_that_differ_in_case_only_are_not_lost(self):
        raws = {name: self.add(name, width) for name, width in (('CAB.3bcoef', 4), ('cab.3bcoef', 5))}
        if len(list(self.source.iterdir())) != 2:
            self.skipTest('this folder does not tell the names apart')
        result = self.rotate()
        if cli_support.IS_WRAPPED:  # Windows would take either name for the same file
            self.expect_words(result, 2, 'would both become cab-90°.3bcoef')
            self.assertEqual(self.targets(), [])
            return
        self.expect(result, 0, err=[])
        self.assertEqual(self.targets(), ['CAB-90°.3bcoef', 'cab-90°.3bcoef'])
        for name, width in (('CAB', 4), ('cab', 5)):
            self.assertEqual(self.body(self.target / f'{name}-90°.3bcoef', '.3bcoef', 3, width),
                             turned(90, width, 3, raws[f'{name}.3bcoef'], 3)[2])

    @posix_only
    def test_an_output_may_have_the_longest_name(self):
        names = ['.3bcoef.' + 'y' * 242, 'n' * 243 + '.3bcoef', '.9wcoef.' + 'z' * 234 + '.9wPCoef']
        for name in names:
            shutil.copy(SAMPLES / 'cabinet' / ('Cab_06.9wcoef' if 'w' in name else 'Cab_04.3bcoef'),
                        self.source / name)
        self.expect(self.rotate(), 0, err=[])
        self.assertEqual({len(os.fsencode(name)) for name in self.targets()}, {255})
        self.assertEqual(len(self.targets()), 3)

    @posix_only
    def test_a_name_that_cannot_grow_is_reported(self):
        name = 'n' * 247 + '.3bcoef'
        self.add(name)
        self.expect(self.rotate(), 1, err=[
            f'{name}: cannot be given its final name in the target folder: File name too long'])
        self.assertEqual(self.targets(), [])

    @posix_only
    def test_a_source_folder_that_may_not_be_read_is_named(self):
        self.add('a.3bcoef')
        self.source.chmod(0o300)
        self.addCleanup(self.source.chmod, 0o700)
        self.expect(self.rotate(is_bound=True), 2, [],
                    [f'trevolt-cli: the source folder {self.source}/ cannot be listed: '
                     'Permission denied: leave it out, or ask for the right to read it'])

    @posix_only
    def test_a_folder_that_cannot_be_written_is_reported(self):
        self.add_row()
        (self.target / 'row').mkdir()
        told = ('trevolt-cli: the target folder {} cannot be made, written to or synced: Permission denied: '
                'choose another')
        for closed in (self.target / 'row', self.target):
            closed.chmod(0o500)
            self.addCleanup(closed.chmod, 0o700)
            for flags in ((), ('-n',)):
                self.expect(self.rotate('-r', *flags, is_bound=True), 2, [],
                            [told.format(f'{closed}/')])
        for flags in ((), ('-n',)):
            self.expect(self.run_cli('rotate', '-a', 90, *flags, self.source, self.target / 'new',
                                     is_bound=True), 2, [], [told.format(f'{self.target}/new/')])
        self.assertEqual(self.targets(), ['row'])

    @posix_only
    def test_a_folder_that_gets_nothing_need_not_take_any(self):
        self.add_row()
        self.expect(self.rotate('-r'), 0)
        folders = (self.target / 'row', self.target)
        for closed in folders:
            closed.chmod(0o500)
            self.addCleanup(closed.chmod, 0o700)
        for flags in ((), ('-n',)):
            result = self.rotate('-r', '--skip-existing', *flags, is_bound=True)
            self.expect(result, 0, err=[])
            self.assertTrue(self.lines(result.stdout)[-1].endswith(', 0 failed, 2 skipped'))

    def add_row(self):
        """A file, and one in a folder."""
        self.add('a.3bcoef')
        (self.source / 'row').mkdir()
        shutil.copy(self.source / 'a.3bcoef', self.source / 'row' / 'b.3bcoef')


class Damage(CliTest):
    BAD_CONTENT = ('cannot be read: E_FAIL (0x80004005): '
                   'the content is damaged or does not match its header')
    BAD_FORMAT = ('cannot be read: E_COEF_BADFORMAT (0xE0830010): '
                  'not a file of this kind, or of a newer version')

    def test_strict_names_the_damaged_and_turns_the_others(self):
        shutil.copy(SAMPLES / 'awkward' / 'cut_short.9fcoef', self.source)
        shutil.copy(SAMPLES / 'awkward' / 'version_2.9fcoef', self.source)
        self.add('good.3bcoef')
        (self.source / 'empty.3bcoef').write_bytes(b'')
        (self.source / 'wrong.9bcoef').write_bytes((self.source / 'good.3bcoef').read_bytes())
        self.expect(self.rotate(), 1,
                    ['good.3bcoef -> good-90°.3bcoef  (4 x 3 -> 3 x 4)',
                     '1 file turned by 90°, 4 failed'],
                    [f'cut_short.9fcoef: {self.BAD_CONTENT}', f'empty.3bcoef: {self.BAD_FORMAT}',
                     f'version_2.9fcoef: {self.BAD_FORMAT}', f'wrong.9bcoef: {self.BAD_FORMAT}'])
        self.assertEqual(self.targets(), ['good-90°.3bcoef'])

    TEXT = ('[T9COEF20]\nwidth=4\nheight=3\n'
            '1,1,0.5,0,0,0,0.5,0,0,0,0.5\n2,2,0.5,0,0,0,0.5,0,0,0,0.5\n')

    def test_a_text_that_is_not_whole_is_named(self):
        texts = {'a_whole': self.TEXT, 'b_cut': self.TEXT[:-9],
                 'c_flipped': self.TEXT.replace('1,1,0.5,0', '1,1,0.5l0'),
                 'd_outside': self.TEXT + '4,2,1,0,0,0,1,0,0,0,1\n',
                 'e_repeated': self.TEXT + self.TEXT[-28:] * 2,
                 'f_sizeless': self.TEXT.replace('height', 'heigh4'),
                 'g_long': self.TEXT + ' ' * 2048 + '\n' + self.TEXT[-28:],
                 'h_cleaned': self.TEXT + '0,0,1,0,0,0,1,1,0,0,1\n'}
        for name, text in texts.items():
            (self.source / f'{name}.cccoef').write_bytes(text.encode())
        problems = ['b_cut.cccoef: is damaged: line 5 is the last and has no end',
                    'c_flipped.cccoef: is damaged: line 4 is no whole data line',
                    "d_outside.cccoef: is damaged: line 6 names a pixel outside the file's size",
                    'e_repeated.cccoef: is damaged: 2 lines name pixels that earlier lines name, '
                    'the first is line 6',
                    'f_sizeless.cccoef: is damaged: line 3 is no whole size line',
                    'g_long.cccoef: is damaged: line 6 is too long, and what follows in the file '
                    'is not read']
        turned = lambda name: f'{name}.cccoef -> {name}-90°.cccoef  (4 x 3 -> 3 x 4)'
        note = 'h_cleaned.cccoef: cleaning changed 1 of its pixels'
        size_note = ('f_sizeless.cccoef: its own size is 4 x 0, it was turned at 4 x 3: '
                     '12 are filled with defaults')
        options = ('--size', '4x3')
        self.expect(self.rotate(*options), 1,
                    [turned('a_whole'), turned('h_cleaned'), note,
                     '2 files turned by 90°, 6 failed'], problems)
        self.expect(self.rotate('--lenient', '--overwrite', *options), 1,
                    [*map(turned, list(texts)[:6]), size_note, *map(turned, list(texts)[6:]), note,
                     '8 files turned by 90°, 6 failed'], problems)

    @posix_only
    def test_a_file_that_cannot_be_read_is_told_by_the_systems_reason(self):
        # The first page of a process is nobody's: its memory opens, and the first read fails.
        for kind in ('.9fcoef', '.cccoef', '.12wcoef'):
            (self.source / f'a{kind}').symlink_to('/proc/self/mem')
        self.expect(self.rotate(), 1, ['0 files turned by 90°, 3 failed'],
                    [f'a{kind}: cannot be read: Input/output error'
                     for kind in ('.12wcoef', '.9fcoef', '.cccoef')])

    def test_lenient_writes_what_the_map_holds(self):
        shutil.copy(SAMPLES / 'awkward' / 'cut_short.9fcoef', self.source)
        result = self.rotate('--lenient')
        self.expect(result, 1,
                    ['cut_short.9fcoef -> cut_short-90°.9fcoef  (40 x 24 -> 24 x 40)',
                     '1 file turned by 90°, 1 failed'],
                    [f'cut_short.9fcoef: {self.BAD_CONTENT}'])
        identity = struct.pack('<9f', 1, 0, 0, 0, 1, 0, 0, 0, 1)
        self.assertEqual(self.body(self.target / 'cut_short-90°.9fcoef', '.9fcoef', 24, 40),
                         identity * 24 * 40)

    def test_a_body_of_another_size_is_refused(self):
        whole = raw_elements(4, 3, 3)
        for name, raw in (('less', whole[:-3]), ('more', whole + whole[:3]), ('none', b'')):
            (self.source / f'{name}.3bcoef').write_bytes(coef_file('.3bcoef', 4, 3, raw))
        self.expect(self.rotate(), 1, ['0 files turned by 90°, 3 failed'],
                    [f'{name}.3bcoef: {self.BAD_CONTENT}' for name in ('less', 'more', 'none')])

    def test_version_0_is_read(self):
        self.add('a.3bcoef', version=0)
        self.expect(self.rotate(), 0)

    def test_a_failed_file_leaves_the_earlier_output(self):
        (self.source / 'a.3bcoef').write_bytes(b'damaged')
        (self.target / 'a-90°.3bcoef').write_bytes(b'earlier')
        self.expect(self.rotate(), 1)
        self.assertEqual((self.target / 'a-90°.3bcoef').read_bytes(), b'earlier')

    def test_a_size_beyond_the_memory_ends_cleanly(self):
        self.add('a.9fcoef')
        if os.sysconf('SC_PHYS_PAGES') * os.sysconf('SC_PAGE_SIZE') > 65535 * 32768 * 36:
            self.skipTest('this machine has the memory')
        result = self.rotate('--size', '65535x32768')
        self.expect(result, 1, ['0 files turned by 90°, 1 failed'],
                    ['a.9fcoef: not enough memory for 65535 x 32768 pixels'])
        self.assertEqual(self.targets(), [])

    def test_a_header_that_lies_about_its_size_ends_cleanly(self):
        header = MAGICS['.3bcoef'] + struct.pack('<IHH', 1, 65535, 32768)
        (self.source / 'a.3bcoef').write_bytes(header + lz4.frame.compress(b'abc'))
        result = self.rotate()
        self.expect(result, 1, ['0 files turned by 90°, 1 failed'])
        self.assertEqual(self.targets(), [])

    def damaged(self, kind):
        raw = raw_elements(4, 3, STORED_BYTES[kind])
        return coef_file(kind, 4, 3, raw, content_checksum=True)[:-1]

    def test_a_damaged_float_file_under_a_word_kinds_name_is_named(self):
        (self.source / 'a.9wcoef').write_bytes(self.damaged('.9fcoef'))
        (self.source / 'b.3wcoef').write_bytes(self.damaged('.3fcoef'))
        problems = [f'a.9wcoef: {self.BAD_CONTENT}', f'b.3wcoef: {self.BAD_CONTENT}']
        self.expect(self.rotate(), 1, ['0 files turned by 90°, 2 failed'], problems)
        self.assertEqual(self.targets(), [])
        self.expect(self.rotate('--lenient'), 1,
                    ['a.9wcoef -> a-90°.9wcoef  (4 x 3 -> 3 x 4)',
                     'b.3wcoef -> b-90°.3wcoef  (4 x 3 -> 3 x 4)',
                     '2 files turned by 90°, 2 failed'], problems)
        self.assertEqual(self.targets(), ['a-90°.9wcoef', 'b-90°.3wcoef'])

    def test_a_float_file_under_a_word_kinds_name_is_turned(self):
        self.add('a.9wcoef', kind='.9fcoef')
        self.add('b.3wcoef', kind='.3fcoef')
        self.expect(self.rotate(), 0, ['a.9wcoef -> a-90°.9wcoef  (4 x 3 -> 3 x 4)',
                                       'b.3wcoef -> b-90°.3wcoef  (4 x 3 -> 3 x 4)',
                                       '2 files turned by 90°, 0 failed'], [])

    def test_pixels_without_data_are_counted(self):
        whole = (SAMPLES / 'cabinet' / 'Cab_06.9wcoef').read_bytes()  # 40 x 24 in one chunk
        self.assertEqual(struct.unpack_from('<III', whole, 28), (40, 24, 1))
        resized = lambda width, height: whole[:28] + struct.pack('<II', width, height) + whole[36:]
        (self.source / 'a.9wcoef').write_bytes(whole[:36] + bytes(4) + whole[40:168])
        (self.source / 'b.9wcoef').write_bytes(resized(41, 30))
        (self.source / 'c.9wcoef').write_bytes(resized(1, 25))
        (self.source / 'd.9wcoef').write_bytes(resized(30, 20))
        outside = 'is damaged: 1 of its chunks reaches out of its area'
        problems = ['a.9wcoef: is incomplete: 960 pixels have no data',
                    'b.9wcoef: is incomplete: 270 pixels have no data',
                    f'c.9wcoef: {outside}',
                    'c.9wcoef: is incomplete: 1 pixel has no data',
                    f'd.9wcoef: {outside}']
        self.expect(self.rotate(), 1, ['0 files turned by 90°, 4 failed'], problems)
        self.assertEqual(self.targets(), [])
        self.expect(self.rotate('--lenient'), 1,
                    ['a.9wcoef -> a-90°.9wcoef  (40 x 24 -> 24 x 40)',
                     'b.9wcoef -> b-90°.9wcoef  (41 x 30 -> 30 x 41)',
                     'c.9wcoef -> c-90°.9wcoef  (1 x 25 -> 25 x 1)',
                     'd.9wcoef -> d-90°.9wcoef  (30 x 20 -> 20 x 30)',
                     '4 files turned by 90°, 4 failed'], problems)
        self.assertEqual(len(self.targets()), 4)

    def test_pixels_without_data_are_counted_once_in_a_file_with_extra_words(self):
        shutil.copy(SAMPLES / 'cabinet' / 'Cab_06.9wcoef', self.source / 'x.9wcoef.9wPCoef')
        self.expect(self.rotate(angle=180), 0)
        (self.source / 'x.9wcoef.9wPCoef').unlink()
        whole = (self.target / 'x-180°.9wcoef.9wPCoef').read_bytes()
        (self.source / 'y.9wcoef').write_bytes(whole[:32] + struct.pack('<I', 30) + whole[36:])
        self.expect(self.rotate(), 1, ['0 files turned by 90°, 1 failed'],
                    ['y.9wcoef: is incomplete: 240 pixels have no data'])

    def test_chunks_that_differ_from_what_a_writer_makes_are_told(self):
        whole = (SAMPLES / 'cabinet' / 'Cab_06.9wcoef').read_bytes()  # 40 x 24 in one chunk
        record, data = whole[168:168 + 56], whole[168 + 56:]
        twice = whole[:36] + struct.pack('<I', 2) + whole[40:168] + record + record + data + data
        (self.source / 'a.9wcoef').write_bytes(twice)
        (self.source / 'b.9wcoef').write_bytes(whole + b'xyz')
        (self.source / 'c.9wcoef').write_bytes(whole[:168] + struct.pack('<I', 7) + whole[172:])
        problems = ['a.9wcoef: is damaged: 960 pixels lie in several of its chunks',
                    'b.9wcoef: is damaged: 3 bytes lie behind its last chunk']
        turned = ['c.9wcoef -> c-90°.9wcoef  (40 x 24 -> 24 x 40)',
                  'c.9wcoef: 1 of its chunks has a block index that is not that of the place']
        self.expect(self.rotate(), 1, turned + ['1 file turned by 90°, 2 failed'], problems)
        self.expect(self.rotate('--lenient', '--overwrite'), 1,
                    ['a.9wcoef -> a-90°.9wcoef  (40 x 24 -> 24 x 40)',
                     'b.9wcoef -> b-90°.9wcoef  (40 x 24 -> 24 x 40)',
                     *turned, '3 files turned by 90°, 2 failed'], problems)


class Trouble(CliTest):
    """A disk that fills up, and a user who does not wait."""

    @posix_only
    def test_a_full_disk_is_noticed(self):
        noise = bytes((i * i * 2654435761 >> 15) & 0xFF for i in range(400 * 300 * 9))
        (self.source / 'large.9bcoef').write_bytes(coef_file('.9bcoef', 400, 300, noise))
        self.add('small.3bcoef', 2, 2)
        refusal = 'large.9bcoef: cannot be written: File too large'
        for limit in (0, 20, 5000, 300000):
            def refuse_long_files():
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
            result = self.rotate('--overwrite', preexec_fn=refuse_long_files,
                                 restore_signals=False, environment=UNCOUNTED)
            if limit > 100:
                self.expect(result, 1, ['small.3bcoef -> small-90°.3bcoef  (2 x 2 -> 2 x 2)',
                                        '1 file turned by 90°, 1 failed'], [refusal])
                self.assertEqual(self.targets(), ['small-90°.3bcoef'])
            else:  # all of the small one lies in the stream's buffer until the file is closed
                self.expect(result, 1, ['0 files turned by 90°, 2 failed'],
                            [refusal, 'small.3bcoef: cannot be written: File too large'])
                self.assertEqual(self.targets(), [])

    @posix_only
    def test_a_full_disk_is_named_for_every_kind(self):
        wall = self.folder / 'wall'
        self.expect(self.run_cli('demo', wall), 0)
        names = sorted(p.name for p in wall.iterdir())
        self.assertEqual(len(names), 9)
        for limit in (0, 100, 4000):
            def refuse_long_files():
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))
            for locale in ('C', 'C.UTF-8', 'de_DE.UTF-8'):
                self.expect(self.run_cli('rotate', '--angle', 90, wall, self.target, locale=locale,
                                         preexec_fn=refuse_long_files, restore_signals=False,
                                         environment=UNCOUNTED),
                            1, ['0 files turned by 90°, 9 failed'],
                            [f'{name}: cannot be written: File too large' for name in names])
            self.assertEqual(self.targets(), [])

    @posix_only
    def test_a_disk_without_room_is_named_in_the_systems_words(self):
        disk = self.folder / 'disk'
        disk.mkdir()
        mount = ['mount', '-t', 'tmpfs', '-o', 'size=64k,nr_inodes=2', 'none', disk]
        if subprocess.run(mount, capture_output=True).returncode != 0:
            self.skipTest('no disk can be mounted here')
        self.addCleanup(subprocess.run, ['umount', disk], check=True)
        self.target = disk
        noise = bytes((i * i * 2654435761 >> 15) & 0xFF for i in range(400 * 300 * 9))
        (self.source / 'a.9bcoef').write_bytes(coef_file('.9bcoef', 400, 300, noise))
        self.expect(self.rotate(), 1, ['0 files turned by 90°, 1 failed'],
                    ['a.9bcoef: cannot be written: No space left on device'])
        self.assertEqual(self.targets(), [])
        (disk / 'last inode').touch()
        self.expect(self.rotate(), 2, [],
                    [f'trevolt-cli: the target folder {disk}/ cannot be made, written to or synced: '
                     'No space left on device: choose another'])
        sums = disk / 'sums'
        self.expect(self.run_cli('rotate', '-a', 90, '--manifest', sums, self.source, self.folder / 'new'),
                    2, [], [f'trevolt-cli: the manifest {sums} lies in the folder {disk}/, where no file '
                            'can be made: No space left on device: choose another'])

    @posix_only
    def test_a_limit_of_file_sizes_is_a_full_disk(self):
        noise = bytes((i * i * 2654435761 >> 15) & 0xFF for i in range(400 * 300 * 9))
        (self.source / 'a.9bcoef').write_bytes(coef_file('.9bcoef', 400, 300, noise))
        limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (5000, 5000))
        self.expect(self.rotate(preexec_fn=limit, environment=UNCOUNTED), 1,
                    ['0 files turned by 90°, 1 failed'],
                    ['a.9bcoef: cannot be written: File too large'])
        self.assertEqual(self.targets(), [])

    @posix_only
    def test_a_demo_wall_that_the_disk_refuses_is_no_success(self):
        wall = self.folder / 'wall'
        def refuse_long_files():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (0, 0))
        self.expect(self.run_cli('demo', wall, preexec_fn=refuse_long_files, restore_signals=False, environment=UNCOUNTED),
                    1, [], [f'trevolt-cli: {wall}: its output Cab_01.9fcoef cannot be written: '
                            'File too large'])
        (wall / 'Cab_05.3fcoef').mkdir()
        self.expect(self.run_cli('demo', '--overwrite', wall), 1, [], [
            f'trevolt-cli: {wall}: its output Cab_05.3fcoef is a folder: choose another target'])
        self.assertEqual([path.name for path in wall.iterdir()], ['Cab_05.3fcoef'])

    @posix_only
    def test_an_interrupted_run_leaves_whole_files_only(self):
        noise = bytes((i * i * 2654435761 >> 15) & 0xFF for i in range(500 * 400 * 3))
        content = coef_file('.3bcoef', 500, 400, noise)
        for i in range(200):
            (self.source / f'cab{i:03}.3bcoef').write_bytes(content)
        expected = turned(90, 500, 400, noise, 3)[2]
        for number in (signal.SIGINT, signal.SIGTERM):
            run = subprocess.Popen([*PROGRAM, 'rotate', '--angle', '90', '--jobs', '2',
                                    str(self.source), str(self.target)],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   preexec_fn=lambda: signal.signal(number, signal.SIG_DFL))
            while not any(not name.startswith('.') for name in self.targets()):
                self.assertIsNone(run.poll(), 'the run ended before it could be interrupted')
                time.sleep(0.001)
            run.send_signal(number)
            out, err = run.communicate(timeout=60)
            self.assertEqual(run.returncode, 130, (out, err))
            self.assertEqual(err, b'')
            written = self.targets()
            self.assertLess(len(written), 200)
            self.assertEqual(self.lines(out)[-1],
                             f'{len(written)} file{"s" * (len(written) != 1)} turned by 90°, '
                             '0 failed, interrupted')
            for name in written:
                self.assertRegex(name, r'^cab\d{3}-90°\.3bcoef$')
                self.assertEqual(self.body(self.target / name, '.3bcoef', 400, 500), expected)
                (self.target / name).unlink()

    @posix_only
    def test_what_a_killed_run_leaves_is_no_cabinet_and_goes_with_the_next(self):
        noise = os.urandom(900 * 700 * 9)
        for i in range(12):
            (self.source / f'cab{i:02}.9bcoef').write_bytes(coef_file('.9bcoef', 900, 700, noise))
        for _ in range(20):
            run = subprocess.Popen([*PROGRAM, 'rotate', '--angle', '90', '--jobs', '2',
                                    str(self.source), str(self.target)],
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            while not self.targets() and run.poll() is None:
                time.sleep(0.0005)
            run.kill()
            run.wait()
            left = [name for name in self.targets() if name.startswith('.')]
            if left:
                break
        self.assertTrue(left, 'no run was killed at its work')
        again = self.folder / 'again'
        again.mkdir()
        result = self.run_cli('rotate', '--angle', 180, self.target, again)
        whole = [name for name in self.targets() if not name.startswith('.')]
        self.expect(result, 0 if whole else 2)
        self.assertEqual(len(list(again.iterdir())), len(whole))
        self.expect(self.rotate(), 0, err=[])
        self.assertEqual(self.targets(), [f'cab{i:02}-90°.9bcoef' for i in range(12)])

    @posix_only
    def test_a_reader_that_goes_away_leaves_no_temporary(self):
        for i in range(150):
            self.add(f'{"cab" * 30}{i:03}.3bcoef', 60, 60)
        run = subprocess.Popen([*PROGRAM, 'rotate', '--angle', '90', str(self.source),
                                str(self.target)], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        run.stdout.close()
        error = run.stderr.read()
        run.stderr.close()
        self.assertEqual(run.wait(timeout=60), 1)
        self.assertEqual(error, b'trevolt-cli: the standard output cannot be written: Broken pipe\n')
        self.assertLess(len(self.targets()), 150)
        self.assertEqual([name for name in self.targets() if name.startswith('.')], [])

    @posix_only
    def test_output_that_cannot_be_written_is_an_error(self):
        self.add('a.3bcoef')
        with open('/dev/full', 'wb') as full:
            result = subprocess.run([*PROGRAM, 'rotate', '--angle', '90', str(self.source),
                                     str(self.target)], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, b'trevolt-cli: the standard output cannot be written: '
                                        b'No space left on device\n')
        self.assertEqual(self.targets(), ['a-90°.3bcoef'])

    @posix_only
    def test_what_else_cannot_be_written_is_an_error(self):
        self.add('a.3bcoef')
        for arguments in (['--help'], ['--version'], ['rotate', '--help'],
                          ['info', '--json', str(self.source)]):
            with open('/dev/full', 'wb') as full:
                result = subprocess.run([*PROGRAM, *arguments], stdout=full,
                                        stderr=subprocess.PIPE)
            self.assertEqual(result.returncode, 1)
            self.assertEqual(result.stderr, b'trevolt-cli: the standard output cannot be written: '
                                            b'No space left on device\n')

    @posix_only
    def test_closed_descriptors_take_no_output_file(self):
        raws = [self.add(f'cab{i}.3bcoef', 60, 40) for i in range(6)]
        (self.source / 'damaged.3bcoef').write_bytes(b'damaged')
        for closed in ((0,), (1,), (2,), (0, 1), (1, 2), (0, 1, 2)):
            def close():
                for descriptor in closed:
                    os.close(descriptor)
            with self.subTest(closed=closed):
                result = subprocess.run([*PROGRAM, 'rotate', '--angle', '90', '--jobs', '2',
                                         str(self.source), str(self.target)], preexec_fn=close,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)
                self.assertEqual(result.returncode, 1)
                self.assertEqual(self.lines(result.stdout)[-1:],
                                 [] if 1 in closed else ['6 files turned by 90°, 1 failed'])
                self.assertEqual(self.lines(result.stderr),
                                 [] if 2 in closed else [f'damaged.3bcoef: {Damage.BAD_FORMAT}'])
                self.assertEqual(self.targets(), [f'cab{i}-90°.3bcoef' for i in range(6)])
                for i, raw in enumerate(raws):
                    output = self.target / f'cab{i}-90°.3bcoef'
                    self.assertEqual(self.body(output, '.3bcoef', 40, 60),
                                     turned(90, 60, 40, raw, 3)[2])
                    output.unlink()

    @posix_only
    def test_a_closed_output_does_not_end_a_long_run(self):
        for i in range(150):
            self.add(f'{"cab" * 30}{i:03}.3bcoef', 2, 2)
        result = subprocess.run([*PROGRAM, 'rotate', '--angle', '90', str(self.source),
                                 str(self.target)], preexec_fn=lambda: os.close(1),
                                stderr=subprocess.PIPE)
        self.assertEqual((result.returncode, result.stderr), (0, b''))
        self.assertEqual(len(self.targets()), 150)

    @posix_only
    def test_an_ignored_interrupt_stays_ignored(self):
        for i in range(100):
            self.add(f'cab{i}.3bcoef', 60, 60)
        run = subprocess.Popen([*PROGRAM, 'rotate', '--angle', '90', str(self.source),
                                str(self.target)], stdout=subprocess.PIPE,
                               preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        while not self.targets():
            time.sleep(0.001)
        run.send_signal(signal.SIGHUP)  # as the end of the terminal of a nohup command
        run.communicate(timeout=60)
        self.assertEqual(run.returncode, 0)
        self.assertEqual(len(self.targets()), 100)


class Manifest(CliTest):
    """Sums of inputs and outputs, as sha256sum and the command verify both read them."""

    def setUp(self):
        super().setUp()
        self.manifest = self.folder / 'sums'

    def by_sha256sum(self, cwd=ROOT):
        """What sha256sum answers: its status, and its lines as verify puts them."""
        run = subprocess.run(['sha256sum', '-c', self.manifest], capture_output=True, cwd=cwd)
        lines = [line.replace(': FAILED open or read', ': missing')
                 for line in self.lines(run.stdout)]
        return run.returncode, lines

    def verify(self, status, closing, err=(), cwd=ROOT):
        result = self.run_cli('verify', self.manifest, cwd=cwd)
        self.expect(result, status, err=list(err))
        lines = self.lines(result.stdout)
        self.assertEqual(lines[-1], closing)
        self.assertEqual((status, lines[:-1]), self.by_sha256sum(cwd))
        return lines[:-1]

    def test_sha256sum_and_verify_give_the_same_answers(self):
        for cabinet in (SAMPLES / 'cabinet').iterdir():
            if cabinet.suffix != '.csv':
                shutil.copy(cabinet, self.source)
        self.expect(self.rotate('--manifest', self.manifest, '--jobs', 4), 0, err=[])
        content = self.manifest.read_bytes()
        self.assertEqual(content.count(b'\n'), 18)
        lines = self.verify(0, '18 OK, 0 failed, 0 missing')
        cabinets = sorted(p.name for p in self.source.iterdir())
        self.assertEqual(lines[::2], [f'{self.source}/{name}: OK' for name in cabinets])
        self.assertEqual(lines[1], f'{self.target}/Cab_01-90°.9fcoef: OK')

        output = self.target / 'Cab_01-90°.9fcoef'
        whole = output.read_bytes()
        for at in (0, len(whole) // 2, len(whole) - 1):
            output.write_bytes(whole[:at] + bytes([whole[at] ^ 4]) + whole[at + 1:])
            self.assertIn(f'{output}: FAILED', self.verify(1, '17 OK, 1 failed, 0 missing'))
        output.write_bytes(whole[:-1])
        self.verify(1, '17 OK, 1 failed, 0 missing')
        (self.source / 'Cab_05.cccoef').unlink()
        self.assertIn(f'{self.source}/Cab_05.cccoef: missing',
                      self.verify(1, '16 OK, 1 failed, 1 missing'))

        self.manifest.unlink()
        output.write_bytes(whole)
        shutil.copy(SAMPLES / 'cabinet' / 'Cab_05.cccoef', self.source)
        self.expect(self.rotate('--overwrite', '--manifest', self.manifest, '--jobs', 1), 0, err=[])
        self.assertEqual(self.manifest.read_bytes(), content)

    def test_names_are_as_the_folders_were_given(self):
        self.add('a.3bcoef')
        self.expect(self.run_cli('rotate', '--angle', 180, '--manifest', 'sums', 'source',
                                 'target/../target', cwd=self.folder), 0, err=[])
        names = [line[66:] for line in self.manifest.read_text(encoding='utf-8').splitlines()]
        self.assertEqual(names, ['source/a.3bcoef', 'target/../target/a-180°.3bcoef'])
        self.verify(0, '2 OK, 0 failed, 0 missing', cwd=self.folder)
        self.verify(1, '0 OK, 0 failed, 2 missing', cwd=self.source)

    @posix_only
    def test_names_that_need_escapes(self):
        for name in ('a\\b.3bcoef', 'c\nd.3bcoef', 'e\rf.3bcoef', ' g.3bcoef', '#.3bcoef'):
            self.add(name)
        self.expect(self.rotate('--manifest', self.manifest), 0, err=[])
        self.assertEqual(self.by_sha256sum()[0], 0)
        result = self.run_cli('verify', self.manifest)
        self.expect(result, 0, err=[])
        self.assertEqual(self.lines(result.stdout)[-1], '10 OK, 0 failed, 0 missing')
        self.assertIn(f'\\{self.source}/a\\\\b.3bcoef: OK', self.lines(result.stdout))
        own = subprocess.run(['sha256sum', *sorted(self.source.iterdir())], capture_output=True)
        self.assertEqual(sorted(own.stdout.splitlines()),
                         sorted(self.manifest.read_bytes().splitlines()[::2]))

    def test_a_manifest_by_sha256sum_is_verified(self):
        self.add('a.3bcoef')
        for mode in ('-b', '-t'):
            with open(self.manifest, 'wb') as sums:
                subprocess.run(['sha256sum', mode, self.source / 'a.3bcoef'], stdout=sums, check=True)
            self.verify(0, '1 OK, 0 failed, 0 missing')

    def test_what_stands_is_not_replaced(self):
        self.add('a.3bcoef')
        self.manifest.write_text('kept')
        self.expect(self.rotate('--manifest', self.manifest), 2, [],
                    [f'trevolt-cli: the manifest {self.manifest} exists already: '
                     'choose another name'])
        self.assertEqual(self.manifest.read_text(), 'kept')
        self.assertEqual(self.targets(), [])

    def test_a_manifest_that_is_none_is_told_by_its_lines(self):
        self.add('a.3bcoef')
        self.expect(self.rotate('--manifest', self.manifest), 0)
        content = self.manifest.read_bytes()
        self.manifest.write_bytes(content[:10] + b'g' + content[11:])
        self.expect(self.run_cli('verify', self.manifest), 1,
                    [f'{self.target}/a-90°.3bcoef: OK', '1 OK, 0 failed, 0 missing'],
                    [f'{self.manifest}: line 1 is no sum with its file name'])
        for count, more in ((10, []), (11, ['and 1 more like these']),
                            (3000, ['and 2990 more like these'])):
            self.manifest.write_text('no sum\n' * count)
            self.expect(self.run_cli('verify', self.manifest), 1, ['0 OK, 0 failed, 0 missing'],
                        [f'{self.manifest}: line {i} is no sum with its file name'
                         for i in range(1, 11)] + [f'{self.manifest}: {line}' for line in more])
        self.manifest.write_bytes(b'')
        self.expect(self.run_cli('verify', self.manifest), 1, ['0 OK, 0 failed, 0 missing'],
                    [f'trevolt-cli: the manifest {self.manifest} holds no sum'])
        self.manifest.unlink()
        self.expect(self.run_cli('verify', self.manifest), 2, [],
                    [f'trevolt-cli: the manifest {self.manifest} cannot be read: '
                     'No such file or directory: give a file that can be read'])

    @posix_only
    def test_a_manifest_that_the_disk_refuses_is_no_success(self):
        for i in range(30):
            self.add(f'cab{i:02}.3bcoef')
        def refuse_long_files():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (5000, 5000))
        result = self.rotate('--manifest', self.manifest, preexec_fn=refuse_long_files,
                             restore_signals=False, environment=UNCOUNTED)
        self.expect(result, 1, err=[f'trevolt-cli: the manifest {self.manifest} cannot be written: '
                                    'File too large'])
        self.assertEqual(self.lines(result.stdout)[-1], '30 files turned by 90°, 0 failed')
        self.assertEqual(len(self.targets()), 30)
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()), ['source', 'target'])


class Limits(CliTest):
    """What stands in docs/limits.md, on both sides of each limit."""

    def test_bytes_of_a_file(self):
        self.add('a.3bcoef', 40, 30)
        file = self.source / 'a.3bcoef'
        file.write_bytes(coef_file('.3bcoef', 40, 30, os.urandom(3600)))
        size = file.stat().st_size
        self.assertLess(size, 4096)
        for limit in (size, '4K', '4k', '1M', '1g', '1T', 2 ** 64 - 1):
            self.expect(self.rotate('--overwrite', '--max-file-size', limit), 0)
        for limit, bytes_of_limit in ((size - 1, size - 1), ('3K', 3072), (1, 1)):
            self.expect(self.rotate('--overwrite', '--max-file-size', limit), 1,
                        ['0 files turned by 90°, 1 failed'],
                        [f'a.3bcoef: its {size} bytes are above the limit of {bytes_of_limit}'])

    def test_pixels_of_a_file(self):
        self.add('a.3bcoef', 4, 3)
        for limit in ('4x3', '4X4', '5x3', '65535x65535'):
            self.expect(self.rotate('--overwrite', '--max-size', limit), 0)
        for limit in ('3x3', '4x2', '3x4'):
            self.expect(self.rotate('--lenient', '--overwrite', '--max-size', limit), 1,
                        ['0 files turned by 90°, 1 failed'],
                        [f'a.3bcoef: its size 4 x 3 is above the limit of '
                         f'{limit.replace("x", " x ")}'])
        self.expect(self.rotate('--overwrite', '--max-size', '9x7', '--size', '9x7'), 0)
        for size in ('10x7', '9x8', '8x8'):
            self.expect_words(self.rotate('--max-size', '9x7', '--size', size), 2,
                              f'{size} is above --max-size 9x7')

    def test_pixels_of_any_file(self):
        header = lambda width, height: MAGICS['.3bcoef'] + struct.pack('<IHH', 1, width, height)
        for width, height, problem in (
                (65535, 32769, 'its size 65535 x 32769 has more than 2147483647 pixels'),
                (46341, 46341, 'its size 46341 x 46341 has more than 2147483647 pixels'),
                (65535, 32768, Damage.BAD_CONTENT)):  # its bytes do not hold them
            (self.source / 'a.3bcoef').write_bytes(header(width, height))
            self.expect(self.rotate(), 1, ['0 files turned by 90°, 1 failed'],
                        [f'a.3bcoef: {problem}'])
        (self.source / 'a.3bcoef').unlink()
        for side, problem in ((65535, None), (65536, 'its size 65536 x 1 is above 65535 in one '
                                                     'direction')):
            (self.source / 'a.cccoef').write_text(f'[T9COEF20]\nwidth={side}\nheight=1\n')
            self.expect(self.rotate('--overwrite'), 0 if problem is None else 1,
                        err=[] if problem is None else [f'a.cccoef: {problem}'])

    def test_memory(self):
        self.add('a.9bcoef', 400, 300)  # 1,080,000 bytes, in pieces of up to 4 MiB
        for limit in ('6M', '1G'):
            self.expect(self.rotate('--overwrite', '--max-memory', limit), 0, err=[])
        (output,) = self.target.iterdir()
        output.unlink()
        for limit in ('1', 400 * 300 * 9 - 1, '1M'):
            self.expect(self.rotate('--max-memory', limit), 1, ['0 files turned by 90°, 1 failed'],
                        ['a.9bcoef: not enough memory for 400 x 300 pixels'])
        self.expect(self.rotate('--max-memory', '2M'), 1,
                    err=['a.9bcoef: not enough memory to write it whole'])
        self.assertEqual(self.targets(), [])

    def test_limits_are_checked_by_name(self):
        self.add('a.3bcoef')
        for option in ('--max-memory', '--max-file-size'):
            for text in ('0', '0K', '-1', '+1', '1.5G', 'x', 'K', ' 1', '1 K', '1KB', '1P'):
                self.expect_words(self.rotate(f'{option}={text}'), 2,
                                  f'{option}: {text} is no number of bytes: give one, or one with '
                                  'K, M, G or T')
            for text in ('18446744073709551616', '16777216T', '18014398509481984K'):
                self.expect_words(self.rotate(f'{option}={text}'), 2, 
                                  f'{option}: {text} is too large: give less')
        for text in ('0x5', '5', 'ax5', '65536x1'):
            self.expect_words(self.rotate(f'--max-size={text}'), 2, f'--max-size: {text} is ')
        for option in ('--max-memory', '--max-file-size', '--max-size'):
            self.expect_words(self.rotate(option, ''), 2, f'{option}: it is empty: give ')
        self.assertEqual(self.targets(), [])


class Durability(CliTest):
    """What is told as done is on the disk: each file before its name, the names before the lines."""

    def recorded(self, command, *arguments, **failures):
        """The result and the calls of a run in which some of them may fail."""
        calls = self.folder / 'calls'
        calls.unlink(missing_ok=True)
        environment = {f'TREVOLT_{name.upper()}': str(value) for name, value in failures.items()}
        result = command(*arguments, environment=environment | {
            'LD_PRELOAD': cli_support.RECORDER, 'TREVOLT_CALLS': str(calls)})
        lines = calls.read_text(encoding='utf-8').splitlines() if calls.exists() else []
        return result, [tuple(line.split(' ', 1)) for line in lines]

    def interrupted(self, at, *arguments):
        """The result of a command that is interrupted when it reads or syncs a file of such a name."""
        begin = lambda: signal.signal(signal.SIGINT, signal.SIG_DFL)
        return self.recorded(lambda **more: self.run_cli(*arguments, preexec_fn=begin, **more),
                             interrupt=at)[0]

    def check_order(self, calls, folder, told):
        """Every file is synced before it is renamed, and the folder before what `told` names of a
        line that is printed; the names in their order."""
        synced, renamed, lasting, names = set(), set(), set(), []
        for call, what in calls:
            if call == 'sync' and what == str(folder):
                lasting |= renamed
            elif call == 'sync':
                synced.add(what)
            elif call == 'rename':
                temporary, final = what.split(' ')
                self.assertIn(temporary, synced)
                renamed.add(os.path.basename(final))
                names.append(os.path.basename(final))
            else:
                self.assertLessEqual(told(what), lasting, what)
        self.assertEqual(lasting, renamed)
        return names

    @with_recorder
    def test_what_is_told_is_on_the_disk(self):
        for i in range(100):
            self.add(f'cab{i:03}.3bcoef')
        outputs = [f'cab{i:03}-90°.3bcoef' for i in range(100)]
        told_names = lambda line: set(re.findall(r'-> (cab\S+)', line))
        for jobs in (1, 2, 8):
            result, calls = self.recorded(self.rotate, '--overwrite', '--jobs', jobs)
            self.expect(result, 0)
            self.assertEqual([what for call, what in calls if call == 'print'],
                             self.lines(result.stdout))
            names = self.check_order(calls, self.target, lambda line: set(outputs) if
                                     'turned by' in line else told_names(line))
            self.assertEqual(names, outputs)
            folder_syncs = [what for call, what in calls if what == str(self.target)]
            self.assertLessEqual(100 / 32, len(folder_syncs))

    @with_recorder
    def test_a_time_that_is_kept_is_on_the_disk(self):
        self.add('a.3bcoef')
        keep = lambda *more, **failures: self.recorded(self.rotate, '--keep-times', '--overwrite',
                                                       *more, **failures)
        of_the_output = lambda calls: [call for call, what in calls if '.tmp' in what]
        result, calls = keep()
        self.expect(result, 0, err=[])
        self.assertEqual(of_the_output(calls), ['sync', 'time', 'sync', 'rename'])
        result, calls = keep('--no-sync')
        self.expect(result, 0, err=[])
        self.assertEqual(of_the_output(calls), ['time', 'rename'])
        for spared, done in ((0, []), (1, ['sync', 'time'])):
            result, calls = keep(fail_sync='.tmp', spare_syncs=spared)
            self.expect(result, 1, err=['a.3bcoef: cannot be written: Input/output error'])
            self.assertEqual(of_the_output(calls), done)
        result, _ = keep(fail_time='.tmp')
        self.expect(result, 1, err=['a.3bcoef: its time cannot be given to its output: '
                                    'Operation not permitted'])
        result, calls = self.recorded(self.rotate, '--overwrite')
        self.expect(result, 0, err=[])
        self.assertEqual(of_the_output(calls), ['sync', 'rename'])

    @with_recorder
    def test_a_file_that_fails_keeps_no_other_from_the_disk(self):
        self.add('a.3bcoef')
        (self.source / 'b.3bcoef').write_bytes(b'damaged')
        result, calls = self.recorded(self.rotate, '--keep-times',
                                      fail_thread=99)  # by one thread, which keeps both together
        self.expect(result, 1, ['a.3bcoef -> a-90°.3bcoef  (4 x 3 -> 3 x 4)',
                                '1 file turned by 90°, 1 failed'])
        names = self.check_order([call for call in calls if call[0] != 'time'], self.target,
                                 lambda line: {'a-90°.3bcoef'} if line[:1] == 'a' else set())
        self.assertEqual(names, ['a-90°.3bcoef'])
        self.assertEqual([call for call, what in calls if '.tmp' in what],
                         ['sync', 'time', 'sync', 'rename'])

    @with_recorder
    def test_a_sync_that_failed_is_asked_again_only_where_the_system_was_busy(self):
        for name in ('a.3bcoef', 'b.3bcoef'):
            self.add(name)
        for error, failed in ((errno.EIO, 1), (errno.EMFILE, 0), (errno.ENFILE, 0)):
            result, _ = self.recorded(self.rotate, '--keep-times', '--overwrite', fail_sync='.tmp',
                                      most_failures=1, sync_error=error, fail_thread=99)
            self.expect(result, failed)
            self.assertEqual(len(self.lines(result.stderr)), failed)

    @with_recorder
    def test_the_demo_wall_is_on_the_disk_when_it_is_told(self):
        wall = self.folder / 'wall'
        result, calls = self.recorded(self.run_cli, 'demo', wall)
        self.expect(result, 0)
        names = self.check_order(calls, wall, lambda line: {p.name for p in wall.iterdir()})
        self.assertEqual(len(names), 9)
        self.assertEqual(calls[-1], ('print', f'demo wall written to {wall}'))

    @with_recorder
    def test_the_folders_of_the_demo_wall_are_on_the_disk_before_a_cabinet(self):
        wall = self.folder / 'some' / 'wall'
        result, calls = self.recorded(self.run_cli, 'demo', wall)
        self.expect(result, 0)
        first = next(i for i, (_, what) in enumerate(calls) if what.endswith('.tmp'))
        self.assertEqual(calls[:first], [('sync', str(folder)) for folder in
                                         (wall.parent, self.folder, wall)])
        missing = self.folder / 'other'
        result, _ = self.recorded(self.run_cli, 'demo', missing / 'wall', fail_sync=missing)
        self.expect(result, 1, [], [f'trevolt-cli: {missing}/wall: the folder cannot be made, '
                                    'written to or synced: Input/output error: choose another'])
        self.assertEqual(list((missing / 'wall').iterdir()), [])

    @with_recorder
    def test_an_interrupted_demo_leaves_whole_cabinets(self):
        wall = self.folder / 'wall'
        self.expect(self.interrupted('.tmp', 'demo', wall), 130, [], [
            f'trevolt-cli: {wall}: interrupted: 1 of 9 cabinets is written'])
        self.assertEqual([path.name for path in wall.iterdir()], ['Cab_01.9fcoef'])

    @with_recorder
    def test_an_interrupted_info_tells_whole_files(self):
        for name in 'abc':
            self.add(f'{name}.3bcoef')
        result = self.interrupted('b.3bcoef', 'info', self.source)
        self.expect(result, 130, err=[])
        self.assertEqual(self.lines(result.stdout)[-1], '2 files, 0 with problems, interrupted')
        result = self.interrupted('b.3bcoef', 'info', '--json', self.source)
        *files, summary = map(json.loads, self.lines(result.stdout))
        self.assertEqual([file['name'] for file in files], ['a.3bcoef', 'b.3bcoef'])
        self.assertEqual((result.returncode, summary['end'], summary['exit_status'],
                          summary['whole']), (130, 'interrupted', 130, 2))
        result = self.interrupted('c.3bcoef', 'info', self.source)  # the last one
        self.expect(result, 130, err=[])
        self.assertEqual(self.lines(result.stdout)[-1], '3 files, 0 with problems, interrupted')

    @with_recorder
    def test_an_interrupted_diff_tells_whole_pairs(self):
        for name in 'abc':
            self.add(f'{name}.3bcoef')
        shutil.copytree(self.source, self.target, dirs_exist_ok=True)
        result = self.interrupted('b.3bcoef', 'diff', self.source, self.target)
        self.expect(result, 130, err=[])
        self.assertEqual(self.lines(result.stdout)[-1],
                         '2 same, 0 different, 0 on one side only, 0 with problems, interrupted')
        result = self.interrupted('b.3bcoef', 'diff', '--json', self.source, self.target)
        *pairs, summary = map(json.loads, self.lines(result.stdout))
        self.assertEqual((len(pairs), result.returncode, summary['end'], summary['exit_status'],
                          summary['same']), (2, 130, 'interrupted', 130, 2))
        shutil.copy(self.source / 'a.3bcoef', self.target / 'd.3bcoef')  # nothing is told of it
        result = self.interrupted('c.3bcoef', 'diff', self.source, self.target)
        self.expect(result, 130, err=[])
        self.assertEqual(self.lines(result.stdout)[-1],
                         '3 same, 0 different, 0 on one side only, 0 with problems, interrupted')
        pair = [path / 'c.3bcoef' for path in (self.source, self.target)]
        self.expect(self.interrupted('c.3bcoef', 'diff', *pair), 130, [
            f'{pair[0]} and {pair[1]} are the same: 12 pixels', 'interrupted'], [])

    @with_recorder
    def test_an_interrupted_difference_picture_is_not_written(self):
        for name in 'ab':
            self.add(f'{name}.3bcoef')
        pictures = self.folder / 'pictures'
        pictures.mkdir()
        diff = ('diff', self.source / 'a.3bcoef', self.source / 'b.3bcoef', '--image',
                pictures / 'p.png')
        self.expect(self.interrupted('b.3bcoef', *diff), 130, ['interrupted, no picture written'],
                    [])
        self.assertEqual(list(pictures.iterdir()), [])
        self.expect(self.interrupted('.tmp', *diff), 0, err=[])  # nothing is left to be done
        self.assertEqual([path.name for path in pictures.iterdir()], ['p.png'])

    @with_recorder
    def test_an_interrupted_verification_tells_whole_files(self):
        for name in 'abc':
            self.add(f'{name}.3bcoef')
        sums = self.folder / 'sums'
        lines = [f'{hashlib.sha256(path.read_bytes()).hexdigest()}  {path}\n'
                 for path in sorted(self.source.iterdir())]
        sums.write_text(''.join(lines), encoding='ascii')
        self.expect(self.interrupted('b.3bcoef', 'verify', sums), 130, [
            f"{self.source / 'a.3bcoef'}: OK", f"{self.source / 'b.3bcoef'}: OK",
            '2 OK, 0 failed, 0 missing, interrupted'], [])
        sums.write_text(lines[0], encoding='ascii')  # the last one
        self.expect(self.interrupted('a.3bcoef', 'verify', sums), 130, [
            f"{self.source / 'a.3bcoef'}: OK", '1 OK, 0 failed, 0 missing, interrupted'], [])

    @posix_only
    def test_a_second_interrupt_ends_what_waits_for_ever(self):
        pipe = self.folder / 'pipe'
        os.mkfifo(pipe)
        run = subprocess.Popen([*cli_support.PROGRAM, 'verify', pipe], stdout=subprocess.DEVNULL)
        deadline = time.monotonic() + 60
        while run.poll() is None and time.monotonic() < deadline:
            run.send_signal(signal.SIGINT)
            time.sleep(0.05)
        self.assertEqual(run.wait(), -signal.SIGINT)

    @posix_only
    def test_a_link_to_what_cannot_be_looked_at_leaves_the_folder_readable(self):
        self.add('a.3bcoef')
        os.symlink('n' * 300, self.source / 'notes')  # no name can be so long
        self.expect(self.rotate(), 0, ['a.3bcoef -> a-90°.3bcoef  (4 x 3 -> 3 x 4)',
                                       '1 file turned by 90°, 0 failed, 1 entry passed over'], [])

    @with_recorder
    def test_an_output_that_the_disk_holds_otherwise_gets_no_name(self):
        for name in ('a.3bcoef', 'b.9fcoef'):
            self.add(name)
        result, _ = self.recorded(self.rotate, '--verify', decay=1)
        self.expect(result, 1, ['0 files turned by 90°, 2 failed'],
                    [f'{name}: what was read back is not what was written'
                     for name in ('a.3bcoef', 'b.9fcoef')])
        self.assertEqual(self.targets(), [])
        result, calls = self.recorded(self.rotate, '--verify', '--no-sync')
        self.expect(result, 0)
        self.assertEqual(len([what for call, what in calls if call == 'sync']), 2)

    @with_recorder
    def test_file_systems_without_the_rename_that_replaces_nothing(self):
        self.add('a.3bcoef')
        output = self.target / 'a-90°.3bcoef'
        for plain_renames in (0, 1, 2):
            result, _ = self.recorded(self.rotate, plain_renames=plain_renames)
            self.expect(result, 0)
            self.assertEqual(self.targets(), [output.name])
            self.assertGreater(output.stat().st_size, 0)
            output.unlink()
            result, _ = self.recorded(self.rotate, plain_renames=plain_renames, appears=1)
            self.expect(result, 1, ['0 files turned by 90°, 1 failed'],
                        [f'a.3bcoef: its output {output.name} exists already: overwrite it, or choose '
                         'another target'])
            self.assertEqual(output.stat().st_size, 0)
            self.assertEqual(self.targets(), [output.name])
            output.unlink()

    @with_recorder
    def test_nothing_is_synced_where_nobody_wants_it(self):
        self.add('a.3bcoef')
        wall = self.folder / 'wall'
        for command, arguments in ((self.rotate, ['--no-sync']),
                                   (self.run_cli, ['demo', '--no-sync', wall])):
            result, calls = self.recorded(command, *arguments)
            self.expect(result, 0)
            self.assertEqual({call for call, _ in calls}, {'rename', 'print'})

    @with_recorder
    def test_what_is_verified_is_read_from_the_disk(self):
        self.add('a.3bcoef')
        result, calls = self.recorded(self.rotate, '--no-sync', '--verify')
        self.expect(result, 0)
        self.assertEqual([call for call, _ in calls], ['sync', 'rename', 'print', 'print'])
        result, _ = self.recorded(self.rotate, '--overwrite', '--no-sync', '--verify',
                                  fail_sync='.tmp')
        self.expect(result, 1, ['0 files turned by 90°, 1 failed'],
                    ['a.3bcoef: cannot be written: Input/output error'])

    @with_recorder
    def test_a_file_that_does_not_reach_the_disk_has_failed(self):
        for name in ('a.3bcoef', 'b.3bcoef'):
            self.add(name)
        result, _ = self.recorded(self.rotate, fail_sync='.tmp')
        self.expect(result, 1, ['0 files turned by 90°, 2 failed'],
                    ['a.3bcoef: cannot be written: Input/output error',
                     'b.3bcoef: cannot be written: Input/output error'])
        self.assertEqual(self.targets(), [])
        wall = self.folder / 'wall'
        result, _ = self.recorded(self.run_cli, 'demo', wall, fail_sync='.tmp')
        self.expect(result, 1, [], [f'trevolt-cli: {wall}: its output Cab_01.9fcoef cannot be '
                                    'written: Input/output error'])
        self.assertEqual(list(wall.iterdir()), [])

    @with_recorder
    def test_a_target_that_cannot_be_synced_is_named_before_anything_is_done(self):
        self.add('a.3bcoef')
        result, _ = self.recorded(self.rotate, fail_sync=self.target)
        self.expect(result, 2, [], [f'trevolt-cli: the target folder {self.target}/ cannot be made, '
                                    'written to or synced: Input/output error: choose another'])
        self.assertEqual(self.targets(), [])

    @with_recorder
    def test_names_that_may_be_lost_are_not_told_as_done(self):
        for name in ('a.3bcoef', 'b.3bcoef'):
            self.add(name)
        lost = ('written, but its name may be lost: the target folder cannot be synced: '
                'Input/output error')
        result, _ = self.recorded(self.rotate, fail_sync=self.target, spare_syncs=1)
        self.expect(result, 1, ['0 files turned by 90°, 2 failed'],
                    [f'a.3bcoef: {lost}', f'b.3bcoef: {lost}'])
        wall = self.folder / 'wall'
        result, _ = self.recorded(self.run_cli, 'demo', wall, fail_sync=wall, spare_syncs=1)
        self.expect(result, 1, [], [f'trevolt-cli: {wall}: {lost}'])
        def refuse_the_text():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (600000, 600000))
        demo = lambda *arguments, **options: self.run_cli(
            *arguments, preexec_fn=refuse_the_text, restore_signals=False, **options)
        result, _ = self.recorded(demo, 'demo', '--overwrite', wall, fail_sync=wall, spare_syncs=1)
        self.expect(result, 1, [], [f'trevolt-cli: {wall}: its output Cab_07.cccoef cannot be written: '
                                    f'File too large: 6 of 9 cabinets are written; {lost}'])
        result, _ = self.recorded(self.run_cli, 'demo', '--overwrite', wall, fail_sync=wall)
        self.expect(result, 1, [], [f'trevolt-cli: {wall}: the folder cannot be made, written to or synced: '
                                    'Input/output error: choose another'])

    @with_recorder
    def test_a_listing_that_breaks_off_ends_the_run(self):
        for i in range(20):
            self.add(f'cab{i}.3bcoef')
        for number in (1, 5, 22):
            result, calls = self.recorded(self.rotate, fail_readdir=number)
            self.expect(result, 1, [], [f'trevolt-cli: the source folder {self.source}/ cannot be '
                                        'listed: Input/output error'])
            self.assertEqual((self.targets(), calls), ([], []))
        for arguments, status in ((('info', self.source), 1), (('diff', self.source, self.source), 2)):
            result, _ = self.recorded(self.run_cli, *arguments, '--json', fail_readdir=5)
            self.expect(result, status, err=[])
            self.assertIn('{"type":"summary","version":1,"end":"failed",', result.stdout.decode())

    @with_recorder
    def test_refused_threads_leave_their_work_to_others(self):
        for i in range(5):
            self.add(f'cab{i}.3bcoef')
        expected = None
        for refused in (0, 1, 2, 3, 1000):
            result, _ = self.recorded(self.rotate, '--overwrite', '--jobs', 4,
                                      fail_thread=refused)
            expected = expected or self.lines(result.stdout)
            self.expect(result, 0, expected, [])

    @with_recorder
    def test_memory_that_is_refused_at_any_place_ends_in_one_message(self):
        raw = self.add('a.3bcoef')
        whole = turned(90, 4, 3, raw, 3)[2]
        self.add('b.3bcoef')
        outputs = ['a-90°.3bcoef', 'b-90°.3bcoef']
        messages = set()
        refused = 0
        while True:
            refused += 7
            result, calls = self.recorded(self.rotate, '--jobs', 2,
                                          *['--no-sync'] * (refused % 2), '--keep-times',
                                          fail_new=refused)
            lines, errors = self.lines(result.stdout), self.lines(result.stderr)
            if ('refuse', 'memory') not in calls:
                break
            targets = self.targets()
            self.assertLessEqual(set(targets), set(outputs), 'a file under work was left')
            for name in targets:
                self.assertEqual(self.body(self.target / name, '.3bcoef', 3, 4), whole)
                (self.target / name).unlink()
            self.assertIn(result.returncode, (0, 1), (refused, errors))
            self.assertEqual(len(errors), result.returncode, (refused, errors))
            messages |= {re.sub('^[ab].3bcoef', 'FILE', error) for error in errors}
            if lines and 'turned by' in lines[-1]:
                done = len(targets)
                self.assertEqual(lines[-1], f'{done} file{"s" * (done != 1)} turned by 90°, '
                                            f'{2 - done} failed')
        self.assertIn('trevolt-cli: not enough memory: close other programs, or give rotate fewer --jobs',
                      messages)
        self.assertIn('FILE: not enough memory', messages)
        for message in messages:
            self.assertIn('not enough memory', message)


class WordKinds(CliTest):
    """What only the word kinds have: losses that are told, and a kind found before the ending."""

    def test_what_a_turn_loses_is_told(self):
        shutil.copy(SAMPLES / 'awkward' / 'origin_1000_777.9wcoef', self.source)
        self.expect(self.rotate(), 0, [
            'origin_1000_777.9wcoef -> origin_1000_777-90°.9wcoef  (300 x 140 -> 140 x 300)',
            'origin_1000_777.9wcoef: the turned file lacks its origin (1000, 777)',
            '1 file turned by 90°, 0 failed'], [])

    def test_a_kind_counts_anywhere_in_the_name(self):
        plain = SAMPLES / 'cabinet' / 'Cab_06.9wcoef'
        shutil.copy(plain, self.source / 'x.9wcoef.9wPCoef')
        shutil.copy(plain, self.source / 'alone.9wPCoef')
        self.expect(self.rotate(), 0,
                    ['x.9wcoef.9wPCoef -> x-90°.9wcoef.9wPCoef  (40 x 24 -> 24 x 40)',
                     '1 file turned by 90°, 0 failed, 1 entry passed over'], [])
        self.assertEqual(self.targets(), ['x-90°.9wcoef.9wPCoef'])

        # The ending makes the output a file with extra words, which is then read as such.
        output = self.target / 'x-90°.9wcoef.9wPCoef'
        self.assertEqual(output.read_bytes()[:16].hex(), '0c14edf43afcd34e97cb786e63deaf99')
        shutil.move(output, self.source / 'x.9wcoef.9wPCoef')
        self.expect(self.rotate(angle=270), 0,
                    ['x.9wcoef.9wPCoef -> x-270°.9wcoef.9wPCoef  (24 x 40 -> 40 x 24)',
                     'x.9wcoef.9wPCoef: the turned file lacks its extra words',
                     '1 file turned by 270°, 0 failed, 1 entry passed over'], [])


class Documents(CliTest):
    def test_the_binary_pages_example_is_what_is_read_and_written(self):
        page = (ROOT / 'docs' / 'formats' / 'binary.md').read_text(encoding='utf-8')
        example = page.split('## An example')[1].split('```')[1]
        content = b''
        for line in example.strip().splitlines():
            found = re.match(r'([0-9a-f]{8}): ((?:[0-9a-f]{2,4} )*[0-9a-f]{2,4})(?:  |$)', line)
            if found:
                self.assertEqual(int(found[1], 16), len(content), line)
                content += bytes.fromhex(found[2])
        self.assertEqual(lz4.frame.decompress(content[24:]), bytes((255, 230, 204, 255, 255, 255)))
        (self.source / 'a.3bcoef').write_bytes(content)
        self.expect(self.rotate(angle=180), 0, err=[])
        output = self.target / 'a-180°.3bcoef'
        self.assertEqual(self.body(output, '.3bcoef', 2, 1), bytes((255, 255, 255, 255, 230, 204)))
        shutil.move(output, self.source / 'a.3bcoef')
        self.expect(self.rotate(angle=180), 0, err=[])
        self.assertEqual(output.read_bytes(), content)


class SideFiles(CliTest):
    """What is left beside coefficient files is taken for none of them later."""

    def test_a_name_of_a_coefficient_file_is_refused(self):
        self.add('a.3bcoef')
        a = self.source / 'a.3bcoef'
        told = 'has the name of a coefficient file: choose another name'
        picture = self.target / 'x.9fcoef.png'
        array = self.target / 'y.9fcoef.npy'
        for words, command in (
                (f'PICTURE: {picture} {told}', ('preview', a, picture)),
                (f'--image: {picture} {told}', ('diff', a, a, '--image', picture)),
                (f'the output {array} {told}', ('convert', a, array))):
            self.expect_words(self.run_cli(*command), 2, words)
        self.assertEqual(self.targets(), [])

    def test_they_may_lie_in_a_target_that_the_run_makes(self):
        self.add('a.3bcoef')
        for number, spelt in enumerate(('{}', '{}/', './{}', self.folder.as_posix() + '/{}')):
            made = f'made{number}'
            flags = ('--manifest', f'{made}/sums', '--report', f'{made}/run.html')
            target = spelt.format(made)
            self.expect(self.run_cli('rotate', '-a', 90, '-n', *flags[:2], 'source', target,
                                     cwd=self.folder), 0, err=[])
            self.assertFalse((self.folder / made).exists())
            self.expect(self.run_cli('rotate', '-a', 90, *flags, 'source', target,
                                     cwd=self.folder), 0, err=[])
            self.assertEqual(sorted(path.name for path in (self.folder / made).iterdir()),
                             ['a-90°.3bcoef', 'run.html', 'sums'])
        for flag in (('--manifest', 'new/below/sums'), ('--manifest', 'new/'),
                     ('--report', 'other/new/r.html')):
            self.expect_words(self.run_cli('rotate', '-a', 90, *flag, 'source', 'new',
                                           cwd=self.folder), 2, 'does not exist')
        same = ('--manifest', 'new/r.html', '--report', './new/r.html')
        self.expect_words(self.run_cli('rotate', '-a', 90, *same, 'source', 'new',
                                       cwd=self.folder), 2, 'are both')
        self.assertFalse((self.folder / 'new').exists())

    @posix_only
    def test_why_a_target_cannot_be_made(self):
        self.add('a.3bcoef')
        (self.folder / 'link').symlink_to('nowhere')
        for target, told in (
                ('/dev/full/x', 'the target folder /dev/full/x/ cannot be made, written to or synced: '
                                'Not a directory: choose another'),
                (self.folder / 'link', f'the target {self.folder}/link is a link that leads '
                                       'nowhere: choose another'),
                (self.folder / 'link' / 'x', f'the target folder {self.folder}/link/x/ cannot be '
                                             'made, written to or synced: No such file or directory: '
                                             'choose another')):
            self.expect(self.run_cli('rotate', '-a', 90, self.source, target), 2, [],
                        [f'trevolt-cli: {told}'])


class Demo(CliTest):
    def test_the_demo_wall_turns(self):
        wall = self.folder / 'new' / 'wall'
        self.expect(self.run_cli('demo', wall), 0, [f'demo wall written to {wall}'])
        self.assertIn('Cab_01.9fcoef', [p.name for p in wall.iterdir()])
        self.expect(self.run_cli('rotate', '--angle', 270, wall, self.target), 0, err=[])
        self.assertEqual(len(self.targets()), len(list(wall.iterdir())))

    def test_a_folder_that_cannot_be_made_is_named(self):
        (self.folder / 'file').write_text('x')
        folder = self.folder / 'file' / 'wall'
        self.expect(self.run_cli('demo', folder), 2, [],
                    [f'trevolt-cli: {folder}: the folder cannot be made, written to or synced: Not a directory: '
                     'choose another'])


if __name__ == '__main__':
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    unittest.main(argv=[sys.argv[0], *cli_support.take_program(sys.argv[1:])])
