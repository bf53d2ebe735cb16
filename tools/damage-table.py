#!/usr/bin/python3
"""How much damage of coefficient files trevolt-cli notices, as a Markdown table by kind.

    damage-table.py PROGRAM [--flips N] [--cuts N] [--seed S] [--least] [--wrapper COMMAND]
                    [rotate options]

Copies of the sample cabinets, each with one flipped bit or cut off at one byte, are turned. What
is noticed is named and not written. Of what is written, a copy beside which a note stands that the
undamaged file has not is told apart from one that passed in silence with another output than the
undamaged file's; the rest has the same. Bits and bytes are drawn evenly over the file by the seed,
or are all of them where there are no more. --least fails when a kind has got worse than it is known
to be. Other options go to the rotate command.
"""
import argparse
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile

SAMPLES = pathlib.Path(__file__).resolve().parents[1] / 'samples' / 'cabinet'
KINDS = ('.9fcoef', '.3fcoef', '.9bcoef', '.3bcoef', '.cccoef',
         '.9wcoef', '.3wcoef', '.4wcoef', '.12wcoef')
BATCH = 100  # damaged copies of each kind that lie in the folder together

# The least that is noticed of flips and of cuts, in percent.
LEAST = {kind: (100, 100) for kind in KINDS[:4]} | {'.cccoef': (65, 95)} | {
    kind: (0, 100) for kind in KINDS[5:]}


def sample(kind):
    (path,) = SAMPLES.glob(f'*{kind}')
    return path.read_bytes()


def draw(count, size, random_source):
    return sorted(random_source.sample(range(size), min(count, size)))


def damaged(content, damage, at):
    if damage == 'cut':
        return content[:at]
    changed = bytearray(content)
    changed[at // 8] ^= 1 << at % 8
    return bytes(changed)


class Table:
    def __init__(self, command):
        self.command = command
        self.counts = {(kind, damage): {'noticed': 0, 'noted': 0, 'same': 0, 'other': 0}
                       for kind in KINDS for damage in ('flip', 'cut')}

    def turn(self, files):
        """Turns copies with (kind, damage, place) together; what each became is counted."""
        contents = {kind: sample(kind) for kind in KINDS}
        with tempfile.TemporaryDirectory(prefix='trevolt-damage-') as folder:
            source, target = pathlib.Path(folder, 'source'), pathlib.Path(folder, 'target')
            source.mkdir()
            target.mkdir()
            for kind in KINDS:
                (source / f'whole{kind}').write_bytes(contents[kind])
            for i, (kind, damage, at) in enumerate(files):
                (source / f'{i}{kind}').write_bytes(damaged(contents[kind], damage, at))
            with tempfile.TemporaryFile('w+', encoding='utf-8') as told:
                run = subprocess.run([*self.command, source, target], stdout=told,
                                     stderr=subprocess.DEVNULL, timeout=600)
                told.seek(0)
                noted = {line.split(': ')[0] for line in told if ': ' in line}
            if run.returncode not in (0, 1):
                sys.exit(f'the run ended with {run.returncode}')
            outputs = {re.sub('-90[^.]*', '', path.name): path.read_bytes()
                       for path in target.iterdir()}
        for kind in KINDS:
            if f'whole{kind}' not in outputs or f'whole{kind}' in noted:
                sys.exit(f'the undamaged {kind} does not pass')
        for i, (kind, damage, _) in enumerate(files):
            output = outputs.get(f'{i}{kind}')
            became = ('noticed' if output is None else 'noted' if f'{i}{kind}' in noted else
                      'same' if output == outputs[f'whole{kind}'] else 'other')
            self.counts[kind, damage][became] += 1

    def share(self, kind, damage, became):
        counts = self.counts[kind, damage]
        return 100 * counts[became] / max(sum(counts.values()), 1)

    def print(self):
        print('| kind | damage | tried | noticed | noted beside the output '
              '| passed, with another output |')
        print('|---|---|---|---|---|---|')
        for (kind, damage), counts in self.counts.items():
            shares = ' | '.join(f'{self.share(kind, damage, became):.1f} %'
                                for became in ('noticed', 'noted', 'other'))
            print(f'| `{kind}` | {damage}s | {sum(counts.values())} | {shares} |')

    def worse(self):
        return [f'{kind}: {self.share(kind, damage, "noticed"):.1f} % of the {damage}s are '
                f'noticed, not {least} %'
                for kind in KINDS for damage, least in zip(('flip', 'cut'), LEAST[kind])
                if self.share(kind, damage, 'noticed') < least]


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n')[0])
    parser.add_argument('program')
    parser.add_argument('--flips', type=int, default=2000)
    parser.add_argument('--cuts', type=int, default=2000)
    parser.add_argument('--seed', type=int, default=1)
    parser.add_argument('--least', action='store_true')
    parser.add_argument('--wrapper')
    arguments, rotate_options = parser.parse_known_args()
    wrapper = [arguments.wrapper] if arguments.wrapper else []
    table = Table([*wrapper, arguments.program, 'rotate', '--angle', '90', *rotate_options])
    random_source = random.Random(arguments.seed)
    drawn = []
    for kind in KINDS:
        size = len(sample(kind))
        flips = draw(arguments.flips, size * 8, random_source)
        cuts = draw(arguments.cuts, size, random_source)
        drawn.append([(kind, 'flip', bit) for bit in flips] + [(kind, 'cut', at) for at in cuts])
    for start in range(0, max(map(len, drawn)), BATCH):
        table.turn([file for files in drawn for file in files[start:start + BATCH]])
    table.print()
    worse = table.worse() if arguments.least else []
    for line in worse:
        print(line, file=sys.stderr)
    return 1 if worse else 0


if __name__ == '__main__':
    sys.exit(main())
