#!/usr/bin/python3
"""A folder that is turned in shards, by GNU Parallel or as a Slurm job array.

    cluster_test.py PROGRAM ENGINE CABINETS

ENGINE is parallel, or slurm, which must be up (tools/with-slurm.sh). One shard of eight is killed in the middle
and started again; what all of them wrote is compared file by file with one run's.
"""
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
SAMPLES = ROOT / 'samples' / 'cabinet'
EXAMPLES = ROOT / 'examples' / 'cluster'
SHARDS = 8
KILLED = 3
MOST_TRIES = 50
KINDS = ('9fcoef', '3fcoef', '9bcoef', '3bcoef', '9wcoef', '3wcoef', '4wcoef', '12wcoef', 'cccoef')


def check(is_right, what):
    if not is_right:
        raise SystemExit(f'cluster: {what}')


def make_wall(folder, count):
    folder.mkdir()
    samples = [next(SAMPLES.glob(f'*.{kind}')) for kind in KINDS]
    for i in range(count):
        sample = samples[i % len(samples)]
        shutil.copyfile(sample, folder / f'Cab_{i:05}{sample.suffix}')


class Place:
    def __init__(self, program, folder, count):
        self.program, self.count = program, count
        self.wall, self.turned = folder / 'wall', folder / 'turned'
        self.whole, self.reports = folder / 'whole', folder / 'reports'
        make_wall(self.wall, count)
        for made in (self.turned, self.reports):
            made.mkdir()

    def environment(self):
        return dict(os.environ, TREVOLT_CLI=str(self.program), SOURCE=str(self.wall),
                    TARGET=str(self.turned), REPORTS=str(self.reports))

    def turn_whole(self):
        done = subprocess.run([self.program, 'rotate', '--angle', '90', self.wall, self.whole],
                              stdout=subprocess.DEVNULL, check=False)
        check(done.returncode == 0, 'the one run fails')

    def start_task(self, number):
        """The job file as an array's task."""
        return subprocess.Popen(
            ['sh', EXAMPLES / 'rotate.sbatch'],
            env=self.environment() | {'SLURM_ARRAY_TASK_ID': str(number),
                                      'SLURM_ARRAY_TASK_COUNT': str(SHARDS),
                                      'SLURM_CPUS_PER_TASK': '1'})

    def killed_report(self):
        return self.reports / f'shard-{KILLED}.json'

    def told_files(self):
        """How many files the shard that is killed has told of."""
        report = self.killed_report()
        return report.read_text(encoding='utf-8').count('"type":"file"') if report.exists() else 0

    def has_ended(self):
        return '"type":"summary"' in self.killed_report().read_text(encoding='utf-8')

    def kill_in_the_middle(self):
        """A shard that has told of something and not of all; one that was quicker is tried again."""
        for _ in range(MOST_TRIES):
            for path in self.turned.iterdir():
                path.unlink()
            task = self.start_task(KILLED)
            while self.told_files() == 0 and task.poll() is None:
                time.sleep(0.0005)
            task.send_signal(signal.SIGKILL)
            task.wait()
            if not self.has_ended():
                self.told_before = self.told_files()
                return
            self.killed_report().unlink()
        raise SystemExit('cluster: no shard could be killed before its end')

    def check_outputs(self):
        names = sorted(os.listdir(self.whole))
        check(len(names) == self.count, f'the one run wrote {len(names)} files')
        check(sorted(os.listdir(self.turned)) == names, 'the shards wrote other files')
        for name in names:
            check((self.turned / name).read_bytes() == (self.whole / name).read_bytes(),
                  f'{name} differs')

    def merged_report(self, pattern='shard-*.json'):
        merged = subprocess.run(['jq', '--null-input', '--raw-input', '--from-file',
                                 EXAMPLES / 'merge-reports.jq', *sorted(self.reports.glob(pattern))],
                                stdout=subprocess.PIPE, check=True)
        return json.loads(merged.stdout)

    def check_report_of_killed(self):
        report = self.merged_report()
        check(report['shards_ended'] < SHARDS and report['exit_status'] is None,
              'the killed shard is not told')

    def check_report(self):
        report = self.merged_report()
        check(report['shards'] == report['shards_ended'] == SHARDS, 'a shard has no summary')
        check(report['written'] + report['skipped'] == self.count and report['failed'] == 0,
              'the report does not add up')
        check(report['skipped'] >= self.told_before > 0, 'the restarted shard began anew')
        check([file['name'] for file in report['files']] == sorted(os.listdir(self.wall)),
              'the report lacks files')
        check(report['exit_status'] == 0, 'the report tells of a failure')
        return report

    def check_report_of_some(self):
        """One that is made too early: the first shard has not begun."""
        report = self.merged_report('shard-[!1].json')
        check((report['shards'], report['shards_ended'], report['exit_status']) ==
              (SHARDS, SHARDS - 1, None), 'a shard that has not begun is taken for done')

    def check_report_of_attempts(self):
        """One beside that of a shard's killed attempt."""
        attempt = self.reports / 'shard-0.json'
        lines = self.killed_report().read_text(encoding='utf-8').splitlines(keepends=True)
        attempt.write_text(''.join(lines[:-1]), encoding='utf-8')
        report = self.merged_report()
        check((report['shards_ended'], report['exit_status']) == (SHARDS, 0),
              'a shard that was started again is taken for killed')
        summary = lines[-1]
        for key, value, failed in (('errors', '[]', '["no disk"]'), ('exit_status', '0', '1'),
                                   ('manifest_error', 'null', '"no room"'),
                                   ('report_error', 'null', '"no page"')):
            summary = summary.replace(f'"{key}":{value}', f'"{key}":{failed}')
        attempt.write_text(''.join(lines[:-1]) + summary, encoding='utf-8')
        report = self.merged_report()
        check((report['errors'], report['exit_status']) == (['no disk', 'no page', 'no room'], 1),
              'what failed beside the files is not told')
        attempt.write_text(''.join(lines), encoding='utf-8')
        report = self.merged_report('shard-[!1].json')
        check((report['shards_ended'], report['exit_status']) == (SHARDS - 1, None),
              'a shard that ended twice hides one that has not begun')
        attempt.write_text(''.join(lines[:-2]) + lines[-2][:40], encoding='utf-8')
        report = self.merged_report()
        check((report['shards_ended'], report['exit_status']) == (SHARDS, 0),
              'a line that is cut hides the next report')
        attempt.unlink()


def run_parallel(place):
    place.kill_in_the_middle()
    place.check_report_of_killed()
    command = ('SLURM_ARRAY_TASK_ID={} SLURM_ARRAY_TASK_COUNT=%d sh %s' %
               (SHARDS, EXAMPLES / 'rotate.sbatch'))
    subprocess.run(['parallel', '--will-cite', '-j', '2', command, ':::',
                    *map(str, range(1, SHARDS + 1))], env=place.environment(), check=True)


def told(*command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True,
                          **options).stdout.strip()


def await_end(job):
    while told('squeue', '--noheader', '--job', job):
        time.sleep(0.2)


def run_slurm(place):
    """The scheduler itself starts the killed task again."""
    job = told('sbatch', '--parsable', f'--chdir={place.reports}', '--output=/dev/null',
               '--export=ALL', str(EXAMPLES / 'rotate.sbatch'), env=place.environment())
    while place.told_files() == 0:
        time.sleep(0.001)
    subprocess.run(['pkill', '-KILL', '-f', '--', f'--shard {KILLED}/{SHARDS} .*{place.turned}'],
                   check=True)
    await_end(job)
    check(not place.has_ended(), 'the killed shard has a summary')
    place.told_before = place.told_files()
    place.check_report_of_killed()
    told('scontrol', 'requeue', f'{job}_{KILLED}')
    while not told('squeue', '--noheader', '--job', job):
        time.sleep(0.2)
    await_end(job)


ENGINES = {'parallel': run_parallel, 'slurm': run_slurm}


def main():
    program, engine, count = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2], int(sys.argv[3])
    with tempfile.TemporaryDirectory() as folder:
        place = Place(program, pathlib.Path(folder), count)
        place.turn_whole()
        ENGINES[engine](place)
        place.check_outputs()
        report = place.check_report()
        place.check_report_of_some()
        place.check_report_of_attempts()
    print(f'{count} cabinets in {SHARDS} shards by {engine}: as one run; '
          f'{report["skipped"]} skipped behind the restart')


if __name__ == '__main__':
    main()
