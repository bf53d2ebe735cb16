#!/usr/bin/python3
"""Measures the command beside its peers and prints each row's figure, its goal and whether it holds.

    run.py PROGRAMS RESULTS.json [ROW ...]

PROGRAMS is the folder of the built programs. A row is named by its key or by the part before its dot;
without names all are measured. The files that are worked on lie beside the results while it runs.
Ends with 0 whatever the figures are, 1 when a program fails, 2 for a name that is no row's, 130 when
interrupted.
"""
import json
import os
import pathlib
import sys
import time

sys.dont_write_bytecode = True

import experiments
import rows
import workplace
from figures import summary
from workplace import Failure, Workplace, missing_peers

BUSY_LOAD = 0.25  # of each core


def machine():
    with open('/proc/cpuinfo', encoding='utf-8') as lines:
        names = [line.split(':', 1)[1].strip() for line in lines if line.startswith('model name')]
    return {'processor': names[0] if names else os.uname().machine, 'cores': os.cpu_count(),
            'memory_bytes': os.sysconf('SC_PHYS_PAGES') * os.sysconf('SC_PAGE_SIZE'),
            'load_before': round(os.getloadavg()[0], 2)}


def parameters():
    """Every constant of the experiments."""
    return {name.lower(): value for name, value in vars(experiments).items()
            if name.isupper() and not hasattr(workplace, name)}


def measure(place, wanted, missing, told):
    """Results of the rows; the rows of one experiment come from the same runs."""
    results = []
    for experiment in dict.fromkeys(row.experiment for row in wanted):
        its_rows = [row for row in wanted if row.experiment is experiment]
        steps = [step for step in experiment.steps
                 if any(step in row.steps for row in its_rows)
                 and not experiment.needs(step) & missing]
        runs = experiment.measure(place, steps) if steps else {}
        for row in its_rows:
            results.append(row.result(runs, missing))
            told(results[-1])
    for mean in rows.mean_rows(wanted):
        results.append(mean.result(results))
        told(results[-1])
    return results


def write_results(path, about, results):
    tables = {'machine': about, 'parameters': parameters(),
              'rows': {result.key: result.as_json() for result in results}}
    path.write_text(json.dumps(tables, indent=1, ensure_ascii=False) + '\n', encoding='utf-8')


def main():
    programs, path = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    try:
        wanted = rows.chosen(sys.argv[3:])
    except KeyError as unknown:
        print(f'bench: {unknown} is no row; the rows are', *(row.key for row in rows.ROWS),
              file=sys.stderr)
        return 2
    about = machine()
    print(f"{about['processor']}, {about['cores']} cores, {about['memory_bytes'] / 2**30:.1f} GiB, "
          f"load {about['load_before']}", flush=True)
    if about['load_before'] > about['cores'] * BUSY_LOAD:
        print('others work on this machine: the figures tell little', flush=True)
    start = time.monotonic()
    place = Workplace(programs, path.parent / 'work')
    try:
        results = measure(place, wanted, missing_peers(),
                          lambda result: print(result, flush=True))
    except Failure as failure:
        print(f'bench: {failure}', file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        print('bench: interrupted', file=sys.stderr)
        return 130
    finally:
        place.remove()
    write_results(path, about, results)
    print(f'{summary(results)}; {time.monotonic() - start:.0f} s')
    return 0


if __name__ == '__main__':
    sys.exit(main())
