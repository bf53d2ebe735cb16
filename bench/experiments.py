"""What is measured side by side: each experiment has steps, which run by turns, round by round."""
import json
import math
import os

from figures import Run
from workplace import LZ4_PEER, MEMORY_FOLDER, PYTHON_PEER, SECOND_CORE, Failure, in_memory

BINARY_KINDS = {'9fcoef': 36, '3fcoef': 12, '9bcoef': 9, '3bcoef': 3}  # bytes of a pixel
WORD_KINDS = {'9wcoef': 18, '3wcoef': 6, '4wcoef': 8, '12wcoef': 24}
RAW_BYTES = BINARY_KINDS | WORD_KINDS
TEXT_KIND = 'cccoef'

# What bench/MeasuredPixel.h makes.
CONTENT = 'gains near 0.86 that drift slowly, crosstalk near 0.02, noise to the last bit of each'
CABINET = (128, 128)
CABINETS = 256
CABINETS_MEMORY = 512 << 20
SCREEN = (3840, 2160)
SCREEN_PIXELS = SCREEN[0] * SCREEN[1]
SCREEN_MEMORY = 2 << 30
CHECKED = (300, 140)  # more than one block in both directions, and no whole number of them
FEW_CABINETS = 64
FURTHER_CABINETS = CABINETS - FEW_CABINETS
TEXT_CABINETS = 32
DIALOG_CABINETS = 16  # of each kind
SIZES = ((960, 540), (1280, 720), (1920, 1080), (2560, 1440), (3840, 2160))
SMALL_CABINET = (16, 16)
COUNTS = (1250, 2500, 5000, 10000, 20000)
COMMON_KIND = '9fcoef'  # where one stands for all

ROUNDS = 5
ROUNDS_OF_LONG = 3
LONG_SECONDS = 1.5  # a first round above this is a long one
STARTS = 21


class Experiment:
    """`steps` names what can be measured; `peers` what a step needs besides the project; `memory` the
    bytes that a step takes at most, with what it leaves in the system's cache of files."""
    steps = ()
    peers = {}
    rounds = ROUNDS
    memory = CABINETS_MEMORY

    def needs(self, step):
        """What must be there for a step."""
        return {self.peers[step]} if step in self.peers else set()

    def prepare(self, place, steps):
        """Makes what the steps work on."""

    def run_step(self, place, step):
        raise NotImplementedError

    def measure(self, place, steps):
        """{step: runs} of these steps, side by side."""
        self.prepare(place, steps)
        place.memory = self.memory
        runs = {step: [] for step in steps}
        rounds = self.rounds
        done = 0
        while done < rounds:
            for step in steps:
                runs[step].append(self.run_step(place, step))
            done += 1
            if sum(step_runs[0].seconds for step_runs in runs.values()) > LONG_SECONDS:
                rounds = min(rounds, ROUNDS_OF_LONG)
        return runs


class InMemory(Experiment):
    """What works on many small files: each costs a disk more than the work on its content, and not
    the same twice, whoever writes it."""

    def needs(self, step):
        return super().needs(step) | {MEMORY_FOLDER}

    def measure(self, place, steps):
        with in_memory(place) as apart:
            return super().measure(apart, steps)


def check_script(place, kind):
    """The script does the command's work: its outputs hold the same pixels, and the command takes
    them for whole files and turns them back."""
    source = place.wall(*CHECKED, 2, kind)
    place.rotate(source, target='checked')
    place.peer_turn(source, target='checked-peer')
    place.check_same_pixels(place.folder / 'checked', place.folder / 'checked-peer')
    place.rotate(place.folder / 'checked-peer', target='checked-back', angle=270)
    place.check_same_pixels(source, place.folder / 'checked-back')


class Cabinets(InMemory):
    """A folder of cabinets: the command, the script, and the bare work, which is cp and the LZ4 calls
    of all files, both on every core."""
    steps = ('command', 'script', 'copy', 'calls')
    peers = {'script': PYTHON_PEER}

    def __init__(self, kind):
        self.kind = kind

    def prepare(self, place, steps):
        self.source = place.wall(*CABINET, CABINETS, self.kind)
        if 'script' in steps:
            check_script(place, self.kind)
        if 'calls' in steps:
            one = place.links('one', [min(self.source.iterdir())])
            place.rotate(one, target='kept')
            self.pair = [next(folder.iterdir()) for folder in (one, place.folder / 'kept')]

    def run_step(self, place, step):
        if step == 'calls':
            return Run(place.lz4_calls(*self.pair) * CABINETS / (os.cpu_count() or 1))
        ways = {'command': place.rotate, 'script': place.peer_turn, 'copy': place.copy_on_every_core}
        return ways[step](self.source)


class Screen(Experiment):
    """A screen of a kind: the whole command, the script, as many bytes written, both files copied, the
    LZ4 calls of both files alone, and the lz4 program on a binary file's body."""
    peers = {'script': PYTHON_PEER, 'lz4': LZ4_PEER}
    memory = SCREEN_MEMORY

    def __init__(self, kind):
        self.kind = kind
        self.steps = ('command', 'script', 'write', 'copy', 'calls')
        if kind in BINARY_KINDS:
            self.steps += ('lz4',)

    def prepare(self, place, steps):
        self.source = place.wall(*SCREEN, 1, self.kind)
        self.file, = self.source.iterdir()
        if 'script' in steps:
            check_script(place, self.kind)
        if 'copy' in steps or 'calls' in steps:
            place.rotate(self.source, target='kept')
            self.turned, = (place.folder / 'kept').iterdir()
        if 'lz4' in steps:
            self.body = place.lz4_body(self.file)
        os.sync()

    def run_step(self, place, step):
        return getattr(self, step)(place)

    def command(self, place):
        return place.rotate(self.source)

    def script(self, place):
        return place.peer_turn(self.source)

    def write(self, place):
        return place.write(self.file.stat().st_size)

    def copy(self, place):
        out = place.fresh('turned')
        return place.timed(['sh', '-c', 'cat "$1" >"$3" && cat "$2" >"$4"', 'sh', self.file,
                            self.turned, out / 'source', out / 'turned'])

    def calls(self, place):
        place.fresh('turned')
        return Run(place.lz4_calls(self.file, self.turned))

    def lz4(self, place):
        out = place.fresh('turned')
        return place.timed(['sh', '-c', 'lz4 -d -q "$1" "$2" && lz4 -1 -q "$2" "$3"', 'sh',
                            self.body, out / 'raw', out / 'again'])


class Look(Experiment):
    """What tells of a screen and shows it, and its map loaded. Of a binary file also its body read and
    decoded by the lz4 program; of a word file the file read, its LZ4 calls alone, and the sum that is
    told of its words, alone over as many bytes."""
    peers = {'lz4': LZ4_PEER}
    memory = SCREEN_MEMORY

    def __init__(self, kind):
        self.kind = kind
        self.steps = ('info', 'preview', 'load')
        self.steps += ('lz4',) if kind in BINARY_KINDS else ('read', 'calls', 'digest')

    def prepare(self, place, steps):
        self.file, = place.wall(*SCREEN, 1, self.kind).iterdir()
        if 'lz4' in steps:
            self.body = place.lz4_body(self.file)
        if 'digest' in steps:
            self.words = place.fresh('words') / 'words'
            self.words.write_bytes(bytes(SCREEN_PIXELS * WORD_KINDS[self.kind]))
        os.sync()

    def run_step(self, place, step):
        return getattr(self, step)(place)

    def info(self, place):
        return place.timed([place.command, 'info', self.file])

    def preview(self, place):
        picture = place.fresh('picture') / 'screen.png'
        run = place.timed([place.command, 'preview', '--no-sync', self.file, picture])
        if not picture.exists():
            raise Failure('no picture was written')
        return run

    def read(self, place):
        return place.timed(['sh', '-c', 'cat "$1" >/dev/null', 'sh', self.file])

    def calls(self, place):
        return Run(place.lz4_calls(self.file))

    def load(self, place):
        return place.timed([place.programs / 'load-map', self.file])

    def lz4(self, place):
        return place.timed(['lz4', '-t', '-q', self.body])

    def digest(self, place):
        return place.timed(['md5sum', self.words])


class Cores(Experiment):
    """One job, two, two commands of one job that work at the same time and share nothing: more than
    these gain, the machine has not got. And the files' bytes written by one thread."""
    steps = ('one', 'two', 'apart', 'write')
    peers = {'two': SECOND_CORE, 'apart': SECOND_CORE}
    rounds = 9  # what else the host does reaches the second core first

    def __init__(self, size, count):
        self.wall = (*size, count)
        self.memory = SCREEN_MEMORY if count == 1 else CABINETS_MEMORY

    def prepare(self, place, steps):
        self.source = place.wall(*self.wall, COMMON_KIND)

    def run_step(self, place, step):
        os.sync()  # else the system writes earlier outputs to the disk on a core that is measured
        if step == 'apart':
            return place.rotate_twice_at_once(self.source)
        if step == 'write':
            return place.write(sum(file.stat().st_size for file in self.source.iterdir()))
        return place.rotate(self.source, '--jobs', '1' if step == 'one' else '2')


class CabinetCores(InMemory, Cores):
    """The same of many small files."""
    rounds = 21  # each is short, and the least that the host does shows

    def __init__(self):
        super().__init__(CABINET, CABINETS)


class Syncs(Experiment):
    """Cabinets that reach the disk before they are told, and those that nobody waits for."""
    steps = ('synced', 'unsynced')

    def prepare(self, place, steps):
        self.source = place.wall(*CABINET, CABINETS, COMMON_KIND)

    def run_step(self, place, step):
        os.sync()  # the disk is to have nothing to do but this
        return place.rotate(self.source, sync=step == 'synced')


class Faults(Experiment):
    """The command on some cabinets and on more of them, of each kind."""
    steps = tuple(f'{step}.{kind}' for kind in RAW_BYTES for step in ('few', 'all'))
    rounds = 1  # faults do not vary as times do

    def prepare(self, place, steps):
        self.sources = {}
        for kind in RAW_BYTES:
            cabinets = place.wall(*CABINET, CABINETS, kind)
            self.sources[f'all.{kind}'] = cabinets
            self.sources[f'few.{kind}'] = place.links(f'few.{kind}',
                                                      sorted(cabinets.iterdir())[:FEW_CABINETS])

    def run_step(self, place, step):
        return place.rotate(self.sources[step])


class MapTurn(Experiment):
    """The turn in memory, by a program that measures itself."""
    steps = ('copy', '90', '180', '270')
    names = {'CopyIntoFreshMemory': 'copy', 'Turn/1': '90', 'Turn/2': '180', 'Turn/3': '270'}

    def measure(self, place, steps):
        report = place.fresh('report') / 'turn.json'
        place.check_output([place.programs / 'rotation-bench', f'--benchmark_out={report}',
                            '--benchmark_out_format=json', '--benchmark_min_time=0.1',
                            '--benchmark_filter=^(CopyIntoFreshMemory|Turn)',
                            '--benchmark_enable_random_interleaving=true'])
        runs = {step: [] for step in steps}
        for run in json.loads(report.read_text(encoding='utf-8'))['benchmarks']:
            step = self.names[run['run_name'].split('/repeats:')[0]]
            if run['run_type'] == 'iteration' and step in runs:
                runs[step].append(Run(run['real_time'] / 1000))
        return runs


class Start(Experiment):
    steps = ('start',)
    rounds = STARTS

    def run_step(self, place, step):
        return place.timed([place.command, '--version'])


class Sizes(Experiment):
    steps = tuple(f'{width}x{height}' for width, height in SIZES)
    pixels = [width * height for width, height in SIZES]
    memory = SCREEN_MEMORY

    def prepare(self, place, steps):
        self.sources = {f'{width}x{height}': place.wall(width, height, 1, COMMON_KIND)
                        for width, height in SIZES}

    def run_step(self, place, step):
        return place.rotate(self.sources[step])


class Counts(InMemory):
    """Small cabinets of all nine kinds in one folder."""
    steps = tuple(map(str, COUNTS))
    rounds = ROUNDS_OF_LONG

    def prepare(self, place, steps):
        kinds = [*RAW_BYTES, TEXT_KIND]
        each = math.ceil(max(COUNTS) / len(kinds))
        files = sorted((file for kind in kinds
                        for file in place.wall(*SMALL_CABINET, each, kind).iterdir()),
                       key=lambda file: file.name)
        self.sources = {step: place.links(f'count.{step}', files[:int(step)]) for step in steps}

    def run_step(self, place, step):
        return place.rotate(self.sources[step])


class Text(Experiment):
    steps = ('command',)

    def prepare(self, place, steps):
        self.source = place.wall(*CABINET, TEXT_CABINETS, TEXT_KIND)

    def run_step(self, place, step):
        return place.rotate(self.source)


class Dialog(Experiment):
    """The dialog's run over cabinets of all nine kinds."""
    steps = ('run',)
    count = DIALOG_CABINETS * (len(RAW_BYTES) + 1)

    def prepare(self, place, steps):
        self.source = place.links('dialog', [
            file for kind in [*RAW_BYTES, TEXT_KIND]
            for file in place.wall(*CABINET, DIALOG_CABINETS, kind).iterdir()])

    def run_step(self, place, step):
        return place.timed_turn([place.programs / 'dialog-run'], self.source, 'turned',
                                *map(str, CABINET))
