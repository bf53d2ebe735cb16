#!/usr/bin/python3
"""Tests of the public headers as another program includes them.

    public_headers_test.py COMPILER [--together] [--windows] [unittest options]

Each header compiles on its own with the public folder as the only one to include from, and leaves
the names that other headers have macros of as they were. With --together all of them compile in one
source instead, in both orders: enough for a compiler that has the same standard library's headers
as another that takes each by itself. With --windows the compiler is one for Windows, and windows.h stands before them and behind them: the whole of it, with every macro that it
may have.
"""
import concurrent.futures
import pathlib
import re
import subprocess
import sys
import unittest

FOLDER = pathlib.Path(__file__).resolve().parents[2] / 'include'
HEADERS = sorted(path.relative_to(FOLDER).as_posix() for path in FOLDER.rglob('*'))
HEADERS = [header for header in HEADERS if header.endswith('.h')]
COMPILER = ''
TOGETHER = False
FLAGS = ['-x', 'c++', '-', f'-I{FOLDER}', '-std=c++20', '-Wall', '-Wextra', '-Wpedantic',
         '-Wconversion', '-Wshadow', '-Werror']
JOBS = 2

# The statuses that windows.h has macros of, and their values.
SHARED_NAMES = {
    'S_OK': 0,
    'E_FAIL': 0x80004005,
    'E_POINTER': 0x80004003,
    'E_HANDLE': 0x80070006,
    'E_OUTOFMEMORY': 0x8007000E,
}

NO_MACRO_IS_LEFT = ''.join(
    f'#ifdef {name}\n#error "{name} is left behind as a macro"\n#endif\n' for name in SHARED_NAMES)

# The macros mean the same to their owner, and a status compares with them and with the constants
# that have their names.
STATUSES_COMPARE = 'constexpr trevolt::Status Passed(trevolt::Status status) { return status; }\n'
STATUSES_COMPARE += ''.join(
    f'static_assert(Passed(trevolt::MakeStatus({value}U)) == {name});\n'
    f'#pragma push_macro("{name}")\n'
    f'#undef {name}\n'
    f'constexpr trevolt::Status kTrevolt_{name} = trevolt::{name};\n'
    f'#pragma pop_macro("{name}")\n'
    f'static_assert(kTrevolt_{name} == {name} && !(kTrevolt_{name} != {name}));\n'
    for name, value in SHARED_NAMES.items())


def included(*headers):
    return ''.join(f'#include "{header}"\n' for header in headers)


def run(source, *options):
    return subprocess.run([COMPILER, *FLAGS, *options], input=source, text=True,
                          capture_output=True, check=False)


def macros_behind(source):
    """Every macro that stands behind `source`, with its text."""
    done = run(source, '-dM', '-E')
    assert done.returncode == 0, done.stderr
    defined = re.findall(r'^#define (\w+)(\(.*?\))?(.*)$', done.stdout, re.MULTILINE)
    return {name: parameters + text for name, parameters, text in defined}


def text_of(header):
    return (FOLDER / header).read_text(encoding='utf-8')


def standard_includes():
    return sorted({name for header in HEADERS
                   for name in re.findall(r'^#include (<.*>)', text_of(header), re.MULTILINE)})


def identifiers_of(header):
    text = re.sub(r'//.*|/\*.*?\*/|"(\\.|[^"\\])*"', '', text_of(header))
    text = re.sub(r'^#.*$', '', text, flags=re.MULTILINE)
    return set(re.findall(r'\b[A-Za-z_]\w*', text))


class PublicHeaders(unittest.TestCase):
    def compile_all(self, sources):
        """`sources` by name; every one compiles."""
        self.assertTrue(sources)
        with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
            results = pool.map(lambda source: run(source, '-fsyntax-only'), sources.values())
            for name, done in zip(sources, results):
                with self.subTest(name):
                    self.assertEqual(done.returncode, 0, done.stderr)

    def test_there_are_headers(self):
        self.assertIn('trevolt/StatusCodes.h', HEADERS)

    def test_only_public_and_standard_headers_are_included(self):
        for header in HEADERS:
            for name in re.findall(r'^\s*#\s*include\s*(\S+)', text_of(header), re.MULTILINE):
                with self.subTest(header=header, includes=name):
                    if name.startswith('<'):
                        self.assertRegex(name, r'^<[a-z_]+>$')
                    else:
                        self.assertIn(name.strip('"'), HEADERS)

    def test_each_compiles_alone(self):
        if TOGETHER:
            self.skipTest('another compiler does')
        self.compile_all({header: included(header, header) + NO_MACRO_IS_LEFT
                          for header in HEADERS})

    def test_all_compile_together(self):
        backwards = HEADERS[::-1]
        self.compile_all({order[0]: included(*order, *order) + NO_MACRO_IS_LEFT
                          for order in (HEADERS, backwards)})

    def test_macros_of_another_owner_survive(self):
        others = {name: f'((int)0x{value:08X})' for name, value in SHARED_NAMES.items()}
        defined = ''.join(f'#define {name} {text}\n' for name, text in others.items())
        found = macros_behind(defined + included(*HEADERS))
        for name, text in others.items():
            with self.subTest(name):
                self.assertEqual(found.get(name, '').strip(), text)
        self.compile_all({'statuses': defined + included(*HEADERS) + STATUSES_COMPARE})

    def test_constants_are_what_they_are_called(self):
        self.compile_all({'statuses': included('trevolt/StatusCodes.h') + ''.join(
            f'static_assert(trevolt::{name} == static_cast<std::int32_t>({value}U));\n'
            for name, value in SHARED_NAMES.items())})


class BesideWindows(PublicHeaders):
    """As above, and with windows.h. All headers stand in one source then, which takes no more time
    than one of them: each sees the same macros, since none changes any."""
    WINDOWS = '#include <windows.h>\n'

    @classmethod
    def setUpClass(cls):
        cls.macros = macros_behind(cls.WINDOWS)

    def test_windows_has_the_macros(self):
        self.assertLessEqual(SHARED_NAMES.keys(), self.macros.keys())

    def test_they_compile_before_and_behind_it(self):
        self.compile_all({
            'before': included(*HEADERS) + self.WINDOWS + STATUSES_COMPARE,
            'behind': self.WINDOWS + included(*HEADERS) + STATUSES_COMPARE,
            'behind, from the last to the first':
                self.WINDOWS + included(*reversed(HEADERS)) + STATUSES_COMPARE,
        })

    def test_its_macros_survive(self):
        """All of them, but for what the standard headers change."""
        standard = ''.join(f'#include {name}\n' for name in standard_includes())
        for place, beside, without in (
                ('before', included(*HEADERS) + self.WINDOWS, standard + self.WINDOWS),
                ('behind', self.WINDOWS + included(*HEADERS), self.WINDOWS + standard)):
            with self.subTest(place):
                left, expected = macros_behind(beside), macros_behind(without)
                self.assertEqual([name for name in self.macros
                                  if left.get(name) != expected.get(name)], [])

    def test_no_name_is_a_macro_of_it(self):
        """Else a source that includes windows.h would call the library by another name."""
        for header in HEADERS:
            with self.subTest(header):
                shared = identifiers_of(header) & self.macros.keys()
                self.assertLessEqual(shared, SHARED_NAMES.keys())


def main():
    global COMPILER, TOGETHER
    COMPILER = sys.argv.pop(1)
    if '--together' in sys.argv:
        sys.argv.remove('--together')
        TOGETHER = True
    suite = PublicHeaders
    if '--windows' in sys.argv:
        sys.argv.remove('--windows')
        suite = BesideWindows
    unittest.main(defaultTest=suite.__name__)


if __name__ == '__main__':
    main()
