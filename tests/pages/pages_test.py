#!/usr/bin/python3
"""Tests of the manual page and the completions in share/.

    pages_test.py MAKE-CLI-PAGES [unittest options]

They must be what the program's options give now; troff takes the manual page without a warning, and an
interactive bash completes with the other.
"""
import difflib
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SHARE = ROOT / 'share'
GENERATOR = pathlib.Path()


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=False, **options)


def texts_below(folder):
    return {path.relative_to(folder).as_posix(): path.read_bytes().decode('utf-8')
            for path in folder.rglob('*') if path.is_file()}


class Generator(unittest.TestCase):
    def test_pages_are_up_to_date(self):
        with tempfile.TemporaryDirectory() as folder:
            made = run(GENERATOR, folder)
            self.assertEqual((made.returncode, made.stdout, made.stderr), (0, '', ''))
            now = texts_below(pathlib.Path(folder))
        committed = texts_below(SHARE)
        self.assertEqual(sorted(committed), sorted(now), 'run ./dev pages and commit share/')
        for name, text in now.items():
            difference = difflib.unified_diff(committed[name].splitlines(True),
                                              text.splitlines(True), 'share/' + name, 'made now')
            self.assertEqual(committed[name], text,
                             'run ./dev pages and commit share/\n' + ''.join(difference))

    def test_mistakes(self):
        with tempfile.TemporaryDirectory() as folder:
            for arguments in ([], ['one', 'two'], ['--help'], ['-h'], ['-']):
                done = run(GENERATOR, *arguments, cwd=folder)
                self.assertEqual((done.returncode, done.stdout, done.stderr),
                                 (2, '', 'usage: make-cli-pages FOLDER\n'))
            self.assertEqual(list(pathlib.Path(folder).iterdir()), [])
        with tempfile.NamedTemporaryFile() as file:
            done = run(GENERATOR, file.name)
            self.assertEqual((done.returncode, done.stdout), (1, ''))
            self.assertTrue(done.stderr.startswith('make-cli-pages: '), done.stderr)


class ManualPage(unittest.TestCase):
    PAGE = SHARE / 'man' / 'man1' / 'trevolt-cli.1'

    def test_troff_has_nothing_to_warn_of(self):
        done = run('groff', '-man', '-ww', '-z', '-Tutf8', self.PAGE)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, '', ''))

    def test_options_print_as_they_are_typed(self):
        done = run('groff', '-man', '-Tutf8', '-P-cbou', '-rLL=80n', self.PAGE)
        self.assertEqual((done.returncode, done.stderr), (0, ''))
        lines = done.stdout.splitlines()
        for line in ('       -a, --angle 90|180|270', '       trevolt-cli demo [OPTIONS] FOLDER',
                     '       trevolt-cli --help | --version', 'EXIT STATUS', 'EXAMPLES',
                     '       trevolt-cli - turns the per-pixel calibration of LED display walls'):
            self.assertIn(line, lines)
        self.assertIn('Cab_01-90°.9fcoef', done.stdout)


class BashCompletion(unittest.TestCase):
    """The program is a function that prints its words. Alt and * put all that fits into the line."""
    SCRIPT = SHARE / 'bash-completion' / 'completions' / 'trevolt-cli'
    ALL = '\033*'

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        for name in ('walls/left', "walls/the other's"):
            (self.folder / name).mkdir(parents=True)
        for name in ('walls/Cab_01.9fcoef', '--odd.9fcoef', '90.csv'):
            (self.folder / name).touch()

    def complete(self, *lines):
        """The words of each line once what fits is in it."""
        typed = ['trevolt-cli() { printf "%s\\n" "${@@Q}"; echo; }', f'source "{self.SCRIPT}"']
        typed += [f'trevolt-cli {line}{self.ALL}' for line in lines]
        done = subprocess.run(
            ['bash', '--norc', '--noprofile', '-i'], input='\n'.join(typed) + '\n', text=True,
            capture_output=True, check=False, cwd=self.folder, start_new_session=True,
            env={'PATH': os.environ['PATH'], 'INPUTRC': '/dev/null', 'LC_ALL': 'C.UTF-8',
                 'TERM': 'dumb'})
        printed = done.stdout.split('\n\n')
        self.assertEqual((done.returncode, len(printed), printed[-1]), (0, len(lines) + 1, ''),
                         done.stdout + done.stderr)
        return [text.splitlines() for text in printed[:-1]]

    def expect(self, cases):
        for line, words in zip(cases, self.complete(*cases)):
            with self.subTest(line):
                self.assertEqual(sorted(words), sorted(f"'{word}'" for word in cases[line]))

    def test_commands(self):
        self.expect({'': ['rotate', 'compose', 'crop', 'convert', 'info', 'diff', 'preview', 'verify', 'demo',
                          '--help', '--version'],
                     'ro': ['rotate'],
                     '--v': ['--version'],
                     'turn w': ['turn', 'w'],
                     'turn --v': ['turn', '--v']})

    def test_options(self):
        self.expect({'rotate --an': ['rotate', '--angle', '--angles'],
                     'rotate walls --keep-': ['rotate', 'walls', '--keep-extras', '--keep-times'],
                     'demo -': ['demo', '--overwrite', '--no-sync', '--help'],
                     'verify --': ['verify', '--help'],
                     'rotate --o': ['rotate', '--overwrite'],
                     'rotate -- --o': ['rotate', '--', '--odd.9fcoef'],
                     'demo -- --o': ['demo', '--', '--o']})

    def test_values(self):
        self.expect({'rotate --angle ': ['rotate', '--angle', '90', '180', '270'],
                     'rotate -a 1': ['rotate', '-a', '180'],
                     'rotate --angle=2': ['rotate', '--angle=270'],
                     'rotate --angle=': ['rotate', '--angle=180', '270', '90'],
                     'rotate --angle -': ['rotate', '--angle', '-'],
                     'rotate -- --angle 9': ['rotate', '--', '--angle', '90.csv'],
                     'rotate --jobs 9': ['rotate', '--jobs', '9'],
                     'rotate --angles 9': ['rotate', '--angles', '90.csv'],
                     'rotate --manifest=9': ['rotate', '--manifest=90.csv']})

    def test_files_and_folders(self):
        self.assertEqual(
            [sorted(words) for words in self.complete('rotate walls/', 'demo walls/', 'demo 9',
                                                      'verify walls/C', 'rotate walls/the\\ ')],
            [sorted(['\'rotate\'', "'walls/Cab_01.9fcoef'", "'walls/left'",
                     "'walls/the other'\\''s'"]),
             sorted(["'demo'", "'walls/left'", "'walls/the other'\\''s'"]),
             sorted(["'demo'", "'9'"]),
             sorted(["'verify'", "'walls/Cab_01.9fcoef'"]),
             sorted(["'rotate'", "'walls/the other'\\''s'"])])


def main():
    global GENERATOR
    GENERATOR = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()


if __name__ == '__main__':
    main()
