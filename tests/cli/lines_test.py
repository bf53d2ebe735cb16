"""How the commands' lines for people name their files."""
from cli_support import CliTest


class CommonLines(CliTest):
    """Where outputs lie below a folder as their sources do, files have their names in the folder; else
    the paths that open them."""

    def setUp(self):
        super().setUp()
        self.add('whole.9bcoef')
        self.whole = self.source / 'whole.9bcoef'
        self.broken = self.source / 'broken.9bcoef'
        self.broken.write_bytes(self.whole.read_bytes()[:-1])
        self.problem = ('cannot be read: E_FAIL (0x80004005): the content is damaged or does not match '
                        'its header')

    def told(self, output):
        """Its lines, with slashes between folders on every system."""
        return [line.replace('\\', '/') for line in self.lines(output)]

    def test_a_damaged_file_is_named_by_its_path(self):
        line = f'{self.broken}: {self.problem}'
        for command, arguments, status, told in (
                ('preview', (self.broken, self.target / 'p.png'), 1, [line]),
                ('preview', (self.source, self.target / 'q.png'), 1, [line]),
                ('diff', (self.broken, self.whole), 2, [line]),
                ('convert', (self.broken, self.target / 'a.npy'), 1, [line]),
                ('compose', (self.target / 'b.9bcoef', f'{self.broken}@0,0'), 1,
                 [line, 'trevolt-cli: nothing is written: 1 of 1 files failed']),
                ('crop', (self.broken, self.target / 'c.9bcoef', '--rect', '0,0,1,1'), 1,
                 [line, 'trevolt-cli: nothing is written: the source failed'])):
            with self.subTest(command=command, arguments=arguments):
                result = self.run_cli(command, *arguments)
                self.assertEqual((result.returncode, self.told(result.stderr)), (status, told))
        told = self.told(self.run_cli('info', self.source).stdout)
        self.assertEqual([line for line in told if line.startswith((str(self.source), '  problem'))],
                         [str(self.broken), f'  problem   {self.problem}', str(self.whole)])

    def test_or_by_its_name_where_its_output_has_one(self):
        line = f'broken.9bcoef: {self.problem}'
        for arguments in (('rotate', '--angle', '90', self.source, self.target / 'turned'),
                          ('convert', '--to', 'npy', self.source, self.target / 'arrays')):
            with self.subTest(arguments=arguments):
                result = self.run_cli(*arguments)
                self.assertEqual((result.returncode, self.told(result.stderr)), (1, [line]))

    def test_a_source_that_does_not_exist(self):
        gone = self.source / 'gone.9fcoef'
        for arguments in (('info', gone), ('preview', gone, self.target / 'p.png'),
                          ('diff', gone, self.whole), ('convert', gone, self.target / 'a.npy'),
                          ('compose', self.target / 'b.9bcoef', f'{gone}@0,0'),
                          ('crop', gone, self.target / 'c.9bcoef', '--rect', '0,0,1,1'),
                          ('rotate', '--angle', '90', gone, self.target)):
            with self.subTest(command=arguments[0]):
                self.expect(self.run_cli(*arguments), 2, [],
                            [f'trevolt-cli: the source {gone} does not exist: check its path'])

    def test_a_size_below_zero_is_told_as_it_is(self):
        path = self.source / 'below.cccoef'
        path.write_text('[T9COEF20]\nwidth=-5\nheight=3\n')
        problem = 'its size -5 x 3 is below 0 in one direction'
        for name, arguments in (
                (path.name, ('rotate', '--angle', '90', path, self.target)),
                (path, ('preview', path, self.target / 'p.png')),
                (path, ('diff', path, self.whole)),
                (path, ('convert', path, self.target / 'a.npy')),
                (path, ('compose', self.target / 'b.9bcoef', f'{path}@0,0')),
                (path, ('crop', path, self.target / 'c.9bcoef', '--rect', '0,0,1,1'))):
            with self.subTest(command=arguments[0]):
                told = self.lines(self.run_cli(*arguments).stderr)
                self.assertEqual(told[0], f'{name}: {problem}')
        self.expect(self.run_cli('info', path), 1,
                    [str(path), '  kind      .cccoef', '  size      -5 x 3 pixels',
                     '  stored    29 bytes', f'  problem   {problem}', '',
                     '1 file, 1 with problems'], [])
