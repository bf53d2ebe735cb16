#!/usr/bin/python3
"""Makes the installer for Windows of a tree of files.

    windows-installer.py TREE VERSION SECONDS INSTALLER

It names each file of the tree, so that taking it back deletes these and no other. What it lays down
bears the time SECONDS since 1970.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[1]
NSIS_LICENCES = '/usr/share/doc/nsis/copyright' # of the code that unpacks and asks


def windows_name(path, tree):
    return '\\'.join(['$INSTDIR', *path.relative_to(tree).parts])


def file_macros(tree):
    """The macros InstallFiles and DeleteFiles."""
    paths = sorted(tree.rglob('*'))
    files = [path for path in paths if path.is_file()]
    folders = [tree] + [path for path in paths if path.is_dir()]
    lines = ['!macro InstallFiles']
    for folder in folders:
        lines.append(f'SetOutPath "{windows_name(folder, tree)}"')
        lines += [f'File "{path}"' for path in files if path.parent == folder]
    lines += ['!macroend', '!macro DeleteFiles']
    lines += [f'Delete "{windows_name(path, tree)}"' for path in files]
    lines += [f'RMDir "{windows_name(folder, tree)}"' for folder in reversed(folders)]
    return '\n'.join([*lines, '!macroend', ''])


def make_installer(tree, version, seconds, installer, work):
    copy = work / 'tree'
    shutil.copytree(tree, copy)
    shutil.copyfile(NSIS_LICENCES, copy / 'licences' / 'NSIS.txt')
    files = [path for path in copy.rglob('*') if path.is_file()]
    for path in files:
        os.utime(path, (seconds, seconds))
    macros = work / 'files.nsh'
    macros.write_text(file_macros(copy), encoding='utf-8')
    defined = {'VERSION': version, 'TREE': copy, 'FILES': macros, 'OUTPUT': installer,
               'ICON': ROOT / 'win32' / 'Trevolt.ico',
               'KIB': sum(path.stat().st_size for path in files) // 1024}
    subprocess.run(['makensis', '-V2', '-WX', '-INPUTCHARSET', 'UTF8',
                    *(f'-D{name}={value}' for name, value in defined.items()),
                    ROOT / 'packaging' / 'Trevolt.nsi'],
                   check=True, env={**os.environ, 'SOURCE_DATE_EPOCH': str(seconds), 'TZ': 'UTC'})


def main():
    if len(sys.argv) != 5:
        raise SystemExit(__doc__)
    tree, version, seconds, installer = sys.argv[1:]
    with tempfile.TemporaryDirectory() as work:
        make_installer(pathlib.Path(tree), version, int(seconds), pathlib.Path(installer).resolve(),
                       pathlib.Path(work))


if __name__ == '__main__':
    main()
