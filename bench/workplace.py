"""Where the measuring script works: the programs, the files that they work on, and timed runs."""
import contextlib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from figures import Run

PEERS = pathlib.Path(__file__).resolve().parent / 'peers'

BINARY_HEADER_BYTES = 24

# What a step may need besides the project: whether it is there.
PYTHON_PEER = 'NumPy and LZ4 for Python'
LZ4_PEER = 'the lz4 program'
SECOND_CORE = 'a second core'
MEMORY_FOLDER = 'a folder in memory with a gigabyte free'
IN_MEMORY = pathlib.Path('/dev/shm')


class Failure(Exception):
    """A program did not do its work, so that there is nothing to time."""


def require_success(program, status, said):
    if status != 0:
        raise Failure(f'{pathlib.Path(program).name} ended with {status}: {said.strip()[-500:]}')


def missing_peers():
    there = {
        PYTHON_PEER: subprocess.run([sys.executable, '-c', 'import numpy, lz4.block, lz4.frame'],
                                    stderr=subprocess.DEVNULL, check=False).returncode == 0,
        LZ4_PEER: shutil.which('lz4') is not None,
        SECOND_CORE: (os.cpu_count() or 1) > 1,
        MEMORY_FOLDER: IN_MEMORY.is_dir() and shutil.disk_usage(IN_MEMORY).free >= 1 << 30,
    }
    return {peer for peer, is_there in there.items() if not is_there}


def available_bytes():
    with open('/proc/meminfo', encoding='ascii') as lines:
        fields = dict(line.split(':') for line in lines)
    return int(fields['MemAvailable'].split()[0]) * 1024


def touch_free_memory(wanted):
    """A virtual machine's first touch of a page costs many times what is measured. A process of its
    own does it, since this one's peak would be inherited by those it starts."""
    if wanted == 0:
        return
    count = min(wanted, available_bytes() // 4 * 3)
    program = ('import mmap\n'
               f'memory = mmap.mmap(-1, {count}, flags=mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS)\n'
               'memory.madvise(mmap.MADV_HUGEPAGE)\n'
               f'for place in range(0, {count}, mmap.PAGESIZE): memory[place] = 1\n')
    subprocess.run([sys.executable, '-c', program], check=True)


@contextlib.contextmanager
def in_memory(place):
    """A workplace beside `place`, whose files are in memory as long as it is used."""
    with tempfile.TemporaryDirectory(prefix='trevolt-bench-', dir=IN_MEMORY) as folder:
        yield Workplace(place.programs, pathlib.Path(folder) / 'work')


class Workplace:
    """A folder that is made anew and goes with its content; the programs lie elsewhere."""

    def __init__(self, programs, folder):
        self.programs = programs
        self.folder = folder
        self.command = programs / 'trevolt-cli'
        self.memory = 0  # bytes that are touched before each timed run
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)

    def remove(self):
        shutil.rmtree(self.folder, ignore_errors=True)

    def fresh(self, name):
        """An empty folder; what it held before is gone."""
        folder = self.folder / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        return folder

    def wall(self, width, height, count, kind):
        """A folder of cabinets of a kind, made once."""
        root = self.folder / 'walls' / f'{width}x{height}x{count}'
        if not (root / kind).exists():
            sizes = [str(number) for number in (width, height, count)]
            self.check_output([self.programs / 'make-wall', root, *sizes, kind])
            os.sync()  # else it is written to the disk while something is timed
        return root / kind

    def links(self, name, files):
        """A folder of these files, which cost no space."""
        folder = self.fresh(name)
        for file in files:
            os.link(file, folder / file.name)
        return folder

    @staticmethod
    def run(command):
        return subprocess.run(command, capture_output=True, text=True, check=False)

    def check_output(self, command):
        done = self.run(command)
        require_success(command[0], done.returncode, done.stderr)
        return done.stdout

    def timed(self, command):
        """A run that must succeed."""
        touch_free_memory(self.memory)  # last of all: a host takes back within seconds what is free
        done = self.run([self.programs / 'timed-run', *command])
        require_success('timed-run', done.returncode, done.stderr)
        status, seconds, faults, peak_kib = done.stdout.split()
        require_success(command[0], int(status), done.stderr)
        return Run(float(seconds), int(faults), int(peak_kib) * 1024)

    def timed_turn(self, command, source, target='turned', *after):
        """A run of a command, then both folders and what comes after them; it must write as many
        files into the target as it finds in the source."""
        out = self.fresh(target)
        run = self.timed([*command, source, out, *after])
        files, written = (len(os.listdir(folder)) for folder in (source, out))
        if files == 0 or files != written:
            raise Failure(f'{written} files were written of {files}')
        return run

    def rotate(self, source, *options, target='turned', angle=90, sync=False):
        """Without waiting for the disk, as the peers do, unless told."""
        waiting = [] if sync else ['--no-sync']
        return self.timed_turn([self.command, 'rotate', '--angle', str(angle), *waiting, *options],
                               source, target)

    def rotate_twice_at_once(self, source):
        """Two commands of one job, each with a target of its own."""
        one = [self.command, 'rotate', '--angle', '90', '--no-sync', '--jobs', '1', source]
        both = ['sh', '-c', '"$@" "$0/one" & "$@" "$0/other" && wait $!', self.fresh('turned'), *one]
        for name in ('one', 'other'):
            (self.folder / 'turned' / name).mkdir()
        return self.timed(both)

    def lz4_body(self, file):
        """A binary file's body as a file that the lz4 program takes."""
        body = self.fresh('body') / 'body.lz4'
        body.write_bytes(file.read_bytes()[BINARY_HEADER_BYTES:])
        return body

    def lz4_calls(self, *files):
        """The seconds that the bare LZ4 calls of a file, or of a turn, take on one core."""
        return float(self.check_output([self.programs / 'bare-lz4', *files]))

    def copy_on_every_core(self, source, target='turned'):
        cores = os.cpu_count() or 1
        each = -(-len(os.listdir(source)) // cores)
        copy = f'find "$0" -type f -print0 | xargs -0 -P {cores} -n {each} cp -t "$1"'
        return self.timed_turn(['sh', '-c', copy], source, target)

    def write(self, count):
        """As many bytes, by one thread."""
        file = self.fresh('turned') / 'written'
        touch_free_memory(self.memory)
        return Run(float(self.check_output([sys.executable, PEERS / 'write_file.py', str(count),
                                            file])))

    def peer_turn(self, source, target='turned'):
        return self.timed_turn([sys.executable, PEERS / 'turn_folder.py'], source, target)

    def check_same_pixels(self, one, other):
        self.check_output([sys.executable, '-B', PEERS / 'same_pixels.py', one, other])
