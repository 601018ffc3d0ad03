#!/usr/bin/env python3
"""Times whole runs of kelmora against a peer, alternating the two on the same input.

usage: compare.py [--kelmora PATH] [--peer xsltproc] [--runs N] [--largest] [FAMILY...]

Prints, for each family and size, the median user+sys time and the peak memory of both programs,
their ratios, and the exponent by which the time of kelmora grows between the two largest sizes.
"""
import argparse
import math
import pathlib
import statistics
import subprocess
import sys
import tempfile

from families import FAMILIES

STACK = '100000000'
MEASURE = str(pathlib.Path(__file__).resolve().with_name('measure.py'))


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
            rows.append((size, own, own / max(peer, 1e-4), own_kib / peer_kib))
            print(f'{name:18} {size:7}  {own * 1000:8.1f} ms {peer * 1000:8.1f} ms '
                  f'{rows[-1][2]:6.2f}   {own_kib / 1024:7.1f} MB {peer_kib / 1024:7.1f} MB '
                  f'{rows[-1][3]:6.2f}', flush=True)
    exponent = None
    if len(rows) > 1 and rows[-2][1] > 0:
        exponent = math.log(rows[-1][1] / rows[-2][1]) / math.log(rows[-1][0] / rows[-2][0])
        print(f'{name:18} grows with exponent {exponent:.2f}')
    return rows[-1][2], rows[-1][3], exponent


def geometric_mean(values):
    return math.exp(sum(math.log(value) for value in values) / len(values))


def main():
    here = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('families', nargs='*', default=list(FAMILIES))
    parser.add_argument('--kelmora', default=str(here.parent / 'build' / 'kelmora'))
    parser.add_argument('--peer', default='xsltproc')
    parser.add_argument('--runs', type=int, default=5)
    parser.add_argument('--largest', action='store_true', help='only the largest size of each')
    options = parser.parse_args()
    print(f'{"family":18} {"size":>7}  {"kelmora":>11} {"peer":>11} {"ratio":>6}   '
          f'{"kelmora":>10} {"peer":>10} {"ratio":>6}')
    results = [compare_family(name, options) for name in options.families]
    print(f'geometric mean of the ratios at the largest sizes: '
          f'time {geometric_mean([r[0] for r in results]):.2f}, '
          f'memory {geometric_mean([r[1] for r in results]):.2f}')


if __name__ == '__main__':
    main()
