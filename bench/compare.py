#!/usr/bin/env python3
"""Times whole runs of kelmora against a peer, alternating the two on the same input.

usage: compare.py [--kelmora PATH] [--peer xsltproc] [--runs N] [--largest] [--markdown FILE]
                  [FAMILY...]

Prints, for each family and size, the median user+sys time and the peak memory of both programs,
their ratios, and the exponent by which the time of kelmora grows between the two largest sizes.
With --markdown the same goes into a file as a table, with the commit, the machine and the date.
"""
import argparse
import dataclasses
import datetime
import math
import os
import pathlib
import re
import shlex
import statistics
import subprocess
import sys
import tempfile

from families import FAMILIES

STACK = '100000000'
MEASURE = str(pathlib.Path(__file__).resolve().with_name('measure.py'))


@dataclasses.dataclass
class Row:
    """One size of a family: user+sys seconds and MB of both programs."""
    size: int
    own: float
    peer: float
    own_mb: float
    peer_mb: float

    def time_ratio(self):
        return self.own / max(self.peer, 1e-4)

    def memory_ratio(self):
        return self.own_mb / self.peer_mb

    def text(self, between='  '):
        return between.join((f'{self.size:7}', f'{self.own * 1000:8.1f}',
                             f'{self.peer * 1000:8.1f}', f'{self.time_ratio():6.2f}',
                             f'{self.own_mb:7.1f}', f'{self.peer_mb:7.1f}',
                             f'{self.memory_ratio():6.2f}'))


@dataclasses.dataclass
class Family:
    name: str
    rows: list

    def exponent(self):
        """By which the time grows between the two largest sizes; None with one size."""
        if len(self.rows) < 2:
            return None
        small, large = self.rows[-2:]
        return math.log(large.own / max(small.own, 1e-4)) / math.log(large.size / small.size)


def run(command, directory):
    """User+sys seconds and peak memory in KiB of one run; its streams are dropped."""
    output = subprocess.run([sys.executable, '-I', '-S', MEASURE, *map(str, command)],
                            cwd=directory, capture_output=True, text=True, check=True).stdout
    seconds, kib = output.split()
    return float(seconds), int(kib)


def commands(options, source, stylesheet):
    ours = [options.kelmora, '-xml', source, '-xsl', stylesheet, '-out', 'out.kelmora',
            '-xslstack', STACK]
    peer = [options.peer, '--maxdepth', '1000000', '-o', 'out.peer', stylesheet, source]
    return ours, peer


def measure(options, source, stylesheet, directory):
    ours, peer = commands(options, source, stylesheet)
    times, peaks = ([], []), ([], [])
    for _ in range(options.runs):
        for which, command in enumerate((ours, peer)):
            seconds, kib = run(command, directory)
            times[which].append(seconds)
            peaks[which].append(kib)
    if not (directory / 'out.kelmora').exists():
        sys.exit(f'no result for {source}')
    return [statistics.median(series) for series in (*times, *peaks)]


def compare_family(name, options):
    function, sizes = FAMILIES[name]
    if options.largest:
        sizes = sizes[-1:]
    rows = []
    with tempfile.TemporaryDirectory() as scratch:
        directory = pathlib.Path(scratch)
        for size in sizes:
            source, stylesheet = function(directory, size)
            own, peer, own_kib, peer_kib = measure(options, source, stylesheet, directory)
            rows.append(Row(size, own, peer, own_kib / 1024, peer_kib / 1024))
            print(f'{name:18} {rows[-1].text()}', flush=True)
    return Family(name, rows)


def geometric_mean(values):
    return math.exp(sum(math.log(value) for value in values) / len(values))


def means(families):
    largest = [family.rows[-1] for family in families]
    return (f'geometric mean of the ratios at the largest sizes: '
            f'time {geometric_mean([row.time_ratio() for row in largest]):.2f}, '
            f'memory {geometric_mean([row.memory_ratio() for row in largest]):.2f}')


def machine():
    try:
        model = re.search(r'^model name\s*: (.*)$', pathlib.Path('/proc/cpuinfo').read_text(),
                          re.MULTILINE).group(1)
    except (OSError, AttributeError):
        model = 'unknown processor'
    return f'{os.cpu_count()} cores, {model}'


def output_of(*command):
    try:
        done = subprocess.run(command, capture_output=True, text=True, check=True,
                              cwd=pathlib.Path(__file__).parent)
    except (OSError, subprocess.CalledProcessError):
        return 'unknown'
    return done.stdout.strip().partition('\n')[0]


NOTES = pathlib.Path(__file__).with_name('results_notes.md')


def write_markdown(options, families):
    arguments = shlex.join(['bench/compare.py', *options.shown_arguments])
    lines = ['# Whole runs beside a C peer', '',
             f'- Commit: {output_of("git", "rev-parse", "--short=12", "HEAD")}',
             f'- Date: {datetime.date.today().isoformat()}',
             f'- Machine: {machine()}',
             f'- Peer: {options.peer}, {output_of(options.peer, "--version")}',
             f'- Command: `python3 {arguments}`, {options.runs} runs of each program', '',
             'Times are the median of user+sys, memory is the median of the peaks; a ratio below 1 '
             'is in favour of kelmora. The exponent is that of the growth of the time between the '
             'two largest sizes.', '',
             '| family | size | ms | peer ms | ratio | MB | peer MB | ratio | exponent |',
             '|---|--:|--:|--:|--:|--:|--:|--:|--:|']
    for family in families:
        for row in family.rows:
            is_last = row is family.rows[-1] and family.exponent() is not None
            cells = re.sub(' +', ' ', row.text(' | '))
            exponent = f'{family.exponent():.2f}' if is_last else ''
            lines.append(f'| {family.name} |{cells} | {exponent} |')
    lines += ['', means(families).capitalize() + '.', '', NOTES.read_text(encoding='utf-8')]
    pathlib.Path(options.markdown).write_text('\n'.join(lines), encoding='utf-8')


def main():
    here = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('families', nargs='*', default=list(FAMILIES))
    parser.add_argument('--kelmora', default=str(here.parent / 'build' / 'kelmora'))
    parser.add_argument('--peer', default='xsltproc')
    parser.add_argument('--runs', type=int, default=5)
    parser.add_argument('--largest', action='store_true', help='only the largest size of each')
    parser.add_argument('--markdown', metavar='FILE', help='write the table there too')
    options = parser.parse_args()
    options.shown_arguments = [a for a in sys.argv[1:] if a not in ('--kelmora', options.kelmora)]
    options.kelmora = str(pathlib.Path(options.kelmora).resolve())  # it runs in another directory
    print(f'{"family":18} {"size":>7}  {"ms":>8}  {"peer ms":>8}  {"ratio":>6}  {"MB":>7}  '
          f'{"peer MB":>7}  {"ratio":>6}')
    families = [compare_family(name, options) for name in options.families]
    for family in families:
        if family.exponent() is not None:
            print(f'{family.name:18} grows with exponent {family.exponent():.2f}')
    print(means(families))
    if options.markdown:
        write_markdown(options, families)


if __name__ == '__main__':
    main()
