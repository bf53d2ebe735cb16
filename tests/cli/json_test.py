"""What all commands share that tell programs of files; cli_test.py runs these."""
import json
import os
import re
import shutil

import cli_support
from cli_support import ROOT, CliTest

ENDS = {'done': {0}, 'failed': {1}, 'nothing_to_do': {2}, 'interrupted': {130}}
ENDS_OF_DIFF = {'done': {0, 1}, 'failed': {2}, 'nothing_to_do': {2}}
PAGES = {'crop': 'compose'}  # others have their own
KINDS = {'9fcoef', '3fcoef', '9bcoef', '3bcoef', 'cccoef', '9wcoef', '3wcoef', '4wcoef', '12wcoef'}
VALUES = {*(f'm{row}{column}' for row in range(3) for column in range(3)), 'g0', 'g1', 'g2'}
ONE_LETTER = {'x', 'y'}


def keys_of(value):
    """All keys at any depth."""
    if isinstance(value, list):
        return {key for one in value for key in keys_of(one)}
    if not isinstance(value, dict):
        return set()
    return set(value) | {key for one in value.values() for key in keys_of(one)}


class CommonJson(CliTest):
    def setUp(self):
        super().setUp()
        for name in ('whole.3bcoef', 'damaged.3bcoef'):
            self.add(name)
        shutil.copy(ROOT / 'samples' / 'cabinet' / 'Cab_09.12wcoef', self.source)
        damaged = self.source / 'damaged.3bcoef'
        damaged.write_bytes(damaged.read_bytes()[:-1])
        if not cli_support.IS_WRAPPED:
            shutil.copy(self.source / 'whole.3bcoef', os.fsencode(self.source) + b'/odd\xff.3bcoef')

    def check_line(self, command, line):
        self.assertEqual(line['type'], 'pair' if command == 'diff' else 'file')
        self.assertEqual(line['status'] == 'failed', line['problems'] != [], line)
        self.assertIsInstance(line['notes'], list)
        self.assertEqual('losses' in line, command in ('convert', 'compose', 'crop'))
        self.assertNotIn('problem', line)
        if command != 'diff':
            self.assertNotIn(line['name'][:1], ('', '/'))
        if command not in ('diff', 'crop') and line['path'] is not None:
            self.assertTrue(line['path'].replace('\\', '/').endswith('/' + line['name']), line)
        if 'output' in line:
            self.assertEqual(line['output'] is None, line['status'] in ('failed', 'not_written'))
        for key in ('kind', 'content'):
            self.assertIn(line.get(key), KINDS | {None})
        for value in line.get('values') or []:
            self.assertIn(value['value'], VALUES)
        for key in ('own_size', 'turned_size', 'size_a', 'size_b'):
            self.assertIn(set(line.get(key) or {}), (set(), {'width', 'height'}))

    def check(self, command, *arguments):
        """The end and exit status, the lines and the summary of a run that keeps the common rules."""
        result = self.run_cli(command, '--json', *arguments)
        self.assertEqual(result.stderr, b'', arguments)
        *lines, summary = [json.loads(line) for line in self.lines(result.stdout)]
        self.assertEqual(list(summary)[:4], ['type', 'version', 'end', 'exit_status'])
        self.assertEqual((summary['type'], summary['version'], summary['exit_status']),
                         ('summary', 1, result.returncode))
        ends = ENDS_OF_DIFF if command == 'diff' else ENDS
        self.assertIn(result.returncode, ends[summary['end']])
        self.assertEqual(summary['failed'], sum(line['status'] == 'failed' for line in lines))
        if summary['end'] == 'nothing_to_do':
            self.assertNotEqual(summary['errors'], [])
        if summary['end'] == 'done':
            self.assertEqual((summary['failed'], summary['errors']), (0, []))
        for line in lines:
            self.check_line(command, line)
        page = (ROOT / 'docs' / f'{PAGES.get(command, command)}.md').read_text(encoding='utf-8')
        told = set(re.findall(r'\w+', ' '.join(re.findall(r'`[^`]*`|^\{.*\}$', page, re.MULTILINE))))
        self.assertEqual((keys_of(lines) | keys_of(summary)) - told - ONE_LETTER, set(), command)
        return (summary['end'], result.returncode), lines, summary

    def test_a_mixture(self):
        whole, words = self.source / 'whole.3bcoef', self.source / 'Cab_09.12wcoef'
        picture = self.target / 'p.png'
        files = len(list(self.source.iterdir()))
        for command, arguments, end, lines in (
                ('info', (self.source,), ('failed', 1), files),
                ('diff', (self.source, self.source), ('failed', 2),
                 files if cli_support.IS_WRAPPED else files + 1),
                ('preview', (self.source, picture), ('failed', 1), files),
                ('convert', ('--to', '9fcoef', self.source, self.target / 'to'), ('failed', 1), files),
                ('compose', ('--lenient', self.target / 's.9fcoef', f'{whole}@0,0',
                             f'{self.source / "damaged.3bcoef"}@4,0'), ('failed', 1), 2),
                ('crop', (self.source / 'damaged.3bcoef', self.target / 'c.9fcoef', '--rect',
                          '0,0,1,1'), ('failed', 1), 1),
                ('info', (whole, words), ('done', 0), 2),
                ('diff', (whole, words), ('done', 1), 1),
                ('diff', (words, words), ('done', 0), 1),
                ('preview', ('--overwrite', whole, picture), ('done', 0), 1),
                ('convert', (words, self.target / 'w.npy'), ('done', 0), 1),
                ('compose', (self.target / 't.9fcoef', f'{whole}@0,0'), ('done', 0), 1),
                ('crop', (whole, self.target / 'd.9fcoef', '--rect', '0,0,1,1'), ('done', 0), 1)):
            with self.subTest(command=command, arguments=arguments):
                told, found, _ = self.check(command, *arguments)
                self.assertEqual((told, len(found)), (end, lines))
            if cli_support.IS_WRAPPED and command == 'crop':
                break

    def test_nothing_to_do(self):
        gone, out = self.folder / 'gone.9fcoef', self.target / 'out.9fcoef'
        table = self.folder / 'wall.csv'
        table.write_text('whole.3bcoef,x,0\nwhole.3bcoef,0\n')
        sizes = self.folder / 'sizes.csv'
        sizes.write_text('gone.9fcoef,0,0\n')
        whole = self.source / 'whole.3bcoef'
        missing = f'the source {gone} does not exist: check its path'
        line_1 = f'--layout: {table}: line 1: x is no coordinate: give whole pixels from ' \
                 '-65535 to 65535, or the heading file,x,y,angle'
        for command, arguments, errors in (
                ('info', (gone,), [missing]),
                ('info', (self.target,), [f'there is no coefficient file in {self.target}: give a folder that holds some']),
                ('diff', (gone, whole), [missing]),
                ('diff', (self.source, gone), [missing]),
                ('diff', (self.source, self.target),
                 [f'there is no coefficient file in {self.target}: give a folder that holds some']),
                ('diff', (whole, self.source), [f'{whole} and {self.source} are a file and a folder: '
                                                'give two files or two folders']),
                ('diff', ('--image', self.target / 'i.png', self.source, self.source),
                 ['--image is of two files: give no folders']),
                ('preview', (gone, self.target / 'p.png'), [missing]),
                ('convert', (gone, out), [missing]),
                ('compose', (out, f'{gone}@0,0'), [missing]),
                ('compose', (out, '--layout', table),
                 [line_1, f'--layout: {table}: line 2: has 2 fields: give a file, its x and its y, '
                          'and its angle where it is turned, with commas between']),
                ('crop', (gone, out, '--rect', '0,0,1,1'), [missing]),
                ('crop', (whole, out, '--layout', table), [line_1]),
                ('crop', (whole, out, '--layout', sizes), [f'{sizes}: line 1: gone.9fcoef: '])):
            with self.subTest(command=command, arguments=arguments):
                end, found, summary = self.check(command, *arguments)
                self.assertEqual(end, ('nothing_to_do', 2))
                self.assertEqual([line['status'] for line in found if line['status'] != 'not_written'],
                                 [])
                if command == 'crop' and errors != [missing]:
                    self.assertEqual(len(summary['errors']), 2)
                    self.assertTrue(summary['errors'][0].startswith(errors[0]), summary['errors'])
                else:
                    self.assertEqual(summary['errors'], errors)
            if cli_support.IS_WRAPPED:
                break
        self.assertEqual(self.targets(), [])
