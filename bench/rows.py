"""The table of what is told: each row's figure, its goal and where it comes from."""
import dataclasses
import statistics
import typing

from experiments import (BINARY_KINDS, CABINET, CABINETS, COUNTS, DIALOG_CABINETS,
                         FURTHER_CABINETS, RAW_BYTES, SCREEN, SCREEN_PIXELS, TEXT_CABINETS,
                         WORD_KINDS, CabinetCores, Cabinets, Cores, Counts, Dialog, Faults, Look,
                         MapTurn, Screen, Sizes, Start, Syncs, Text)
from figures import Goal, Result, exponent, median_run, slope

PEAK_FACTOR, PEAK_SPARE_BYTES = 2.2, 64e6
LOOKED_AT = ('9fcoef', '9wcoef')
SCREEN_PEERS = {'9fcoef': 6, '9wcoef': 20, '3bcoef': 5}  # how many times faster than the script


@dataclasses.dataclass(frozen=True)
class Row:
    key: str
    what: str
    unit: str
    goal: typing.Optional[Goal]
    experiment: object
    steps: tuple  # those that the figure needs
    figure: typing.Callable  # of {step: median run}
    limit: typing.Optional[typing.Callable] = None  # as the figure
    limited_by: str = ''

    def result(self, runs, missing):
        """The row from its experiment's runs; without a figure where something is missing."""
        lacking = tuple(sorted({need for step in self.steps
                                for need in self.experiment.needs(step) & missing}))
        figure = limit = None
        if not lacking:
            medians = {step: median_run(runs[step]) for step in self.steps}
            figure = self.figure(medians)
            limit = self.limit and self.limit(medians)
        return Result(self.key, self.what, self.unit, self.goal, figure, lacking,
                      {step: runs[step] for step in self.steps if step in runs}, limit,
                      self.limited_by)


@dataclasses.dataclass(frozen=True)
class MeanRow:
    """What several rows of one name ("cabinets") come to together."""
    key: str
    what: str
    unit: str
    goal: Goal

    def result(self, results):
        parts = [result for result in results if result.key.startswith(self.key + '.')]
        missing = tuple(sorted({peer for result in parts for peer in result.missing}))
        figure = limit = None
        if not missing:
            figure = statistics.geometric_mean(part.figure for part in parts)
            if all(part.limit for part in parts):
                limit = statistics.geometric_mean(part.limit for part in parts)
        return Result(self.key, self.what, self.unit, self.goal, figure, missing, limit=limit,
                      limited_by=parts[0].limited_by)


def ratio(one, other):
    return lambda runs: runs[one].seconds / runs[other].seconds


def faults_a_cabinet(runs, kind):
    return (runs[f'all.{kind}'].faults - runs[f'few.{kind}'].faults) / FURTHER_CABINETS


def side(size):
    return f'{size[0]} × {size[1]}'


def cabinet_rows():
    for kind in RAW_BYTES:
        yield Row(f'cabinets.{kind}', f'{CABINETS} cabinets of {side(CABINET)} beside the script',
                  'times as fast', Goal('>=', 3), Cabinets(kind), Cabinets.steps,
                  ratio('script', 'command'),
                  lambda runs: runs['script'].seconds / (runs['copy'].seconds +
                                                         runs['calls'].seconds),
                  'cp, then the bare LZ4 calls, both on every core')


def screen_rows(kind):
    screen = Screen(kind)
    name = f'a screen of {side(SCREEN)}'
    if kind == '9fcoef':
        yield Row(f'screen-lz4.{kind}', f'{name} beside lz4 -d, then lz4 -1 of its body',
                  'of the time', Goal('<=', 0.75), screen, ('command', 'lz4'),
                  ratio('command', 'lz4'))
    yield Row(f'screen-copy.{kind}', f'{name} beside both files copied and the bare LZ4 calls',
              'of the time', Goal('<=', 1.5 if kind in BINARY_KINDS else 2.0), screen,
              ('command', 'copy', 'calls'),
              lambda runs: runs['command'].seconds / (runs['copy'].seconds + runs['calls'].seconds))
    if kind in SCREEN_PEERS:
        yield Row(f'screen-script.{kind}', f'{name} beside the script', 'times as fast',
                  Goal('>=', SCREEN_PEERS[kind]), screen, ('command', 'script', 'write'),
                  ratio('script', 'command'), ratio('script', 'write'),
                  'what only writes as many bytes')
    allowed = PEAK_FACTOR * SCREEN_PIXELS * RAW_BYTES[kind] + PEAK_SPARE_BYTES
    yield Row(f'peak.{kind}', f'peak memory of {name} beside {PEAK_FACTOR} × its body and 64 MB',
              'of that', Goal('<=', 1), screen, ('command',),
              lambda runs: runs['command'].peak_bytes / allowed)


def to_reading(step):
    """A step to its file read and the bare LZ4 calls."""
    return lambda runs: runs[step].seconds / (runs['read'].seconds + runs['calls'].seconds)


def look_rows(kind):
    look = Look(kind)
    name = f'a screen of {side(SCREEN)}'
    if kind in BINARY_KINDS:
        yield Row(f'info.{kind}', f'info of {name} beside lz4 -t of its body', 'of the time',
                  Goal('<=', 1.5), look, ('info', 'lz4'), ratio('info', 'lz4'))
    else:
        yield Row(f'info.{kind}', f'info of {name} beside its file read and the bare LZ4 calls',
                  'of the time', Goal('<=', 1.5), look, ('info', 'read', 'calls', 'digest'),
                  to_reading('info'), to_reading('digest'),
                  'MD5 of as many bytes as its words have')
    yield Row(f'preview.{kind}', f'preview of {name} beside its file loaded into a map', 'of the time',
              Goal('<=', 1.5), look, ('preview', 'load'), ratio('preview', 'load'))


def by_two_commands(runs):
    """How much more two commands do at once that share nothing."""
    return 2 * runs['one'].seconds / runs['apart'].seconds


def by_one_writer(runs):
    """No more than two commands gain, and no longer than one thread takes that only writes the file."""
    return min(by_two_commands(runs), runs['one'].seconds / runs['write'].seconds)


def core_rows():
    steps = ('one', 'two', 'apart')
    yield Row('cores.cabinets', f'{CABINETS} cabinets of {side(CABINET)}, two jobs beside one',
              'times as fast', Goal('>=', 1.8), CabinetCores(), steps,
              ratio('one', 'two'), by_two_commands, 'two commands that share nothing')
    yield Row('cores.screen', f'a screen of {side(SCREEN)}, two jobs beside one', 'times as fast',
              Goal('>=', 1.5), Cores(SCREEN, 1), (*steps, 'write'), ratio('one', 'two'),
              by_one_writer, 'two commands that share nothing, or one thread that only writes')


def sync_rows():
    yield Row('sync.cabinets', f'{CABINETS} cabinets of {side(CABINET)} that reach the disk beside '
              'those that nobody waits for', 'times as long', None, Syncs(), Syncs.steps,
              ratio('synced', 'unsynced'))


def turn_rows():
    turn = MapTurn()
    for angle in ('90', '180', '270'):
        yield Row(f'turn.{angle}', f'turn of a map by {angle}° beside memcpy', 'of the time',
                  Goal('<=', 1.25), turn, (angle, 'copy'), ratio(angle, 'copy'))


def growth_rows():
    yield Row('growth.size', 'exponent by which the time grows with a file\'s pixels', '',
              Goal('<=', 1.1), Sizes(), Sizes.steps,
              lambda runs: exponent(Sizes.pixels, [runs[step].seconds for step in Sizes.steps]))
    counts = Counts()
    yield Row('growth.count', f'exponent by which it grows with the files, up to {COUNTS[-1]}', '',
              Goal('<=', 1.1), counts, counts.steps,
              lambda runs: exponent(COUNTS, [runs[step].seconds for step in Counts.steps]))
    yield Row('growth.memory', 'memory for each further file', 'bytes', Goal('<=', 1024), counts,
              counts.steps,
              lambda runs: slope(COUNTS, [runs[step].peak_bytes for step in Counts.steps]))


def single_rows():
    yield Row('faults', 'page faults a cabinet after the first, of the kind with most', 'faults',
              Goal('<', 40), Faults(), Faults.steps,
              lambda runs: max(faults_a_cabinet(runs, kind) for kind in RAW_BYTES))
    yield Row('start', 'trevolt-cli --version as a process', 'ms', Goal('<', 15), Start(),
              ('start',), lambda runs: runs['start'].seconds * 1000)
    yield Row('text', f'a text cabinet of {side(CABINET)}, of {TEXT_CABINETS}', 'ms', None, Text(),
              ('command',), lambda runs: runs['command'].seconds * 1000 / TEXT_CABINETS)
    yield Row('dialog', f'a cabinet in the dialog\'s run over {DIALOG_CABINETS} of each kind', 'ms',
              None, Dialog(), ('run',), lambda runs: runs['run'].seconds * 1000 / Dialog.count)


MEAN_ROWS = (MeanRow('cabinets', 'the eight kinds together, as the geometric mean',
                     'times as fast', Goal('>=', 4)),)
ROWS = (*cabinet_rows(), *(row for kind in RAW_BYTES for row in screen_rows(kind)),
        *(row for kind in LOOKED_AT for row in look_rows(kind)),
        *core_rows(), *sync_rows(), *turn_rows(), *growth_rows(), *single_rows())


def chosen(names):
    """The rows that the names mean: a row's own name, or the part before its dot. All without
    names. A KeyError for a name that means none."""
    found = set()
    for name in names:
        keys = {row.key for row in ROWS if row.key == name or row.key.split('.')[0] == name}
        if not keys:
            raise KeyError(name)
        found |= keys
    return [row for row in ROWS if not names or row.key in found]


def mean_rows(rows):
    """The mean rows all of whose parts are among these."""
    keys = {row.key for row in rows}
    return [mean for mean in MEAN_ROWS
            if {row.key for row in ROWS if row.key.startswith(mean.key + '.')} <= keys]
