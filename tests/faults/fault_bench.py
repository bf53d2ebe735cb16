"""What the loops of faults are made of: faults, a bench on which a command runs with them, and the loops
over the calls of the system."""
import dataclasses
import os
import pathlib
import re
import shutil
import subprocess

SAMPLES = pathlib.Path(__file__).resolve().parents[2] / 'samples' / 'cabinet'
WITH_ORIGIN = SAMPLES.parent / 'awkward' / 'origin_1000_777.9wcoef'  # which a line tells as lost
ONCE, FROM_THEN_ON = 1, 1 << 30
FILE_LINE = re.compile(r'^(\S+) -> (\S+)  \(', re.MULTILINE)
LOSS_LINE = re.compile(r'^\S+: the turned file lacks .*$', re.MULTILINE)
CLOSING_LINE = re.compile(r'^(\d+) files? turned(?: by 90°)?, (\d+) failed$', re.MULTILINE)
NAME_MAY_BE_LOST = ': written, but its name may be lost: '

# The system's word on a call that fails, which every message has then.
REASONS = {'open': 'Too many open files', 'read': 'Input/output error',
           'seek': 'Input/output error', 'write': 'No space left on device',
           'close': 'Input/output error', 'sync': 'Input/output error', 'rename': 'Permission denied',
           'list': 'Input/output error', 'space': 'No space left on device',
           'alloc': 'not enough memory|Cannot allocate memory'}
# Calls that may be cut short or fail without anything being lost by it.
HARMLESS = {'short-read', 'short-write', 'thread'}
MOST_CALLS = 100000  # a loop that gets so far never passes


@dataclasses.dataclass
class Fault:
    """What is to fail: see the preloaded library. `path` is what a change on the disk changes."""
    call: str
    first: int
    count: int = ONCE
    path: pathlib.Path = None

    def __str__(self):
        times = 'once' if self.count == ONCE else 'from then on'
        return f'{self.call} {self.first} {times}'


class Wrong(Exception):
    """What a run made or told that it must not."""


def bytes_of(folder):
    """The files of a folder and of those in it, by their names below it."""
    return {str(path.relative_to(folder)): path.read_bytes()
            for path in (folder.rglob('*') if folder.is_dir() else ()) if path.is_file()}


class Bench:
    """A source folder, what its files turn to, and runs beside it."""
    well = 0  # the exit status of a run in which nothing fails

    def __init__(self, program, preload, place, paths):
        self.program, self.preload, self.place = program, preload, place
        self.source, self.target = place / 'source', place / 'target'
        self.mark = place / 'mark'
        self.source.mkdir(parents=True)
        for path in paths:
            shutil.copy(path, self.source)
        self.inputs = bytes_of(self.source)
        self.clear()
        done = self.run(None)
        self.outputs = bytes_of(self.target)
        if done.returncode != self.well or len(self.outputs) < self.fewest_outputs():
            raise SystemExit(f'without a fault: {done}')
        self.told = done.stdout
        self.losses = LOSS_LINE.findall(done.stdout)

    def fewest_outputs(self):
        return max(len(self.inputs), 1)

    def arguments(self, jobs):
        """Of every run: what an earlier one has left is replaced."""
        return ['rotate', '--angle', '90', '--overwrite', '--jobs', str(jobs), self.source,
                self.target]

    def clear(self):
        """Everything as before the first run."""
        shutil.rmtree(self.target, ignore_errors=True)
        self.target.mkdir()
        for path in (self.source, self.target):
            shutil.rmtree(path.with_name(path.name + '.gone'), ignore_errors=True)
        if bytes_of(self.source) != self.inputs:
            shutil.rmtree(self.source, ignore_errors=True)
            self.source.mkdir()
            for name, content in self.inputs.items():
                (self.source / name).write_bytes(content)
        self.mark.unlink(missing_ok=True)

    def start(self, fault, jobs):
        environment = dict(os.environ)
        if fault is not None:
            environment.update(LD_PRELOAD=str(self.preload), TREVOLT_FAULT_MARK=str(self.mark),
                               TREVOLT_FAULT=f'{fault.call}:{fault.first}:{fault.count}',
                               TREVOLT_FAULT_PATH=str(fault.path or ''))
        return subprocess.Popen([self.program, *self.arguments(jobs)], env=environment, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def run(self, fault, jobs=1):
        process = self.start(fault, jobs)
        out, error = process.communicate(timeout=60)
        return subprocess.CompletedProcess(process.args, process.returncode, out, error)

    def check_files(self):
        """No input changed, and every name in the target stands for its whole output."""
        if bytes_of(self.source) != self.inputs:
            raise Wrong('an input has changed')
        self.check_target(self.target)

    def check_target(self, target, is_open=True):
        """A folder that went away during the run may hold what was under work."""
        for name, content in bytes_of(target).items():
            if not is_open and name.startswith('.trevolt-'):
                continue
            if name not in self.outputs:
                raise Wrong(f'{name} is left in the target')
            if not self.is_output(name, content):
                raise Wrong(f'{name} is not the whole output')

    def is_output(self, name, content):
        return content == self.outputs[name]

    def check_told(self, done):
        """The exit status and the lines are those of a run that made what stands in the target."""
        made = len(bytes_of(self.target))
        closing = CLOSING_LINE.search(done.stdout)
        named = len(FILE_LINE.findall(done.stdout))
        if closing is None:
            # What is refused before the arguments are there is told without the program's name.
            is_told = 'trevolt-cli: ' in done.stderr or done.stderr == 'not enough memory\n'
            if done.returncode not in (1, 2) or not is_told:
                raise Wrong('it ends without a message')
            if named != made:
                raise Wrong('it made files and does not tell of them')
            return
        turned, failed = map(int, closing.groups())
        lasting = made - self.lost_names(done)
        if turned != lasting:
            raise Wrong(f'it tells of {turned} files and made {lasting}')
        if named != turned:
            raise Wrong('it made a file and does not name it')
        if not failed and LOSS_LINE.findall(done.stdout) != self.losses:
            raise Wrong('what is lost is not told')
        self.check_status(done, failed)
        if not failed and made != len(self.outputs):
            raise Wrong('a file is missing and none failed')

    def lost_names(self, done):
        """How many outputs are told to have names that may be lost."""
        return done.stderr.count(NAME_MAY_BE_LOST)

    def check_status(self, done, failed):
        if done.returncode != (1 if failed else 0):
            raise Wrong(f'{failed} failed, and the exit status is {done.returncode}')
        if failed and not done.stderr:
            raise Wrong('it tells of no cause')

    def check_again(self):
        """Without faults the command succeeds, whatever the run before has left."""
        done = self.run(None)
        if done.returncode != self.well or bytes_of(self.target) != self.outputs:
            raise Wrong(f'the next run does not succeed: {done.stderr}')

    def causes(self, done):
        """The lines that tell why something failed."""
        return done.stderr.splitlines()


def check_cause(reason, causes):
    """Each message has the reason of the call that failed, and no other cause."""
    for line in causes if reason else ():
        if not re.search(reason, line):
            raise Wrong(f'another cause is told: {line}')


def try_fault(bench, fault, jobs):
    """One run with the fault; whether it happened."""
    bench.clear()
    done = bench.run(fault, jobs)
    happened = bench.mark.exists()
    try:
        bench.check_files()
        bench.check_told(done)
        check_cause(REASONS.get(fault.call), bench.causes(done))
        if (not happened or fault.call in HARMLESS) and done.returncode != bench.well:
            raise Wrong('nothing failed, but the run did')
        if done.returncode != bench.well:
            bench.check_again()
    except Wrong as wrong:
        raise Wrong(f'{fault}, {jobs} jobs: {wrong}\n{done}') from None
    return happened


def loop_calls(bench, call, stride, jobs, begin=1):
    """Lets one call after the other fail, from the one numbered `begin`, until a run passes; how many
    runs had a fault."""
    runs = 0
    for count in (ONCE, FROM_THEN_ON):
        for first in range(begin, MOST_CALLS, stride):
            if not try_fault(bench, Fault(call, first, count), jobs):
                break
            runs += 1
        else:
            raise Wrong(f'{call}: no run without a fault')
    return runs


def last_of(happens):
    """The last number of a call for which `happens(number)`; later ones are not made."""
    low, high = 0, MOST_CALLS
    while high - low > 1:
        middle = (low + high) // 2
        low, high = (middle, high) if happens(middle) else (low, middle)
    return low


def loop_last(bench, call):
    """Lets some of the last calls fail: those of a command whose outputs stand are among them."""
    last = last_of(lambda first: try_fault(bench, Fault(call, first), jobs=1))
    return sum(try_fault(bench, Fault(call, last - before, count), jobs=1)
               for before in (0, 1, 2, 4, 8, 16, 32, 64) for count in (ONCE, FROM_THEN_ON))


def allocations_of_set_up(program, preload, place):
    """How many allocations every run begins with, whatever its command: nearly those of --version."""
    mark = place / 'version'

    def happens(first):
        mark.unlink(missing_ok=True)
        subprocess.run([program, '--version'], check=False, capture_output=True,
                       env={**os.environ, 'LD_PRELOAD': str(preload),
                            'TREVOLT_FAULT': f'alloc:{first}:1', 'TREVOLT_FAULT_MARK': str(mark)})
        return mark.exists()

    return last_of(happens) * 95 // 100


def fill_disk(bench, positions):
    """A disk that is full after so many bytes."""
    room = sum(map(len, bench.outputs.values()))
    runs = 0
    for i in range(positions):
        runs += try_fault(bench, Fault('space', room * i // positions), jobs=1)
    return runs


