#!/usr/bin/python3
"""Tests of the example programs: what each prints and leaves.

    examples_test.py PROGRAM ... [--wrapper COMMAND] [unittest options]

The programs are those of examples/, every one of them. The wrapper starts them, for example Wine for
the Windows build.
"""
import argparse
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
CABINETS = ROOT / 'samples' / 'cabinet'
PROGRAMS = {}
WRAPPER = []


class Example(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix='trevolt-examples-test-'))
        self.addCleanup(shutil.rmtree, self.folder)

    def start(self, program, *arguments):
        done = self.start_once(program, *arguments)
        if WRAPPER and done.stderr.startswith('wine client error:'):
            # It met a Wine server that was just ending; the next start makes a new one.
            done = self.start_once(program, *arguments)
        return done

    def start_once(self, program, *arguments):
        # Into files: a pipe would stay open as long as what the wrapper leaves running.
        with tempfile.TemporaryFile('w+', encoding='utf-8') as out, \
                tempfile.TemporaryFile('w+', encoding='utf-8') as err:
            done = subprocess.run([*WRAPPER, PROGRAMS[program], *arguments], cwd=self.folder,
                                  stdout=out, stderr=err, check=False)
            for stream in (out, err):
                stream.seek(0)
            done.stdout, done.stderr = out.read(), err.read()
        return done

    def expect(self, program, *arguments, lines):
        done = self.start(program, *arguments)
        self.assertEqual(done.stderr, '')
        self.assertEqual(done.returncode, 0)
        self.assertEqual(done.stdout.splitlines(), lines)

    def expect_failure(self, program, *arguments, lines):
        done = self.start(program, *arguments)
        self.assertEqual(done.stdout, '')
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr.splitlines(), lines)

    def names(self):
        return sorted(path.name for path in self.folder.iterdir())


class Programs(unittest.TestCase):
    def test_every_example_is_there(self):
        sources = {path.stem for path in (ROOT / 'examples').glob('*.cpp')}
        self.assertEqual(PROGRAMS.keys(), sources)

    def test_the_page_quotes_them(self):
        lines = {line.strip() for path in (ROOT / 'examples').glob('*.cpp')
                 for line in path.read_text(encoding='utf-8').splitlines()}
        page = (ROOT / 'docs' / 'library.md').read_text(encoding='utf-8')
        quotes = re.findall(r'^```cpp\n(.*?)^```', page, re.MULTILINE | re.DOTALL)
        self.assertEqual(len(quotes), 3)
        for line in '\n'.join(quotes).splitlines():
            self.assertIn(line.strip(), lines)


class TurnFile(Example):
    def bring(self, sample):
        shutil.copy(ROOT / 'samples' / sample, self.folder)
        return pathlib.Path(sample).name

    def test_a_file_of_every_kind(self):
        samples = sorted(path.name for path in CABINETS.glob('Cab_*coef'))
        self.assertEqual(len(samples), 9)
        for sample in samples:
            with self.subTest(sample):
                name, kind = self.bring(f'cabinet/{sample}').split('.')
                self.expect('TurnFile', sample, '90',
                            lines=[f'{name}-90°.{kind}: 24 x 40 pixels'])

    def test_every_angle(self):
        name = self.bring('cabinet/Cab_05.cccoef')
        for angle, size in (('90', '24 x 40'), ('180', '40 x 24'), ('270', '24 x 40')):
            with self.subTest(angle):
                output = f'Cab_05-{angle}°.cccoef'
                self.expect('TurnFile', name, angle, lines=[f'{output}: {size} pixels'])
                self.assertEqual((self.folder / output).read_bytes(),
                                 (ROOT / 'samples' / f'turned-{angle}' / output).read_bytes())

    def test_a_file_of_another_folder(self):
        (self.folder / 'wall.3bcoef').mkdir()
        shutil.copy(CABINETS / 'Cab_07.3wcoef', self.folder / 'wall.3bcoef' / 'CAB.3WCOEF')
        self.expect('TurnFile', 'wall.3bcoef/CAB.3WCOEF', '270',
                    lines=['CAB-270°.3WCOEF: 24 x 40 pixels'])
        self.assertEqual(self.names(), ['CAB-270°.3WCOEF', 'wall.3bcoef'])

    def test_a_damaged_file_is_not_written(self):
        name = self.bring('cabinet/Cab_06.9wcoef')
        content = (self.folder / name).read_bytes()
        (self.folder / name).write_bytes(content[:-1])
        self.expect_failure('TurnFile', name, '90', lines=[
            'the file cannot be read: E_FAIL (0x80004005): the content is damaged or does not match '
            'its header'])
        self.assertEqual(self.names(), [name])

    def test_what_is_no_file_of_a_kind(self):
        self.expect_failure('TurnFile', 'none.9fcoef', '90', lines=[
            'its size cannot be read: E_COEF_OPENFAILED (0xE0830011): the file could not be opened'])
        self.expect_failure('TurnFile', 'notes.txt', '90',
                            lines=['its name tells no kind of coefficient file'])

    def test_usage(self):
        for arguments in ([], ['a.9fcoef'], ['a.9fcoef', '45'], ['a.9fcoef', '90', 'more']):
            with self.subTest(arguments):
                self.expect_failure('TurnFile', *arguments,
                                    lines=['usage: TurnFile FILE 90|180|270'])


class MakeWordFile(Example):
    def test_words_come_back(self):
        self.expect('MakeWordFile', lines=[
            '320 x 180 pixels in 4 blocks',
            'lower right corner: 47405 47405 46405',
            'pixels that came back as others: 0',
        ])
        self.assertEqual(self.names(), ['Cabinet.3wcoef'])


class PlaceCabinets(Example):
    def test_every_cabinet_has_its_place(self):
        self.expect('PlaceCabinets', lines=[
            'column 0, row 0: 32 x 18 pixels at (0, 0)',
            'column 1, row 0: 32 x 18 pixels at (32, 0)',
            'column 2, row 0: 32 x 18 pixels at (64, 0)',
            'column 0, row 1: 32 x 18 pixels at (0, 18)',
            'column 1, row 1: 32 x 18 pixels at (32, 18)',
            'column 2, row 1: 32 x 18 pixels at (64, 18)',
            "red gains along the screen's last line: 0.625 0.5 0.375",
        ])
        self.assertEqual(self.names(), ['Cab_00.9fcoef', 'Cab_01.9fcoef', 'Cab_02.9fcoef',
                                        'Cab_10.9fcoef', 'Cab_11.9fcoef', 'Cab_12.9fcoef',
                                        'Screen.9fcoef'])
        # Magic, version, width and height.
        self.assertEqual((self.folder / 'Screen.9fcoef').read_bytes()[16:24],
                         bytes((1, 0, 0, 0, 96, 0, 36, 0)))


class ReadDamage(Example):
    # Four chunks, whose records stand behind the header; a record's first plane size is at 20.
    NAME = 'Cabinet.3wcoef'
    HEADER_BYTES = 168
    RECORD_BYTES = 56

    def setUp(self):
        super().setUp()
        self.assertEqual(self.start('MakeWordFile').returncode, 0)

    def damage(self, chunk, offset, count):
        path = self.folder / self.NAME
        content = bytearray(path.read_bytes())
        begin = self.HEADER_BYTES + chunk * self.RECORD_BYTES + offset
        content[begin:begin + count] = bytes(count)
        path.write_bytes(content)

    def chunk_bytes(self, chunk):
        """What the chunk's record tells of its compressed bytes."""
        record = self.HEADER_BYTES + chunk * self.RECORD_BYTES
        return struct.unpack_from('<I', (self.folder / self.NAME).read_bytes(), record + 16)[0]

    def test_a_whole_file(self):
        self.expect('ReadDamage', self.NAME, lines=[
            'size: 320 x 180 pixels',
            'status: S_OK (0x00000000): success',
            'chunks that could not be read: 0',
            'pixels that no chunk holds: 0',
            'the file is whole',
        ])

    def test_damage_behind_a_success(self):
        self.damage(0, 20, 4)
        self.expect('ReadDamage', self.NAME, lines=[
            'size: 320 x 180 pixels',
            'status: S_OK (0x00000000): success',
            'chunks that could not be read: 1',
            'pixels that no chunk holds: 0',
            'the file is damaged: 1 of its chunks could not be read',
        ])

    def test_a_missing_chunk(self):
        chunk_bytes = self.chunk_bytes(3)
        self.damage(3, 0, self.RECORD_BYTES)
        self.expect('ReadDamage', self.NAME, lines=[
            'size: 320 x 180 pixels',
            'status: S_OK (0x00000000): success',
            'chunks that could not be read: 0',
            f'pixels that no chunk holds: {64 * 52}',
            f'the file is damaged: {chunk_bytes} bytes lie behind its last chunk',
            f'the file is incomplete: {64 * 52} pixels have no data',
        ])

    def test_a_file_that_is_read_whole_or_not_at_all(self):
        whole = (CABINETS / 'Cab_01.9fcoef').read_bytes()
        (self.folder / 'Cut.9fcoef').write_bytes(whole[:-1])
        status = 'E_FAIL (0x80004005): the content is damaged or does not match its header'
        self.expect('ReadDamage', 'Cut.9fcoef', lines=[
            'size: 40 x 24 pixels',
            f'status: {status}',
            'chunks that could not be read: 0',
            'pixels that no chunk holds: 0',
            f'the file cannot be read: {status}',
        ])

    def test_usage(self):
        for arguments in ([], ['notes.txt'], [self.NAME, self.NAME]):
            with self.subTest(arguments):
                self.expect_failure('ReadDamage', *arguments, lines=['usage: ReadDamage FILE'])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('programs', nargs='+', type=pathlib.Path)
    parser.add_argument('--wrapper')
    options, rest = parser.parse_known_args()
    PROGRAMS.update({path.stem: path.resolve() for path in options.programs})
    WRAPPER.extend([options.wrapper] if options.wrapper else [])
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == '__main__':
    main()
