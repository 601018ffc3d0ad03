#!/usr/bin/env python3
"""Makes small faults in the sources, one at a time, and tells which ones no test notices.

usage: mutate.py FOLDER... [--count N] [--seed N] [--scratch DIRECTORY]
       mutate.py --since COMMIT [...]          only lines that were changed since then

A mutant is one fault: another operator, a bound moved by one, another constant, a condition that is
always met or never, a statement that is gone. Mutants are taken from the subsystems in turn, at
random. The tree is copied to build-mutants/ and built there; each mutant is built, and the tests
that cover its file run until one fails. A mutant that does not compile counts for nothing, one that
runs into a time limit is caught. Ten of them take some minutes.
"""
import argparse
import collections
import difflib
import json
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import time

SOURCES = pathlib.Path(__file__).resolve().parent.parent
BUILD_SECONDS, TEST_SECONDS = 900, 120
MEMORY = 4 << 30     # bytes of address space for a test

# The folder of a subsystem, and what covers it beside EVERYWHERE: names of CTest.
TESTS = {
    'Libs/tqcore': ['tqcore_test'],
    'Libs/ystreamimpl': ['ystreamimpl_test'],
    'Libs/parso': ['parso_test', 'fuzz_document', 'fuzz_dtd'],
    'Libs/xmlutil/unicode': ['unicode_test', 'xmlutil_test'],
    'Libs/xmlutil': ['xmlutil_test', 'fuzz_dtd', 'fuzz_schema', 'fuzz_regexp'],
    'encodings': ['encodings_test', 'fuzz_decoder'],
    'xmltree': ['xmltree_test', 'fuzz_document'],
    'xpath': ['xpath_test', 'fuzz_xpath', 'fuzz_numberpattern'],
    'output': ['output_test'],
    'xslt': ['xslt_core_test', 'xslt_instructions_test', 'fuzz_attributetemplate'],
    'driver': [],
}
EVERYWHERE = ['cases', 'examples']

# What is left alone: comments, texts, characters, preprocessor lines, asserts. Then what changes.
TOKEN = re.compile(r'''
    (?P<skip> //[^\n]* | /\*.*?\*/ | ^[ \t]*\#(?:[^\n]*\\\n)*[^\n]* | \b(?:static_)?assert\b[^;]*;
      | (?:u8|u|U|L)?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)" | (?:u8|u|U|L)?"(?:\\.|[^"\\\n])*"
      | (?<![0-9a-fA-F])'(?:\\.[^']*|[^'\\\n])' )
  | (?P<statement> ^[ ]+ (?:
        [\w.\[\]]+ (?:(?:->|::)[\w.\[\]]+)* (?:[ ][-+*/%|&^]?=[ ][^;{}\n]*|\([^;{}\n]*\))
      | break | continue | return | (?:\+\+|--)[\w.>-]+ | [\w.>-]+(?:\+\+|--) ) ;$ )
  | (?P<condition> \b(?:if|while)[ ]\((?!.*;.*\))(?P<test>[^\n]*)\)(?=[ ]?[{\w][^\n]*$) )
  | (?P<number> (?<![\w.'])(?:0[xX][0-9a-fA-F]+|\d+)(?![\w.']) )
  | (?P<word> \b(?:true|false)\b )
  | (?P<operator> (?<=[ ])(?:==|!=|<=|>=|&&|\|\||\+=|-=|[-+*/%<>&|])(?=[ \n])
      | (?<=[( ])!(?=[\w(]) )
''', re.X | re.S | re.M)
OPERATORS = {
    '==': ['!='], '!=': ['=='],
    '<=': ['<', '>'], '>=': ['>', '<'], '<': ['<=', '>='], '>': ['>=', '<='],
    '&&': ['||'], '||': ['&&'], '+=': ['-='], '-=': ['+='], '+': ['-'], '-': ['+'], '*': ['+'],
    '/': ['*'], '%': ['/'], '&': ['|'], '|': ['&'], '!': [''], 'true': ['false'], 'false': ['true'],
}
Mutant = collections.namedtuple('Mutant', 'file start end text')


def replacements(kind, text):
    if kind == 'statement':
        return [re.match(' *', text)[0] + ';']
    if kind == 'number':
        value = int(text, 0)
        return [str(value + 1)] + ([str(value - 1)] if value > 0 else [])
    return OPERATORS[text]


def mutants(file, lines):
    """All mutants of a file, or those of the lines with these numbers."""
    text = (SOURCES / file).read_text(encoding='utf-8')
    at = 0
    while (found := TOKEN.search(text, at)) is not None:
        kind = found.lastgroup if found.lastgroup not in ('mark', 'test') else (
            'condition' if found['condition'] else 'skip')
        at = found.end()
        if lines is not None and text.count('\n', 0, found.start()) + 1 not in lines:
            at = found.end() if kind == 'skip' else found.start() + 1
        elif kind == 'condition':
            for value in ('true', 'false'):
                yield Mutant(file, *found.span('test'), value)
            at = found.start('test')
        elif kind != 'skip':
            for new in replacements(kind, found[0]):
                yield Mutant(file, *found.span(), new)
            if kind == 'statement':     # what is inside it is looked at, too
                at = found.start() + len(re.match(' *', found[0])[0])


def changed_lines(commit):
    """The numbers of the lines of each file that were changed since a commit."""
    told = subprocess.run(['git', 'diff', '-U0', commit, '--', '*.cpp', '*.h'], cwd=SOURCES,
                          capture_output=True, text=True, check=True).stdout
    changed, file = collections.defaultdict(set), None
    for line in told.splitlines():
        if line.startswith('+++ '):
            file = line[6:]
        elif found := re.match(r'@@ \S+ \+(\d+)(?:,(\d+))?', line):
            first = int(found[1])
            changed[file].update(range(first, first + int(found[2] or 1)))
    return changed


def tracked(*patterns):
    told = subprocess.run(['git', 'ls-files', '-z', *patterns], cwd=SOURCES, capture_output=True,
                          text=True, check=True).stdout
    return told.split('\0')[:-1]


def subsystem(file):
    return max((name for name in TESTS if file.startswith(name + '/')), key=len, default=None)


def choose(options, seed):
    """Mutants of each subsystem in turn, as many as asked for."""
    changed = changed_lines(options.since) if options.since else None
    found = collections.defaultdict(list)
    for file in sorted(tracked('*.cpp', '*.h')):
        inside = any(file.startswith(folder.rstrip('/') + '/') for folder in options.folders)
        if '/tests/' in file or subsystem(file) is None or (options.folders and not inside):
            continue
        if changed is None or file in changed:
            found[subsystem(file)] += mutants(file, None if changed is None else changed[file])
    for name in sorted(found):
        random.Random('%d %s' % (seed, name)).shuffle(found[name])
        print('%s: %d mutants to choose from' % (name, len(found[name])), flush=True)
    turns = max(map(len, found.values()), default=0)
    taken = [found[name][turn:turn + 1] for turn in range(turns) for name in sorted(found)]
    return [mutant for one in taken for mutant in one][:options.count]


def run(command, seconds, directory, memory=None):
    """Whether it ended well in time; whatever it started ends with it."""
    limit = (lambda: resource.setrlimit(resource.RLIMIT_AS, (memory, memory))) if memory else None
    nothing = subprocess.DEVNULL
    with subprocess.Popen(command, cwd=directory, stdin=nothing, stdout=nothing, stderr=nothing,
                          start_new_session=True, preexec_fn=limit) as process:
        try:
            return process.wait(seconds) in (0, 77)     # 77: skipped
        except subprocess.TimeoutExpired:
            return False
        finally:
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass


class Scratch:
    """A copy of the tracked files as they are, and its build."""

    def __init__(self, directory):
        self.tree, self.build = directory, directory / 'build'
        names = {name for name in tracked() if (SOURCES / name).is_file()}
        for path in [path for path in self.tree.rglob('*') if path.is_file()]:
            if self.build not in path.parents and str(path.relative_to(self.tree)) not in names:
                path.unlink()
        for name in names:     # an equal file keeps its time, so that it is not built again
            path = self.tree / name
            if not path.is_file() or path.read_bytes() != (SOURCES / name).read_bytes():
                path.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(SOURCES / name, path)
        # The flags and the relative paths of the release build, so that ccache knows most of it.
        subprocess.run(['cmake', '-G', 'Ninja', '-S', self.tree, '-B', self.build,
                        '-DCMAKE_BUILD_TYPE=Release', '-DCMAKE_CXX_FLAGS_RELEASE=-O2 -DNDEBUG'],
                       check=True, stdout=subprocess.DEVNULL)

    def make(self, tests):
        targets = ['kelmora'] + [name for name in tests if name.endswith('_test') or 'fuzz' in name]
        return run(['ninja', '-j2', '-C', str(self.build), *targets], BUILD_SECONDS, self.build)

    def first_failure(self, tests):
        told = subprocess.run(['ctest', '--show-only=json-v1'], cwd=self.build, capture_output=True,
                              check=True).stdout
        commands = {test['name']: test.get('command') for test in json.loads(told)['tests']}
        return next((name for name in tests
                     if not run(commands[name], TEST_SECONDS, self.build, MEMORY)), None)

    def judge(self, mutant, tests):
        """None: it does not compile. Else the test that fails, or an empty text."""
        file = self.tree / mutant.file
        right = file.read_text(encoding='utf-8')
        file.write_text(right[:mutant.start] + mutant.text + right[mutant.end:], encoding='utf-8')
        try:
            return (self.first_failure(tests) or '') if self.make(tests) else None
        finally:
            file.write_text(right, encoding='utf-8')


def difference(mutant):
    text = (SOURCES / mutant.file).read_text(encoding='utf-8')
    new = text[:mutant.start] + mutant.text + text[mutant.end:]
    lines = difflib.unified_diff(text.splitlines(), new.splitlines(), n=1, lineterm='')
    line = text.count('\n', 0, mutant.start) + 1
    return '%s:%d\n%s' % (mutant.file, line, '\n'.join([*lines][2:]))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument('folders', nargs='*')
    parser.add_argument('--since')
    parser.add_argument('--count', type=int, default=20)
    parser.add_argument('--seed', type=int, default=int(time.time()))
    parser.add_argument('--scratch', type=pathlib.Path, default=SOURCES / 'build-mutants')
    options = parser.parse_args()
    if not options.folders and not options.since:
        parser.error('a folder or --since COMMIT is wanted')
    print('--seed %d' % options.seed, flush=True)
    chosen = choose(options, options.seed)
    scratch = Scratch(options.scratch.resolve())
    for name in sorted({subsystem(mutant.file) for mutant in chosen}):
        tests = TESTS[name] + EVERYWHERE
        if not scratch.make(tests) or (failed := scratch.first_failure(tests)):
            sys.exit('%s: fails without a mutant: %s' % (name, failed or 'the build'))
    valid, caught = collections.Counter(), collections.Counter()
    for number, mutant in enumerate(chosen, 1):
        name = subsystem(mutant.file)
        failed = scratch.judge(mutant, TESTS[name] + EVERYWHERE)
        print('%d/%d %s' % (number, len(chosen), 'does not compile' if failed is None else
                            'caught by ' + failed if failed else 'SURVIVES ' + difference(mutant)),
              flush=True)
        valid[name] += failed is not None
        caught[name] += bool(failed)
    for name in [*sorted(valid), 'all']:
        total, hits = (sum(valid.values()), sum(caught.values())) if name == 'all' else (
            valid[name], caught[name])
        print('%-22s %4d of %4d caught, %5.1f %%' % (name, hits, total, 100 * hits / max(total, 1)))


if __name__ == '__main__':
    main()
