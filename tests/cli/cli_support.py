"""What the tests of the program share: files, folders, and the program's start."""
import os
import pathlib
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

import lz4.frame

ROOT = pathlib.Path(__file__).resolve().parents[2]
SAMPLES = ROOT / 'samples'
PROGRAM = []  # with its wrapper; the same list for all who import it
IS_WRAPPED = False
RECORDER = None
# A build that counts its lines writes the counts as it ends. Where no file may grow, they would be
# cut: they go elsewhere.
LOST_COUNTS = tempfile.TemporaryDirectory(prefix='trevolt-cli-test-')
UNCOUNTED = {'GCOV_PREFIX': LOST_COUNTS.name, 'GCOV_ERROR_FILE': os.devnull}


def take_program(arguments):
    """Takes program, wrapper and recorder from a command line; what is left of it."""
    global IS_WRAPPED, RECORDER
    PROGRAM[:] = [os.path.abspath(arguments[0])]
    arguments = arguments[1:]
    if arguments[:1] == ['--wrapper']:
        IS_WRAPPED = True
        PROGRAM.insert(0, arguments[1])
        arguments = arguments[2:]
    if arguments[:1] == ['--recorder']:
        RECORDER = os.path.abspath(arguments[1])
        arguments = arguments[2:]
    return arguments


MAGICS = {
    '.9fcoef': bytes.fromhex('a700f3ce46c71e48b3d25edd63314661'),
    '.3fcoef': bytes.fromhex('f05fd4a2cf9e934f8f8acdd11e52ca32'),
    '.9bcoef': bytes.fromhex('1bd1f3ca70d59e4297bb9ba31f0c48d6'),
    '.3bcoef': bytes.fromhex('cc885702e646c14994e18232d615faa2'),
}
STORED_BYTES = {'.9fcoef': 36, '.3fcoef': 12, '.9bcoef': 9, '.3bcoef': 3}
CABINETS = {'.9fcoef': 'Cab_01', '.3fcoef': 'Cab_02', '.9bcoef': 'Cab_03', '.3bcoef': 'Cab_04'}
ANGLES = (90, 180, 270)

# Runs a program and notes its peak memory in KiB and its page faults. A process counts the memory of
# the one that started it as its own peak, so this one imports nothing more.
MEASURE = '''
import os, sys
child = os.posix_spawn(sys.argv[2], sys.argv[2:], os.environ)
_, status, usage = os.wait4(child, 0)
with open(sys.argv[1], "w") as figures:
    print(usage.ru_maxrss, usage.ru_minflt, file=figures)
sys.exit(os.waitstatus_to_exitcode(status))
'''


def bound_by_rights():
    """What a command begins with that is to be refused what others may not: the superuser is not."""
    if os.geteuid() != 0:
        return []
    return ['setpriv', '--bounding-set', '-dac_override,-dac_read_search']


def posix_only(test):
    """The test's subject is a POSIX system."""
    def run(self, *args):
        if IS_WRAPPED:
            self.skipTest('a POSIX subject')
        test(self, *args)
    run.__name__ = test.__name__
    return run


def with_recorder(test):
    """Needs the library that is loaded before the program."""
    def run(self, *args):
        if RECORDER is None:
            self.skipTest('no recorder here')
        test(self, *args)
    run.__name__ = test.__name__
    return run


def pixel_bytes(x, y, size):
    return bytes((x * 7 + y * 31 + k * 57) & 0xFF for k in range(size))


def raw_elements(width, height, size):
    return b''.join(pixel_bytes(x, y, size) for y in range(height) for x in range(width))


def coef_file(kind, width, height, raw, version=1, **frame_options):
    header = MAGICS[kind] + struct.pack('<IHH', version, width, height)
    return header + lz4.frame.compress(raw, **frame_options)


def turned(angle, width, height, raw, size):
    """The turned raw elements, row by row, and their width and height."""
    at = lambda x, y: raw[(y * width + x) * size:][:size]
    if angle == 180:
        new_width, new_height = width, height
        source = lambda x, y: (width - 1 - x, height - 1 - y)
    else:
        new_width, new_height = height, width
        source = {90: lambda x, y: (y, height - 1 - x), 270: lambda x, y: (width - 1 - y, x)}[angle]
    body = b''.join(at(*source(x, y)) for y in range(new_height) for x in range(new_width))
    return new_width, new_height, body


class CliTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix='trevolt-cli-test-'))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.source = self.folder / 'source'
        self.target = self.folder / 'target'
        self.source.mkdir()
        self.target.mkdir()

    def run_cli(self, *arguments, locale='C.UTF-8', cwd=ROOT, environment=(), is_bound=False,
                **options):
        options |= {'cwd': cwd, 'env': dict(os.environ, LC_ALL=locale) | dict(environment),
                    'timeout': 300}
        command = [*(bound_by_rights() if is_bound else ()), *PROGRAM, *map(str, arguments)]
        if not IS_WRAPPED:
            return subprocess.run(command, capture_output=True, **options)
        done = self.run_wrapped(command, **options)
        # Under load Wine sometimes ends a start without a word; the program never does.
        if done.returncode == 1 and not done.stdout and not done.stderr:
            done = self.run_wrapped(command, **options)
        return done

    def run_wrapped(self, command, **options):
        # A pipe would end only with the server that Wine starts beside the program.
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            done = subprocess.run(command, stdout=out, stderr=err, **options)
            for stream in (out, err):
                stream.seek(0)
            done.stdout, done.stderr = out.read(), err.read()
        return done

    def rotate(self, *arguments, angle=90, **options):
        return self.run_cli('rotate', '--angle', angle, *arguments, self.source, self.target,
                            **options)

    def interrupted_rotate(self, *arguments):
        """What a turn of 200 files prints for programs that is interrupted behind its first output."""
        content = coef_file('.3bcoef', 300, 200, os.urandom(300 * 200 * 3))
        for i in range(200):
            (self.source / f'cab{i:03}.3bcoef').write_bytes(content)
        run = subprocess.Popen([*PROGRAM, 'rotate', '-a', '90', '-j', '2', '--json',
                                *map(str, arguments), str(self.source), str(self.target)],
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                               preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
        while not any(not name.startswith('.') for name in self.targets()):
            self.assertIsNone(run.poll(), 'the run ended before it could be interrupted')
            time.sleep(0.001)
        run.send_signal(signal.SIGINT)
        out, err = run.communicate(timeout=60)
        self.assertEqual((run.returncode, err), (130, b''))
        return out

    def measured_rotate(self, target, *arguments):
        return self.measured('rotate', '--angle', '90', *arguments, self.source, target)

    def measured(self, *arguments):
        """The peak memory in KiB, the page faults and the result of a command."""
        figures = self.folder / 'figures'
        # An address sanitizer would keep freed memory back.
        options = os.environ.get('ASAN_OPTIONS', '')
        environment = dict(os.environ, LC_ALL='C.UTF-8',
                           ASAN_OPTIONS=f'{options}:quarantine_size_mb=0:'
                                        'thread_local_quarantine_size_kb=0')
        run = subprocess.run([sys.executable, '-I', '-S', '-c', MEASURE, figures, *PROGRAM,
                              *map(str, arguments)],
                             capture_output=True, env=environment, timeout=300)
        peak, faults = map(int, figures.read_text().split())
        return peak, faults, run

    def lines(self, output):
        lines = output.decode('utf-8').replace('\r\n', '\n').splitlines()
        # A program that counts its lines tells where it cannot write the counts, on a full disk say.
        return [line for line in lines if not line.startswith('libgcov profiling error:')]

    def expect(self, result, status, out=None, err=None):
        self.assertEqual(result.returncode, status, (result.stdout, result.stderr))
        if out is not None:
            self.assertEqual(self.lines(result.stdout), out)
        if err is not None:
            self.assertEqual(self.lines(result.stderr), err)

    def expect_words(self, result, status, words):
        self.expect(result, status)
        self.assertIn(words, result.stderr.decode('utf-8'))

    def add(self, name, width=4, height=3, kind=None, **options):
        kind = kind or next(k for k in MAGICS if k in name.lower())
        raw = raw_elements(width, height, STORED_BYTES[kind])
        (self.source / name).write_bytes(coef_file(kind, width, height, raw, **options))
        return raw

    def body(self, path, kind, width, height):
        """The raw elements of an output, its header checked."""
        content = path.read_bytes()
        self.assertEqual(content[:24], MAGICS[kind] + struct.pack('<IHH', 1, width, height))
        return lz4.frame.decompress(content[24:])

    def targets(self):
        return sorted(p.name for p in self.target.iterdir())
