#!/usr/bin/python3
"""Tests of the measuring script: what it reckons, what it tells and what it refuses to count."""
import contextlib
import dataclasses
import io
import json
import math
import mmap
import pathlib
import sys
import tempfile
import unittest
from unittest import mock

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / 'bench'))

import experiments
import rows
import run
import workplace
from figures import Goal, Result, Run, exponent, median_run, slope, summary
from workplace import touch_free_memory


def setUpModule():
    """No test touches gigabytes but the one that is about it, and that a few."""
    touch = mock.patch.object(workplace, 'touch_free_memory')
    touch.start()
    unittest.addModuleCleanup(touch.stop)


def runs_of(**seconds):
    return {step: [Run(value) for value in values] for step, values in seconds.items()}


class Figures(unittest.TestCase):
    def test_a_goal_holds_up_to_its_value(self):
        for relation, below, at, above in (('>=', False, True, True), ('<=', True, True, False),
                                           ('<', True, False, False)):
            goal = Goal(relation, 2)
            self.assertEqual([goal.holds(figure) for figure in (1.99, 2, 2.01)],
                             [below, at, above], relation)

    def test_the_median_is_of_each_thing_by_itself(self):
        runs = [Run(1, 30, 200), Run(9, 10, 100), Run(2, 20, 900)]
        self.assertEqual(median_run(runs), Run(2, 20, 200))
        self.assertEqual(median_run(runs[:2]).seconds, 5)

    def test_the_exponent_tells_how_cost_grows(self):
        sizes = [1, 2, 4, 8, 16]
        self.assertAlmostEqual(exponent(sizes, [3 * size for size in sizes]), 1)
        self.assertAlmostEqual(exponent(sizes, [3 * size**2 for size in sizes]), 2)
        self.assertAlmostEqual(exponent(sizes, [7] * 5), 0)

    def test_the_slope_leaves_the_start_out(self):
        self.assertAlmostEqual(slope([10, 20, 40], [1050, 1100, 1200]), 5)

    def test_a_figure_is_shown_to_three_digits_and_large_ones_whole(self):
        goal = Goal('<', 40)
        for figure, shown in ((1.23456, '1.23'), (0.05, '0.05'), (123456.7, '123457')):
            self.assertEqual(str(Result('a', 'b', 'c', goal, figure)).split()[1], shown)

    def test_what_was_not_measured_is_neither_held_nor_failed(self):
        held = Result('a', 'x', 'times', Goal('>=', 3), 3.5)
        failed = Result('b', 'x', 'times', Goal('>=', 3), 2.5)
        absent = Result('c', 'x', 'times', Goal('>=', 3), None, ('the peer',))
        free = Result('d', 'x', 'ms', None, 7.0)
        self.assertEqual([r.holds for r in (held, failed, absent, free)], [True, False, None, None])
        self.assertEqual(summary([held, failed, absent, free]), '1 of 3 goals hold, 1 not measured')
        self.assertEqual(summary([held, failed, free]), '1 of 2 goals hold')
        self.assertIn('not measured, missing: the peer', str(absent))
        self.assertIn('NOT HELD', str(failed))
        self.assertNotIn('HELD', str(held))
        self.assertEqual(absent.as_json()['missing'], ['the peer'])
        self.assertIsNone(absent.as_json()['holds'])

    def test_a_goal_that_its_limit_does_not_reach_is_limited(self):
        def row(figure, limit):
            return Result('a', 'x', 'times', Goal('>=', 3), figure, limit=limit, limited_by='the disk')
        held, limited, missed, free = row(3.5, 2.9), row(2.5, 2.9), row(2.5, 3.0), row(2.5, None)
        self.assertEqual([r.verdict for r in (held, limited, missed, free)],
                         ['holds', 'limited', 'NOT HELD', 'NOT HELD'])
        self.assertEqual(row(2.5, 2.5).verdict, 'limited')
        self.assertEqual(row(2.5, 2.4).verdict, 'NOT HELD')  # what is beaten limits nothing
        slow = Result('a', 'x', '', Goal('<=', 3), 3.5, limit=3.2)
        self.assertEqual(slow.verdict, 'limited')
        self.assertEqual(dataclasses.replace(slow, limit=3.6).verdict, 'NOT HELD')
        self.assertEqual([str(r).split(' x')[1] for r in (held, limited, missed, free)],
                         ['', '; at best 2.9 by the disk', '; at best 3 by the disk', ''])
        self.assertEqual([r.holds for r in (held, limited, missed)], [True, False, False])
        self.assertEqual(summary([held, limited, missed, free]), '1 of 4 goals hold, 1 are limited')
        told = limited.as_json()
        self.assertEqual((told['limit'], told['limited_by'], told['holds']), (2.9, 'the disk', False))

    def test_the_runs_stand_in_the_json(self):
        result = Result('a', 'x', 'times', Goal('>=', 3), 4, (),
                        {'own': [Run(1.5, 7, 100), Run(2.5, 8, 200)], 'timer': [Run(0.25)]})
        self.assertEqual(result.as_json(), {
            'what': 'x', 'unit': 'times', 'figure': 4, 'goal': {'relation': '>=', 'value': 3},
            'holds': True, 'limit': None, 'limited_by': '', 'missing': [],
            'runs': {'own': {'seconds': [1.5, 2.5], 'faults': [7, 8], 'peak_bytes': [100, 200]},
                     'timer': {'seconds': [0.25]}}})


class Table(unittest.TestCase):
    def row(self, key):
        found, = [row for row in rows.ROWS if row.key == key]
        return found

    def figure(self, key, runs):
        return self.row(key).result(runs, set()).figure

    def files(self, *texts):
        """A folder with files that hold these texts."""
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        for number, text in enumerate(texts):
            (pathlib.Path(folder.name) / str(number)).write_text(text, encoding='utf-8')
        return pathlib.Path(folder.name)

    def limit(self, key, runs):
        return self.row(key).result(runs, set()).limit

    def test_every_row_has_a_name_of_its_own_and_steps_of_its_experiment(self):
        keys = [row.key for row in rows.ROWS]
        self.assertEqual(len(keys), len(set(keys)))
        for row in rows.ROWS:
            self.assertLessEqual(set(row.steps), set(row.experiment.steps), row.key)

    def test_the_goals_are_these(self):
        kinds = ['9fcoef', '3fcoef', '9bcoef', '3bcoef', '9wcoef', '3wcoef', '4wcoef', '12wcoef']
        expected = {'screen-lz4.9fcoef': '≤ 0.75', 'screen-script.9fcoef': '≥ 6',
                    'screen-script.9wcoef': '≥ 20', 'screen-script.3bcoef': '≥ 5',
                    'info.9fcoef': '≤ 1.5', 'preview.9fcoef': '≤ 1.5',
                    'info.9wcoef': '≤ 1.5', 'preview.9wcoef': '≤ 1.5',
                    'cores.cabinets': '≥ 1.8', 'cores.screen': '≥ 1.5',
                    'turn.90': '≤ 1.25',
                    'turn.180': '≤ 1.25', 'turn.270': '≤ 1.25', 'growth.size': '≤ 1.1',
                    'growth.count': '≤ 1.1', 'growth.memory': '≤ 1024', 'faults': '< 40',
                    'start': '< 15', 'text': 'None', 'dialog': 'None',
                    'sync.cabinets': 'None'}
        for kind in kinds:
            expected[f'cabinets.{kind}'] = '≥ 3'
            expected[f'screen-copy.{kind}'] = '≤ 2' if 'w' in kind else '≤ 1.5'
            expected[f'peak.{kind}'] = '≤ 1'
        self.assertEqual({row.key: str(row.goal) for row in rows.ROWS}, expected)
        self.assertEqual([(mean.key, str(mean.goal)) for mean in rows.MEAN_ROWS],
                         [('cabinets', '≥ 4')])

    def test_faster_than_a_peer_is_its_time_to_the_commands(self):
        runs = runs_of(command=[2, 1, 3], script=[8, 9, 7], copy=[1], calls=[0.5], write=[1])
        self.assertEqual(self.figure('cabinets.9fcoef', runs), 4)
        self.assertEqual(self.figure('screen-script.3bcoef', runs), 4)

    def test_a_share_of_the_time_is_the_commands_time_to_its_peers(self):
        self.assertEqual(self.figure('screen-lz4.9fcoef', runs_of(command=[3], lz4=[4])), 0.75)
        self.assertEqual(
            self.figure('screen-copy.3wcoef', runs_of(command=[3], copy=[0.5], calls=[1])), 2)
        self.assertEqual(self.figure('turn.180', runs_of(**{'180': [5], 'copy': [4]})), 1.25)

    def test_no_script_is_beaten_by_more_than_the_bare_work_allows(self):
        runs = runs_of(command=[2], script=[9], copy=[1], calls=[0.5])
        self.assertEqual(self.limit('cabinets.4wcoef', runs), 6)
        runs = runs_of(command=[2], script=[9], write=[0.5])
        self.assertEqual(self.limit('screen-script.9wcoef', runs), 18)

    def test_two_jobs_gain_at_best_what_two_commands_gain(self):
        runs = runs_of(one=[3], two=[2], apart=[4], write=[1])
        self.assertEqual(self.limit('cores.cabinets', runs), 1.5)
        self.assertEqual(self.limit('cores.screen', runs), 1.5)
        runs = runs_of(one=[3], two=[2], apart=[4], write=[2.5])
        self.assertEqual(self.limit('cores.screen', runs), 1.2)

    def test_looking_at_a_file_is_told_by_its_time_to_reading_it(self):
        runs = runs_of(info=[3], preview=[4], read=[0.5], calls=[1.5], load=[2.5], digest=[1], lz4=[6])
        self.assertEqual(self.figure('info.9fcoef', runs), 0.5)
        self.assertEqual(self.figure('info.9wcoef', runs), 1.5)
        self.assertEqual(self.figure('preview.9fcoef', runs), 1.6)
        self.assertEqual(self.limit('info.9wcoef', runs), 0.5)
        self.assertIsNone(self.limit('info.9fcoef', runs))

    def test_two_jobs_are_told_by_how_much_faster_they_are(self):
        runs = runs_of(one=[3], two=[2], apart=[4], write=[1])
        self.assertEqual(self.figure('cores.screen', runs), 1.5)

    def test_the_disk_has_nothing_to_do_when_cores_are_compared(self):
        place = mock.Mock()
        cores = experiments.Cores((16, 16), 2)
        place.wall.return_value = self.files('ab', 'abc')
        cores.prepare(place, cores.steps)
        for step in cores.steps:
            with mock.patch.object(experiments.os, 'sync') as sync:
                cores.run_step(place, step)
            sync.assert_called_once_with()
        self.assertEqual([call.args[1:] for call in place.rotate.call_args_list],
                         [('--jobs', '1'), ('--jobs', '2')])
        place.rotate_twice_at_once.assert_called_once_with(cores.source)
        place.write.assert_called_once_with(5)

    def test_syncing_is_told_by_how_much_longer_it_takes(self):
        self.assertEqual(self.figure('sync.cabinets', runs_of(synced=[3], unsynced=[2])), 1.5)

    def test_only_what_measures_it_waits_for_the_disk(self):
        place = mock.Mock()
        syncs = experiments.Syncs()
        syncs.prepare(place, syncs.steps)
        for step in syncs.steps:
            syncs.run_step(place, step)
        self.assertEqual([call.kwargs for call in place.rotate.call_args_list],
                         [{'sync': True}, {'sync': False}])

    def test_faults_are_those_of_the_further_cabinets_of_the_worst_kind(self):
        runs = {step: [Run(1, 1000 if step.startswith('few') else 1192)]
                for step in experiments.Faults.steps}
        self.assertEqual(self.figure('faults', runs), 1)
        runs['all.4wcoef'] = [Run(1, 1000 + 192 * 39)]
        self.assertEqual(self.figure('faults', runs), 39)

    def test_the_peak_is_to_what_the_body_allows(self):
        allowed = 2.2 * 3840 * 2160 * 18 + 64e6
        for part in (0.5, 1.5):
            runs = {'command': [Run(1, 1, part * allowed)]}
            self.assertAlmostEqual(self.figure('peak.9wcoef', runs), part)

    def test_growth_is_of_time_by_size_and_of_time_and_memory_by_count(self):
        sizes = {f'{w}x{h}': [Run(w * h * 1e-8)] for w, h in experiments.SIZES}
        self.assertAlmostEqual(self.figure('growth.size', sizes), 1)
        counts = {str(n): [Run(n**1.5, 1, 1e7 + 2000 * n)] for n in experiments.COUNTS}
        self.assertAlmostEqual(self.figure('growth.count', counts), 1.5)
        self.assertAlmostEqual(self.figure('growth.memory', counts), 2000)
        self.assertEqual((len(experiments.SIZES), len(experiments.COUNTS), experiments.COUNTS[-1]),
                         (5, 5, 20000))

    def test_single_runs_are_in_milliseconds(self):
        self.assertEqual(self.figure('start', runs_of(start=[0.003])), 3)
        self.assertEqual(self.figure('text', runs_of(command=[0.32])), 10)
        self.assertAlmostEqual(self.figure('dialog', runs_of(run=[0.144])), 1)

    def test_a_missing_peer_leaves_no_figure_and_other_rows_have_theirs(self):
        missing = {workplace.PYTHON_PEER}
        runs = runs_of(command=[1], write=[1], copy=[1], calls=[1], lz4=[4])
        result = self.row('screen-script.9fcoef').result(runs, missing)
        self.assertEqual((result.figure, result.holds, result.missing),
                         (None, None, (workplace.PYTHON_PEER,)))
        self.assertEqual(self.row('screen-lz4.9fcoef').result(runs, missing).figure, 0.25)

    def test_a_row_names_all_that_its_steps_miss(self):
        memory, core = workplace.MEMORY_FOLDER, workplace.SECOND_CORE
        for key, lacking in (('cabinets.9fcoef', (workplace.PYTHON_PEER, memory)),
                             ('cores.cabinets', (memory, core)), ('cores.screen', (core,)),
                             ('growth.count', (memory,)), ('info.9fcoef', (workplace.LZ4_PEER,))):
            peers = {workplace.PYTHON_PEER, workplace.LZ4_PEER, memory, core}
            self.assertEqual(self.row(key).result({}, peers).missing, tuple(sorted(lacking)))

    def test_the_mean_needs_all_its_parts(self):
        mean, = rows.MEAN_ROWS
        parts = [Result(f'cabinets.{i}', '', '', None, figure) for i, figure in enumerate((2, 8))]
        self.assertAlmostEqual(mean.result([*parts, Result('start', '', '', None, 1)]).figure, 4)
        self.assertIsNone(mean.result(parts).limit)
        limited = [Result(f'cabinets.{i}', '', '', None, 1, limit=limit, limited_by='the disk')
                   for i, limit in enumerate((1, 9))]
        self.assertAlmostEqual(mean.result(limited).limit, 3)
        self.assertEqual(mean.result(limited).limited_by, 'the disk')
        absent = Result('cabinets.x', '', '', None, None, ('the peer',))
        self.assertEqual(mean.result([*parts, absent]).missing, ('the peer',))
        self.assertIsNone(mean.result([*parts, absent]).holds)
        self.assertEqual(rows.mean_rows(rows.chosen(['cabinets'])), [mean])
        self.assertEqual(rows.mean_rows(rows.chosen(['cabinets', 'start'])), [mean])
        self.assertEqual(rows.mean_rows(rows.chosen(['cabinets.9fcoef', 'start'])), [])

    def test_rows_are_chosen_by_name_or_by_the_part_before_the_dot(self):
        self.assertEqual(rows.chosen([]), list(rows.ROWS))
        self.assertEqual([row.key for row in rows.chosen(['start', 'turn.90'])],
                         ['turn.90', 'start'])
        self.assertEqual([row.key for row in rows.chosen(['turn'])],
                         ['turn.90', 'turn.180', 'turn.270'])
        for name in ('tur', 'turn.', 'screen', ''):
            self.assertRaises(KeyError, rows.chosen, [name])


class Rounds(unittest.TestCase):
    class Script(experiments.Experiment):
        steps = ('a', 'b')
        peers = {'b': 'the peer'}

        def __init__(self, seconds):
            self.seconds = seconds
            self.calls = []

        def run_step(self, _, step):
            self.calls.append(step)
            return Run(self.seconds)

    def test_steps_take_turns_five_times_when_short_and_three_times_when_long(self):
        short, long = self.Script(0.1), self.Script(10)
        runs = short.measure(mock.Mock(), ['a', 'b'])
        long.measure(mock.Mock(), ['a', 'b'])
        self.assertEqual(short.calls, ['a', 'b'] * 5)
        self.assertEqual(long.calls, ['a', 'b'] * 3)
        self.assertEqual(runs, {'a': [Run(0.1)] * 5, 'b': [Run(0.1)] * 5})

    def test_a_screen_is_measured_in_more_memory_than_cabinets(self):
        memory = {row.key: row.experiment.memory for row in rows.ROWS}
        for key in ('screen-copy.9fcoef', 'info.9fcoef', 'cores.screen', 'growth.size'):
            self.assertEqual(memory[key], 2 << 30, key)
        for key in ('cabinets.9fcoef', 'cores.cabinets', 'growth.count'):
            self.assertEqual(memory[key], 512 << 20, key)

    def test_a_process_of_its_own_touches_no_more_than_most_of_what_there_is(self):
        def bytes_taken(wanted, available):
            with mock.patch.object(workplace, 'available_bytes', return_value=available), \
                    mock.patch.object(workplace.subprocess, 'run') as started:
                touch_free_memory(wanted)
            (command,), options = started.call_args
            self.assertEqual(command[:2], [sys.executable, '-c'])
            self.assertEqual(options, {'check': True})
            taken = {}
            with mock.patch('mmap.mmap') as made:
                made.return_value.__setitem__ = lambda _, place, value: taken.update({place: value})
                exec(command[2], {})
            made.return_value.madvise.assert_called_once_with(mmap.MADV_HUGEPAGE)
            self.assertEqual(taken, {place: 1 for place in range(0, made.call_args.args[1],
                                                                mmap.PAGESIZE)})
            return made.call_args.args[1]

        self.assertEqual(bytes_taken(10 * mmap.PAGESIZE, 1 << 30), 10 * mmap.PAGESIZE)
        self.assertEqual(bytes_taken(1 << 30, 8 * mmap.PAGESIZE), 6 * mmap.PAGESIZE)
        for count in (0, 10 * mmap.PAGESIZE):
            touch_free_memory(count)  # raises unless the process ends well

    def test_rows_of_one_experiment_share_its_runs_and_missing_peers_are_not_run(self):
        script = self.Script(0.1)
        table = [rows.Row(key, '', '', None, script, steps, lambda runs: len(runs))
                 for key, steps in (('one', ('a',)), ('two', ('a', 'b')))]
        told = []
        results = run.measure(mock.Mock(), table, {'the peer'}, told.append)
        self.assertEqual(script.calls, ['a'] * 5)
        self.assertEqual(told, results)
        self.assertEqual([(result.key, result.figure) for result in results],
                         [('one', 1), ('two', None)])

    def test_each_experiment_has_its_rows_and_the_means_come_last(self):
        table = [rows.Row(row.key, '', '', None, self.Script(1 + i % 2), ('a',),
                          lambda runs: runs['a'].seconds)
                 for i, row in enumerate(rows.chosen(['cabinets']))]
        results = run.measure(mock.Mock(), table, set(), mock.Mock())
        self.assertEqual([result.key for result in results],
                         [*(row.key for row in table), 'cabinets'])
        self.assertEqual([result.figure for result in results[:-1]], [1, 2] * 4)
        self.assertAlmostEqual(results[-1].figure, math.sqrt(2))

    def test_nothing_is_run_in_memory_where_there_is_no_such_folder(self):
        with mock.patch.object(workplace, 'IN_MEMORY', pathlib.Path('/nowhere')):
            results = run.measure(mock.Mock(), rows.chosen(['cabinets.3bcoef', 'cores.cabinets', 'growth.count']),
                                  {workplace.MEMORY_FOLDER, workplace.SECOND_CORE}, mock.Mock())
        self.assertEqual([(result.key, result.figure, result.missing) for result in results],
                         [('cabinets.3bcoef', None, (workplace.MEMORY_FOLDER,)),
                          ('cores.cabinets', None, (workplace.MEMORY_FOLDER, workplace.SECOND_CORE)),
                          ('growth.count', None, (workplace.MEMORY_FOLDER,))])

    def test_nothing_is_run_where_only_a_missing_peer_would_be(self):
        script = self.Script(0.1)
        script.prepare = mock.Mock()
        row = rows.Row('one', '', '', None, script, ('b',), lambda runs: 1)
        self.assertEqual(run.measure(mock.Mock(), [row], {'the peer'}, mock.Mock())[0].missing, ('the peer',))
        script.prepare.assert_not_called()


class Programs(unittest.TestCase):
    """The script with programs that only pretend."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.program('trevolt-cli', 'for last; do :; done; echo >"$last/a"; [ "$2" = --angle ]')
        self.program('timed-run', '"$@"; echo $? 0.25 12 34')

    def program(self, name, script):
        path = self.folder / name
        path.write_text(f'#!/bin/sh\n{script}\n', encoding='utf-8')
        path.chmod(0o755)

    def place(self):
        return workplace.Workplace(self.folder, self.folder / 'work')

    def source(self, place, count):
        folder = place.fresh('source')
        for number in range(count):
            (folder / f'{number}').touch()
        return folder

    def main(self, *names):
        out, err = io.StringIO(), io.StringIO()
        results = self.folder / 'results.json'
        with mock.patch.object(sys, 'argv', ['run.py', str(self.folder), str(results), *names]), \
                contextlib.redirect_stdout(out), contextlib.redirect_stderr(err):
            status = run.main()
        return status, out.getvalue(), err.getvalue(), results

    def test_memory_is_touched_right_before_a_run(self):
        place = self.place()
        source = self.source(place, 1)
        place.memory = 5
        seen = []
        with mock.patch.object(workplace, 'touch_free_memory', side_effect=lambda count: seen.append(
                (count, list((place.folder / 'turned').iterdir())))):
            place.rotate(source)
            place.rotate(source)
            place.write(1)
        self.assertEqual(seen, [(5, [])] * 3)  # what the run before left is gone

    def test_an_experiment_tells_how_much_its_steps_take(self):
        place = mock.Mock()
        place.timed.return_value = Run(0.1)
        experiments.Start().measure(place, ['start'])
        self.assertEqual(place.memory, experiments.CABINETS_MEMORY)

    def test_a_run_tells_what_the_program_between_told(self):
        place = self.place()
        self.assertEqual(place.rotate(self.source(place, 1)), Run(0.25, 12, 34 * 1024))

    def test_nobody_waits_for_the_disk_unless_told(self):
        self.program('trevolt-cli', 'for last; do :; done; echo "$@" >"$last/a"')
        place = self.place()
        for sync in (False, True):
            place.rotate(self.source(place, 1), sync=sync)
            said = (place.folder / 'turned' / 'a').read_text(encoding='utf-8')
            self.assertEqual('--no-sync' in said.split(), not sync)

    def test_a_run_that_does_not_write_every_file_is_no_run(self):
        place = self.place()
        for count in (0, 2):
            with self.assertRaisesRegex(workplace.Failure, f'1 files were written of {count}'):
                place.rotate(self.source(place, count))

    def test_a_run_over_no_files_is_no_run(self):
        self.program('trevolt-cli', 'exit 0')
        place = self.place()
        with self.assertRaisesRegex(workplace.Failure, '0 files were written of 0'):
            place.rotate(self.source(place, 0))

    def test_a_timer_that_fails_times_nothing(self):
        self.program('timed-run', 'echo no process >&2; exit 1')
        with self.assertRaisesRegex(workplace.Failure, 'timed-run ended with 1: no process'):
            self.place().timed(['true'])

    def test_cabinets_are_copied_by_every_core(self):
        place = self.place()
        source = self.source(place, 5)
        for cores, each in ((3, 2), (5, 1), (1, 5)):
            with mock.patch.object(workplace.os, 'cpu_count', return_value=cores), \
                    mock.patch.object(place, 'timed', side_effect=place.timed) as timed:
                self.assertEqual(place.copy_on_every_core(source), Run(0.25, 12, 34 * 1024))
            self.assertIn(f'-P {cores} -n {each} cp', timed.call_args.args[0][2])
        self.assertEqual(sorted(path.name for path in (place.folder / 'turned').iterdir()),
                         sorted(path.name for path in source.iterdir()))

    def test_the_bare_work_of_cabinets_is_that_of_one_by_their_number(self):
        self.program('make-wall', 'mkdir -p "$1/$5" && touch "$1/$5/a" "$1/$5/b"')
        self.program('bare-lz4', '[ $# = 2 ] && [ ! -s "$1" ] && [ -s "$2" ] && echo 0.5')
        cabinets = experiments.Cabinets('9wcoef')
        with mock.patch.object(experiments.os, 'cpu_count', return_value=4):
            runs = cabinets.measure(self.place(), ['calls'])
        self.assertEqual(runs['calls'][0].seconds, 0.5 * 256 / 4)

    def test_a_screen_is_compared_with_a_file_of_its_size(self):
        place = mock.Mock()
        place.wall.return_value = self.source(self.place(), 1)
        (place.wall.return_value / '0').write_bytes(b'abc')
        screen = experiments.Screen('9fcoef')
        with mock.patch.object(experiments.os, 'sync'):
            screen.prepare(place, ())
        screen.run_step(place, 'write')
        place.write.assert_called_once_with(3)

    def test_each_step_of_cabinets_is_its_own_work(self):
        place, cabinets = mock.Mock(), experiments.Cabinets('9fcoef')
        cabinets.prepare(place, ())
        for step, work in (('command', place.rotate), ('script', place.peer_turn),
                           ('copy', place.copy_on_every_core)):
            self.assertIs(cabinets.run_step(place, step), work.return_value)

    def test_bytes_are_written_to_a_new_file(self):
        place = self.place()
        for count, least in ((5_000_001, 1e-6), (0, 0)):
            self.assertLessEqual(least, place.write(count).seconds)
            written = place.folder / 'turned' / 'written'
            self.assertEqual(written.read_bytes(), bytes(count))

    def test_many_files_lie_in_memory_while_they_are_counted(self):
        seen = []
        with mock.patch.object(workplace, 'IN_MEMORY', self.folder), \
                mock.patch.object(experiments.Experiment, 'measure',
                                  side_effect=lambda place, steps: seen.append(place) or 'runs'):
            for experiment in (experiments.Counts(), experiments.Cabinets('9fcoef'),
                               experiments.CabinetCores()):
                self.assertEqual(experiment.measure(self.place(), ()), 'runs')
                for step in experiment.steps:
                    self.assertIn(workplace.MEMORY_FOLDER, experiment.needs(step))
        for place in seen:
            self.assertEqual(place.programs, self.folder)
            self.assertEqual(place.folder.parent.parent, self.folder)
            self.assertFalse(place.folder.parent.exists())
        self.assertEqual(len(seen), 3)

    def test_a_failed_helper_is_told_with_what_it_said(self):
        self.program('make-wall', 'echo no room >&2; exit 1')
        with self.assertRaisesRegex(workplace.Failure, 'make-wall ended with 1: no room'):
            self.place().wall(1, 2, 3, '9fcoef')

    def test_a_run_that_fails_is_no_run(self):
        self.program('trevolt-cli', 'echo no disk >&2; exit 3')
        place = self.place()
        with self.assertRaisesRegex(workplace.Failure, 'trevolt-cli ended with 3: no disk'):
            place.rotate(self.source(place, 1))

    def test_a_screen_is_looked_at_beside_what_reads_it(self):
        self.program('make-wall', 'mkdir -p "$1/$5" && echo its header has 24 bytes:body >"$1/$5/a"')
        self.program('bare-lz4', '[ $# = 1 ] && echo 0.5')
        self.program('load-map', 'exit 0')
        self.program('trevolt-cli', 'for last; do :; done; [ "$1" = info ] || : >"$last"')
        self.program('timed-run', 'if [ "$1" = lz4 ]; then grep -qx body "$4"; else "$@" >/dev/null; fi\n'
                                  'echo $? 0.25 12 34')
        place = self.place()
        for kind, steps in (('9fcoef', ['info', 'preview', 'load', 'lz4']),
                            ('9wcoef', ['info', 'preview', 'load', 'read', 'calls', 'digest'])):
            look = experiments.Look(kind)
            with mock.patch.object(experiments, 'SCREEN_PIXELS', 5), \
                    mock.patch.object(experiments.os, 'sync') as sync:
                look.prepare(place, look.steps)
                sync.reset_mock()  # the screen's own, before what is made of it
                runs = look.measure(place, look.steps)
            sync.assert_called_once_with()
            self.assertEqual({step: run[0].seconds for step, run in runs.items()},
                             {step: 0.5 if step == 'calls' else 0.25 for step in steps})
        self.assertEqual((place.folder / 'body' / 'body.lz4').read_text(encoding='utf-8'), 'body\n')
        look = experiments.Look('9fcoef')
        self.program('trevolt-cli', 'exit 0')
        with self.assertRaisesRegex(workplace.Failure, 'no picture was written'):
            look.measure(place, ['preview'])

    def test_the_sum_of_a_word_file_is_of_as_many_bytes_as_its_words_have(self):
        self.program('make-wall', 'mkdir -p "$1/$5" && : >"$1/$5/a"')
        self.program('timed-run', '"$@" >/dev/null; echo $? 0.25 12 34')
        look = experiments.Look('9wcoef')
        with mock.patch.object(experiments, 'SCREEN_PIXELS', 5):
            runs = look.measure(self.place(), ['digest'])
        self.assertEqual(look.words.stat().st_size, 5 * 18)
        self.assertEqual(runs['digest'][0].seconds, 0.25)
        self.assertNotIn('digest', experiments.Look('9fcoef').steps)

    def test_outputs_do_not_stay_for_the_next_run(self):
        place = self.place()
        (place.fresh('turned') / 'old').touch()
        place.rotate(self.source(place, 1))
        self.assertEqual([path.name for path in (place.folder / 'turned').iterdir()], ['a'])

    def test_the_results_tell_machine_parameters_and_rows_and_no_path(self):
        self.program('trevolt-cli', 'exit 0')
        status, out, _, results = self.main('start')
        self.assertEqual(status, 0)
        self.assertIn('start', out)
        self.assertIn('0 of 1 goals hold', out)
        tables = json.loads(results.read_text(encoding='utf-8'))
        self.assertEqual(list(tables), ['machine', 'parameters', 'rows'])
        self.assertEqual(list(tables['machine']),
                         ['processor', 'cores', 'memory_bytes', 'load_before'])
        self.assertEqual(tables['parameters']['cabinets'], 256)
        self.assertEqual(tables['rows']['start']['figure'], 250)
        self.assertIs(tables['rows']['start']['holds'], False)
        self.assertNotIn(str(self.folder), results.read_text(encoding='utf-8'))
        self.assertFalse((self.folder / 'work').exists())

    def test_a_program_that_fails_ends_the_script_and_leaves_no_results(self):
        self.program('trevolt-cli', 'exit 3')
        status, _, err, results = self.main('start')
        self.assertEqual((status, err), (1, 'bench: trevolt-cli ended with 3: \n'))
        self.assertFalse(results.exists())
        self.assertFalse((self.folder / 'work').exists())

    def test_an_interrupt_leaves_neither_files_nor_results(self):
        with mock.patch.object(run, 'measure', side_effect=KeyboardInterrupt):
            status, _, err, results = self.main('start')
        self.assertEqual((status, err), (130, 'bench: interrupted\n'))
        self.assertFalse(results.exists())
        self.assertFalse((self.folder / 'work').exists())

    def test_a_name_of_no_row_is_refused(self):
        status, out, err, _ = self.main('nonsense')
        self.assertEqual((status, out), (2, ''))
        self.assertIn("'nonsense' is no row", err)
        self.assertIn('cabinets.9fcoef', err)


class Peers(unittest.TestCase):
    def test_what_is_not_there_is_missing(self):
        self.assertIn(workplace.LZ4_PEER, self.missing(which=None))
        self.assertNotIn(workplace.LZ4_PEER, self.missing(which='lz4'))
        self.assertIn(workplace.SECOND_CORE, self.missing(cores=1))
        self.assertNotIn(workplace.SECOND_CORE, self.missing(cores=2))
        self.assertIn(workplace.PYTHON_PEER, self.missing(executable='false'))
        self.assertNotIn(workplace.PYTHON_PEER, self.missing(executable='true'))

        self.assertIn(workplace.MEMORY_FOLDER, self.missing(free=(1 << 30) - 1))
        self.assertNotIn(workplace.MEMORY_FOLDER, self.missing(free=1 << 30))
        with mock.patch.object(workplace, 'IN_MEMORY', pathlib.Path('/nowhere')):
            self.assertIn(workplace.MEMORY_FOLDER, self.missing())

    @staticmethod
    def missing(which='lz4', cores=2, executable='true', free=1 << 30):
        usage = mock.Mock(free=free)
        with mock.patch('shutil.disk_usage', return_value=usage), \
                mock.patch('shutil.which', return_value=which), \
                mock.patch('os.cpu_count', return_value=cores), \
                mock.patch.object(sys, 'executable', executable):
            return workplace.missing_peers()


if __name__ == '__main__':
    unittest.main()
