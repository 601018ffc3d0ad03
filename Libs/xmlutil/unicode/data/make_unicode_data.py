#!/usr/bin/env python3
"""Makes unicodedata.txt and blocks.txt, the Unicode Character Database in version 3.2.0.

usage: make_unicode_data.py [DIRECTORY]

DIRECTORY holds a later version of the database with UnicodeData.txt, Blocks.txt and
DerivedAge.txt; Debian's package unicode-data has it in /usr/share/unicode, the default. What
version 3.2.0 had is told by the ages of the characters; the values that it had come from Python,
which keeps them (unicodedata.ucd_3_2_0), and from changed_fields.txt. The two files are written
beside this script, with CR LF, if their hashes are the known ones.
"""

import hashlib
import pathlib
import re
import sys
import unicodedata

VERSION = (3, 2)
OLD = unicodedata.ucd_3_2_0
HERE = pathlib.Path(__file__).resolve().parent

HASHES = {
    "unicodedata.txt": "f9bacc3b160b81c8c6cb701a6e68be52c2df6048996b17afa586e95d36d787cc",
    "blocks.txt": "091f4553eb9dbab25648d33c60abfdfd82722b8e442eadf0296daa9dd2d68580",
}

# Fields of a line of UnicodeData.txt.
CODE, NAME, CATEGORY, BIDI, DECIMAL, MIRRORED, UPPER, LOWER, TITLE = 0, 1, 2, 4, 6, 9, 12, 13, 14

RENAMED_BLOCKS = {"Cyrillic Supplement": "Cyrillic Supplementary"}


def code_points_of_version(directory):
    """All code points that were assigned, set aside or ruled out by then."""
    result = set()
    line_form = re.compile(r"([0-9A-F]+)(?:\.\.([0-9A-F]+))?\s*;\s*(\d+)\.(\d+)")
    for line in (directory / "DerivedAge.txt").read_text("utf-8").splitlines():
        match = line_form.match(line)
        if match and (int(match[3]), int(match[4])) <= VERSION:
            result.update(range(int(match[1], 16), int(match[2] or match[1], 16) + 1))
    return result


def changed_fields():
    result = {}
    for line in (HERE / "changed_fields.txt").read_text("ascii").splitlines():
        if line.startswith("#"):
            continue
        codes, field, value = line.split(";")
        first, _, last = codes.partition("..")
        for code in range(int(first, 16), int(last or first, 16) + 1):
            result.setdefault(code, {})[int(field)] = value
    return result


def old_case_mapping(fields, field, known):
    """A mapping can't lead to a later character, and a title case to itself was not written."""
    value = fields[field]
    if value and int(value, 16) not in known:
        return ""
    return "" if field == TITLE and value == fields[CODE] else value


def old_fields(fields, known, changes):
    char = chr(int(fields[CODE], 16))
    fields[CATEGORY] = OLD.category(char)
    fields[BIDI] = OLD.bidirectional(char)
    fields[MIRRORED] = "Y" if OLD.mirrored(char) else "N"
    fields[DECIMAL] = str(OLD.decimal(char, ""))
    for field in (UPPER, LOWER, TITLE):
        fields[field] = old_case_mapping(fields, field, known)
    for field, value in changes.get(ord(char), {}).items():
        fields[field] = value
    return fields


def unicode_data(directory, known):
    changes = changed_fields()
    first_of_range = 0
    for line in (directory / "UnicodeData.txt").read_text("ascii").splitlines():
        fields = line.split(";")
        code = int(fields[CODE], 16)
        if fields[NAME].endswith(", Last>"):  # ranges have grown since
            while code > first_of_range and code not in known:
                code -= 1
            fields[CODE] = f"{code:04X}"
        first_of_range = code
        if code in known:
            yield ";".join(old_fields(fields, known, changes))


def blocks(directory, known):
    line_form = re.compile(r"([0-9A-F]+)\.\.([0-9A-F]+); (.*)")
    for line in (directory / "Blocks.txt").read_text("utf-8").splitlines():
        match = line_form.match(line)
        if match and not known.isdisjoint(range(int(match[1], 16), int(match[2], 16) + 1)):
            name = RENAMED_BLOCKS.get(match[3], match[3]).replace(" ", "")
            yield f"{match[1]};{match[2]};{name}"


def write(name, lines):
    data = "".join(line + "\r\n" for line in lines).encode("ascii")
    if hashlib.sha256(data).hexdigest() != HASHES[name]:
        sys.exit(f"{name}: not the contents of version 3.2.0, nothing written")
    (HERE / name).write_bytes(data)


def main():
    directory = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "/usr/share/unicode")
    known = code_points_of_version(directory)
    write("unicodedata.txt", unicode_data(directory, known))
    write("blocks.txt", blocks(directory, known))


if __name__ == "__main__":
    main()
