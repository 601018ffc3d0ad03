#!/usr/bin/env python3
"""Holds the documents against the sources: messages, elements, attributes and functions that the
program knows, the libraries and who sees whom, the files and places that a document points to, and
that tables keyed by text have the hash that docs/robustness.md promises.

usage: documents.py [SOURCES]
"""
import pathlib
import re
import sys

# Libraries that stand elsewhere than in a folder of their name at the top.
FOLDERS = {name: 'Libs/' + name for name in ('tqcore', 'ystreamimpl', 'parso', 'xmlutil')}
FOLDERS['parsocompile'] = 'Libs/parso'
FOLDERS['unicode'] = 'Libs/xmlutil/unicode'


def rows(text, pattern):
    return re.findall(pattern, text, re.M)


def check_reference(read):
    """Everything that can be asked for or printed is found by a search for its words."""
    reference = read('docs/language.md').replace('\\|', '|')
    known = [text for text in rows(read('Libs/tqcore/resourcestrings.def'), r'u"([^"]+)"\)$')]
    known += ['`%s`' % name for name in rows(read('xslt/names/attributecodes.def'), r'u"([^"]+)"\)$')]
    known += ['xsl:' + name for name in rows(read('xslt/names/elementcodes.def'), r'u"([^"]+)"\)$')]
    known += ['`%s(' % name for name in rows(read('xpath/include/xpath/xpathfunctions.def'), r', u"([^"]+)", ')]
    if len(known) < 200:
        yield 'only %d names and messages were found in the sources' % len(known)
    for name in known:
        if name not in reference:
            yield 'docs/language.md does not tell of: ' + name


def check_libraries(read):
    """The table of who uses whom says what the build says."""
    told = dict(rows(read('docs/ARCHITECTURE.md'), r'^\| (\w+) \| `[\w/]+` \| ?([\w, ]*) ?\|$'))
    for name, names in told.items():
        build = read(FOLDERS.get(name, name) + '/CMakeLists.txt')
        found = re.search(r'kelmora_library\(%s\s[^)]*?DEPS ([\w ]+)\)' % name, build)
        wanted = set(found[1].split()) if found else set(rows(build, r'^  kelmora_(?!flags)(\w+)'))
        if set(names.replace(',', ' ').split()) != wanted:
            yield 'docs/ARCHITECTURE.md: %s uses %s' % (name, ', '.join(sorted(wanted)))
    declared = set(rows(read('CMakeLists.txt'), r'^add_subdirectory\((?:Libs/)?(\w+)\)'))
    for name in declared - set(told):
        yield 'docs/ARCHITECTURE.md does not tell of the library ' + name


def room_of(path, rooms):
    """The number of the room that a source or private header stands in; None for public headers."""
    folder = path.parent.name
    return rooms.index(folder) if folder in rooms else None


def check_rooms(read, sources):
    """In a library with rooms no include points to a room further up."""
    table = rows(read('docs/ARCHITECTURE.md'), r'^\| (\w+) \| (\w+(?:, \w+)+) \|$')
    rooms_of = {name: names.split(', ') for name, names in table
                if (sources / FOLDERS.get(name, name) / names.split(', ')[0]).is_dir()}
    if set(rooms_of) != {'xmlutil', 'xpath', 'xslt'}:
        yield 'docs/ARCHITECTURE.md: the table of rooms tells of ' + ', '.join(sorted(rooms_of))
    for name, rooms in rooms_of.items():
        folder = sources / FOLDERS.get(name, name)
        files = [path for pattern in ('*.cpp', '*.h') for path in folder.rglob(pattern)
                 if 'tests' not in path.relative_to(folder).parts]
        by_source = {path.stem: room_of(path, rooms) for path in files if path.suffix == '.cpp'}
        for path in files:
            own = room_of(path, rooms)
            own = by_source.get(path.stem) if own is None else own
            if own is None and path.suffix == '.cpp':
                yield '%s stands in no room of %s' % (path.name, name)
            for place, header in rows(read(path), r'^#include "(\w+)/(\w+)\.'):
                there = rooms.index(place) if place in rooms else None
                if place == name:
                    there = by_source.get(header)
                if own is not None and there is not None and there > own:
                    yield '%s: %s stands further up than %s' % (path.name, header, rooms[own])


def check_state(read, sources):
    """The table of the process's state names all parts of it."""
    table = read('docs/ARCHITECTURE.md').partition("| part of the process's state |")[2]
    told = set(rows(table.partition('\n\n')[0], r'`(\w+)`(?=.* \| )'))
    found = set()
    for path in sources.rglob('*.cpp'):
        if not path.relative_to(sources).parts[0].startswith('build'):
            found.update(rows(read(path), r'ProcessState::Of<(?:\w+::)*(\w+)>'))
    for name in sorted(told ^ found):
        yield 'docs/ARCHITECTURE.md and the sources differ about the state ' + name


def anchors(text):
    heads = rows(text, r'^#+ (.*)$')
    return {re.sub(r'[^\w\- ]', '', head.lower()).replace(' ', '-') for head in heads}


def check_pointers(read, sources):
    """What a link or a path in back quotes names is there."""
    for page in [*sources.glob('*.md'), *sources.glob('docs/*.md')]:
        text = read(page)
        for target in rows(text, r'\]\(([^)\s]+)\)'):
            name, _, anchor = target.partition('#')
            other = page.parent / name if name else page
            if not other.is_file():
                yield '%s: no file %s' % (page.name, target)
            elif anchor and anchor not in anchors(read(other)):
                yield '%s: no heading for %s' % (page.name, target)
        for path in rows(text, r'`((?:[\w.-]+/)+[\w-]+\.(?:cpp|h|def|py|txt|inc|sh|md))`'):
            if not path.startswith('build') and not (sources / path).is_file():
                yield '%s: no file %s' % (page.name, path)


def check_hashes(sources):
    """Tables that are keyed by text take the keyed hash of tqcore, and no other."""
    text_key = r'(?:TQString|\w*Name|NameKey|View|std::(?:u16)?string(?:_view)?)'
    tables = re.compile(r'unordered_(?:multi)?(?:map|set)<\s*%s\b[^;{]*' % text_key)
    number = 0
    for path in [*sources.rglob('*.h'), *sources.rglob('*.cpp')]:
        place = path.relative_to(sources)
        if place.parts[0].startswith('build') or {'tests', 'bench', 'fuzz'} & set(place.parts):
            continue
        text = path.read_text(encoding='utf-8')
        if re.search(r'std::hash<\s*%s' % text_key, text):
            yield '%s: std::hash of a text' % place
        for table in tables.findall(text):
            number += 1
            if not re.search(r'\b\w*(?:Text|Name)Hash\b', table):
                yield '%s: a table without TextHash: %s' % (place, table)
    if number < 10:
        yield 'only %d tables keyed by text were found in the sources' % number


def main():
    here = pathlib.Path(__file__).resolve().parent.parent
    sources = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else here

    def read(path):
        return (sources / path).read_text(encoding='utf-8')

    problems = [*check_reference(read), *check_libraries(read), *check_rooms(read, sources),
                *check_state(read, sources), *check_pointers(read, sources),
                *check_hashes(sources)]
    for line in problems:
        print(line)
    return 1 if problems else 0


if __name__ == '__main__':
    sys.exit(main())
