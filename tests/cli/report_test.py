"""The page of rotate --report, as a browser would read it; cli_test.py runs these."""
import base64
import collections
import hashlib
import html.parser
import os
import re
import resource
import shutil
import struct
import subprocess
import zlib

import cli_support
from cli_support import PROGRAM, SAMPLES, CliTest, coef_file, posix_only

VOID = {'meta', 'link', 'img', 'br'}
# Elements whose address a browser fetches.
ADDRESSES = {'src', 'href', 'srcset', 'action', 'data', 'poster', 'background', 'cite'}


class Element:
    def __init__(self, tag, attributes, parent):
        self.tag, self.attributes, self.parent = tag, attributes, parent
        self.children = []

    def all(self, tag=None, **attributes):
        """The elements below this one in their order."""
        found = []
        for child in self.children:
            if isinstance(child, Element):
                if tag in (None, child.tag) and all(child.attributes.get(key.rstrip('_')) == value
                                                    for key, value in attributes.items()):
                    found.append(child)
                found += child.all(tag, **attributes)
        return found

    def one(self, tag=None, **attributes):
        found = self.all(tag, **attributes)
        assert len(found) == 1, (tag, attributes, len(found))
        return found[0]

    def text(self):
        return ''.join(child if isinstance(child, str) else child.text() for child in self.children)


class Page(html.parser.HTMLParser):
    """A page as a tree. Anything that is not well nested fails."""

    def __init__(self, path):
        super().__init__(convert_charrefs=True)
        self.bytes = path.read_bytes()
        self.root = self.open = Element('', {}, None)
        self.feed(self.bytes.decode('utf-8'))
        self.close()
        assert self.open is self.root, f'<{self.open.tag}> is not closed'

    def handle_starttag(self, tag, attributes):
        assert len(dict(attributes)) == len(attributes), f'<{tag}> has an attribute twice'
        element = Element(tag, dict(attributes), self.open)
        self.open.children.append(element)
        if tag not in VOID:
            self.open = element

    def handle_startendtag(self, tag, attributes):
        raise AssertionError(f'<{tag}/>')

    def handle_endtag(self, tag):
        assert tag == self.open.tag, f'</{tag}> ends <{self.open.tag}>'
        self.open = self.open.parent

    def handle_data(self, data):
        self.open.children.append(data)

    def rows(self):
        """Each row of a file: its texts by column, and the row itself."""
        rows = []
        for table in self.root.all('table'):
            titles = [cell.text() for cell in table.one('thead').all('th')]
            for row in table.one('tbody').all('tr'):
                cells = [child for child in row.children if isinstance(child, Element)]
                assert len(cells) == len(titles), row.attributes
                rows.append(dict(zip(titles, (cell.text() for cell in cells))) | {'row': row})
        return rows

    def names(self):
        return [one['row'].one('bdi', class_='name').text() for one in self.rows()]

    def states(self):
        return [one['row'].one('td', class_='state').all('span')[0].text() for one in self.rows()]

    def counts(self):
        tiles = self.root.one('dl', class_='counts').all('div')
        return {tile.one('dt').text(): int(tile.one('dd').text()) for tile in tiles}

    def facts(self):
        facts = self.root.one('dl', class_='facts').all('div')
        return {fact.one('dt').text(): fact.one('dd').text() for fact in facts}


def picture(address):
    """Width and height of a PNG in a data: address, and its rows of colours."""
    assert address.startswith('data:image/png;base64,'), address[:40]
    content = base64.b64decode(address.partition(',')[2], validate=True)
    assert content[:8] == b'\x89PNG\r\n\x1a\n'
    chunks, at = collections.defaultdict(bytes), 8
    while at < len(content):
        length, = struct.unpack_from('>I', content, at)
        kind, body = content[at + 4:at + 8], content[at + 8:at + 8 + length]
        assert zlib.crc32(kind + body) == struct.unpack_from('>I', content, at + 8 + length)[0]
        chunks[kind] += body
        at += 12 + length
    width, height, depth, colour = struct.unpack_from('>IIBB', chunks[b'IHDR'])
    assert (depth, colour) == (8, 2)
    lines = zlib.decompress(chunks[b'IDAT'])
    assert len(lines) == height * (1 + 3 * width), (len(lines), width, height)
    return width, height, unfiltered(lines, width, height)


def unfiltered(lines, width, height):
    rows, above = [], bytearray(3 * width)
    for y in range(height):
        kind, row = lines[y * (3 * width + 1)], bytearray(lines[y * (3 * width + 1) + 1:][:3 * width])
        for i in range(3 * width):
            left, corner = (row[i - 3], above[i - 3]) if i >= 3 else (0, 0)
            nearest = min((left, above[i], corner), key=lambda v: abs(left + above[i] - corner - v))
            row[i] = row[i] + (0, left, above[i], (left + above[i]) // 2, nearest)[kind] & 0xFF
        rows.append([tuple(row[3 * x:3 * x + 3]) for x in range(width)])
        above = row
    return rows


class Report(CliTest):
    def setUp(self):
        super().setUp()
        self.page = self.folder / 'run.html'

    def report(self, status, *flags, **options):
        """The page of a run that ends with a status, its outputs checked for what every page has."""
        result = self.rotate('--report', self.page, *flags, **options)
        self.expect(result, status)
        return self.checked()

    def checked(self):
        page = Page(self.page)
        self.check_nothing_is_fetched(page)
        self.check_names_of_parts(page)
        for image in page.root.all('img'):
            self.assertRegex(image.attributes['alt'], r'\S.* (before|after) the turn: brightness \S')
            self.assertEqual(image.attributes['loading'], 'lazy')
            self.assertEqual(image.attributes['decoding'], 'async')
            width, height, _ = picture(image.attributes['src'])
            for side, shown in ((width, 'width'), (height, 'height')):
                self.assertEqual(int(image.attributes[shown]) % side, 0)
                self.assertLessEqual(int(image.attributes[shown]), 128)
        left = [p.name for p in self.folder.iterdir() if p.name.startswith('.')]
        self.assertEqual(left, [], 'files under work')
        return page

    def check_nothing_is_fetched(self, page):
        self.assertEqual(page.root.all('script'), [])
        for element in page.root.all():
            for key, value in element.attributes.items():
                self.assertNotIn('on', key[:2], element.attributes)
                if key in ADDRESSES:
                    self.assertRegex(value, r'^(data:|#)')
        rest = re.sub(r'base64,[A-Za-z0-9+/=]*', '', page.bytes.decode('utf-8'))
        self.assertNotRegex(rest, r'(?i)https?:|[\'"]//|@import|url\(')
        policy = page.root.one('meta', **{'http-equiv': 'Content-Security-Policy'})
        self.assertIn("default-src 'none'", policy.attributes['content'])

    def check_names_of_parts(self, page):
        root = page.root
        self.assertTrue(page.bytes.startswith(b'<!DOCTYPE html>\n'))
        self.assertEqual(root.one('html').attributes['lang'], 'en')
        self.assertEqual(root.one('title').text(), root.one('h1').text())
        for landmark in ('header', 'main', 'footer'):
            root.one(landmark)
        ids = [e.attributes['id'] for e in root.all() if 'id' in e.attributes]
        self.assertEqual(len(ids), len(set(ids)))
        for link in root.all('a'):
            self.assertIn(link.attributes['href'][1:], ids)
        self.assertEqual(root.one('body').all('a')[0].attributes['class'], 'skip')
        for section in root.all('section'):
            self.assertIn(section.attributes['aria-labelledby'], ids)
        for navigation in root.all('nav'):
            self.assertTrue(navigation.attributes['aria-label'])
        for table in root.all('table'):
            self.assertRegex(table.one('caption').text(), r'^\d+ files? ')
            for cell in table.all('th'):
                self.assertIn(cell.attributes['scope'], ('row', 'col'))
            for row in table.all('tr'):
                cells = [c for c in row.children if isinstance(c, Element)]
                self.assertTrue(all('role' in cell.attributes for cell in [row, *cells]))

    def sums(self, row):
        """The sums in a row by what they are of."""
        list_ = row['row'].one('td', class_='sums').all('dl')
        if not list_:
            return {}
        return dict(zip((e.text() for e in list_[0].all('dt')), (e.text() for e in list_[0].all('dd'))))

    def test_a_run_that_goes_well(self):
        for name, size in (('a.9fcoef', (5, 3)), ('b.3bcoef', (160, 90))):
            self.add(name, *size)
        (self.source / 'notes.txt').write_text('x')
        page = self.report(0, '--verify', '--size', '160x90', '-j', '1')
        self.assertEqual(page.root.one('h1').text(), 'Turn of 2 files')
        self.assertEqual(page.root.one('p', class_='verdict good').text(), 'All files are done.')
        self.assertEqual(page.counts(), {'written': 2, 'failed': 0, 'passed over': 1})
        self.assertEqual(page.names(), ['a.9fcoef', 'b.3bcoef'])
        self.assertEqual(page.states(), ['turned', 'turned'])
        facts = page.facts()
        self.assertRegex(facts.pop('Started'), r'^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d UTC$')
        self.assertRegex(facts.pop('Took'), r'^\d')
        self.assertRegex(facts.pop('Program'), r'^trevolt-cli \d+\.\d+\.\d+$')
        self.assertEqual(facts, {
            'Sources': str(self.source), 'Target': str(self.target), 'Turn': '90° clockwise',
            'Existing outputs': 'kept, and their files fail', 'Size': '160 × 90 for every map',
            'Outputs': 'read back from the disk and compared', 'Threads': '1 at most'})
        first, second = page.rows()
        self.assertRegex(first['Before'], '^5 × 3')
        self.assertRegex(first['After'], '^90 × 160')
        self.assertEqual(first['Turn'], '90°')
        self.assertRegex(first['Finished, UTC'], r'^\d\d:\d\d:\d\dtook \d')
        self.assertIn('its own size is 5 x 3, it was turned at 160 x 90', first['Status'])
        self.assertIn('to b-90°.3bcoef', second['File'])
        for row, name in ((first, 'a{}.9fcoef'), (second, 'b{}.3bcoef')):
            self.assertEqual(self.sums(row), {
                'source': hashlib.sha256((self.source / name.format('')).read_bytes()).hexdigest(),
                'output': hashlib.sha256((self.target / name.format('-90°')).read_bytes()).hexdigest()})
        self.assertIn('notes.txt: no coefficient file by its name',
                      [item.text() for item in page.root.one('ul', class_='passed').all('li')])

    def test_pictures_are_turned_as_their_maps(self):
        raw = bytes(255 if (x, y) == (1, 0) else 0 for y in range(3) for x in range(4) for _ in range(3))
        (self.source / 'a.3bcoef').write_bytes(coef_file('.3bcoef', 4, 3, raw))
        row, = self.report(0).rows()
        before, after = (image.attributes for image in row['row'].all('img'))
        self.assertEqual((before['width'], before['height']), ('128', '96'))
        self.assertEqual((after['width'], after['height']), ('96', '128'))
        self.assertEqual(before['alt'], 'a.3bcoef before the turn: brightness 0 to 1')
        self.assertEqual(after['alt'], 'a.3bcoef after the turn: brightness 0 to 1')
        width, height, colours = picture(before['src'])
        self.assertEqual((width, height), (4, 3))
        dark, light = colours[0][0], colours[0][1]
        self.assertLess(sum(dark), sum(light))
        self.assertEqual(colours, [[light if (x, y) == (1, 0) else dark for x in range(4)] for y in range(3)])
        width, height, colours = picture(after['src'])
        self.assertEqual((width, height), (3, 4))
        self.assertEqual(colours, [[light if (x, y) == (2, 1) else dark for x in range(3)] for y in range(4)])

    def test_every_kind_has_pictures_of_its_maps(self):
        for cabinet in (SAMPLES / 'cabinet').iterdir():
            if cabinet.suffix != '.csv':
                shutil.copy(cabinet, self.source)
        page = self.report(0)
        self.assertEqual(len(page.rows()), len(list(self.source.iterdir())))
        for row in page.rows():
            before, after = (picture(image.attributes['src'])[:2] for image in row['row'].all('img'))
            self.assertEqual(before, after[::-1])

    def test_what_failed_stands_first(self):
        for name in 'abc':
            self.add(f'{name}.3bcoef')
        shutil.copy(SAMPLES / 'awkward' / 'cut_short.9fcoef', self.source / 'd.9fcoef')
        (self.source / 'e.3bcoef').write_bytes(b'damaged')
        page = self.report(1)
        self.assertEqual(page.root.one('title').text(), 'Turn of 5 files: 2 failed')
        self.assertEqual(page.root.one('p', class_='verdict bad').text(), '2 of 5 files failed.')
        self.assertEqual(page.names(), ['d.9fcoef', 'e.3bcoef', 'a.3bcoef', 'b.3bcoef', 'c.3bcoef'])
        self.assertEqual(page.states(), ['failed'] * 2 + ['turned'] * 3)
        self.assertEqual([table.one('caption').text() for table in page.root.all('table')],
                         ['2 files that failed, in the order of the run',
                          '3 files without a failure, in the order of the run'])
        jump = page.root.one('nav', **{'aria-label': 'Failed files'})
        self.assertEqual([link.attributes['href'] for link in jump.all('a')], ['#f4', '#f5'])
        self.assertIn('e.3bcoef: cannot be read: E_COEF_BADFORMAT', jump.text())
        damaged, unread = page.rows()[:2]
        self.assertEqual(damaged['row'].all('img'), [], 'of defaults alone')
        self.assertRegex(damaged['Before'], r'^\d+ × \d+\s*not read$')
        self.assertEqual(damaged['After'], '–')
        self.assertEqual(list(self.sums(damaged)), ['source'])
        self.assertEqual((unread['Before'], unread['After']), ('–', '–'))
        self.assertEqual(page.counts(), {'written': 3, 'failed': 2})

    def test_a_run_in_which_nothing_could_be_turned(self):
        (self.source / 'a.3bcoef').write_bytes(b'damaged')
        page = self.report(1)
        self.assertEqual(page.counts(), {'written': 0, 'failed': 1})
        self.assertEqual(len(page.root.all('table')), 1)

    def test_a_damaged_file_that_is_written(self):
        shutil.copy(SAMPLES / 'awkward' / 'cut_short.9fcoef', self.source)
        page = self.report(1, '--lenient')
        self.assertEqual(page.states(), ['failed, yet written'])
        row, = page.rows()
        self.assertEqual([image.attributes['alt'].partition(':')[0] for image in row['row'].all('img')],
                         ['cut_short.9fcoef after the turn'])
        self.assertIn('not read', row['Before'])
        self.assertEqual(page.facts()['Damaged files'], 'written from what could be read of them')

    def test_files_that_are_skipped_and_copied(self):
        for name in 'ab':
            self.add(f'{name}.3bcoef')
        (self.target / 'a-90°.3bcoef').write_bytes(b'earlier')
        page = self.report(0, '--skip-existing')
        self.assertEqual(page.states(), ['skipped', 'turned'])
        self.assertEqual(page.rows()[0]['row'].all('img'), [])
        self.assertEqual(page.counts(), {'written': 1, 'failed': 0, 'skipped': 1})
        table = self.folder / 'angles.csv'
        table.write_text('a.3bcoef,0\nb.3bcoef,180\n')
        self.expect(self.run_cli('rotate', '--angles', table, '--overwrite', '--report', self.page,
                                 self.source, self.target), 0, err=[])
        page = self.checked()
        self.assertEqual(page.states(), ['copied', 'turned'])
        self.assertEqual([row['Turn'] for row in page.rows()], ['none', '180°'])
        self.assertEqual(page.facts()['Turn'], 'each file by its own, from a table of 2 rows')

    @posix_only
    def test_names_of_all_sorts(self):
        names = ['<script>alert(1)<', "a&amp;b'c\"d", 'x --> y', 'line\nend', '\x1b[2J\u202eback',
                 '  two  blanks ', '箱体 90°', '</td></table>'.replace('/', '∕')]
        for name in names:
            self.add(f'{name}.3bcoef')
        shutil.copy(self.source / 'line\nend.3bcoef', os.fsencode(self.source) + b'/x\xff.3bcoef')
        (self.source / '<i>.txt').write_text('x')
        page = self.report(1)
        shown = {name.replace('\n', '\\x0A').replace('\x1b', '\\x1B').replace('\u202e', '\\u202E')
                 + '.3bcoef' for name in names} | {'x\\xFF.3bcoef'}
        self.assertEqual(set(page.names()), shown)
        self.assertEqual({image.attributes['alt'].split(' before')[0].split(' after')[0]
                          for image in page.root.all('img')}, shown - {'x\\xFF.3bcoef'})
        self.assertEqual(page.root.all('i'), [])
        for byte in page.bytes:
            self.assertTrue(byte >= 0x20 or byte == 0x0A)

    def test_an_existing_page_is_an_obstacle(self):
        self.add('a.3bcoef')
        self.page.write_text('mine')
        self.expect(self.rotate('--report', self.page), 2, [],
                    [f'trevolt-cli: the report {self.page} exists already: choose another name'])
        self.assertEqual((self.page.read_text(), self.targets()), ('mine', []))
        self.assertEqual(self.report(0, '--overwrite').states(), ['turned'])

    def test_what_cannot_be_the_page(self):
        self.add('a.3bcoef')
        table = self.folder / 'angles.html'
        table.write_text('*,90\n')
        for flags, told in (
                (['-n', '--report', self.page], '--dry-run excludes --report: give one of them'),
                (['--list', '--report', self.page], '--list excludes --report: give one of them'),
                (['--report', 'run.txt'],
                 '--report: run.txt is no name of a page: give one that ends in .html'),
                (['--report', ''], '--report: it is empty: give FILE.html'),
                (['--report', self.folder / 'none' / 'run.html'],
                 f'the report {self.folder}/none/run.html lies in the folder {self.folder}/none/, which '
                 'does not exist: make it, or choose another'),
                (['--report', self.folder / 'a.9fcoef.html'],
                 f'the report {self.folder / "a.9fcoef.html"} has the name of a coefficient file: '
                 'choose another name'),
                (['--report', self.page, '--manifest', self.page],
                 f'the manifest and the report are both {self.page}: choose another name for one of them')):
            self.expect_words(self.rotate(*flags), 2, told)
        self.expect_words(self.run_cli('rotate', '--angles', table, '--overwrite', '--report', table,
                                       self.source, self.target), 2,
                          f'{table} is the table of angles, which stays: choose another name')
        self.assertEqual(table.read_text(), '*,90\n')
        self.assertEqual(self.targets(), [])
        self.assertFalse(self.page.exists())

    def test_nothing_to_do_leaves_no_page(self):
        self.expect(self.rotate('--report', self.page), 2)
        self.assertFalse(self.page.exists())

    @posix_only
    def test_a_page_that_cannot_be_written_is_named(self):
        self.add('a.3bcoef')
        page = self.folder / 'run.html'
        limits = {'preexec_fn': lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (900, 900)),
                  'environment': cli_support.UNCOUNTED}
        result = self.rotate('--report', page, **limits)
        self.expect(result, 1, ['a.3bcoef -> a-90°.3bcoef  (4 x 3 -> 3 x 4)', '1 file turned by 90°, 0 failed'])
        self.assertRegex(self.lines(result.stderr)[0], f'^trevolt-cli: the report {page}: cannot be written: File too large$')
        self.assertEqual(len(self.lines(result.stderr)), 1)
        self.assertFalse(page.exists())
        result = self.rotate('--overwrite', '--json', '--report', page, **limits)
        self.assertIn('"exit_status":1,', result.stdout.decode())
        self.assertIn(f'"report_error":"the report {page}: cannot be written: ', result.stdout.decode())
        self.assertEqual(result.returncode, 1)

    @posix_only
    def test_an_interrupted_run_has_a_page_of_what_was_done(self):
        out = self.interrupted_rotate('--report', self.page)
        self.assertIn(b'"report_error":null', out)
        page = self.checked()
        written = self.targets()
        self.assertEqual([row['File'].partition('to ')[2] for row in page.rows()], written)
        self.assertEqual(page.root.one('title').text(), 'Turn of 200 files, interrupted')
        self.assertEqual(page.root.one('p', class_='verdict bad').text(),
                         f'Interrupted: {len(written)} of 200 files came to an end.')
        self.assertEqual(page.counts(), {'written': len(written), 'failed': 0,
                                         'not reached': 200 - len(written)})

    @posix_only
    def test_a_full_standard_output_costs_no_page(self):
        for i in range(150):
            self.add(f'cabinet {i:03}.3bcoef')
        with open('/dev/full', 'wb') as full:
            run = subprocess.run([*PROGRAM, 'rotate', '-a', '90', '--no-sync', '--report', self.page,
                                  self.source, self.target], stdout=full, stderr=subprocess.PIPE)
        self.assertEqual(run.returncode, 1)
        self.assertIn(b'the standard output cannot be written', run.stderr)
        page = self.checked()
        written = self.targets()
        self.assertLess(len(written), 150)
        self.assertEqual([row['File'].partition('to ')[2] for row in page.rows()], written)
        self.assertIn('interrupted', page.root.one('title').text())

    def test_nothing_changes_but_the_page(self):
        for cabinet in (SAMPLES / 'cabinet').iterdir():
            if cabinet.suffix != '.csv':
                shutil.copy(cabinet, self.source)
        plain = self.rotate()
        outputs = {p.name: p.read_bytes() for p in self.target.iterdir()}
        reported = self.rotate('--overwrite', '--report', self.page)
        self.assertEqual((reported.returncode, reported.stdout, reported.stderr),
                         (plain.returncode, plain.stdout, plain.stderr))
        self.assertEqual({p.name: p.read_bytes() for p in self.target.iterdir()}, outputs)

    def test_many_failed_files_are_linked_up_to_a_number(self):
        for i in range(103):
            (self.source / f'{i:03}.3bcoef').write_bytes(b'x')
        page = self.report(1, '--no-sync')
        items = page.root.one('nav', **{'aria-label': 'Failed files'}).all('li')
        self.assertEqual(len(items), 101)
        self.assertEqual(items[-1].text(), 'and 3 more in the table')
        self.assertEqual(len(page.rows()), 103)
