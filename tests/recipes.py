#!/usr/bin/env python3
"""Takes the scripts out of docs/recipes.md and tries them.

usage: recipes.py PROGRAM
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

RECIPES = pathlib.Path(__file__).resolve().parent.parent / 'docs/recipes.md'
STYLE = '''<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="html" encoding="US-ASCII"/>
<xsl:template match="/">
  <xsl:copy-of select="/"/><xsl:apply-templates select="//end | //bad"/>
</xsl:template>
<xsl:template match="end"><xsl:message terminate="yes">ended</xsl:message></xsl:template>
<xsl:template match="bad"><xsl:value-of select="nosuch()"/></xsl:template>
</xsl:stylesheet>
'''
# What a document holds; what its run is: 0 for a success, and whether it makes a result.
DOCUMENTS = [('<a/>', 0, True), ('<bad/>', 1, False), ('<end/>', 1, False),
             ('<a>&#233;</a>', 1, True), ('<a>', 1, False)]
BROKEN = '''
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <!-- a < b -->
  <xsl:template match="/">
    <p title="'{1}'">
      <xsl:value-of select="nosuch()"/>
    </p>
  </xsl:template>
</xsl:stylesheet>
'''
PROLOGS = [
    '', '<!-- a\n > -->', '<?p\n  a\n?>', '<!DOCTYPE a>', '<!DOCTYPE a [\n]\n>',
    '<!DOCTYPE  a  PUBLIC  "p"\n "d.dtd" [<!ENTITY\tb\n SYSTEM\n "c"  NDATA n >\n]>',
    '<!DOCTYPE a [\n  <!ENTITY b "x\n]>\n<y>">\n  <!-- ]>\n " -->\n  <?p\n ]> ?>\n]>',
    '<!DOCTYPE a [<!ENTITY  %  b  "<!-- -->">\n  %b;\n  <!NOTATION  n  PUBLIC  "x" >\n]>',
    '<!DOCTYPE a [\n<!ELEMENT a ( #PCDATA )>\n<!ELEMENT b (#PCDATA|c|\n d)*>'
    '<!ELEMENT c (a,(b|d)*,\ne? )+>]>',
    '<!DOCTYPE a [<!ATTLIST a\n b  CDATA  #IMPLIED\n c ( x\n| y ) #FIXED "x"'
    '  d NOTATION (n|m) "n">\n]>',
    '<!DOCTYPE a [<!ATTLIST a b CDATA \'"\'>\n<!ATTLIST a c CDATA "x\n">\n'
    '<!ATTLIST d c ID #REQUIRED>]>',
    '<!DOCTYPE a [<!ATTLIST a >\n<!ATTLIST b\n %p;>\n]>',
]


def block(language, text):
    """The script that holds the text."""
    page = RECIPES.read_text(encoding='utf-8')
    for found in re.findall(r'```%s\n(.*?)```' % language, page, re.S):
        if text in found:
            return found
    raise SystemExit('docs/recipes.md has no script with: ' + text)


def save(name, text):
    pathlib.Path(name).parent.mkdir(parents=True, exist_ok=True)
    pathlib.Path(name).write_text(text, encoding='utf-8')
    return name


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, timeout=60, check=False)


def try_place():
    save('place.py', block('python', 'place.py FILE LINE CHARACTER'))
    for prolog in PROLOGS:
        source = '<?xml version="1.0" encoding="UTF-8"?>\n' + prolog + BROKEN
        save('broken.xsl', source)
        told = run('kelmora', '-xml', '0.xml', '-xsl', 'broken.xsl', '-out', 'none').stderr
        place = re.search(r'at line (\d+) character (\d+)', told)
        got = run('python3', 'place.py', 'broken.xsl', *place.groups()).stdout if place else told
        line = source[:source.index('xsl:value-of')].count('\n') + 1
        if not got.startswith('broken.xsl:%d:8: xsl:value-of' % line):
            yield 'place.py behind %r: %s' % (prolog, got)


def try_function():
    script = block('bash', 'xslt() {') + 'xslt "$@"\n'
    for number, (_, code, makes) in enumerate(DOCUMENTS):
        done = run('bash', '-c', script, 'xslt', '%d.xml' % number, 'style.xsl', 'function.html')
        there = os.path.exists('function.html')
        if (done.returncode, there, done.stderr != '') != (code, makes, code == 1):
            yield 'xslt with %s: %s' % (DOCUMENTS[number][0], done)
        pathlib.Path('function.html').unlink(missing_ok=True)


def try_one():
    save('one.sh', block('bash', '# one.sh STYLESHEET'))
    names = [save('in/%s %d/index.xml' % (folder, number), text)
             for number, (text, _, _) in enumerate(DOCUMENTS) for folder in 'ab']
    save('out/in/b 1/index.html', 'old')
    done = run('bash', 'one.sh', 'style.xsl', *names)
    results = sorted(str(path) for path in pathlib.Path('out').rglob('*.html'))
    told = [done.stderr.count('%s: ' % name) for name in names]
    if done.returncode != 1 or told != [0, 0] + [1] * 8:
        yield 'one.sh: %s' % done
    if results != ['out/in/%s %d/index.html' % at for at in
                   [('a', 0), ('a', 3), ('b', 0), ('b', 1), ('b', 3)]]:
        yield 'one.sh makes %s' % results
    if run('bash', 'one.sh', 'style.xsl', names[0]).returncode != 0:
        yield 'one.sh fails on a good document'


def try_make():
    save('Makefile', block('make', '%.html'))
    for number, (text, code, makes) in enumerate(DOCUMENTS):
        for old in (False, True):
            result = pathlib.Path('%d.html' % number)
            if old:
                save(result, 'old')
                os.utime(result, (1, 1))
            done = [run('make', str(result)).returncode for _ in range(2)]
            there = not code or (old and not makes)     # an old file stays, a wrong one goes
            if done != ([2, 2] if code else [0, 0]) or result.exists() != there:
                yield 'make with %s: %s %s' % (text, done, result.exists())


def main():
    program = pathlib.Path(sys.argv[1]).resolve()
    problems = []
    with tempfile.TemporaryDirectory() as directory:
        os.chdir(directory)
        os.environ['PATH'] = directory + os.pathsep + os.environ['PATH']
        os.symlink(program, 'kelmora')
        save('style.xsl', STYLE)
        for number, (text, _, _) in enumerate(DOCUMENTS):
            save('%d.xml' % number, text)
        tests = [try_place, try_function, try_one] + ([try_make] if shutil.which('make') else [])
        for test in tests:
            problems += test()
    for line in problems:
        print(line)
    print('%d faults in %d scripts' % (len(problems), len(tests)))
    return 1 if problems else 0


if __name__ == '__main__':
    sys.exit(main())
