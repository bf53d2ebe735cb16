#!/usr/bin/python3
"""The commands of a page with what they print.

    tutorial_test.py PROGRAM PAGE

In each block marked "console" a line behind "$ " is run by a shell, all of them in one new folder, with
PROGRAM as trevolt-cli. The lines below it are its standard output: "..." stands for any lines, "[1]"
at the end for the exit state, which is 0 without it.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

COMMAND = '$ '
ANY_LINES = '...'
STATE = re.compile(r'\[(\d+)\]')


def steps_of(page):
    """(command, expected lines, exit state), in the page's order."""
    steps = []
    for block in re.findall(r'^```console\n(.*?)^```$', page, re.MULTILINE | re.DOTALL):
        for line in block.splitlines():
            if line.startswith(COMMAND):
                steps.append((line[len(COMMAND):], [], 0))
                continue
            command, lines, _ = steps[-1]
            if state := STATE.fullmatch(line):
                steps[-1] = (command, lines, int(state[1]))
            else:
                lines.append(line)
    return steps


def is_told(lines, expected):
    pattern = ''.join('(?:.*\n)*' if line == ANY_LINES else re.escape(line) + '\n'
                      for line in expected)
    return re.fullmatch(pattern, ''.join(line + '\n' for line in lines)) is not None


def main():
    program, page = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    steps = steps_of(page.read_text(encoding='utf-8'))
    if len(steps) < 5:
        raise SystemExit(f'{page.name}: only {len(steps)} commands were found')
    with tempfile.TemporaryDirectory() as folder:
        tools, place = pathlib.Path(folder, 'tools'), pathlib.Path(folder, 'place')
        tools.mkdir()
        place.mkdir()
        (tools / 'trevolt-cli').symlink_to(program)
        environment = dict(os.environ, PATH=f'{tools}:{os.environ["PATH"]}', LC_ALL='C.UTF-8')
        for command, expected, state in steps:
            done = subprocess.run(['sh', '-c', command], cwd=place, env=environment, check=False,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding='utf-8')
            if done.returncode != state or not is_told(done.stdout.splitlines(), expected):
                raise SystemExit(f'{page.name}: $ {command}\nended with {done.returncode} and told\n'
                                 f'{done.stdout}{done.stderr}')
    print(f'{page.name}: {len(steps)} commands do what the page says')


if __name__ == '__main__':
    main()
