#!/usr/bin/python3
"""Loops of faults over the commands of `trevolt-cli`: each call of the system fails in turn, until a run
passes in which none has failed.

    fault_test.py PROGRAM PRELOAD [--long] [--only WORD]

PRELOAD is the library that makes the calls fail. Whatever fails, the inputs stay as they are, nothing
stands under a final name that is not the whole and right output, what the run tells is true, and the
same command succeeds when nothing fails any more. Without --long some of the calls of each kind fail,
with it every one; --only takes the loops alone whose names hold the word.
"""
import argparse
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

from command_benches import benches_of_commands, benches_of_telling
from fault_bench import (CLOSING_LINE, FILE_LINE, FROM_THEN_ON, MOST_CALLS, ONCE, SAMPLES,
                         WITH_ORIGIN, Bench, Fault, Wrong, allocations_of_set_up, bytes_of,
                         fill_disk, loop_calls, loop_last, try_fault)

KINDS = ('9fcoef', '3fcoef', '9bcoef', '3bcoef', 'cccoef', '9wcoef', '3wcoef', '4wcoef', '12wcoef')
# How many calls are passed over from one that fails to the next in the short form.
STRIDES = {'alloc': 149, 'thread': 1, 'open': 7, 'read': 7, 'end': 7, 'short-read': 17, 'write': 5,
           'short-write': 11, 'seek': 31, 'close': 7, 'sync': 3, 'rename': 3, 'list': 3}
# The short form over two cabinets with a manifest, over copies of them, and over the demo wall.
MANIFEST_STRIDES = {'alloc': 401, 'open': 7, 'read': 3, 'end': 5, 'write': 3, 'short-write': 2,
                    'seek': 17, 'close': 5, 'sync': 2, 'rename': 2}
COPY_STRIDES = {'open': 3, 'read': 3, 'end': 3, 'short-read': 5, 'write': 3, 'seek': 7, 'close': 5}
DEMO_STRIDES = {'alloc': 223, 'open': 13, 'write': 11, 'short-write': 13, 'close': 13, 'sync': 7,
                'rename': 5}
# And over the other commands.
COMMAND_STRIDES = {'alloc': 293, 'open': 7, 'read': 7, 'end': 7, 'short-read': 13, 'write': 29,
                   'short-write': 29, 'seek': 19, 'close': 7, 'sync': 3, 'rename': 2, 'list': 7}
CABINETS = re.compile(r': (\d) of 9 cabinets (?:is|are) written')
IN_MEMORY = '/dev/shm'  # a sync there is a call as any other, and takes no time


class ManifestBench(Bench):
    """A turn with a manifest, which stands in a folder of its own."""

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
        part = CABINETS.search(done.stderr)
        told = len(self.outputs) if is_done else int(part[1]) if part else 0
        made = len(bytes_of(self.target))
        if told != made and not self.lost_names(done):
            raise Wrong(f'it tells of {told} cabinets and made {made}')


def look_at_entries(program, preload, place):
    """What an entry of a folder is, is not told: no listing leaves out what it holds and ends well."""
    source, mark = place / 'source', place / 'mark'
    (source / 'row').mkdir(parents=True)
    paths = [source / name for name in ('a.9bcoef', 'row/b.9bcoef', 'row/c.9bcoef')]
    for path in paths:
        shutil.copy(next(SAMPLES.glob('*.9bcoef')), path)
    whole = ''.join(f'{path}\n' for path in paths)
    for first in range(1, MOST_CALLS):
        mark.unlink(missing_ok=True)
        done = subprocess.run([program, 'rotate', '--list', '-r', source], check=False, text=True,
                              capture_output=True, env={
                                  **os.environ, 'LD_PRELOAD': str(preload),
                                  'TREVOLT_FAULT': f'stat:{first}:1',
                                  'TREVOLT_FAULT_MARK': str(mark)})
        is_told = done.returncode in (1, 2) and 'Permission denied' in done.stderr
        if not (is_told or (done.returncode, done.stdout) == (0, whole)):
            raise Wrong(f'stat {first}: {done}')
        if not mark.exists() and first <= len(paths):
            raise Wrong('stat: the entries were not looked at')
        if not mark.exists():
            return first - 1
    raise Wrong('stat: no run without a fault')


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


def loops_of_commands(arguments, place):
    """The loops over the commands that look inside and put together."""
    # Of what all runs begin with every allocation fails in the loops over `rotate`.
    behind_set_up = 1 + allocations_of_set_up(arguments.program, arguments.preload, place)
    for name, bench, calls in benches_of_commands(arguments.program, arguments.preload, place):
        for call in calls:
            stride = 1 if arguments.long else COMMAND_STRIDES[call]
            begin = behind_set_up if call == 'alloc' else 1
            yield f'{call} of {name}', lambda call=call, stride=stride, begin=begin, bench=bench: (
                loop_calls(bench, call, stride, 1, begin))
        yield f'set-up of {name}', lambda bench=bench: sum(
            try_fault(bench, Fault('alloc', first, count), jobs=1)
            for first in (1, behind_set_up // 2) for count in (ONCE, FROM_THEN_ON))
        if bench.outputs:
            yield f'full disk of {name}', lambda bench=bench: fill_disk(
                bench, 100 if arguments.long else 2)
    for name, bench in benches_of_telling(arguments.program, arguments.preload, place / 'telling'):
        yield f'telling of {name}', lambda bench=bench: (
            loop_calls(bench, 'alloc', 1, 1, behind_set_up) if arguments.long
            else loop_last(bench, 'alloc'))


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
    yield from loops_of_commands(arguments, place)
    yield 'stat of entries', lambda: look_at_entries(arguments.program, arguments.preload,
                                                     place / 'entries')
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
    parser.add_argument('--only', default='', metavar='WORD')
    arguments = parser.parse_args()
    wrong = 0
    root = IN_MEMORY if os.access(IN_MEMORY, os.W_OK) else None
    with tempfile.TemporaryDirectory(dir=root) as place:
        for name, loop in loops_of(arguments, pathlib.Path(place)):
            if arguments.only not in name:
                continue
            try:
                print(f'{name}: {loop()} runs with a fault', flush=True)
            except Wrong as trouble:
                wrong += 1
                print(f'{name}: WRONG: {trouble}', flush=True)
    print(f'{wrong} loops found something wrong' if wrong else 'nothing was found wrong')
    sys.exit(1 if wrong else 0)


if __name__ == '__main__':
    main()
