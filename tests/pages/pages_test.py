#!/usr/bin/python3
"""Tests of the manual page and the completions in share/.

    pages_test.py MAKE-CLI-PAGES [unittest options]

They must be what the program's options give now; troff takes the manual page without a warning, and each
shell completes with its own.
"""
import difflib
import os
import pathlib
import pty
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SHARE = ROOT / 'share'
GENERATOR = pathlib.Path()


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=False, **options)


def at_terminal(command, typed, **options):
    """What a command shows at a terminal where this is typed."""
    ours, theirs = pty.openpty()
    with subprocess.Popen(command, stdin=theirs, stdout=theirs, stderr=theirs, start_new_session=True,
                          **options) as process:
        os.close(theirs)
        os.write(ours, typed.encode())
        shown = b''
        try:
            while piece := os.read(ours, 65536):
                shown += piece
        except OSError:  # the terminal's other end is closed
            pass
        process.wait(timeout=60)
    os.close(ours)
    return shown.decode('utf-8', 'replace')


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


class Completion(unittest.TestCase):
    """What a shell makes of a line that is typed as far as this."""
    COMMANDS = ['rotate', 'compose', 'crop', 'convert', 'info', 'diff', 'preview', 'verify', 'demo']

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name) / 'folder'
        for name in ('walls/left', "walls/the other's"):
            (self.folder / name).mkdir(parents=True)
        for name in ('walls/Cab_01.9fcoef', '--odd.9fcoef', '90.csv'):
            (self.folder / name).touch()
        self.home = pathlib.Path(folder.name) / 'home'
        self.home.mkdir()
        self.environment = {'PATH': os.environ['PATH'], 'LC_ALL': 'C.UTF-8', 'TERM': 'dumb',
                            'HOME': str(self.home)}

    def complete(self, *lines):
        """What each line becomes, or what is offered for its last word."""
        raise NotImplementedError

    def expect(self, cases):
        for line, words in zip(cases, self.complete(*cases), strict=True):
            with self.subTest(line):
                self.assertEqual(sorted(words), sorted(cases[line]))


class BashCompletion(Completion):
    """The program is a function that prints its words. Alt and * put all that fits into the line."""
    SCRIPT = SHARE / 'bash-completion' / 'completions' / 'trevolt-cli'
    ALL = '\033*'

    def complete(self, *lines):
        """The words of each line once what fits is in it."""
        typed = ['trevolt-cli() { printf "%s\\n" "$@"; echo; }', f'source "{self.SCRIPT}"']
        typed += [f'trevolt-cli {line}{self.ALL}' for line in lines]
        done = subprocess.run(
            ['bash', '--norc', '--noprofile', '-i'], input='\n'.join(typed) + '\n', text=True,
            capture_output=True, check=False, cwd=self.folder, start_new_session=True,
            env=self.environment | {'INPUTRC': '/dev/null'})
        printed = done.stdout.split('\n\n')
        self.assertEqual((done.returncode, len(printed), printed[-1]), (0, len(lines) + 1, ''),
                         done.stdout + done.stderr)
        return [text.splitlines() for text in printed[:-1]]

    def test_commands(self):
        self.expect({'': [*self.COMMANDS, '--help', '--version'],
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
                     'convert --to 1': ['convert', '--to', '12wcoef'],
                     'rotate --angles 9': ['rotate', '--angles', '90.csv'],
                     'rotate --manifest=9': ['rotate', '--manifest=90.csv']})

    def test_files_and_folders(self):
        self.expect({'rotate walls/': ['rotate', 'walls/Cab_01.9fcoef', 'walls/left',
                                       "walls/the other's"],
                     'demo walls/': ['demo', 'walls/left', "walls/the other's"],
                     'demo 9': ['demo', '9'],
                     'verify walls/C': ['verify', 'walls/Cab_01.9fcoef'],
                     'rotate walls/the\\ ': ['rotate', "walls/the other's"]})


class ZshCompletion(Completion):
    """The same at a terminal, with a key of its own for all that fits."""
    PREPARED = f"""
fpath=({SHARE}/zsh/site-functions $fpath)
autoload -Uz compinit && compinit -u -D
zle -C all-matches complete-word _generic
bindkey '^X^A' all-matches
zstyle ':completion:all-matches::::' completer _all_matches _complete
zstyle ':completion:all-matches:*' insert yes
trevolt-cli() {{ print -rl -- "$@" '' >>words }}
"""
    ALL = '\x18\x01'

    def complete(self, *lines):
        typed = [*self.PREPARED.strip().splitlines(),
                 *(f'trevolt-cli {line}{self.ALL}' for line in lines), 'exit']
        words = self.folder / 'words'
        words.unlink(missing_ok=True)
        shown = at_terminal(['zsh', '-f', '-i'], '\r'.join(typed) + '\r', cwd=self.folder,
                            env=self.environment)
        printed = words.read_text(encoding='utf-8').split('\n\n') if words.exists() else []
        self.assertEqual(len(printed), len(lines) + 1, shown)
        return [text.splitlines() for text in printed[:-1]]

    def test_commands(self):
        self.expect({'': self.COMMANDS, 'ro': ['rotate'], '--v': ['--version']})

    def test_options(self):
        self.expect({'rotate --an': ['rotate', '--angle', '--angles'],
                     'rotate walls --keep-': ['rotate', 'walls', '--keep-extras', '--keep-times'],
                     'verify --h': ['verify', '--help'],
                     'rotate -- --o': ['rotate', '--', '--odd.9fcoef']})

    def test_values(self):
        self.expect({'rotate --angle ': ['rotate', '--angle', '90', '180', '270'],
                     'rotate -a 1': ['rotate', '-a', '180'],
                     'rotate --angle=2': ['rotate', '--angle=270'],
                     'convert --to 1': ['convert', '--to', '12wcoef'],
                     'rotate --angles 9': ['rotate', '--angles', '90.csv']})

    def test_files_and_folders(self):
        self.expect({'rotate walls/': ['rotate', 'walls/Cab_01.9fcoef', 'walls/left',
                                       "walls/the other's"],
                     'demo walls/': ['demo', 'walls/left', "walls/the other's"],
                     'verify walls/C': ['verify', 'walls/Cab_01.9fcoef']})


class FishCompletion(Completion):
    """The shell finds the script where packages put it, and tells what it offers."""
    ASKED = 'for line in $argv; complete -C $line | string replace -r "\\t.*" ""; echo; end'

    def complete(self, *lines):
        program = self.home / 'bin' / 'trevolt-cli'  # fish completes what it finds, and never runs it
        program.parent.mkdir(exist_ok=True)
        program.write_text('#!/bin/sh\n')
        program.chmod(0o755)
        done = run('fish', '-c', self.ASKED, *(f'trevolt-cli {line}' for line in lines),
                   cwd=self.folder, env=self.environment | {
                       'XDG_DATA_DIRS': str(SHARE),
                       'PATH': f'{program.parent}:{self.environment["PATH"]}'})
        self.assertEqual((done.returncode, done.stderr), (0, ''))
        answers, offered = [], []
        for line in done.stdout.splitlines():
            if line:
                offered.append(line)
            else:
                answers.append(offered)
                offered = []
        self.assertEqual(offered, [])
        return answers

    def test_commands(self):
        self.expect({'': self.COMMANDS, 'ro': ['rotate'], '--v': ['--version'], 'turn w': []})

    def test_options(self):
        self.expect({'rotate --an': ['--angle', '--angles'],
                     'rotate walls --keep-': ['--keep-extras', '--keep-times'],
                     'verify --h': ['--help'],
                     'rotate -- --o': ['--odd.9fcoef']})

    def test_values(self):
        self.expect({'rotate --angle ': ['90', '180', '270'],
                     'rotate -a 1': ['180'],
                     'rotate --angle=2': ['--angle=270'],
                     'convert --to 1': ['12wcoef'],
                     'rotate --angles 9': ['90.csv']})

    def test_files_and_folders(self):
        self.expect({'rotate walls/': ['walls/Cab_01.9fcoef', 'walls/left/', "walls/the other's/"],
                     'demo walls/': ['walls/left/', "walls/the other's/"],
                     'demo 9': [],
                     'verify walls/C': ['walls/Cab_01.9fcoef']})


def main():
    global GENERATOR
    GENERATOR = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()


if __name__ == '__main__':
    main()
