#!/usr/bin/python3
"""Tests of the installer for Windows under Wine, beside the archive of the same files.

    installer_test.py INSTALLER ARCHIVE VERSION WINE-COMMAND [unittest options]

It is run in a Wine prefix of its own, which is made anew in a folder for temporary files.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
UNINSTALL = r'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Trevolt'
ENVIRONMENT = r'HKCU\Environment'
INSTALLER = ARCHIVE = PREFIX = pathlib.Path()
VERSION = WINE = ''


def wine(*command):
    return subprocess.run([WINE, *command], capture_output=True, check=False, timeout=300,
                          env={**os.environ, 'TREVOLT_WINEPREFIX': str(PREFIX),
                               'TREVOLT_WINE_LINGER': '0'})


def wait_for_all():
    """The uninstaller goes on in a copy of itself."""
    subprocess.run(['wineserver', '-w'], check=True, timeout=300,
                   env={**os.environ, 'WINEPREFIX': str(PREFIX)})


def files_below(folder):
    return {path.relative_to(folder).as_posix(): path.read_bytes()
            for path in folder.rglob('*') if path.is_file()}


def drive():
    return PREFIX / 'drive_c'


def everything():
    """Of the drive, but what Wine itself keeps as a log or for the moment."""
    passing = ('/Temp/', '/temp/', '/Microsoft/Windows/Recent/')
    return {path.relative_to(drive()).as_posix() for path in drive().rglob('*')
            if not any(part in path.as_posix() + '/' for part in passing)}


def values_of(key):
    """What a key of the registry holds, by name: kind and text. None without the key."""
    done = wine('reg', 'query', key)
    if done.returncode != 0:
        return None
    lines = done.stdout.decode(errors='replace').splitlines()
    found = (re.fullmatch(r'    (\S+)    (REG_\w+)    (.*)', line) for line in lines)
    return {match[1].lower(): (match[2], match[3]) for match in found if match}


def user_path():
    return values_of(ENVIRONMENT).get('path')


def set_user_path(kind, text):
    wine('reg', 'add', ENVIRONMENT, '/v', 'Path', '/t', kind, '/d', text, '/f')


class Installer(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        wine('cmd', '/c', 'exit')
        wait_for_all()
        home = next(path for path in (drive() / 'users').iterdir() if path.name != 'Public')
        cls.usual = home / 'AppData' / 'Local' / 'Programs' / 'Trevolt'
        cls.shortcut = (home / 'AppData' / 'Roaming' / 'Microsoft' / 'Windows' / 'Start Menu' /
                        'Programs' / 'Trevolt.lnk')

    def install(self, *options, status=0):
        """The folder, which comes last, is never quoted: as words it goes through Wine as it is."""
        options = [word for option in options for word in option.split(' ')]
        self.assertEqual(wine(str(INSTALLER), '/S', *options).returncode, status)

    def uninstall(self, folder):
        self.assertEqual(wine(str(folder / 'uninstall.exe'), '/S').returncode, 0)
        wait_for_all()

    def expect_all_files(self, folder):
        with zipfile.ZipFile(ARCHIVE) as packed:
            expected = {name.split('/', 1)[1]: packed.read(name) for name in packed.namelist()}
        installed = files_below(folder)
        self.assertGreater(len(installed.pop('uninstall.exe')), 10000)
        self.assertIn(b'NSIS', installed.pop('licences/NSIS.txt'))
        self.assertEqual(sorted(installed), sorted(expected))
        for name, content in expected.items():
            self.assertEqual(installed[name], content, name)

    def expect_working(self, folder):
        program = str(folder / 'Tools' / 'Trevolt' / 'bin' / 'trevolt-cli.exe')
        self.assertEqual(wine(program, '--version').stdout.split(), [b'trevolt-cli', VERSION.encode()])
        with tempfile.TemporaryDirectory() as work:
            wall, turned = pathlib.Path(work) / 'wall', pathlib.Path(work) / 'turned'
            turned.mkdir()
            self.assertEqual(wine(program, 'demo', str(wall)).returncode, 0)
            self.assertEqual(wine(program, 'rotate', '--angle', '90', str(wall), str(turned)).returncode, 0)
            self.assertIn('Cab_01-90°.9fcoef', files_below(turned))
            self.assertEqual(len(files_below(turned)), len(files_below(wall)))

    def test_comes_and_goes(self):
        before, path = everything(), user_path()
        self.install()
        self.expect_all_files(self.usual)
        self.expect_working(self.usual)
        self.assertTrue(self.shortcut.is_file())
        self.assertEqual(user_path(), path)
        told = values_of(UNINSTALL)
        self.assertEqual(told['displayname'], ('REG_SZ', 'Trevolt'))
        self.assertEqual(told['displayversion'], ('REG_SZ', VERSION))
        self.assertTrue(told['installlocation'][1].endswith(r'\Programs\Trevolt'))
        self.assertEqual(told['quietuninstallstring'][1],
                         f'"{told["installlocation"][1]}\\uninstall.exe" /S')
        (self.usual / 'Tools' / 'Trevolt' / 'bin' / 'Trevo.ini').write_bytes(b'the settings')
        self.uninstall(self.usual)
        self.assertIsNone(values_of(UNINSTALL))
        self.assertEqual(user_path(), path)
        left = {name for name in everything() - before if not name.endswith('Local/Programs')}
        self.assertEqual(left, set())

    def test_goes_on_with_the_settings_of_an_older_one(self):
        set_user_path('REG_SZ', r'C:\one')
        self.install('/PATH')
        settings = self.usual / 'Tools' / 'Trevolt' / 'bin' / 'Trevo.ini'
        settings.write_bytes(b'the settings')
        path = user_path()
        self.install()
        self.assertEqual(settings.read_bytes(), b'the settings')
        settings.unlink()
        self.expect_all_files(self.usual)
        self.assertTrue(self.shortcut.is_file())
        self.assertEqual(user_path(), path)
        self.install('/PATH')
        self.assertEqual(user_path(), path)
        self.uninstall(self.usual)
        self.assertEqual(user_path()[1], r'C:\one')

    def test_takes_back_what_only_an_older_one_had(self):
        with tempfile.TemporaryDirectory() as work:
            tree, older = pathlib.Path(work) / 'tree', pathlib.Path(work) / 'older-setup.exe'
            with zipfile.ZipFile(ARCHIVE) as packed:
                for name in ('LICENSE', 'licences/LZ4.txt', 'Tools/Trevolt/bin/Trevolt.exe'):
                    path = tree / name
                    path.parent.mkdir(parents=True, exist_ok=True)
                    path.write_bytes(packed.read(f'{packed.namelist()[0].split("/")[0]}/{name}'))
            (tree / 'older').mkdir()
            (tree / 'older' / 'page.md').write_bytes(b'gone since')
            subprocess.run(['/usr/bin/python3', ROOT / 'tools' / 'windows-installer.py', tree, '0.9.0',
                            '0', older], check=True)
            self.assertEqual(wine(str(older), '/S').returncode, 0)
        self.assertEqual(files_below(self.usual / 'older'), {'page.md': b'gone since'})
        self.install()
        self.expect_all_files(self.usual)
        self.assertFalse((self.usual / 'older').exists())
        self.assertEqual(values_of(UNINSTALL)['displayversion'][1], VERSION)
        self.uninstall(self.usual)

    def test_leaves_what_is_not_its_own(self):
        self.install(r'/D=C:\another place')
        other = drive() / 'another place'
        self.expect_all_files(other)
        own = other / 'docs' / 'wall.9fcoef'
        own.write_bytes(b'mine')
        self.uninstall(other)
        self.assertEqual(files_below(other), {'docs/wall.9fcoef': b'mine'})
        self.assertFalse(self.shortcut.exists())

    def test_a_file_that_cannot_be_written_is_told(self):
        in_the_way = drive() / 'full' / 'Tools' / 'Trevolt' / 'bin' / 'trevolt-cli.exe'
        in_the_way.mkdir(parents=True)
        self.install(r'/D=C:\full', status=2)
        self.assertIsNone(values_of(UNINSTALL))

    def test_the_path_of_the_user(self):
        bin_folder = r'C:\another place\Tools\Trevolt\bin'
        for kind, text in (('REG_SZ', r'C:\one'), ('REG_EXPAND_SZ', r'%USERPROFILE%\one;C:\two'),
                           ('REG_SZ', r'C:\one;' + bin_folder + '2')):
            with self.subTest(text):
                set_user_path(kind, text)
                self.install('/PATH', r'/D=C:\another place')
                self.assertEqual(user_path(), ('REG_EXPAND_SZ', f'{text};{bin_folder}'))
                found = wine('cmd', '/c', 'trevolt-cli', '--version')
                self.assertEqual(found.stdout.split(), [b'trevolt-cli', VERSION.encode()])
                self.uninstall(drive() / 'another place')
                self.assertEqual(user_path(), ('REG_EXPAND_SZ', text))

    def test_a_path_where_there_was_none(self):
        wine('reg', 'delete', ENVIRONMENT, '/v', 'Path', '/f')
        self.install('/PATH', r'/D=C:\p')
        self.assertEqual(user_path(), ('REG_EXPAND_SZ', r'C:\p\Tools\Trevolt\bin'))
        self.uninstall(drive() / 'p')
        self.assertIsNone(user_path())

    def test_a_path_that_is_too_long_is_left(self):
        text = ';'.join(f'C:\\{number:096}' for number in range(15))
        set_user_path('REG_SZ', text)
        self.install('/PATH', status=3)
        self.assertEqual(user_path(), ('REG_SZ', text))
        self.expect_all_files(self.usual)
        self.uninstall(self.usual)
        self.assertEqual(user_path(), ('REG_SZ', text))


def main():
    global INSTALLER, ARCHIVE, VERSION, WINE, PREFIX
    INSTALLER, ARCHIVE = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    VERSION, WINE = sys.argv[3:5]
    with tempfile.TemporaryDirectory() as work:
        PREFIX = pathlib.Path(work) / 'prefix'
        done = unittest.main(argv=[sys.argv[0], *sys.argv[5:]], exit=False)
    sys.exit(not done.result.wasSuccessful())


if __name__ == '__main__':
    main()
