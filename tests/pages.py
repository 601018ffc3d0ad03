#!/usr/bin/env python3
"""Opens the pages that the examples make in a headless Chromium and checks what they show.

usage: pages.py PROGRAM EXAMPLES [--screenshots DIRECTORY]

Exit code 77, with a line that begins with SKIP, where no Chromium is installed.
"""
import argparse
import html
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

import run_cases

EXIT_SKIPPED = 77
TIMEOUT_SECONDS = 120
LOOK_ALIKES = 3  # blanks of several widths

# An example, the title of its page, and texts that a reader sees, in this order.
PAGES = (
    ('feed-to-page', 'Notes from the Kalvø light', (
        'birds1', 'the light2', 'The lamp is a hundred years old', '29 March 2024 · Marit Søllested',
        '1957: a bulb of 1000\u00a0W', 'Frost smoke & a fogbow', 'Air at −18 °C',
        'Jon Aas · birds', 'Between ten and eleven 412 redwings came', 'twelve more than geometry')),
    ('article-to-page', 'Ten days that never were', (
        'Contents', '1.2Except the hundreds', '4What programmers inherit', '1.1Every fourth year',
        'as section\u00a02 shows', '(y mod 100 <> 0', '3Late payers', 'as table\u00a01 shows',
        'Table 1. When the calendar changed', '2 September 1752', 'Notes', 'A 30 February')),
    ('shiftjis-to-utf8', '㈱山表茶舗　令和六年春の目録', (
        '①煎茶、②玉露', '知覧ゆたか', 'ちらん', '限定', 'ソーダ水', '1,080円', '本山', '八女の春',
        '宇治の露', '3,240円', '加賀棒茶', '京番茶', '全6品')),
)

# The page in a frame, and what is found in it as text for --dump-dom. A box that stands for a
# missing glyph looks the same for every character, so characters must look different. The encoding
# of the frame around it is what a page would have that tells none itself.
PROBE = '''<!DOCTYPE html><meta charset="windows-1252"><iframe src="%s" width="900" height="2000"></iframe>
<pre id="found"></pre><script>
function image(character) {
  const canvas = document.createElement('canvas'), context = canvas.getContext('2d');
  context.font = '40px serif';
  context.fillText(character, 10, 60);
  return canvas.toDataURL();
}
onload = () => {
  const page = document.querySelector('iframe').contentDocument;
  const links = [...page.querySelectorAll('a[href^="#"]')].map(link => link.hash.slice(1));
  const letters = [...new Set(page.body.innerText.match(/[^\\x00-\\x7f]/g))].slice(0, 40);
  document.getElementById('found').textContent = JSON.stringify({
    title: page.title, text: page.body.innerText, encoding: page.characterSet,
    mode: page.compatMode, sheets: page.styleSheets.length,
    deadLinks: links.filter(id => !page.getElementById(decodeURIComponent(id))),
    overflow: page.documentElement.scrollWidth > page.documentElement.clientWidth,
    alike: letters.length - new Set(letters.map(image)).size,
  });
};
</script>'''


def open_in(browser, url, home, *options):
    command = [browser, '--headless', '--no-sandbox', '--disable-gpu', '--hide-scrollbars',
               '--disable-dev-shm-usage', '--allow-file-access-from-files',
               '--user-data-dir=' + str(home), *options, url]
    done = subprocess.run(command, capture_output=True, timeout=TIMEOUT_SECONDS, check=True)
    return done.stdout.decode()


def look_at(browser, page, home):
    probe = page.parent / 'probe.html'
    probe.write_text(PROBE % page.name, encoding='utf-8')
    dom = open_in(browser, probe.as_uri(), home, '--dump-dom')
    found = re.search(r'<pre id="found">(.*?)</pre>', dom, re.S)
    return json.loads(html.unescape(found[1]))


def problems_of(found, title, texts):
    for key, wanted in (('title', title), ('encoding', 'UTF-8'), ('mode', 'CSS1Compat'),
                        ('sheets', 1), ('deadLinks', []), ('overflow', False)):
        if found[key] != wanted:
            yield '%s: wanted %r, seen %r' % (key, wanted, found[key])
    if found['alike'] > LOOK_ALIKES:
        yield '%d characters have no glyph; is there a font for them?' % found['alike']
    at = 0
    for text in texts:
        place = found['text'].find(text, at)
        if place < 0:
            yield 'not shown behind what comes before it: %r' % text
        else:
            at = place + len(text)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n')[0])
    parser.add_argument('program')
    parser.add_argument('examples')
    parser.add_argument('--screenshots', metavar='DIRECTORY', help='keep a picture of each page')
    options = parser.parse_args()

    browser = shutil.which('chromium') or shutil.which('chromium-browser')
    if not browser:
        print('SKIP: no chromium here, so nobody looked at the pages')
        return EXIT_SKIPPED
    failed = 0
    for name, title, texts in PAGES:
        case = pathlib.Path(options.examples) / name
        with tempfile.TemporaryDirectory() as directory:
            place, home = pathlib.Path(directory) / 'page', pathlib.Path(directory) / 'home'
            place.mkdir()
            run_cases.run(os.path.abspath(options.program), run_cases.read_runs(case),
                          run_cases.read_inputs(case), place)
            problems = list(problems_of(look_at(browser, place / 'page.html', home), title, texts))
            if options.screenshots:
                picture = pathlib.Path(options.screenshots).resolve() / (name + '.png')
                open_in(browser, (place / 'page.html').as_uri(), home, '--window-size=900,1400',
                        '--screenshot=' + str(picture))
        print('%s %s' % ('FAIL' if problems else 'ok  ', name))
        for line in problems:
            print('    ' + line)
        failed += bool(problems)
    return 1 if failed else 0


if __name__ == '__main__':
    sys.exit(main())
