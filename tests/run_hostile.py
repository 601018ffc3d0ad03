#!/usr/bin/env python3
"""Runs the program on hostile input and under hostile conditions.

usage: run_hostile.py PROGRAM SAMPLES [unittest arguments]

Whatever comes in, a run ends by itself with the exit code 0, and in one of two ways: with the
result and nothing on standard error, or with a message there and the old result as it was. SAMPLES
is a folder of files that hold a stylesheet and a document, parted by a line of three percent signs.
"""
import concurrent.futures
import fcntl
import functools
import os
import pathlib
import random
import re
import resource
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import unittest
import urllib.parse

import colliding

PROGRAM = ''
SAMPLES = ''
IS_SANITIZED = False
LONGEST_SECONDS = 120
SEED = 20260101
OLD = b'the old result'
MEMORY = 'Out of memory, or a text beyond 2147483647 characters\n'

XSL = ('<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">%s'
       '</xsl:stylesheet>')
IDENTITY = XSL % ('<xsl:template match="@*|node()"><xsl:copy><xsl:apply-templates '
                  'select="@*|node()"/></xsl:copy></xsl:template>')
XSI = 'xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"'
XML_START = '<?xml version="1.0" encoding="UTF-8"?>'

ENCODINGS = '''US-ASCII ISO-8859-1 ISO-8859-2 ISO-8859-3 ISO-8859-4 ISO-8859-5 ISO-8859-6 ISO-8859-7
ISO-8859-8 ISO-8859-9 ISO-8859-10 ISO-8859-13 ISO-8859-14 ISO-8859-15 ISO-8859-16 KOI8-R KOI8-U
WINDOWS-1250 WINDOWS-1251 WINDOWS-1252 WINDOWS-1253 WINDOWS-1254 WINDOWS-1255 WINDOWS-1256
WINDOWS-1257 WINDOWS-1258 WINDOWS-874 IBM437 IBM850 IBM852 IBM866 EBCDIC-CP-US MACINTOSH TIS-620
SHIFT_JIS GB2312 EUC-KR BIG5 EUC-JP ISO-2022-JP UTF-8 UTF-7 UTF-16 ISO-10646-UCS-2
ISO-10646-UCS-4'''.split()


@functools.cache
def open_program():
    """A copy of the program that every user may start, in whatever home it was built."""
    directory = tempfile.TemporaryDirectory(prefix='kelmora-hostile-')
    os.chmod(directory.name, 0o755)
    copy = shutil.copy(PROGRAM, directory.name)
    os.chmod(copy, 0o755)
    return directory, copy


class Run:
    """One run in a directory of its own, which is gone afterwards."""

    def __init__(self, files=(), xml='in.xml', xsl='in.xsl', out='out', more=(), limits=(),
                 change=None, stdout=subprocess.PIPE, user=None):
        with tempfile.TemporaryDirectory(prefix='kelmora-hostile-') as directory:
            self.place = pathlib.Path(directory).resolve()
            written = {'in.xml': '<a/>', 'in.xsl': IDENTITY, 'out': OLD}
            written.update(files)
            for name, content in written.items():
                path = self.place / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_bytes(content.encode() if isinstance(content, str) else content)
            if change:
                change(self.place)
            self.start(['-xml', xml, '-xsl', xsl, '-out', out, *more], limits, stdout, user)
            result = self.place / out
            self.result = result.read_bytes() if os.path.isfile(result) else None
            self.names = sorted(os.listdir(directory))
            for mounted in (self.place / 'out', self.place / 'small', self.place):
                if os.path.ismount(mounted):
                    subprocess.run(['umount', str(mounted)], check=True)

    def start(self, arguments, limits, stdout, user):
        def prepare():
            for kind, value in limits:
                resource.setrlimit(kind, (value, value))
            if user is not None:
                os.setgid(user)
                os.setuid(user)

        program = PROGRAM if user is None else open_program()[1]
        done = subprocess.run([program] + arguments, cwd=self.place, stdin=subprocess.DEVNULL,
                              stdout=stdout, stderr=subprocess.PIPE, preexec_fn=prepare,
                              timeout=LONGEST_SECONDS)
        self.code = done.returncode
        self.shown = done.stdout
        self.error = done.stderr.decode(errors='replace').replace(str(self.place), '@DIR@')


class Hostile(unittest.TestCase):
    def check_end(self, run):
        """The two ways in which a run may end. A warning about single characters is both."""
        self.assertEqual(run.code, 0, run.error)
        self.assertFalse([name for name in run.names if name.startswith('.kelmora')])
        if run.error:
            self.assertNotIn('Sanitizer', run.error)
            self.assertTrue(run.error.strip())
        if run.result == OLD:
            self.assertTrue(run.error or b'terminating' in run.shown, 'neither result nor message')

    def check_refused(self, run, error):
        self.check_end(run)
        self.assertEqual((run.error, run.result), (error, OLD))

    def check_result(self, run, result):
        self.check_end(run)
        self.assertEqual(run.error, '')
        self.assertEqual(run.result.decode(), result)


# How a document comes to name another: files, and what the run makes of a document that is refused.
# "{0}" is the name.
REFERENCES = [
    ('entity', {'in.xml': '<!DOCTYPE a [<!ENTITY e SYSTEM "{0}">]><a>&e;</a>'}, '<a>&amp;e;</a>'),
    ('subset', {'in.xml': '<!DOCTYPE a SYSTEM "{0}"><a/>'}, '<a/>'),
    ('parameter entity', {'in.xml': '<!DOCTYPE a [<!ENTITY % e SYSTEM "{0}">%e;]><a/>'}, '<a/>'),
    ('schema', {'in.xml': '<a %s xsi:noNamespaceSchemaLocation="{0}"/>' % XSI},
     '<a %s xsi:noNamespaceSchemaLocation="{0}"/>' % XSI),
    ('older schema', {'in.xml': '<a xmlns="x-schema:{0}"/>'}, '<a xmlns="x-schema:{0}"/>'),
    ('document()', {'in.xsl': XSL % '<xsl:template match="/"><xsl:copy-of '
                                    'select="document(\'{0}\')"/></xsl:template>'}, None),
    ('import', {'in.xsl': XSL % '<xsl:import href="{0}"/>'}, None),
    ('include', {'in.xsl': XSL % '<xsl:include href="{0}"/>'}, None),
]


class Reading(Hostile):
    def refer(self, target, message, change=None):
        load_error = 'Failed to load %s\n%s\n' % (target.replace('here/', '@DIR@/'), message)
        name = target.replace('here/', '')
        self.check_refused(Run(xml=name, change=change), load_error)
        self.check_refused(Run(xsl=name, change=change), load_error)
        for kind, files, tree in REFERENCES:
            with self.subTest(kind=kind, target=target):
                filled = {file: text.replace('{0}', name) for file, text in files.items()}
                run = Run(filled, change=change)
                if tree is None:
                    self.check_end(run)
                    self.assertTrue(run.error.startswith(load_error), run.error)
                    self.assertEqual(run.result, OLD)
                else:
                    self.check_result(run, XML_START + tree.replace('{0}', name))

    def test_what_is_no_file(self):
        self.refer('here/directory', 'Is a directory', lambda at: (at / 'directory').mkdir())
        self.refer('here/loop', 'Too many levels of symbolic links',
                   lambda at: (at / 'loop').symlink_to('loop'))
        self.refer('/dev/zero', 'The input does not end within 64 MiB')

    def test_a_socket_and_a_pipe(self):
        def listen(at):
            server = socket.socket(socket.AF_UNIX)
            server.bind(str(at / 'socket'))
            server.close()

        run = Run(xml='socket', change=listen)
        self.check_refused(run, 'Failed to load @DIR@/socket\nNo such device or address\n')

        def feed(at):
            os.mkfifo(at / 'pipe')

            def write():
                with open(at / 'pipe', 'wb') as pipe:
                    for _ in range(3):
                        pipe.write(b'<a>' + b'x' * 100000)
                    pipe.write(b'</a>' * 3)

            threading.Thread(target=write, daemon=True).start()

        self.check_result(Run(xml='pipe', change=feed),
                          XML_START + ('<a>' + 'x' * 100000) * 3 + '</a>' * 3)

    def test_long_header_line(self):
        """More than the library that reads it takes is a failed transfer, and not lack of memory."""
        with socket.create_server(('127.0.0.1', 0)) as server:
            def answer():
                with server.accept()[0] as connection:
                    connection.recv(4096)
                    try:
                        connection.sendall(b'HTTP/1.1 200 OK\r\nX: ' + b'x' * 1000000)
                    except OSError:
                        pass

            threading.Thread(target=answer, daemon=True).start()
            url = 'http://127.0.0.1:%d/' % server.getsockname()[1]
            self.check_refused(Run(xml=url), 'Failed to load %s\n' % url)

    def test_pipes_that_nobody_opens(self):
        def make(at):
            for n in range(2):
                os.mkfifo(at / str(n))

        entities = ''.join('<!ENTITY e%d SYSTEM "%d">' % (n, n) for n in range(2))
        silent = 'Failed to load @DIR@/0\nNo data came within 10 seconds\n'
        lost = 'Error writing to file 0\nConnection timed out\n'
        with concurrent.futures.ThreadPoolExecutor() as pool:
            source = pool.submit(Run, xml='0', change=make)
            result = pool.submit(Run, out='0', change=make)
            many = pool.submit(Run, {'in.xml': '<!DOCTYPE a [%s]><a>&e0;&e1;&e0;</a>' % entities},
                               change=make)
            self.check_refused(source.result(), silent)
            self.assertEqual((result.result().code, result.result().error), (0, lost))
            self.check_result(many.result(),
                              XML_START + '<a>&amp;e0;&amp;e1;&amp;e0;</a>')


class Writing(Hostile):
    def failed(self, name, reason):
        return 'Error writing to file %s\n%s\n' % (name, reason)

    def test_names(self):
        rows = [
            ('none/out', 'No such file or directory', None),
            ('file:///none/out', 'No such file or directory', None),
            ('lost', 'No such file or directory',
             lambda at: (at / 'lost').symlink_to('none/out')),
            ('in.xml/out', 'Not a directory', None),
            ('directory', 'Is a directory', lambda at: (at / 'directory').mkdir()),
            ('loop', 'Too many levels of symbolic links',
             lambda at: (at / 'loop').symlink_to('loop')),
            ('new/', 'Is a directory', None),
            ('x' * 300, 'File name too long', None),
            ('/dev/full', 'No space left on device', None),
        ]
        for name, reason, change in rows:
            with self.subTest(name=name):
                run = Run(out=name, change=change)
                self.assertEqual((run.code, run.error), (0, self.failed(name, reason)))
                self.assertEqual(run.shown.decode(), '\n%s\n' % name)

    def test_the_source_itself(self):
        text = '<a>%s</a>' % ('x' * 3000000)
        for name in ('in.xml', 'link'):
            run = Run({'in.xml': text}, out=name,
                      change=lambda at: (at / 'link').symlink_to('in.xml'))
            self.check_result(run, XML_START + text)

    def test_vanished_directory(self):
        with tempfile.TemporaryDirectory() as directory:
            at = pathlib.Path(directory)
            (at / 'in.xml').write_text('<a/>')
            (at / 'in.xsl').write_text(IDENTITY)
            (at / 'gone').mkdir()
            command = 'cd gone && rmdir ../gone && "$0" -xml "$1"/in.xml -xsl "$1"/in.xsl -out out'
            done = subprocess.run(['sh', '-c', command, PROGRAM, directory], cwd=directory,
                                  stderr=subprocess.PIPE, stdout=subprocess.DEVNULL)
            self.assertEqual((done.returncode, done.stderr.decode()),
                             (0, self.failed('out', 'No such file or directory')))

    def big(self):
        return {'in.xml': '<a>%s</a>' % ('y' * 3000000)}

    def test_deep_directory(self):
        """Its path is longer than the system takes, so the working directory is all there is."""
        with tempfile.TemporaryDirectory(prefix='kelmora-hostile-') as directory:
            at = pathlib.Path(directory)
            (at / 'in.xml').write_text(self.big()['in.xml'])
            (at / 'in.xsl').write_text(IDENTITY)
            start = os.open('.', os.O_RDONLY)
            try:
                os.chdir(directory)
                for _ in range(25):
                    os.mkdir('x' * 200)
                    os.chdir('x' * 200)
                os.symlink('made', 'link')
                for name, limit, error, result in (
                        ('out', 1000000, self.failed('out', 'File too large'), OLD),
                        ('link', 1000000, self.failed('link', 'File too large'), None),
                        ('out', 9000000, '', None), ('link', 9000000, '', None)):
                    pathlib.Path('out').write_bytes(OLD)
                    done = subprocess.run(
                        [PROGRAM, '-xml', at / 'in.xml', '-xsl', at / 'in.xsl', '-out', name],
                        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, preexec_fn=lambda:
                        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
                    self.assertEqual((done.returncode, done.stderr.decode()), (0, error))
                    if error:
                        self.assertEqual(pathlib.Path('out').read_bytes(), OLD)
                        self.assertEqual(sorted(os.listdir()), ['link', 'out'])
                    else:
                        self.assertEqual(os.stat(name).st_size, len(XML_START) + 3000007)
            finally:
                os.chdir(start)
                os.close(start)

    def test_leftovers(self):
        """What a killed run left goes; what a live one has stays."""
        files = {'.kelmora-new-0': 'left', '.kelmora-new-1': 'left'}
        run = Run(files)
        self.assertEqual(run.names, ['.kelmora-new-1', 'in.xml', 'in.xsl', 'out'])
        self.assertEqual(run.result.decode(), XML_START + '<a/>')
        held = []

        def hold(at):
            held.append(open(at / '.kelmora-new-0'))
            fcntl.flock(held[0], fcntl.LOCK_EX)

        run = Run(files, change=hold)
        held[0].close()
        self.assertEqual(run.names, ['.kelmora-new-0', 'in.xml', 'in.xsl', 'out'])
        self.assertEqual(run.result.decode(), XML_START + '<a/>')

    def test_dangling_link(self):
        def change(at):
            (at / 'elsewhere').mkdir()
            (at / 'link').symlink_to('elsewhere/next')
            (at / 'elsewhere' / 'next').symlink_to('../made')

        run = Run(self.big(), out='link', change=change, limits=[(resource.RLIMIT_FSIZE, 1000000)])
        self.assertEqual((run.error, run.result), (self.failed('link', 'File too large'), None))
        self.assertEqual(run.names, ['elsewhere', 'in.xml', 'in.xsl', 'link', 'out'])
        run = Run(self.big(), out='link', change=change)
        self.check_result(run, XML_START + self.big()['in.xml'])
        self.assertIn('made', run.names)

    def test_full_file_system(self):
        # The limit of the size of a file acts in the middle of the writing, as a full disk does.
        run = Run(self.big(), limits=[(resource.RLIMIT_FSIZE, 1000000)])
        self.check_refused(run, self.failed('out', 'File too large'))
        if os.geteuid() != 0 or not shutil.which('mount'):
            return

        def mount(options, files):
            def change(at):
                command = ['mount', '-t', 'tmpfs', '-o', options, 'tmpfs', str(at)]
                subprocess.run(command, stderr=subprocess.DEVNULL)
                for name, content in {'in.xsl': IDENTITY, 'out': OLD.decode(), **files}.items():
                    (at / name).write_text(content)
                self.assertTrue(os.path.ismount(at) or self.skipTest('nothing can be mounted'))
            return change

        # Room for the old file, not for the new one; then for no file more at all.
        for options, files in (('size=4m', self.big()), ('nr_inodes=4', {'in.xml': '<a/>'})):
            self.check_refused(Run(change=mount(options, files)),
                               self.failed('out', 'No space left on device'))

    def test_what_cannot_be_replaced(self):
        """A file on a full disk of its own, which is mounted at the name of the result."""
        if os.geteuid() != 0 or not shutil.which('mount'):
            self.skipTest('nothing can be mounted')

        def mount(at):
            (at / 'small').mkdir()
            for command in (['-t', 'tmpfs', '-o', 'size=64k', 'tmpfs', str(at / 'small')],
                            ['--bind', str(at / 'small' / 'out'), str(at / 'out')]):
                subprocess.run(['mount'] + command, stderr=subprocess.DEVNULL)
                if '--bind' not in command:
                    (at / 'small' / 'out').write_bytes(OLD)
            self.assertTrue(os.path.ismount(at / 'out') or self.skipTest('nothing can be mounted'))

        self.check_refused(Run(self.big(), change=mount),
                           self.failed('out', 'No space left on device'))
        self.check_result(Run(change=mount), XML_START + '<a/>')

    def test_without_rights(self):
        nobody = 65534 if os.geteuid() == 0 else None

        def protect(file, directory):
            def change(at):
                os.chmod(at / 'out', file)
                os.chmod(at, directory)
            return change

        # A file that may be written to in a directory that may not is written in its place.
        self.check_result(Run(change=protect(0o666, 0o555), user=nobody), XML_START + '<a/>')
        run = Run(self.big(), change=protect(0o666, 0o555), user=nobody,
                  limits=[(resource.RLIMIT_FSIZE, 1000000)])
        self.check_refused(run, self.failed('out', 'File too large'))
        self.check_refused(Run(change=protect(0o444, 0o777), user=nobody),
                           self.failed('out', 'Permission denied'))
        run = Run(change=protect(0o444, 0o555), out='new', user=nobody)
        self.assertEqual((run.code, run.error), (0, self.failed('new', 'Permission denied')))

    def test_standard_output(self):
        def broken():
            reader, writer = os.pipe()
            os.close(reader)
            return writer

        run = Run(self.big(), out='/dev/stdout', stdout=broken())
        self.assertEqual((run.code, run.error),
                         (0, self.failed('/dev/stdout', 'Broken pipe')))
        run = Run(stdout=broken())  # what is told there is lost, the result is not
        self.check_result(run, XML_START + '<a/>')

    def test_closed_streams(self):
        for closed in ('<&-', '>&-', '2>&-', '<&- >&- 2>&-'):
            with self.subTest(closed=closed), tempfile.TemporaryDirectory() as directory:
                at = pathlib.Path(directory)
                (at / 'in.xml').write_text('<a/>')
                (at / 'in.xsl').write_text(IDENTITY)
                for source in ('in.xml', 'none.xml'):
                    command = '"%s" -xml %s -xsl in.xsl -out out %s' % (PROGRAM, source, closed)
                    done = subprocess.run(['sh', '-c', command], cwd=directory,
                                          stderr=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
                    self.assertEqual(done.returncode, 0)
                    self.assertEqual((at / 'out').read_text(), XML_START + '<a/>')


class Memory(Hostile):
    def setUp(self):
        if IS_SANITIZED:
            self.skipTest('the sanitizer needs the whole address space')

    RICH = XSL % ('<xsl:output method="html" indent="yes"/><xsl:key name="k" match="i" use="@n"/>'
                  '<xsl:variable name="v"><xsl:copy-of select="//i"/></xsl:variable>'
                  '<xsl:template match="/"><r><xsl:for-each select="//i"><xsl:sort select="@n"/>'
                  '<p c="{@n}"><xsl:number/><xsl:value-of select="key(\'k\', @n)"/></p>'
                  '</xsl:for-each><xsl:copy-of select="$v"/></r></xsl:template>')

    def test_address_space(self):
        source = '<a>%s</a>' % ''.join('<i n="%d">text</i>' % n for n in range(2000))
        endings = set()
        for megabytes in [7 + n / 8 for n in range(64)]:
            run = Run({'in.xml': source, 'in.xsl': self.RICH},
                      limits=[(resource.RLIMIT_AS, int(megabytes * 1048576))])
            if run.code == 127:  # the system's loader did not get as far as the program
                continue
            self.check_end(run)
            self.assertIn(run.error, ['', MEMORY, 'Failed to load @DIR@/in.xml\n' + MEMORY,
                                      'Failed to load @DIR@/in.xsl\n' + MEMORY,
                                      'Error writing to file out\n' + MEMORY])
            endings.add(run.error == '')
        self.assertEqual(endings, {False, True}, 'the limits do not reach both sides')

    def test_order_of_a_language(self):
        """Without room for what knows the language, texts must not come out in another order."""
        files = {'in.xml': '<a><i>z</i><i>\xe4</i><i>b</i><i>Z</i></a>',
                 'in.xsl': XSL % ('<xsl:output method="text"/><xsl:template match="/"><xsl:for-each '
                                  'select="//i"><xsl:sort lang="de"/><xsl:value-of select="."/>'
                                  '</xsl:for-each></xsl:template>')}
        expected = Run(files).result
        for megabytes in range(16, 80, 2):
            run = Run(files, limits=[(resource.RLIMIT_AS, megabytes << 20)])
            self.check_end(run)
            self.assertIn((run.error, run.result), [('', expected), (MEMORY, OLD)])

    def test_endless_growth(self):
        limits = [(resource.RLIMIT_AS, 100 << 20)]
        doubling = XSL % ('<xsl:template match="/"><xsl:call-template name="t"><xsl:with-param '
                          'name="x" select="\'abcdefgh\'"/></xsl:call-template></xsl:template>'
                          '<xsl:template name="t"><xsl:param name="x"/><xsl:call-template name="t">'
                          '<xsl:with-param name="x" select="concat($x, $x)"/></xsl:call-template>'
                          '</xsl:template>')
        endless = doubling.replace('concat($x, $x)', '$x')
        self.check_refused(Run({'in.xsl': doubling}, limits=limits), MEMORY)
        self.check_refused(Run({'in.xsl': endless}, limits=limits, more=['-xslstack', '99999999']),
                           MEMORY)


def chain(length, first, file, link, last):
    """Files that name one another, up to `length`. "#" in `link` is the number of the next one."""
    files = {file % n: link.replace('#', str(n + 1)) for n in range(1, length)}
    files[file % length] = last
    files['in.xml'] = first
    return files


class Bounds(Hostile):
    def at_and_beyond(self, bound, files, result, beyond):
        """`beyond`: what comes out one further, a result or an error."""
        self.check_result(Run(files(bound)), XML_START + result)
        run = Run(files(bound + 1))
        if beyond.startswith('<'):
            self.check_result(run, XML_START + beyond)
        else:
            self.check_end(run)
            self.assertIn(beyond, run.error)
            self.assertEqual(run.result, OLD)

    def test_expressions(self):
        def value(select):
            return {'in.xsl': XSL % ('<xsl:template match="/"><r>:<xsl:value-of select="%s"/></r>'
                                     '</xsl:template>') % select}

        for opening, closing in ('()', ('string(', ')'), ('a[', ']')):
            self.at_and_beyond(
                799, lambda n: value(opening * n + "1" + closing * n),
                '<r>:</r>' if opening == 'a[' else '<r>:1</r>', 'Invalid XPath expression')
        self.check_result(Run(value('a' + '[1]' * 100000)), XML_START + '<r>:</r>')
        self.check_result(Run(value('-' * 100000 + '1')), XML_START + '<r>:1</r>')
        template = XSL % '<xsl:template match="/"><r a="%s"/></xsl:template>'
        self.check_result(Run({'in.xsl': template % ('{1}' * 100000)}),
                          XML_START + '<r a="%s"/>' % ('1' * 100000))
        self.check_refused(Run({'in.xsl': template % ('{' * 99999)}),
                           Run({'in.xsl': template % '{'}).error)

    def test_chains_of_documents(self):
        self.at_and_beyond(
            63, lambda n: chain(n, '<!DOCTYPE r SYSTEM "1.dtd"><r/>', '%d.dtd',
                                '<!ENTITY % e# SYSTEM "#.dtd">%e#;',
                                '<!ATTLIST r a CDATA "end">'),
            '<r a="end"/>', '<r/>')
        root = '<r %s xsi:noNamespaceSchemaLocation="1.xsd"/>' % XSI
        schema = '<s:schema xmlns:s="http://www.w3.org/2001/XMLSchema">%s</s:schema>'
        self.at_and_beyond(
            65, lambda n: chain(n, root, '%d.xsd', schema % '<s:include schemaLocation="#.xsd"/>',
                                schema % '<s:element name="r"><s:complexType><s:attribute name="a" '
                                         'default="end"/></s:complexType></s:element>'),
            root.replace('/>', ' a="end"/>'), root)

    def test_entities(self):
        def nested(levels):
            declared = ''.join('<!ENTITY e%d SYSTEM "%d.ent">' % (n, n)
                               for n in range(1, levels + 1))
            return chain(levels, '<!DOCTYPE a [%s]><a>&e1;</a>' % declared, '%d.ent',
                         '<b>&e#;</b>', 'end')

        self.at_and_beyond(65, nested, '<a>%send%s</a>' % ('<b>' * 64, '</b>' * 64),
                           'nested more than 64 deep')
        bomb = ''.join('<!ENTITY e%d "%s">' % (n, '&e%d;' % (n - 1) * 10) for n in range(1, 12))
        for doctype in ('<!ENTITY e0 "x">' + bomb,
                        '<!ENTITY e0 "<b/>">' + bomb.replace('&', '&#38;'),
                        '<!ENTITY e11 "&#38;e11;&#38;e11;">'):
            for content in ('<a>&e11;</a>', '<a b="&e11;"/>'):
                self.check_end(Run({'in.xml': '<!DOCTYPE a [%s]>%s' % (doctype, content)}))

    def test_depth(self):
        levels = 20000 if IS_SANITIZED else 100000
        deep = '<e>' * levels + '</e>' * levels
        self.check_result(Run({'in.xml': deep}, more=['-xslstack', '9999999']),
                          XML_START + deep.replace('<e></e>', '<e/>'))
        sheet = XSL % ('<xsl:template match="/">%s</xsl:template>' % deep)
        self.check_result(Run({'in.xsl': sheet}, more=['-xslstack', '9999999']),
                          XML_START + deep.replace('<e></e>', '<e/>'))
        self.check_end(Run({'in.xml': '<e>' * levels}))
        self.check_end(Run({'in.xml': '<!DOCTYPE e [<!ELEMENT e %sa%s>]><e/>'
                                      % ('(' * levels, ')' * levels)}))
        schema = ('<s:schema xmlns:s="http://www.w3.org/2001/XMLSchema"><s:group name="g">%s%s'
                  '</s:group></s:schema>' % ('<s:sequence>' * levels, '</s:sequence>' * levels))
        self.check_end(Run({'in.xml': '<r %s xsi:noNamespaceSchemaLocation="s.xsd"/>' % XSI,
                            's.xsd': schema}))

    def count_matches(self, source, node, rows):
        """How many of the nodes each pattern matches, in the document and in a fragment."""
        asks = ''.join('<xsl:variable name="v%d"><xsl:apply-templates select="//%s" mode="m%d"/>'
                       '</xsl:variable><xsl:value-of select="string-length($v%d)"/>,'
                       % (n, node, n, n) for n in range(len(rows)))
        rules = ''.join('<xsl:template match="%s" mode="m%d">x</xsl:template><xsl:template '
                        'match="%s" mode="m%d" priority="-1"/>' % (pattern, n, node, n)
                        for n, (pattern, _) in enumerate(rows))
        sheet = XSL % ('<xsl:output method="text"/><xsl:template match="/"><xsl:variable name="f">'
                       '<xsl:copy-of select="/"/></xsl:variable>%s<xsl:apply-templates '
                       'select="$f" mode="ask"/></xsl:template><xsl:template match="/" mode="ask">'
                       '%s</xsl:template>%s' % (asks, asks, rules))
        expected = ''.join('%d,' % count for _, count in rows)
        self.check_result(Run({'in.xml': source, 'in.xsl': sheet}), expected * 2)

    def test_deep_patterns(self):
        levels = 20000 if IS_SANITIZED else 100000
        deep = '<r><b k="1">' + '<b>' * (levels - 1) + '</b>' * levels + '</r>'
        self.count_matches(deep, 'b', [
            ('zz//b', 0), ('r//b', levels), ('b//b//b', levels - 2), ('zz//b/b//b', 0),
            ('b[1]', levels), ('b[last()]', levels), ('b[2]//b', 0), ('b[@k]//b', levels - 1),
            ('zz/b[1]//b[position()=last()]//b', 0), ('b[b[not(b)]]/b', 1),
            ('b[generate-id() = 1]', 0)])

    def test_wide_patterns(self):
        count = 20000 if IS_SANITIZED else 100000
        wide = '<r>' + '<a/>' * (count - 1) + '<a k="1"/></r>'
        self.count_matches(wide, 'a', [
            ('a[1]', 1), ('a[position()=1]', 1), ('a[2]', 1), ('a[last()]', 1), ('a[@k][1]', 1),
            ('a[position() &gt; 1][last()]', 1), ('r[zz]/a', 0), ('r[a[@k]]//a[@k]', 1)])

    def test_frames(self):
        count = 20000 if IS_SANITIZED else 300000  # each takes three frames
        recursion = XSL % ('<xsl:template match="/"><xsl:call-template name="t"><xsl:with-param '
                           'name="n" select="%d"/></xsl:call-template></xsl:template><xsl:template '
                           'name="t"><xsl:param name="n"/><xsl:if test="$n &gt; 0">'
                           '<xsl:call-template name="t"><xsl:with-param name="n" '
                           'select="$n - 1"/></xsl:call-template></xsl:if></xsl:template>' % count)
        limits = [] if IS_SANITIZED else [(resource.RLIMIT_AS, count * 1200)]
        self.check_result(Run({'in.xsl': recursion}, more=['-xslstack', '10000000'], limits=limits),
                          XML_START)
        self.check_refused(Run({'in.xsl': recursion}), 'XSL template stack overflow\n\n')


def each(text, names):
    return ''.join(text.replace('#', name) for name in names)


def schema_of(content):
    return {'in.xml': '<r %s xsi:noNamespaceSchemaLocation="s.xsd"/>' % XSI,
            's.xsd': '<s:schema xmlns:s="http://www.w3.org/2001/XMLSchema">%s</s:schema>' % content}


ROOT_RULE = '<xsl:template match="/"><r>%s</r></xsl:template>'
KEY = '<xsl:key name="k" match="i" use="@n"/>'
# Where names come into a table, and for some names the files that fill it. "#" is each of them.
TABLES = [
    ('keys', lambda names: {
        'in.xml': '<a>%s</a>' % each('<i n="#"/>', names),
        'in.xsl': XSL % (KEY + ROOT_RULE % '<xsl:for-each select="//i"><xsl:copy-of '
                         'select="key(\'k\', @n)"/></xsl:for-each>')}),
    ('groups', lambda names: {
        'in.xml': '<a>%s</a>' % each('<i n="#"/>', names * 2),
        'in.xsl': XSL % (KEY + ROOT_RULE % '<xsl:copy-of select="//i[generate-id() = '
                         'generate-id(key(\'k\', @n)[1])]"/>')}),
    ('texts of node sets', lambda names: {
        'in.xml': '<a>%s%s</a>' % (each('<i n="#"/>', names[::2]), each('<j n="#"/>', names[1::2])),
        'in.xsl': XSL % ROOT_RULE % '<xsl:value-of select="//i/@n = //j/@n"/>'}),
    ('namespaces', lambda names: {'in.xml': '<a>%s</a>' % each('<i xmlns="#"/>', names)}),
    ('attributes', lambda names: {
        'in.xml': '<a>%s</a>' % each('<i n="#"/>', names),
        'in.xsl': XSL % ROOT_RULE % '<xsl:for-each select="//i"><xsl:attribute name="{@n}"/>'
                  '</xsl:for-each>'}),
    ('attributes by default', lambda names: {
        'in.xml': '<!DOCTYPE a [%s]><a %s/>' % (each('<!ATTLIST a # CDATA "d">', names),
                                                each(' #=""', names))}),
    ('elements of a DTD', lambda names: {
        'in.xml': '<!DOCTYPE a [%s]><a/>' % each('<!ELEMENT # ANY><!ATTLIST # b CDATA "d">', names)}),
    ('entities', lambda names: {
        'in.xml': '<!DOCTYPE a [%s]><a>%s</a>' % (each('<!ENTITY # "x">', names),
                                                  each('&#;', names))}),
    ('elements of a schema', lambda names: schema_of(each('<s:element name="#"/>', names))),
    ('values of a schema', lambda names: schema_of(
        '<s:simpleType name="t"><s:restriction base="s:string">%s</s:restriction></s:simpleType>'
        '<s:element name="r"/>' % each('<s:enumeration value="#"/>', names))),
    ('siblings', lambda names: {
        'in.xml': '<a>%s</a>' % each('<#/>', names),
        'in.xsl': XSL % ROOT_RULE % '<xsl:for-each select="a/*"><xsl:number/></xsl:for-each>'}),
    ('rules', lambda names: {
        'in.xml': '<a>%s</a>' % each('<#/>', names),
        'in.xsl': XSL % each('<xsl:template match="#">.</xsl:template>', names)}),
    ('modes', lambda names: {
        'in.xsl': XSL % (each('<xsl:template match="a" mode="#">.</xsl:template>', names)
                         + ROOT_RULE % each('<xsl:apply-templates mode="#"/>', names))}),
    ('named templates', lambda names: {
        'in.xsl': XSL % (each('<xsl:template name="#">.</xsl:template>', names)
                         + ROOT_RULE % each('<xsl:call-template name="#"/>', names))}),
    ('variables', lambda names: {
        'in.xsl': XSL % (each('<xsl:variable name="#" select="1"/>', names)
                         + ROOT_RULE % each('<xsl:value-of select="$#"/>', names))}),
    ('names for CDATA', lambda names: {
        'in.xml': '<a>%s</a>' % each('<#>.</#>', names),
        'in.xsl': XSL % ('<xsl:output cdata-section-elements="%s"/>' % each(' #', names)
                         + ROOT_RULE % '<xsl:copy-of select="a"/>')}),
]


class Flooding(Hostile):
    """Names chosen to share one hash cost what others cost, and no result depends on hashes."""

    def measured(self, files):
        def used():
            usage = resource.getrusage(resource.RUSAGE_CHILDREN)
            return usage.ru_utime + usage.ru_stime

        start = used()
        run = Run({name: XML_START + text for name, text in files.items()})
        self.check_end(run)
        self.assertEqual(run.error, '')
        return used() - start, urllib.parse.unquote(run.result.decode())  # of namespaces

    def test_no_result_depends_on_the_secret(self):
        names = colliding.plain_names(100)
        for kind, files_of in TABLES:
            with self.subTest(kind=kind):
                self.assertEqual(len({self.measured(files_of(names))[1] for _ in range(4)}), 1)
        # The first error of a schema is shown, and here one of many.
        wrong = schema_of(each('<s:element name="#" type="none"/>', names))
        self.assertEqual(len({Run(wrong).error for _ in range(8)}), 1)

    def test_tables(self):
        count = 5000 if IS_SANITIZED else 20000
        plain = colliding.plain_names(count)
        chosen = colliding.colliding_names(count)
        self.assertEqual({colliding.hash_of(name) for name in chosen[:100]},
                         {colliding.hash_of(chosen[-1])})
        to_plain = dict(zip(chosen, plain))
        for kind, files_of in TABLES:
            with self.subTest(kind=kind):
                plain_seconds, plain_result = self.measured(files_of(plain))
                seconds, result = self.measured(files_of(chosen))
                result = re.sub('[%s]{8}' % colliding.LETTERS, lambda name: to_plain[name[0]], result)
                self.assertTrue(result == plain_result, 'the results differ')
                self.assertLess(seconds, 2 * plain_seconds + 0.2)


def edited(data, generator):
    """The same few edits for the same generator: a piece lost, doubled, or bytes put in."""
    for _ in range(generator.randint(1, 4)):
        at, length = generator.randrange(len(data) + 1), generator.randrange(12)
        kind = generator.randrange(3)
        if kind == 0:
            data = data[:at] + data[at + length:]
        elif kind == 1:
            data = data[:at] + data[at:at + length] + data[at:]
        else:
            data = data[:at] + generator.choice([b'<', b'&', b'{', b'"', b'\0', b'\xff', b']]>',
                                                 bytes([generator.randrange(256)])]) + data[at:]
    return data


EXPRESSIONS = """. .. @k * 1 'text' $v $p $f $f/x //a|//b key('k',1) current() position() document('')
//node() / generate-id() @* namespace::* 1div0 preceding::* id('x') sum(//a) ancestor::*[last()]
format-number(.,'#,##0.0')""".split()
PATTERNS = "/ a * @* node() a[1] r/a //b key('k','1') a|b p:* text() *[position()=2]".split()
NAMES = ['t', 'p', 'v', 'k', 's', 'w', 'p:n', '', '1', '{name()}']
# What an element of a stylesheet can say of itself, and where it can stand.
ELEMENTS = {
    'template': 'match:P name:N mode:N priority:E', 'variable': 'name:N select:E',
    'param': 'name:N select:E', 'key': 'name:N match:P use:E', 'attribute-set': 'name:N',
    'decimal-format': 'name:N digit:N', 'output': 'method:N cdata-section-elements:N indent:N',
    'strip-space': 'elements:P', 'namespace-alias': 'stylesheet-prefix:N result-prefix:N',
    'apply-imports': '', 'apply-templates': 'select:E mode:N', 'attribute': 'name:N namespace:N',
    'call-template': 'name:N', 'choose': '', 'when': 'test:E', 'otherwise': '', 'comment': '',
    'copy': 'use-attribute-sets:N', 'copy-of': 'select:E', 'element': 'name:N namespace:N',
    'for-each': 'select:E', 'if': 'test:E', 'message': '', 'sort': 'select:E order:N data-type:N',
    'number': 'level:N count:P from:P value:E format:N', 'processing-instruction': 'name:N',
    'text': '', 'value-of': 'select:E', 'with-param': 'name:N select:E', 'fallback': ''}
INSTRUCTIONS = list(ELEMENTS)[9:]


def grown(generator, name, depth):
    """An element with some of its attributes, and others in it."""
    text = '<xsl:' + name
    for attribute in ELEMENTS[name].split():
        key, kind = attribute.split(':')
        if generator.random() < 0.7:
            value = generator.choice({'E': EXPRESSIONS, 'P': PATTERNS, 'N': NAMES}[kind])
            text += ' %s="%s"' % (key, value)
    inside = ''
    if depth > 0 and name not in ('copy-of', 'value-of'):
        inside = ''.join(grown(generator, generator.choice(INSTRUCTIONS), depth - 1)
                         for _ in range(generator.randrange(3)))
    return text + '>' + inside + '</xsl:%s>' % name


class Damage(Hostile):
    def check_all(self, runs):
        """Rows of the name of a run and its files."""
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for (name, _), run in zip(runs, pool.map(lambda row: Run(row[1]), runs)):
                with self.subTest(name=name):
                    self.check_end(run)

    def test_samples(self):
        """The fuzz targets see every beginning; here are some of them as whole processes."""
        generator = random.Random(SEED)
        runs = []
        for path in sorted(pathlib.Path(SAMPLES).iterdir()):
            sheet, source = path.read_bytes().split(b'\n%%%\n')
            files = {'in.xsl': sheet, 'in.xml': source}
            for file, whole in files.items():
                for _ in range(8):
                    cut = generator.randrange(len(whole))
                    runs.append(('%s %s to %d' % (path, file, cut), {**files, file: whole[:cut]}))
                    runs.append(('%s %s edited' % (path, file),
                                 {**files, file: edited(whole, generator)}))
        self.check_all(runs)

    def test_grown_stylesheets(self):
        generator = random.Random(SEED)
        prefixes = ' xmlns:p="u" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"'
        source = '<r xmlns:p="u"><a k="1">1</a><?p d?><a>2<b/></a><!--c--><p:a/>t</r>'
        start = ('<xsl:param name="v"/><xsl:variable name="f"><x/></xsl:variable>'
                 '<xsl:template name="t"><xsl:param name="p"/>T</xsl:template>')
        runs = []
        for number in range(200):
            name = generator.choice(list(ELEMENTS))
            sheet = grown(generator, name, 4)
            if number % 4:
                sheet = '<xsl:stylesheet version="1.0">%s%s</xsl:stylesheet>' % (
                    start, sheet if name == 'template' else
                    '<xsl:template match="r">%s</xsl:template>' % sheet)
            end = sheet.index('>') if ' ' not in sheet[:sheet.index('>')] else sheet.index(' ')
            runs.append((sheet, {'in.xsl': sheet[:end] + prefixes + sheet[end:], 'in.xml': source}))
        self.check_all(runs)

    def test_encodings(self):
        generator = random.Random(SEED)
        runs = []
        for name in ENCODINGS:
            start = '<?xml version="1.0" encoding="%s"?><r>' % name
            codec = {'UTF-16': 'utf-16', 'ISO-10646-UCS-2': 'utf-16', 'ISO-10646-UCS-4': 'utf-32',
                     'EBCDIC-CP-US': 'cp037'}.get(name, 'ascii')
            output = XSL % ('<xsl:output encoding="%s"/><xsl:template match="/"><r><xsl:value-of '
                            'select="."/>&#xFF;&#x4E00;&#xD800;</r></xsl:template>' % name)
            for size in (1, 7, 256):
                noise = bytes(generator.randrange(256) for _ in range(size))
                text = start.encode(codec) + noise + b'</r>'
                runs.append((name, {'in.xml': text, 'in.xsl': output}))
            runs.append((name, {'in.xml': bytes(range(256)) * 4, 'in.xsl': output}))
        self.check_all(runs)


if __name__ == '__main__':
    os.umask(0o022)  # another user reads some of the files
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    SAMPLES = sys.argv.pop(1)
    with open(PROGRAM, 'rb') as program:
        IS_SANITIZED = b'__asan_init' in program.read()
    unittest.main()
