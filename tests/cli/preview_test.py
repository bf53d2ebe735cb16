"""The command preview, its pictures decoded; cli_test.py runs these."""
import json
import os
import resource
import shutil
import struct
import zlib

import cli_support
from cli_support import SAMPLES, UNCOUNTED, CliTest, coef_file, posix_only

LEFT, TOP = 28, 84  # of what a picture shows
FRAME = (120, 124, 132)
PAPER = (255, 255, 255)
NO_NUMBER = (255, 0, 170)
BELOW, ABOVE = (150, 84, 255), (220, 24, 20)


class Picture:
    """A PNG file of eight bits a colour, each of its parts checked."""

    def __init__(self, content):
        assert content[:8] == b'\x89PNG\r\n\x1a\n'
        at, packed, self.parts = 8, b'', []
        while at < len(content):
            size, = struct.unpack_from('>I', content, at)
            name, data = content[at + 4:at + 8], content[at + 8:at + 8 + size]
            check, = struct.unpack_from('>I', content, at + 8 + size)
            assert check == zlib.crc32(name + data), name
            self.parts.append(name)
            if name == b'IHDR':
                self.width, self.height, *form = struct.unpack('>IIBBBBB', data)
                assert form == [8, 2, 0, 0, 0], form
            if name == b'IDAT':
                packed += data
            at += 12 + size
        raw = zlib.decompress(packed)
        stride = 3 * self.width + 1
        assert len(raw) == stride * self.height
        assert not any(raw[::stride]), 'a filter'
        self.rows = [raw[y * stride + 1:(y + 1) * stride] for y in range(self.height)]

    def at(self, x, y):
        return tuple(self.rows[y][3 * x:3 * x + 3])


def float_file(width, height, elements):
    """A .9fcoef of nine values a pixel."""
    return coef_file('.9fcoef', width, height, struct.pack(f'<{9 * width * height}f',
                                                           *(v for e in elements for v in e)))


def grey_element(value):
    return (value, 0, 0, 0, value, 0, 0, 0, value)


class Preview(CliTest):
    def setUp(self):
        super().setUp()
        self.picture = self.target / 'picture.png'

    def preview(self, *arguments, **options):
        return self.run_cli('preview', '--no-sync', *arguments, **options)

    def shown(self):
        return Picture(self.picture.read_bytes())

    def add_floats(self, name, width, height, elements):
        path = self.source / name
        path.write_bytes(float_file(width, height, elements))
        return path

    def objects(self, result):
        return [json.loads(line) for line in self.lines(result.stdout)]

    def test_a_map_in_grey(self):
        path = self.add_floats('a.9fcoef', 2, 1, [grey_element(0.5), grey_element(1.5)])
        self.expect(self.preview('--scale', 'grey', path, self.picture), 0,
                    [f'{self.picture}: 476 x 260 pixels, 1 file shown, 0 failed'], [])
        picture = self.shown()
        self.assertEqual(picture.parts, [b'IHDR', b'IDAT', b'IEND'])
        dark, light = picture.at(LEFT, TOP), picture.at(LEFT + 64, TOP)
        self.assertEqual(len(set(dark)), 1)
        self.assertEqual(len(set(light)), 1)
        self.assertLess(dark[0], 30)
        self.assertGreater(light[0], 230)
        self.assertEqual(picture.at(LEFT + 63, TOP + 63), dark)
        self.assertEqual(picture.at(LEFT + 127, TOP + 63), light)
        for x, y in ((-1, -1), (128, 0), (0, 64)):
            self.assertEqual(picture.at(LEFT + x, TOP + y), FRAME)
        self.assertEqual(picture.at(0, 0), PAPER)

    def test_every_view_by_its_values(self):
        element = [0.5 ** k for k in range(9)]
        path = self.add_floats('a.9fcoef', 1, 1, [element])
        white = [sum(element[i:i + 3]) for i in (0, 3, 6)]
        expected = {'brightness': (0.2126 * white[0] + 0.7152 * white[1] + 0.0722 * white[2],) * 2,
                    'colour': (min(white), max(white))}
        expected |= {f'm{k // 3}{k % 3}': (element[k],) * 2 for k in range(9)}
        if cli_support.IS_WRAPPED:
            expected = {view: expected[view] for view in ('colour', 'm21')}
        for view, (low, high) in expected.items():
            result = self.preview('--view', view, '--json', '--overwrite', path, self.picture)
            file, summary = self.objects(result)
            self.assertAlmostEqual(file['minimum'], low, 6, view)
            self.assertAlmostEqual(file['maximum'], high, 6, view)
            self.assertEqual((summary['exit_status'], summary['picture']['view']), (0, view))

    def test_the_virtual_green_of_kinds_that_hold_it(self):
        cabinets = SAMPLES / 'cabinet'
        for name, views in (('Cab_08.4wcoef', ('g1',)), ('Cab_09.12wcoef', ('g0', 'g1', 'g2'))):
            facts, *_ = self.objects(self.run_cli('info', '--json', cabinets / name))
            known = {value['value']: value for value in facts['values']}
            self.assertEqual(tuple(view for view in known if view[0] == 'g'), views)
            for view in views:
                file, summary = self.objects(self.preview('--view', view, '--json', '--overwrite',
                                                          cabinets / name, self.picture))
                self.assertAlmostEqual(file['minimum'], known[view]['minimum'], 6)
                self.assertAlmostEqual(file['maximum'], known[view]['maximum'], 6)
                self.assertEqual(summary['picture']['view'], view)
        self.picture.unlink()
        for name, view in (('Cab_08.4wcoef', 'g0'), ('Cab_06.9wcoef', 'g1')):
            self.expect(self.preview('--view', view, cabinets / name, self.picture), 1, [],
                        [f'{cabinets / name}: holds no {view}: {name[6:]} files do not have that '
                         'value of the virtual green'])
        self.assertEqual(self.targets(), [])

    def test_what_is_no_number_is_painted_and_counted(self):
        path = self.add_floats('a.9fcoef', 3, 1, [grey_element(1), grey_element(float('nan')),
                                                  grey_element(float('-inf'))])
        file, summary = self.objects(self.preview('--json', path, self.picture))
        self.assertEqual((file['minimum'], file['maximum'], file['not_finite_pixels']), (1, 1, 2))
        self.assertEqual(summary['picture']['not_finite_pixels'], 2)
        picture = self.shown()
        self.assertNotEqual(picture.at(LEFT, TOP), NO_NUMBER)
        self.assertEqual(picture.at(LEFT + 64, TOP), NO_NUMBER)
        self.assertEqual(picture.at(LEFT + 128, TOP), NO_NUMBER)

    def test_a_range_cuts_and_counts(self):
        path = self.add_floats('a.9fcoef', 4, 1, [grey_element(v) for v in (-1, 0.25, 0.5, 9)])
        _, summary = self.objects(self.preview('--json', '--range', '0.25,0.5', '--view', 'm00',
                                               path, self.picture))
        shown = summary['picture']
        self.assertEqual([shown[key] for key in ('scale_low', 'scale_high', 'cells', 'cells_below',
                                                 'cells_above')], [0.25, 0.5, 4, 1, 1])
        picture = self.shown()
        self.assertEqual(picture.at(LEFT, TOP), BELOW)
        self.assertEqual(picture.at(LEFT + 192, TOP), ABOVE)

    def test_a_few_wild_values_leave_the_others_their_scale(self):
        values = [0.8 + x / 1000 for x in range(100)] + [1e30, -2e20]
        path = self.add_floats('a.9fcoef', 51, 2, [grey_element(v) for v in values])
        file, summary = self.objects(self.preview('--json', path, self.picture))
        self.assertAlmostEqual(file['maximum'] / 1e30, 1, 6)
        shown = summary['picture']
        self.assertAlmostEqual(shown['scale_low'], 0.8, 5)
        self.assertAlmostEqual(shown['scale_high'], 0.899, 5)
        self.assertEqual((shown['cells_below'], shown['cells_above']), (1, 1))
        picture = self.shown()
        side = (picture.width - 2 * LEFT) // 51
        self.assertEqual(picture.at(LEFT + 49 * side, TOP + side), ABOVE)
        self.assertEqual(picture.at(LEFT + 50 * side, TOP + side), BELOW)
        self.assertNotEqual(picture.at(LEFT, TOP), picture.at(LEFT + 50 * side, TOP))

    def test_the_turn_is_shown_as_the_run_turns(self):
        values = [grey_element(v / 8) for v in range(8)]
        path = self.add_floats('a.9fcoef', 4, 2, values)
        for angle in (90, 180, 270):
            self.expect(self.rotate('--overwrite', '--no-sync', angle=angle), 0)
            self.expect(self.preview('--turned', angle, '--overwrite', path, self.picture), 0)
            both = self.shown()
            self.expect(self.preview('--overwrite', self.target / f'a-{angle}°.9fcoef',
                                     self.picture), 0)
            turned = self.shown()
            width, height = (4, 2) if angle == 180 else (2, 4)
            for y in range(height):
                for x in range(width):
                    self.assertEqual(both.at(LEFT + 4 * 64 + 132 + 64 * x + 5, TOP + 28 + 64 * y + 5),
                                     turned.at(LEFT + 64 * x + 5, TOP + 64 * y + 5), (angle, x, y))

    def test_all_kinds_of_the_demo_wall_in_one_picture(self):
        self.expect(self.run_cli('demo', '--no-sync', self.source), 0)
        result = self.preview('--json', '--grid', '3x3', self.source, self.picture)
        *files, summary = self.objects(result)
        self.assertEqual([file['kind'] for file in files],
                         ['9fcoef', '9bcoef', '9wcoef', '3wcoef', '3fcoef', '3bcoef', 'cccoef',
                          '4wcoef', '12wcoef'])
        for file in files:
            self.assertEqual((file['status'], file['own_size']), ('shown', {'width': 160, 'height': 90}))
            self.assertTrue(0.7 < file['minimum'] < file['maximum'] < 1.1, file)
        shown = summary['picture']
        self.assertEqual((shown['columns'], shown['rows'], shown['cells']), (3, 3, 9 * 160 * 90))
        self.assertEqual(shown['scale_low'], min(file['minimum'] for file in files))
        self.assertEqual(shown['scale_high'], max(file['maximum'] for file in files))
        picture = self.shown()
        self.assertEqual((picture.width, picture.height),
                         (shown['size']['width'], shown['size']['height']))

    def test_cabinets_stand_in_natural_order(self):
        for number in (10, 9, 1):
            self.add_floats(f'Cab_{number}.9fcoef', 1, 1, [grey_element(number)])
        *files, summary = self.objects(self.preview('--json', self.source, self.picture))
        self.assertEqual([file['name'] for file in files],
                         ['Cab_1.9fcoef', 'Cab_9.9fcoef', 'Cab_10.9fcoef'])
        self.assertEqual((summary['picture']['columns'], summary['picture']['rows']), (2, 2))
        picture = self.shown()
        first, second, third = (picture.at(LEFT + x, TOP + y) for x, y in ((5, 5), (71, 5), (5, 71)))
        self.assertLess(sum(first), sum(second))
        self.assertLess(sum(second), sum(third))

    def test_a_damaged_file_is_named_and_the_others_are_shown(self):
        self.add('a.9bcoef')
        self.add('c.9bcoef')
        damaged = self.source / 'b.9bcoef'
        damaged.write_bytes((self.source / 'a.9bcoef').read_bytes()[:-3])
        result = self.preview(self.source, self.picture)
        self.expect(result, 1, [f'{self.picture}: 570 x 606 pixels, 2 files shown, 1 failed'])
        self.assertTrue(self.lines(result.stderr)[0].replace('\\', '/').startswith(
            f'{damaged}: cannot be read'))
        self.picture.unlink()
        *files, summary = self.objects(self.preview('--json', damaged, self.picture))
        self.assertEqual([file['status'] for file in files], ['failed'])
        self.assertEqual(summary, {
            'type': 'summary', 'version': 1, 'end': 'failed', 'exit_status': 1, 'output': None,
            'picture': None, 'shown': 0, 'failed': 1, 'errors': []})
        self.assertFalse(self.picture.exists())

    def test_files_without_a_pixel(self):
        (self.source / 'empty.9bcoef').write_bytes(b'')
        self.expect_words(self.preview(self.source / 'empty.9bcoef', self.picture), 1,
                          'empty.9bcoef: ')
        (self.source / 'none.9bcoef').write_bytes(coef_file('.9bcoef', 0, 0, b''))
        result = self.preview(self.source / 'none.9bcoef', self.picture)
        self.expect(result, 1, [], [f'{self.source}/none.9bcoef: has no pixels'])
        self.assertEqual(self.targets(), [])

    def test_a_map_of_one_line(self):
        path = self.source / 'line.3bcoef'
        path.write_bytes(coef_file('.3bcoef', 65535, 1, bytes(65535 * 3)))
        self.expect(self.preview(path, self.picture), 0,
                    [f'{self.picture}: 1600 x 212 pixels, 1 file shown, 0 failed'], [])

    def test_a_large_map_is_shown_by_means(self):
        # Stripes one pixel wide, two of which a cell covers.
        width, height = 3088, 16
        row = bytes(v for x in range(width) for v in ((255, 255, 255) if x % 2 else (0, 0, 0)))
        path = self.source / 'stripes.3bcoef'
        path.write_bytes(coef_file('.3bcoef', width, height, row * height))
        file, _ = self.objects(self.preview('--json', path, self.picture))
        self.assertEqual(file['minimum'], file['maximum'])
        self.assertAlmostEqual(file['minimum'], 0.5, 6)

    def test_outputs_that_stand_and_inputs_stay(self):
        self.add('a.9bcoef')
        self.picture.write_bytes(b'old')
        told = f'{self.picture}: exists already: overwrite it, or choose another target'
        self.expect(self.preview(self.source, self.picture), 1, [], [f'trevolt-cli: {told}'])
        self.assertEqual(self.picture.read_bytes(), b'old')
        self.expect(self.preview('--overwrite', self.source, self.picture), 0)
        self.shown()
        self.assertEqual(self.targets(), ['picture.png'])
        self.expect_words(self.preview(self.source, self.target / 'no' / 'p.png'), 1,
                          'does not exist')

    def test_usage(self):
        self.add('a.9bcoef')
        self.add('b.9bcoef')
        one = self.source / 'a.9bcoef'
        trials = {
            ('--view', 'red', one, self.picture): '--view: red is no view',
            ('--view', 'g3', one, self.picture): '--view: g3 is no view',
            ('--scale', 'rainbow', one, self.picture): '--scale: rainbow is no scale',
            ('--scale', 'grey', '--view', 'colour', one, self.picture): '--scale: ',
            ('--range', '1', one, self.picture): '--range: 1 is no range',
            ('--range', '2,1', one, self.picture): '--range: 2,1 is empty',
            ('--range', '1,nan', one, self.picture): '--range: 1,nan is no range',
            ('--range', '1,1.0000000001', one, self.picture): 'too narrow',
            ('--grid', '3', one, self.picture): '--grid: 3 is no grid',
            ('--grid', '0x3', one, self.picture): '--grid: 0x3 is no grid',
            ('--grid', '501x3', one, self.picture): '--grid: 501x3 is above 500',
            ('--grid', '1x1', self.source, self.picture): '2 files do not fit into a grid of 1 x 1',
            ('--turned', '90', self.source, self.picture): 'a single file',
            ('--turned', '45', one, self.picture): '--turned: 45',
            ('--width', '10', one, self.picture): '--width: 10 is no width',
            ('--width', '399', '--turned', '90', one, self.picture): '399 pixels have no room',
            (one, self.source / 'b.9bcoef'): 'does not end in .png',
            (one,): 'needs a SOURCE and a PICTURE',
            (self.target, self.picture): 'no coefficient file',
            (self.source / 'missing.9bcoef', self.picture): 'missing.9bcoef',
        }
        if cli_support.IS_WRAPPED:
            trials = dict(list(trials.items())[::5])
        before = {path: path.read_bytes() for path in self.source.iterdir()}
        for arguments, words in trials.items():
            self.expect_words(self.preview(*arguments), 2, words)
        self.assertEqual(self.targets(), [])
        self.assertEqual({path: path.read_bytes() for path in self.source.iterdir()}, before)

    def test_the_same_bytes_at_every_call(self):
        self.add('a.9bcoef', 40, 30)
        contents = set()
        for _ in range(2):
            self.expect(self.preview('--overwrite', self.source, self.picture), 0)
            contents.add(self.picture.read_bytes())
        self.assertEqual(len(contents), 1)

    @posix_only
    def test_a_picture_that_finds_no_room(self):
        self.add('a.9bcoef')
        def refuse_files():
            resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))
        result = self.preview('--json', self.source, self.picture, preexec_fn=refuse_files,
                              environment=UNCOUNTED)
        *_, summary = self.objects(result)
        self.assertEqual(summary, {
            'type': 'summary', 'version': 1, 'end': 'failed', 'exit_status': 1, 'output': None,
            'picture': None, 'shown': 0, 'failed': 0,
            'errors': [f'{self.picture}: the picture could not be written: File too large']})

    @posix_only
    def test_a_name_without_a_text_fails_and_the_others_are_shown(self):
        self.add('a.9bcoef')
        odd = os.fsencode(self.source) + b'/odd\xff.9bcoef'
        shutil.copy(self.source / 'a.9bcoef', odd)
        told = 'odd\\xFF.9bcoef: passed over: its name is not valid UTF-8'
        self.expect(self.preview(self.source, self.picture), 1,
                    [f'{self.picture}: 476 x 388 pixels, 1 file shown, 1 failed'], [told])
        (self.source / 'a.9bcoef').unlink()
        file, summary = self.objects(self.preview('--json', '--overwrite', self.source, self.picture))
        self.assertEqual((file['status'], file['path'], f'{file["name"]}: {file["problems"][0]}'),
                         ('failed', None, told))
        self.assertEqual((summary['end'], summary['exit_status'], summary['shown'],
                          summary['failed']), ('failed', 1, 0, 1))

    @posix_only
    def test_a_file_takes_little_memory_beside_its_pixels(self):
        side = 1400
        bytes_of_body = side * side * 36
        path = self.source / 'a.9fcoef'
        path.write_bytes(coef_file('.9fcoef', side, side, bytes(bytes_of_body)))
        for command in (('info', path), ('preview', '--width', 400, path, self.picture)):
            peak, _, run = self.measured(*command)
            self.assertEqual((run.returncode, run.stderr), (0, b''))
            self.assertLess(peak * 1024, 1.3 * bytes_of_body + 64e6)

    @posix_only
    def test_names_of_any_script(self):
        name = 'Größe Ж 日 \x07 λ.9bcoef'
        self.add(name)
        self.expect(self.preview(self.source / name, self.picture), 0)
        self.shown()
