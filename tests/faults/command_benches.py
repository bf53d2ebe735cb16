"""Benches for the commands that look inside coefficient files and put them together, and for the report of a
turn. What such a command tells when it ends well is what it tells without a fault, and what it has given
its name is told whatever fails behind that."""
import hashlib
import json
import re
import struct
import zlib

from fault_bench import FILE_LINE, NAME_MAY_BE_LOST, SAMPLES, Bench, Wrong

FLOATS, TEXT, WORDS = (SAMPLES / name for name in
                       ('Cab_01.9fcoef', 'Cab_05.cccoef', 'Cab_06.9wcoef'))
READS = ('alloc', 'open', 'read', 'end', 'short-read', 'seek')
WRITES = ('write', 'short-write', 'close', 'sync', 'rename')
# A message that names no cause: it counts failures, which have theirs.
NO_CAUSE = re.compile(r'^trevolt-cli: nothing is written: ')
DIGEST_NOTE = 'its digest is not told: '


class CommandBench(Bench):
    """A command that ends with one message or more where something fails."""
    failures = (1, 2)  # its exit statuses where something failed

    def __init__(self, program, preload, place, paths, words):
        """`words` are those of the command, which `{source}`, `{target}` and `{place}` stand in."""
        self.words = [word.format(source=place / 'source', target=place / 'target', place=place)
                      for word in words]
        super().__init__(program, preload, place, paths)

    def arguments(self, jobs):
        return self.words

    def named(self, done):
        """The outputs that are told as done."""
        return {name.removeprefix(f'{self.target}/') for _, name in FILE_LINE.findall(done.stdout)}

    def causes(self, done):
        return [line for line in done.stderr.splitlines() if not NO_CAUSE.match(line)]

    def check_told(self, done):
        standing = names_in(self.target)
        if done.returncode == self.well:
            if done.stdout != self.told:
                raise Wrong('it tells something else than without a fault')
            if standing != self.outputs.keys():
                raise Wrong('an output is missing and nothing failed')
            return
        if done.returncode not in self.failures or not self.causes(done):
            raise Wrong('it ends without a message')
        named = self.named(done)
        if not named <= standing:
            raise Wrong(f'{named - standing} is told and not there')
        if len(standing - named) != self.lost_names(done):
            raise Wrong(f'{standing - named} is there and not told')


class SingleBench(CommandBench):
    """A command with one output, which one line tells of."""

    def __init__(self, program, preload, place, paths, words, closing):
        self.closing = re.compile(closing, re.MULTILINE)
        super().__init__(program, preload, place, paths, words)

    def fewest_outputs(self):
        return 1

    def named(self, done):
        is_told = self.closing.search(done.stdout + done.stderr)
        return set(self.outputs) if is_told else set()


class Pictures:
    """A picture may lack the files that failed."""

    def is_output(self, name, content):
        return super().is_output(name, content) or is_whole_png(content)


class PictureBench(Pictures, SingleBench):
    pass


class Differing:
    """Of files that differ."""
    well = 1
    failures = (2,)


class DiffBench(Differing, SingleBench):
    pass


class InfoBench(CommandBench):
    """Nothing is written; what is wrong with a file stands among what is told of it."""

    def fewest_outputs(self):
        return 0

    def check_told(self, done):
        if done.returncode == self.well and DIGEST_NOTE in done.stdout:
            return
        super().check_told(done)

    def causes(self, done):
        return super().causes(done) + re.findall(r'^  problem +(.*)$', done.stdout, re.MULTILINE)


class Objects:
    """What is told for programs: every line is an object."""

    def objects(self, done):
        return [json.loads(line) for line in done.stdout.splitlines()]

    def named(self, done):
        return {told['output'].removeprefix(f'{self.target}/') for told in self.objects(done)
                if told.get('output') and told.get('status') != 'failed'}

    def causes(self, done):
        return CommandBench.causes(self, done) + [
            cause for told in self.objects(done) for key in ('problems', 'errors')
            for cause in told.get(key, [])]


class JsonBench(Objects, CommandBench):
    """A command with outputs, as programs are told of them."""

    def fewest_outputs(self):
        return 1


class JsonInfoBench(Objects, InfoBench):
    pass


class JsonPictureBench(Pictures, JsonBench):
    pass


class JsonDiffBench(Differing, JsonBench):
    """The picture stands where it is told that the files differ."""

    def named(self, done):
        is_told = any(told.get('status') == 'different' for told in self.objects(done))
        return set(self.outputs) if is_told else set()


class VerifyBench(CommandBench):
    """A manifest of the source's files."""

    def __init__(self, program, preload, place, paths):
        place.mkdir(parents=True)
        (place / 'manifest').write_text(''.join(
            f'{hashlib.sha256(path.read_bytes()).hexdigest()}  {place / "source" / path.name}\n'
            for path in paths), encoding='utf-8')
        super().__init__(program, preload, place, paths, ['verify', '{place}/manifest'])

    def fewest_outputs(self):
        return 0

    def causes(self, done):
        return super().causes(done) + re.findall(r': FAILED: (.*)$', done.stdout, re.MULTILINE)


class ReportBench(Bench):
    """A turn with a report, which has sums too and stands in a folder of its own."""

    def __init__(self, program, preload, place, paths):
        self.report = place / 'report' / 'report.html'
        super().__init__(program, preload, place, paths)

    def arguments(self, jobs):
        return [*super().arguments(jobs), '--report', self.report]

    def clear(self):
        super().clear()
        self.report.parent.mkdir(exist_ok=True)
        for path in self.report.parent.iterdir():
            path.unlink()

    def is_refused(self, done):
        return f'trevolt-cli: the report {self.report}: ' in done.stderr

    def lost_names(self, done):
        return super().lost_names(done) - done.stderr.count(f'{self.report}{NAME_MAY_BE_LOST}')

    def check_told(self, done):
        super().check_told(done)
        standing = names_in(self.report.parent)
        if not standing <= {self.report.name}:
            raise Wrong(f'{standing} stand beside the report')
        if not standing:
            if done.returncode == 0:
                raise Wrong('there is no report')
            return
        page = self.report.read_text(encoding='utf-8')
        if not page.startswith('<!DOCTYPE html>') or not page.endswith('</html>\n'):
            raise Wrong('the report is not whole')
        for source, _ in FILE_LINE.findall(done.stdout):
            if source not in page:
                raise Wrong(f'the report lacks {source}')

    def check_status(self, done, failed):
        super().check_status(done, failed or self.is_refused(done))


def names_in(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob('*') if path.is_file()}


def is_whole_png(content):
    """Whether every piece has its sum, the pixels unpack to their number, and the end is there."""
    pieces, at = [], 8
    while at + 12 <= len(content):
        length, = struct.unpack_from('>I', content, at)
        body = content[at + 4:at + 8 + length]
        if content[at + 8 + length:at + 12 + length] != struct.pack('>I', zlib.crc32(body)):
            return False
        pieces.append(body)
        at += 12 + length
    if at != len(content) or not pieces or pieces[-1] != b'IEND':
        return False
    width, height = struct.unpack_from('>II', pieces[0], 4)
    packed = b''.join(piece[4:] for piece in pieces if piece.startswith(b'IDAT'))
    return len(zlib.decompress(packed)) == height * (1 + 3 * width)


def make_moved(path):
    """A word file of one block at an origin, which a line tells as lost."""
    content = bytearray(WORDS.read_bytes())
    x, y = 1024, 768
    struct.pack_into('<II', content, 20, x, y)
    struct.pack_into('<III', content, 168, y // 128 * 512 + x // 256, x, y)
    path.write_bytes(content)
    return path


def make_long(path):
    """A cabinet with a name that makes every line long that tells of it."""
    path.write_bytes(FLOATS.read_bytes())
    return path


def make_layout(place, moved, width):
    """Two cabinets that stand side by side, the first so wide: one in a folder of its own."""
    place.mkdir(parents=True)
    (place / 'layout.csv').write_text(f'a.9wcoef,0,0\nb/b.cccoef,{width},0,180\n', encoding='ascii')
    (place / 'from' / 'b').mkdir(parents=True)
    (place / 'from' / 'a.9wcoef').write_bytes(moved.read_bytes())
    (place / 'from' / 'b' / 'b.cccoef').write_bytes(TEXT.read_bytes())


def benches_of_commands(program, preload, place):
    """A name, a bench, and the calls that fail."""
    def bench(kind, name, *arguments):
        return kind(program, preload, place / name, *arguments)

    both = [*READS, *WRITES]
    moved = make_moved(place / 'moved.9wcoef')
    yield 'convert', bench(CommandBench, 'convert', [FLOATS, TEXT, moved],
                           ['convert', '--overwrite', '--to', '9bcoef', '{source}',
                            '{target}']), [*both, 'list']
    yield 'convert to an array', bench(
        CommandBench, 'array', [moved],
        ['convert', '--overwrite', '--own', f'{{source}}/{moved.name}',
         '{target}/words.npy']), both
    for name, width in (('compose', 40), ('layout', 20)):
        make_layout(place / name, moved, width)
    yield 'compose', bench(
        SingleBench, 'compose', [moved],
        ['compose', '--overwrite', '{target}/screen.9wcoef', '--layout', '{place}/layout.csv',
         '--from', '{place}/from'], r'^2 files put into \S+screen'), both
    yield 'crop', bench(
        CommandBench, 'crop', [moved],
        ['crop', '--overwrite', f'{{source}}/{moved.name}', '{target}/piece.9bcoef', '--rect',
         '10,5,40,20', '--turn', '90']), both
    yield 'crop by a layout', bench(
        CommandBench, 'layout', [moved],
        ['crop', '--overwrite', f'{{source}}/{moved.name}', '{target}', '--layout',
         '{place}/layout.csv', '--cabinet', '20x24']), both
    yield 'preview', bench(
        PictureBench, 'preview', [FLOATS, TEXT, WORDS],
        ['preview', '--overwrite', '--width', '400', '{source}', '{target}/p.png'],
        r'p\.png: \d+ x \d+ pixels, '), [*both, 'list']
    yield 'preview of one file', bench(
        PictureBench, 'single', [WORDS],
        ['preview', '--overwrite', '--width', '400', '--turned', '90', '{source}',
         '{target}/p.png'], r'p\.png: \d+ x \d+ pixels, '), both
    yield 'diff', bench(
        DiffBench, 'diff', [FLOATS, TEXT],
        ['diff', '--overwrite', f'{{source}}/{FLOATS.name}', f'{{source}}/{TEXT.name}', '--image',
         '{target}/d.png'], r'^\S+ and \S+ differ: '), both
    yield 'info', bench(InfoBench, 'info', [FLOATS, TEXT, WORDS], ['info', '{source}']), [
        *READS, 'list']
    yield 'info for programs', bench(JsonInfoBench, 'json', [WORDS], ['info', '--json', '{source}']), [
        *READS, 'list']
    yield 'verify', bench(VerifyBench, 'verify', [FLOATS, TEXT]), READS
    yield 'a report', bench(ReportBench, 'reported', [FLOATS, TEXT]), [*both, 'list']


def benches_of_telling(program, preload, place):
    """What has its name is told where no memory is left, also in long lines and for programs: a name and
    a bench."""
    place.mkdir()
    moved = make_moved(place / 'moved.9wcoef')
    make_layout(place / 'compose', moved, 40)
    make_layout(place / 'crop', moved, 20)
    long = make_long(place / ('Cab_' + 'x' * 230 + '.9fcoef'))
    rotate = ['rotate', '--angle', '90', '--overwrite', '--jobs', '1', '{source}', '{target}']
    one = f'{{source}}/{moved.name}'
    yield 'a long name', CommandBench(program, preload, place / 'long', [long], rotate)
    for kind, paths, words in (
            (JsonBench, [long, moved], rotate),
            (JsonBench, [long, moved],
             ['convert', '--overwrite', '--to', 'npy', '{source}', '{target}']),
            (JsonBench, [moved],
             ['compose', '--overwrite', '{target}/screen.9wcoef', '--layout',
              '{place}/layout.csv', '--from', '{place}/from']),
            (JsonBench, [moved],
             ['crop', '--overwrite', one, '{target}', '--layout', '{place}/layout.csv', '--cabinet',
              '20x24']),
            (JsonPictureBench, [moved],
             ['preview', '--overwrite', '--width', '400', '{source}', '{target}/p.png']),
            (JsonDiffBench, [FLOATS, moved],
             ['diff', '--overwrite', f'{{source}}/{FLOATS.name}', one, '--image',
              '{target}/d.png'])):
        yield (f'{words[0]} for programs',
               kind(program, preload, place / words[0], paths, [*words, '--json']))
