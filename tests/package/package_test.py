#!/usr/bin/python3
"""Tests of the Debian package, as it is made from a build, and of what the other packages are made with.

    package_test.py BUILD-FOLDER VERSION [unittest options]

It is made into an empty folder below the build's own, and unpacked there; nothing is installed.
"""
import datetime
import gzip
import hashlib
import os
import pathlib
import re
import runpy
import shutil
import subprocess
import sys
import unittest
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
SECONDS = 1700000001 # 2023-11-14 22:13:21
DOCUMENTS = 'usr/share/doc/trevolt/'
BUILD = WORK = ARCHIVE = TREE = pathlib.Path()
VERSION = ''


def run(*command, **options):
    done = subprocess.run(command, text=True, capture_output=True, check=False, **options)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def architecture():
    return run('dpkg', '--print-architecture').strip()


def fields():
    text = run('dpkg-deb', '--field', ARCHIVE)
    return dict(re.findall(r'^([\w-]+): (.*(?:\n .*)*)', text, re.MULTILINE))


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        global ARCHIVE
        shutil.rmtree(WORK, ignore_errors=True)
        WORK.mkdir()
        # Neither the clock, nor where it stands, nor the mask of the user is to be seen in it.
        surroundings = {**os.environ, 'TZ': 'Asia/Tokyo'}
        surroundings.pop('SOURCE_DATE_EPOCH', None)
        seconds = int(run(ROOT / 'tools' / 'source-date.sh', env=surroundings))
        cls.time = datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc)
        run('sh', '-c', 'umask 077 && exec "$@"', 'sh', ROOT / 'tools' / 'debian-package.sh', BUILD,
            VERSION, WORK, env=surroundings)
        ARCHIVE = WORK / f'trevolt_{VERSION}_{architecture()}.deb'
        run('dpkg-deb', '--raw-extract', ARCHIVE, TREE)

    def test_control(self):
        control = fields()
        self.assertEqual(control['Package'], 'trevolt')
        self.assertEqual(control['Version'], VERSION)
        self.assertEqual(control['Architecture'], architecture())
        size = sum(-(-path.stat().st_size // 1024) if path.is_file() else 1
                   for path in [TREE / 'usr', *(TREE / 'usr').rglob('*')])
        self.assertEqual(control['Installed-Size'], str(size))
        self.assertEqual(control['Description'].splitlines()[0],
                         'turn the per-pixel calibration of LED display walls')
        self.assertNotRegex(''.join(control.values()), '@[A-Z]+@')

    def test_depends_on_each_library_that_is_loaded(self):
        names = re.findall(r'(?:^|, )([a-z0-9.+-]+) \(>= [^)]+\)', fields()['Depends'])
        self.assertEqual(sorted(names), ['libc6', 'libgcc-s1', 'liblz4-1', 'libssl3', 'libstdc++6', 'zlib1g'])

    def test_files(self):
        self.maxDiff = None
        expected = {'usr/bin/trevolt-cli', *(DOCUMENTS + name for name in (
            'README.md', 'CONTRIBUTING.md', 'SECURITY.md', 'changelog.gz', 'copyright'))}
        expected |= {DOCUMENTS + path.relative_to(ROOT).as_posix()
                     for folder in ('docs', 'examples') for path in (ROOT / folder).rglob('*')
                     if path.is_file()}
        expected |= {'usr/share/bash-completion/completions/trevolt-cli',
                     'usr/share/fish/vendor_completions.d/trevolt-cli.fish',
                     'usr/share/man/man1/trevolt-cli.1.gz',
                     'usr/share/zsh/vendor-completions/_trevolt-cli'}
        packed = {path.relative_to(TREE).as_posix() for path in (TREE / 'usr').rglob('*')
                  if path.is_file()}
        self.assertEqual(sorted(packed), sorted(expected))

    def test_owners_modes_and_times(self):
        lines = run('dpkg-deb', '--contents', ARCHIVE, env={**os.environ, 'TZ': 'UTC'}).splitlines()
        self.assertGreater(len(lines), 10)
        self.assertEqual(ARCHIVE.read_bytes()[8:36].split(),
                         [b'debian-binary', b'%d' % self.time.timestamp()])
        for line in lines:
            mode, owner, _, day, time, name = line.split()
            is_executable = name.startswith('./usr/bin/') or name.endswith('/')
            self.assertEqual(mode[1:], 'rwxr-xr-x' if is_executable else 'rw-r--r--', line)
            self.assertEqual(f'{owner} {day} {time}', f'root/root {self.time:%Y-%m-%d %H:%M}', line)

    def test_sums(self):
        lines = (TREE / 'DEBIAN' / 'md5sums').read_text(encoding='utf-8').splitlines()
        sums = {name: value for value, name in (line.split('  ') for line in lines)}
        files = [path for path in (TREE / 'usr').rglob('*') if path.is_file()]
        self.assertEqual({path.relative_to(TREE).as_posix():
                          hashlib.md5(path.read_bytes()).hexdigest() for path in files}, sums)

    def test_the_program_is_stripped_and_runs(self):
        program = TREE / 'usr' / 'bin' / 'trevolt-cli'
        self.assertEqual(run(program, '--version'), f'trevolt-cli {VERSION}\n')
        sections = re.findall(r'\] (\.[\w.]+)', run('readelf', '--section-headers', '--wide', program))
        self.assertIn('.text', sections)
        for section in ('.symtab', '.comment', '.debug_info'):
            self.assertNotIn(section, sections)

    def test_changelog(self):
        packed = (TREE / DOCUMENTS / 'changelog.gz').read_bytes()
        self.assertEqual(packed[3:9], bytes(5) + b'\2', 'a name, a time or another level of packing')
        plain = WORK / 'changelog'
        plain.write_bytes(gzip.decompress(packed))
        parsed = run('dpkg-parsechangelog', '--all', '--file', plain)
        self.assertIn(f'\nVersion: {VERSION}\n', parsed)
        self.assertNotRegex(parsed, r'\]\(')
        bullets = re.findall(r'^- ', (ROOT / 'CHANGELOG.md').read_text(encoding='utf-8'), re.MULTILINE)
        self.assertEqual(len(re.findall(r'^   \* ', parsed, re.MULTILINE)), len(bullets))
        self.assertLess(max(map(len, plain.read_text(encoding='utf-8').splitlines())), 80)

    def test_copyright(self):
        text = (TREE / DOCUMENTS / 'copyright').read_text(encoding='utf-8')
        self.assertTrue(text.startswith((ROOT / 'LICENSE').read_text(encoding='utf-8')))
        for sign in ('Yann Collet', 'Victor Zverovich', 'University of Cincinnati'):
            self.assertIn(sign, text)


class SourceDate(unittest.TestCase):
    """Of a folder that has nothing but a changelog and the tool."""

    def date_of(self, heading, commit=None, **environment):
        folder = WORK / 'dated'
        shutil.rmtree(folder, ignore_errors=True)
        (folder / 'tools').mkdir(parents=True)
        shutil.copy(ROOT / 'tools' / 'source-date.sh', folder / 'tools')
        changelog = folder / 'CHANGELOG.md'
        changelog.write_text(f'# Changelog\n\n## 2.1.0 – {heading}\n\n## 2.0.0 – 2020-02-02\n',
                             encoding='utf-8')
        os.utime(changelog, (7, 7))
        outside = {**os.environ, 'GIT_DIR': str(folder / '.git'), 'TZ': 'Asia/Tokyo', **environment}
        if 'SOURCE_DATE_EPOCH' not in environment:
            outside.pop('SOURCE_DATE_EPOCH', None)
        if commit:
            run('git', 'init', '--quiet', folder, env=outside)
            run('git', '-c', 'user.name=A', '-c', 'user.email=a@b.invalid', 'commit', '--quiet',
                '--allow-empty', '--message', 'Begin', cwd=folder,
                env={**outside, 'GIT_COMMITTER_DATE': f'{commit} +0000'})
        return run(folder / 'tools' / 'source-date.sh', env=outside)

    def test_is_the_day_of_the_newest_version(self):
        self.assertEqual(self.date_of('2023-11-14'), '1699920000\n')

    def test_is_that_of_the_changelog_before_there_is_a_day(self):
        self.assertEqual(self.date_of('not yet released'), '7\n')

    @unittest.skipUnless(shutil.which('git'), 'sources without a repository')
    def test_is_that_of_the_commit_where_there_is_one(self):
        self.assertEqual(self.date_of('not yet released', commit=1600000000), '1600000000\n')
        self.assertEqual(self.date_of('2023-11-14', commit=1600000000), '1699920000\n')

    def test_the_environment_comes_first(self):
        self.assertEqual(self.date_of('2023-11-14', SOURCE_DATE_EPOCH='11'), '11\n')


class Changelog(unittest.TestCase):
    def test_versions_with_a_day_are_released_then(self):
        folder = WORK / 'versions'
        shutil.rmtree(folder, ignore_errors=True)
        (folder / 'tools').mkdir(parents=True)
        shutil.copy(ROOT / 'tools' / 'debian-changelog.py', folder / 'tools')
        (folder / 'CHANGELOG.md').write_text(
            '# Changelog\n\n## 1.1.0 – not yet released\n\n- Turns `é`\n  twice ([how](docs/how.md)).\n'
            '- More.\n\n## 1.0.0 – 2023-11-14\n\n- Turns.\n', encoding='utf-8')
        said = run('/usr/bin/python3', folder / 'tools' / 'debian-changelog.py', 'A <a@b.invalid>',
                   str(SECONDS), env={**os.environ, 'TZ': 'Asia/Tokyo'})
        self.assertEqual(said,
            'trevolt (1.1.0) UNRELEASED; urgency=medium\n\n  * Turns `é` twice (how).\n  * More.\n\n'
            ' -- A <a@b.invalid>  Tue, 14 Nov 2023 22:13:21 +0000\n\n'
            'trevolt (1.0.0) unstable; urgency=medium\n\n  * Turns.\n\n'
            ' -- A <a@b.invalid>  Tue, 14 Nov 2023 00:00:00 +0000\n')


class Trees(unittest.TestCase):
    def make_tree(self, name, names, seconds, mode):
        folder = WORK / name / 'tree'
        shutil.rmtree(folder, ignore_errors=True)
        for file in names:
            path = folder / file
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(file.encode() * 100)
            path.chmod(mode)
            os.utime(path, (seconds, seconds))
        return folder

    def test_a_zip_has_nothing_of_where_and_when(self):
        names = ['b/é.txt', 'a.txt', 'b/c/d.txt']
        packed = []
        for name, order, seconds, mode in (('here', names, 1, 0o644), ('there', names[::-1], 999, 0o600)):
            folder = self.make_tree(name, order, seconds, mode)
            archive = WORK / name / 'tree.zip'
            run('/usr/bin/python3', ROOT / 'tools' / 'pack-zip.py', folder, archive, str(SECONDS),
                env={**os.environ, 'TZ': 'Asia/Tokyo'})
            packed.append(archive.read_bytes())
        self.assertEqual(packed[0], packed[1])
        self.assertLess(len(packed[0]), 100 * sum(map(len, names)), 'not packed')
        with zipfile.ZipFile(archive) as entries:
            self.assertEqual(entries.namelist(), ['tree/a.txt', 'tree/b/c/d.txt', 'tree/b/é.txt'])
            for entry in entries.infolist():
                self.assertEqual(entry.date_time, (2023, 11, 14, 22, 13, 20)) # in steps of two
                self.assertEqual(entry.external_attr >> 16, 0o100644)
                self.assertEqual(entries.read(entry), entry.filename[5:].encode() * 100)

    def test_the_installer_deletes_what_it_lays_down(self):
        tools = runpy.run_path(str(ROOT / 'tools' / 'windows-installer.py'))
        tree = self.make_tree('installed', ['b/e.txt', 'a.txt', 'b/c/d.txt'], 1, 0o644)
        self.assertEqual(tools['file_macros'](tree).splitlines(), [
            '!macro InstallFiles',
            'SetOutPath "$INSTDIR"', f'File "{tree}/a.txt"',
            'SetOutPath "$INSTDIR\\b"', f'File "{tree}/b/e.txt"',
            'SetOutPath "$INSTDIR\\b\\c"', f'File "{tree}/b/c/d.txt"',
            '!macroend', '!macro DeleteFiles',
            'Delete "$INSTDIR\\a.txt"', 'Delete "$INSTDIR\\b\\c\\d.txt"', 'Delete "$INSTDIR\\b\\e.txt"',
            'RMDir "$INSTDIR\\b\\c"', 'RMDir "$INSTDIR\\b"', 'RMDir "$INSTDIR"',
            '!macroend'])


def main():
    global BUILD, VERSION, WORK, TREE
    BUILD = pathlib.Path(sys.argv[1])
    VERSION = sys.argv[2]
    WORK = BUILD / 'package-test'
    TREE = WORK / 'tree'
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])


if __name__ == '__main__':
    main()
