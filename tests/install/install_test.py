#!/usr/bin/python3
"""Tests of the installed library, as other programs find and use it.

    install_test.py BUILD-FOLDER --cmake CMAKE --compiler COMPILER --nm NM --config CONFIGURATION
                    [--toolchain FILE --wrapper COMMAND] [unittest options]

The build is installed into an empty folder below its own, and that folder is moved before anything
uses it. With a toolchain file the build is one for Windows, whose programs the wrapper starts.
"""
import argparse
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = sorted(path.stem for path in (ROOT / 'examples').glob('*.cpp'))
OPTIONS = argparse.Namespace()
WORK = PREFIX = pathlib.Path()


def files_below(folder):
    return {path.relative_to(folder).as_posix() for path in folder.rglob('*') if path.is_file()}


def below(prefix, names):
    return {prefix + name for name in names}


def expected_files():
    headers = below('include/trevolt/', files_below(ROOT / 'include' / 'trevolt'))
    libraries = {'lib/libtrevolt.a'}
    licences = {'LZ4.txt', 'xxHash.txt', 'fmt.txt', 'CLI11.txt', 'stb.txt', 'zlib.txt',
                'DejaVu-fonts.txt'}
    if OPTIONS.toolchain:
        libraries.add('lib/libtrevolt_lz4.a')
        licences |= {'GCC-runtime.txt', 'MinGW-w64.txt', 'GPL-3.txt'}
    package = below('lib/cmake/Trevolt/', {
        'TrevoltConfig.cmake', 'TrevoltConfigVersion.cmake', 'TrevoltTargets.cmake',
        f'TrevoltTargets-{OPTIONS.config.lower()}.cmake'})
    documents = below('share/doc/trevolt/', {'README.md', 'CHANGELOG.md', 'CONTRIBUTING.md', 'SECURITY.md',
                                                'LICENSE'} |
                      below('docs/', files_below(ROOT / 'docs')) |
                      below('examples/', files_below(ROOT / 'examples')) |
                      below('licences/', licences))
    program = 'bin/trevolt-cli' + ('.exe' if OPTIONS.toolchain else '')
    pages = set() if OPTIONS.toolchain else below('share/', files_below(ROOT / 'share'))
    return ({program, 'lib/pkgconfig/trevolt.pc'} | headers | libraries | package | documents |
            pages)


def run(*command, **options):
    return subprocess.run(command, text=True, capture_output=True, check=False, **options)


def configure(source, build):
    found = [f'-DCMAKE_PREFIX_PATH={PREFIX}']
    if OPTIONS.toolchain: # which looks for packages below its own root only
        found = [f'-DTrevolt_DIR={PREFIX}/lib/cmake/Trevolt',
                 f'-DCMAKE_TOOLCHAIN_FILE={OPTIONS.toolchain}']
    return run(OPTIONS.cmake, '-G', 'Ninja', '-S', source, '-B', build, *found,
               f'-DCMAKE_CXX_COMPILER={OPTIONS.compiler}')


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(WORK, ignore_errors=True)
        WORK.mkdir()
        first = WORK / 'first'
        done = run(OPTIONS.cmake, '--install', OPTIONS.build, '--prefix', first)
        assert done.returncode == 0, done.stderr
        first.rename(PREFIX)

    def expect(self, done):
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return done.stdout

    def expect_examples(self, programs, *options):
        wrapper = ['--wrapper', OPTIONS.wrapper] if OPTIONS.wrapper else []
        self.expect(run('/usr/bin/python3', ROOT / 'tests' / 'examples' / 'examples_test.py',
                        *programs, *wrapper, *options))

    def test_files(self):
        self.maxDiff = None
        self.assertEqual(sorted(files_below(PREFIX)), sorted(expected_files()))

    def test_licences_have_their_texts(self):
        for name, sign in (('LZ4', 'Yann Collet'), ('fmt', 'Victor Zverovich'),
                           ('CLI11', 'University of Cincinnati'),
                           ('GCC-runtime', 'GCC RUNTIME LIBRARY EXCEPTION'),
                           ('MinGW-w64', 'winpthreads'), ('GPL-3', 'GNU GENERAL PUBLIC LICENSE')):
            path = PREFIX / 'share' / 'doc' / 'trevolt' / 'licences' / f'{name}.txt'
            if path.name in {pathlib.PurePath(file).name for file in expected_files()}:
                self.assertIn(sign, path.read_text(encoding='utf-8'))

    def test_nothing_names_a_folder_of_the_build(self):
        for path in [*(PREFIX / 'lib').rglob('*.cmake'), *(PREFIX / 'lib').rglob('*.pc')]:
            for folder in (ROOT, OPTIONS.build, WORK):
                self.assertNotIn(str(folder), path.read_text(encoding='utf-8'), path)

    def test_programs_through_find_package(self):
        build = WORK / 'examples'
        self.expect(configure(PREFIX / 'share' / 'doc' / 'trevolt' / 'examples', build))
        self.expect(run(OPTIONS.cmake, '--build', build))
        suffix = '.exe' if OPTIONS.toolchain else ''
        self.expect_examples([build / (name + suffix) for name in EXAMPLES])

    def test_other_major_versions_are_refused(self):
        source = WORK / 'versions'
        source.mkdir()
        (source / 'CMakeLists.txt').write_text(
            'cmake_minimum_required(VERSION 3.25)\n'
            'project(Versions LANGUAGES CXX)\n'
            'foreach(version IN ITEMS 1 0 2)\n'
            '    find_package(Trevolt ${version} QUIET)\n'
            '    message(STATUS "version ${version}: ${Trevolt_FOUND}")\n'
            'endforeach()\n', encoding='utf-8')
        said = self.expect(configure(source, WORK / 'versions-build'))
        self.assertEqual(re.findall(r'version (\d): (\w+)', said),
                         [('1', '1'), ('0', '0'), ('2', '0')])

    def test_a_program_through_pkg_config(self):
        environment = {**os.environ, 'PKG_CONFIG_PATH': f'{PREFIX}/lib/pkgconfig'}
        linking = []
        if OPTIONS.toolchain:
            environment['PKG_CONFIG_LIBDIR'] = environment.pop('PKG_CONFIG_PATH')
            linking = ['-static'] # the compiler's own libraries
        flags = shlex.split(self.expect(
            run('pkg-config', '--cflags', '--libs', 'trevolt', env=environment)))
        program = WORK / 'MakeWordFile.exe'
        self.expect(run(OPTIONS.compiler, '-std=c++20', *linking,
                        ROOT / 'examples' / 'MakeWordFile.cpp', '-o', program, *flags))
        self.expect_examples([program], '-kMakeWordFile')

    def test_names_of_others_are_left_to_them(self):
        """A program may link any {fmt} beside the library, and define what it likes of its own."""
        symbols = self.expect(run(OPTIONS.nm, '--demangle', '--defined-only', '--extern-only',
                                  PREFIX / 'lib' / 'libtrevolt.a'))
        names = [line.split(maxsplit=2)[2] for line in symbols.splitlines()
                 if re.match(r'[0-9a-f]+ \w ', line)]
        self.assertIn('trevolt::TurnMap(', ''.join(names))
        self.assertIn('fmt::trevolt_fmt::', ''.join(names))
        # __cxxabiv1 is the C++ runtime's, as std is. What begins with a dot or DW. is the
        # compilers' own, for reaching another name.
        own = r'\b(trevolt|std|__gnu_cxx|__cxxabiv1)::|^(DW\.ref|\.refptr|\.weak)\.'
        foreign = [name for name in names if re.search(r'\bfmt::(?!trevolt_fmt::)', name) or
                   not re.search(own, name.replace('fmt::trevolt_fmt::', 'trevolt::'))]
        self.assertEqual(foreign, [])


def main():
    global WORK, PREFIX
    parser = argparse.ArgumentParser()
    parser.add_argument('build', type=pathlib.Path)
    for option in ('cmake', 'compiler', 'nm', 'config', 'toolchain', 'wrapper'):
        parser.add_argument(f'--{option}', required=option not in ('toolchain', 'wrapper'))
    _, rest = parser.parse_known_args(namespace=OPTIONS)
    WORK = OPTIONS.build / 'install-test'
    PREFIX = WORK / 'another place'
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == '__main__':
    main()
