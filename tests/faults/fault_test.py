#!/usr/bin/python3
"""Loops of faults over `trevolt-cli rotate`, with a manifest and without, and `trevolt-cli demo`: each
call of the system fails in turn, until a run passes in which none has failed.

    fault_test.py PROGRAM PRELOAD [--long]

PRELOAD is the library that makes the calls fail. Whatever fails, the inputs stay as they are, nothing
stands under a final name that is not the whole and right output, what the run tells is true, and the
same command succeeds when nothing fails any more. Without --long some of the calls of each kind fail,
with it every one.
"""
import argparse
import dataclasses
import hashlib
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SAMPLES = pathlib.Path(__file__).resolve().parents[2] / 'samples' / 'cabinet'
WITH_ORIGIN = SAMPLES.parent / 'awkward' / 'origin_1000_777.9wcoef'  # which a line tells as lost
KINDS = ('9fcoef', '3fcoef', '9bcoef', '3bcoef', 'cccoef', '9wcoef', '3wcoef', '4wcoef', '12wcoef')
ONCE, FROM_THEN_ON = 1, 1 << 30
FILE_LINE = re.compile(r'^(\S+) -> (\S+)  \(', re.MULTILINE)
LOSS_LINE = re.compile(r'^\S+: the turned file lacks .*$', re.MULTILINE)
CLOSING_LINE = re.compile(r'^(\d+) files? turned(?: by 90°)?, (\d+) failed$', re.MULTILINE)

# How many calls are passed over from one that fails to the next in the short form.
STRIDES = {'alloc': 101, 'thread': 1, 'open': 5, 'read': 7, 'end': 7, 'short-read': 11, 'write': 5,
           'short-write': 9, 'seek': 23, 'close': 7, 'sync': 3, 'rename': 3, 'list': 3}
# The short form over two cabinets with a manifest, over copies of them, and over the demo wall.
MANIFEST_STRIDES = {'alloc': 307, 'open': 7, 'read': 3, 'end': 5, 'write': 3, 'short-write': 2,
                    'seek': 17, 'close': 5, 'sync': 2, 'rename': 2}
COPY_STRIDES = {'open': 3, 'read': 3, 'end': 3, 'short-read': 5, 'write': 3, 'seek': 7, 'close': 5}
DEMO_STRIDES = {'alloc': 223, 'open': 13, 'write': 11, 'short-write': 13, 'close': 13, 'sync': 7,
                'rename': 5}
# The system's word on a call that fails, which every message has then.
REASONS = {'open': 'Too many open files', 'read': 'Input/output error',
           'seek': 'Input/output error', 'write': 'No space left on device',
           'sync': 'Input/output error', 'rename': 'Permission denied',
           'list': 'Input/output error', 'space': 'No space left on device',
           'alloc': 'not enough memory|Cannot allocate memory'}
# Calls that may be cut short or fail without anything being lost by it.
HARMLESS = {'short-read', 'short-write', 'thread'}
IN_MEMORY = '/dev/shm'  # a sync there is a call as any other, and takes no time
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
    return {path.name: path.read_bytes() for path in folder.iterdir()} if folder.is_dir() else {}


class Bench:
    """A source folder, what its files turn to, and runs beside it."""
    reasons = REASONS

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
        if done.returncode != 0 or len(self.outputs) < max(len(paths), 1):
            raise SystemExit(f'without a fault: {done}')
        self.losses = LOSS_LINE.findall(done.stdout)

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
            if content != self.outputs[name]:
                raise Wrong(f'{name} is not the turned file')

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
        lasting = made - done.stderr.count(': written, but its name may be lost: ')
        if turned != lasting:
            raise Wrong(f'it tells of {turned} files and made {lasting}')
        if named != turned:
            raise Wrong('it made a file and does not name it')
        if not failed and LOSS_LINE.findall(done.stdout) != self.losses:
            raise Wrong('what is lost is not told')
        self.check_status(done, failed)
        if not failed and made != len(self.outputs):
            raise Wrong('a file is missing and none failed')

    def check_status(self, done, failed):
        if done.returncode != (1 if failed else 0):
            raise Wrong(f'{failed} failed, and the exit status is {done.returncode}')
        if failed and not done.stderr:
            raise Wrong('it tells of no cause')

    def check_again(self):
        """Without faults the command succeeds, whatever the run before has left."""
        done = self.run(None)
        if done.returncode != 0 or bytes_of(self.target) != self.outputs:
            raise Wrong(f'the next run does not succeed: {done.stderr}')


class ManifestBench(Bench):
    """A turn with a manifest, which stands in a folder of its own."""
    # Of a sum that its library prevents no reason is known.
    reasons = {call: reason for call, reason in REASONS.items() if call != 'alloc'}

    def __init__(self, program, preload, place, paths):
        self.manifest = place / 'sums' / 'manifest'
        super().__init__(program, preload, place, paths)

    def arguments(self, jobs):
        return [*super().arguments(jobs), '--manifest', self.manifest]

    def clear(self):
        super().clear()
        shutil.rmtree(self.manifest.parent, ignore_errors=True)
        self.manifest.parent.mkdir()

    def check_told(self, done):
        super().check_told(done)
        standing = bytes_of(self.manifest.parent)
        if not standing.keys() <= {self.manifest.name}:
            raise Wrong(f'{standing.keys()} stand beside the manifest')
        told = FILE_LINE.findall(done.stdout)
        is_wanted = told and CLOSING_LINE.search(done.stdout) and not self.is_refused(done)
        if not standing and is_wanted:
            raise Wrong('there is no manifest')
        if standing and standing[self.manifest.name].decode() != self.lines_of(told):
            raise Wrong('the manifest is not that of the files that were turned')

    def lines_of(self, told):
        lines = ''
        for source, target in told:
            for folder, name, content in ((self.source, source, self.inputs[source]),
                                          (self.target, target, self.outputs[target])):
                lines += f'{hashlib.sha256(content).hexdigest()}  {folder / name}\n'
        return lines

    def is_refused(self, done):
        return f'trevolt-cli: the manifest {self.manifest} ' in done.stderr

    def check_status(self, done, failed):
        super().check_status(done, failed or self.is_refused(done))

    def check_again(self):
        self.manifest.unlink(missing_ok=True)  # what stands is not replaced
        super().check_again()


class CopyBench(Bench):
    """Files that are not turned but copied."""

    def __init__(self, program, preload, place, paths):
        self.table = place / 'table'
        place.mkdir(parents=True)
        self.table.write_text('*,0\n', encoding='ascii')
        super().__init__(program, preload, place, paths)

    def arguments(self, jobs):
        return ['rotate', '--angles', self.table, '--overwrite', '--jobs', str(jobs), self.source,
                self.target]


class DemoBench(Bench):
    """The demo wall, which has no source."""

    def __init__(self, program, preload, place):
        super().__init__(program, preload, place, [])

    def arguments(self, jobs):
        return ['demo', '--overwrite', self.target]

    def check_told(self, done):
        is_done = done.stdout == f'demo wall written to {self.target}\n'
        if done.returncode != (0 if is_done else 1) or not (is_done or done.stderr):
            raise Wrong(f'it ends with {done.returncode} and no word of it')
        if is_done and bytes_of(self.target).keys() != self.outputs.keys():
            raise Wrong('a cabinet is missing and it tells that the wall is written')


def check_cause(reason, done):
    """Each message has the reason of the call that failed, and no other cause."""
    for line in done.stderr.splitlines() if reason else ():
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
        check_cause(bench.reasons.get(fault.call), done)
        if (not happened or fault.call in HARMLESS) and done.returncode != 0:
            raise Wrong('nothing failed, but the run did')
        if done.returncode != 0:
            bench.check_again()
    except Wrong as wrong:
        raise Wrong(f'{fault}, {jobs} jobs: {wrong}\n{done}') from None
    return happened


def loop_calls(bench, call, stride, jobs):
    """Lets one call after the other fail until a run passes; how many runs had a fault."""
    runs = 0
    for count in (ONCE, FROM_THEN_ON):
        for first in range(1, MOST_CALLS, stride):
            if not try_fault(bench, Fault(call, first, count), jobs):
                break
            runs += 1
        else:
            raise Wrong(f'{call}: no run without a fault')
    return runs


def fill_disk(bench, positions):
    """A disk that is full after so many bytes."""
    room = sum(map(len, bench.outputs.values()))
    runs = 0
    for i in range(positions):
        runs += try_fault(bench, Fault('space', room * i // positions), jobs=1)
    return runs


def change_midway(bench, call, path, stride):
    """Somebody else changes a file or folder before a read."""
    runs = 0
    for first in range(1, MOST_CALLS, stride):
        bench.clear()
        done = bench.run(Fault(call, first, ONCE, path))
        happened = bench.mark.exists()
        gone = bench.target.with_name('target.gone')
        try:
            if done.returncode not in (0, 1, 2) or not (happened or done.returncode == 0):
                raise Wrong('it does not end well')
            bench.check_target(bench.target)
            bench.check_target(gone, is_open=False)
            if not gone.exists():
                bench.check_told(done)
        except Wrong as wrong:
            raise Wrong(f'{call} of {path.name} at read {first}: {wrong}\n{done}') from None
        if not happened:
            return runs
        runs += 1
    raise Wrong(f'{call}: no run without a change')


def kill_runs(bench, count):
    """Kills runs at any moment. A temporary may be left; the next run removes it."""
    moments = random.Random(1)
    for _ in range(count):
        bench.clear()
        process = bench.start(None, jobs=2)
        time.sleep(moments.uniform(0, 0.02))
        process.send_signal(signal.SIGKILL)
        process.communicate()
        finished = {name: content for name, content in bytes_of(bench.target).items()
                    if name in bench.outputs}
        try:
            if any(bench.outputs[name] != content for name, content in finished.items()):
                raise Wrong('a half file has its final name')
            bench.check_again()
        except Wrong as wrong:
            raise Wrong(f'after a kill: {wrong}') from None
    return count


def loops_of_others(arguments, place, paths):
    """The loops over what else writes files."""
    for name, bench, strides in (
            ('with a manifest', ManifestBench(arguments.program, arguments.preload,
                                              place / 'with-manifest', paths), MANIFEST_STRIDES),
            ('of copies', CopyBench(arguments.program, arguments.preload, place / 'copies', paths),
             COPY_STRIDES),
            ('of the demo wall', DemoBench(arguments.program, arguments.preload, place / 'demo'),
             DEMO_STRIDES)):
        for call, stride in strides.items():
            yield f'{call} {name}', lambda call=call, stride=stride, bench=bench: loop_calls(
                bench, call, 1 if arguments.long else stride, jobs=1)
        yield f'full disk {name}', lambda bench=bench: fill_disk(
            bench, 200 if arguments.long else 4)


def loops_of(arguments, place):
    """Each loop's name and what runs it and counts its runs."""
    samples = sorted(path for path in SAMPLES.iterdir() if path.suffix[1:] in KINDS)
    bench = Bench(arguments.program, arguments.preload, place / 'all', [*samples, WITH_ORIGIN])
    for call, stride in STRIDES.items():
        if not arguments.long:
            yield call, lambda call=call, stride=stride: loop_calls(
                bench, call, stride, jobs=3 if call == 'thread' else 1)
    for path in [*samples, WITH_ORIGIN] if arguments.long else ():
        alone = Bench(arguments.program, arguments.preload, place / path.name, [path])
        for call in STRIDES:
            yield f'{call} of {path.name}', lambda call=call, alone=alone: sum(
                loop_calls(alone, call, 1, jobs) for jobs in (1, 3))
    yield from loops_of_others(arguments, place, [samples[2], samples[4]])
    yield 'full disk', lambda: fill_disk(bench, 2000 if arguments.long else 12)
    binary, text = (bench.source / samples[i].name for i in (0, 4))
    for call, path in (('truncate', binary), ('grow', binary), ('truncate', text), ('grow', text),
                       ('remove', bench.source), ('remove', bench.target)):
        yield f'{call} {path.name}', lambda call=call, path=path: change_midway(
            bench, call, path, 1 if arguments.long else 29)
    yield 'kill', lambda: kill_runs(bench, 200 if arguments.long else 8)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('program')
    parser.add_argument('preload')
    parser.add_argument('--long', action='store_true')
    arguments = parser.parse_args()
    wrong = 0
    root = IN_MEMORY if os.access(IN_MEMORY, os.W_OK) else None
    with tempfile.TemporaryDirectory(dir=root) as place:
        for name, loop in loops_of(arguments, pathlib.Path(place)):
            try:
                print(f'{name}: {loop()} runs with a fault', flush=True)
            except Wrong as trouble:
                wrong += 1
                print(f'{name}: WRONG: {trouble}', flush=True)
    print(f'{wrong} loops found something wrong' if wrong else 'nothing was found wrong')
    sys.exit(1 if wrong else 0)


if __name__ == '__main__':
    main()
