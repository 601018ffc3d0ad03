#!/usr/bin/env python3
"""Runs golden cases: one folder is one run of the program, compared byte by byte.

usage: run_cases.py PROGRAM FOLDER... [-k TEXT] [-v] [--update]

A case is a folder with a subfolder "expected":

  args              one argument a line; without it: -xml in.xml -xsl in.xsl -out out
  args-2            of a second run, in the same directory, behind the first one
  any other file    input, copied into an empty directory in which the program is started
  expected/stdout   what the streams show; an absent one must be empty. Without expected/stdout a
  expected/stderr   run that writes a result must print an empty line and the name of the result
  expected/NAME     a file that must be there afterwards. Inputs must stay as they were, and no
                    other file may appear

@DIR@ stands for the directory of the run, in args and in what the streams show. The exit code must
be 0. --update rewrites the expectations from what the program did; look at the difference before
it is committed.
"""
import argparse
import concurrent.futures
import difflib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

ARGS_FILES = ('args', 'args-2')
DEFAULT_ARGS = ['-xml', 'in.xml', '-xsl', 'in.xsl', '-out', 'out']
TIMEOUT_SECONDS = 120
STREAMS = ('stdout', 'stderr')


def find_cases(folders, text):
    cases = []
    for folder in folders:
        for path in sorted(pathlib.Path(folder).rglob('expected')):
            if path.is_dir() and text in str(path.parent):
                cases.append(path.parent)
    return cases


def files_below(folder):
    return {str(path.relative_to(folder)): path.read_bytes()
            for path in folder.rglob('*') if path.is_file()}


def read_inputs(case):
    return {name: content for name, content in files_below(case).items()
            if name not in ARGS_FILES and not name.startswith('expected' + os.sep)}


def read_runs(case):
    """The arguments of each run."""
    runs = []
    for path in (case / name for name in ARGS_FILES):
        if path.exists():
            lines = path.read_bytes().split(b'\n')
            if lines[-1] == b'':
                lines.pop()
            runs.append([os.fsdecode(line) for line in lines])
    return runs or [DEFAULT_ARGS]


def result_name(args):
    names = [args[i + 1] for i in range(0, len(args) - 1, 2) if args[i] == '-out']
    return names[-1] if names else ''


def run(program, runs, inputs, directory):
    """Returns the exit codes and a dict: the two streams and every file that is there afterwards."""
    for name, content in inputs.items():
        path = directory / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
    place = str(directory)
    done = [subprocess.run([program] + [arg.replace('@DIR@', place) for arg in args], cwd=directory,
                           stdin=subprocess.DEVNULL, capture_output=True, timeout=TIMEOUT_SECONDS)
            for args in runs]
    seen = files_below(directory)
    for name in STREAMS:
        told = b''.join(getattr(one, name) for one in done)
        seen[name] = told.replace(os.fsencode(place), b'@DIR@')
    return [one.returncode for one in done], seen


def with_defaults(expected, inputs, runs):
    """Adds what a case doesn't need to say."""
    complete = dict(inputs)
    complete.update(expected)
    complete.setdefault('stderr', b'')
    if 'stdout' not in complete:
        written = [name for name in map(result_name, runs) if name in expected]
        complete['stdout'] = b''.join(os.fsencode('\n%s\n' % name) for name in written)
    return complete


def difference(name, want, got):
    if want is None:
        return ['%s: should not be there' % name]
    if got is None:
        return ['%s: missing' % name]
    # The repr of a line shows its line end and all that isn't printable.
    lines = [[repr(line)[2:-1] for line in text.splitlines(keepends=True)] for text in (want, got)]
    return list(difflib.unified_diff(*lines, '%s, wanted' % name, '%s, seen' % name, lineterm=''))


def update(case, seen, inputs, runs):
    folder = case / 'expected'
    shutil.rmtree(folder)
    folder.mkdir()
    changed = {name: content for name, content in seen.items()
               if name not in STREAMS and inputs.get(name) != content}
    for name in STREAMS:
        if seen[name] != with_defaults(changed, inputs, runs)[name]:
            changed[name] = seen[name]
    for name, content in changed.items():
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
    if not changed:
        (folder / 'stderr').write_bytes(b'')  # keeps the folder


def check(program, case, rewrite):
    runs, inputs = read_runs(case), read_inputs(case)
    with tempfile.TemporaryDirectory() as directory:
        place = pathlib.Path(directory).resolve()
        try:
            codes, seen = run(program, runs, inputs, place)
        except subprocess.TimeoutExpired:
            return ['no end within %d s' % TIMEOUT_SECONDS]
    if rewrite:
        update(case, seen, inputs, runs)
    want = with_defaults(files_below(case / 'expected'), inputs, runs)
    problems = ['exit code %d' % code for code in codes if code != 0]
    for name in sorted(set(want) | set(seen)):
        if want.get(name) != seen.get(name):
            problems += difference(name, want.get(name), seen.get(name))
    return problems


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n')[0])
    parser.add_argument('program')
    parser.add_argument('folders', nargs='+')
    parser.add_argument('-k', metavar='TEXT', default='', help='only cases with TEXT in the path')
    parser.add_argument('-v', action='store_true', help='name every case')
    parser.add_argument('--update', action='store_true', help='rewrite the expectations')
    options = parser.parse_args()

    program = os.path.abspath(options.program)
    if not os.access(program, os.X_OK):
        parser.error('no program %s' % program)
    cases = find_cases(options.folders, options.k)
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = pool.map(lambda case: check(program, case, options.update), cases)
        for case, problems in zip(cases, results):
            failed += bool(problems)
            if problems or options.v:
                print('%s %s' % ('FAIL' if problems else 'ok  ', case))
            for line in problems:
                print('    ' + line)
    print('%d of %d cases pass' % (len(cases) - failed, len(cases)))
    return 1 if failed or not cases else 0


if __name__ == '__main__':
    sys.exit(main())
