#!/usr/bin/env python3
"""Makes codepages_generated.inc, the mapping tables of the encodings, from Python's codecs.

usage: make_tables.py > codepages_generated.inc        (Python 3.11 or later)

A table is a list of pairs (code, character). It is written as the runs of codes that follow each
other and one text with the characters of all runs. Where two codes have one character, the pair
that the codec itself encodes to is written behind the other, because the converters let the later
pair win. The numbers of pairs are fixed, so a codec that has changed is noticed here.
"""

import sys
import unicodedata

LINE_COLUMNS = 92


def codes_of(codec, last=0xFF):
    """All codes up to `last` that stand for one 16-bit unit, in ascending order."""
    pairs = []
    for code in range(last + 1):
        data = bytes([code]) if code < 0x100 else code.to_bytes(2, "big")
        if code > 0xFF and code < 0x8000:
            continue  # a byte below 0x80 never leads
        try:
            text = data.decode(codec)
        except UnicodeDecodeError:
            continue
        if len(text) == 1 and ord(text) < 0x10000:
            pairs.append((code, text))
    return pairs


def iso8859(part, dropped=(), changed=None):
    """The printable codes alone: neither C0 nor DEL nor C1."""
    return [
        (code, (changed or {}).get(code, char))
        for code, char in codes_of(f"iso8859_{part}")
        if (0x20 <= code < 0x7F or code >= 0xA0) and code not in dropped
    ]


def changed(pairs, changes):
    return [(code, changes.get(code, char)) for code, char in pairs]


def ebcdic():
    """Code page 037; the characters that all EBCDIC pages share are listed once more."""
    pairs = codes_of("cp037")
    shared = set("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                 " \"%&'()*+,-./:;<=>?_\x85")
    return pairs + [pair for pair in pairs if pair[1] in shared]


def multibyte(codec, left_out):
    pairs = [pair for pair in codes_of(codec, 0xFFFF) if not left_out(pair[0])]

    def preferred(pair):
        return int.from_bytes(pair[1].encode(codec), "big") == pair[0]

    return sorted(pairs, key=preferred)  # stable: codes ascend among the others and the preferred


ARABIC_DIGITS = {0x30 + digit: chr(0x0660 + digit) for digit in range(10)}

# Number of the encoding, name in the output, pairs, number of pairs.
TABLES = [
    (1, "Iso8859_1", iso8859(1), 191),
    (2, "Iso8859_2", iso8859(2), 191),
    (3, "Iso8859_3", iso8859(3), 184),
    (4, "Iso8859_4", iso8859(4), 191),
    (5, "Iso8859_5", iso8859(5), 191),
    (6, "Iso8859_6", iso8859(6, changed=ARABIC_DIGITS), 146),
    # The edition before the euro sign, with the two quotes of that time.
    (7, "Iso8859_7", iso8859(7, (0xA4, 0xA5, 0xAA), {0xA1: "\u02BD", 0xA2: "\u02BC"}), 185),
    # Without the two direction marks.
    (8, "Iso8859_8", iso8859(8, (0xFD, 0xFE), {0xAF: "\u203E"}), 153),
    (9, "Iso8859_9", iso8859(9), 191),
    (14, "Iso8859_14", iso8859(14), 191),
    (15, "Iso8859_15", iso8859(15), 191),
    (30, "UsAscii", codes_of("ascii"), 128),
    (31, "Ebcdic037", ebcdic(), 339),
    (40, "Dos437", codes_of("cp437"), 256),
    (42, "Tqdik850", changed(codes_of("cp850"), {0xB0: "\u0153", 0xB1: "\u0152", 0xB2: "\u20AC"}),
     256),
    (41, "Dos850", codes_of("cp850"), 256),
    (52, "Windows1252", codes_of("cp1252"), 251),
    (50, "Windows1250", codes_of("cp1250"), 251),
    (51, "Windows1251", codes_of("cp1251"), 255),
    (53, "Windows1253", codes_of("cp1253"), 239),
    (54, "Windows1254", codes_of("cp1254"), 249),
    (55, "Windows1255", codes_of("cp1255"), 233),
    (56, "Windows1256", codes_of("cp1256"), 256),
    (57, "Windows1257", codes_of("cp1257"), 244),
    (58, "Windows1258", codes_of("cp1258"), 247),
    (80, "Windows874", codes_of("cp874"), 225),
    # No single codes outside the katakana, no rows for characters of the user.
    (92, "ShiftJis", multibyte("cp932", lambda code: code in (0x80, 0xA0, 0xFD, 0xFE, 0xFF)
                               or 0xF0 <= code >> 8 <= 0xF9), 7915),
    (93, "Gb2312", multibyte("cp936", lambda code: code == 0x80), 21919),
    (94, "EucKr", multibyte("cp949", lambda code: code in (0xA2E6, 0xA2E7)), 17174),
    (95, "Big5", multibyte("cp950", lambda code: code in (0xA3E1,)
                           or 0xC6A1 <= code <= 0xC7FC), 13630),
]


def runs_of(pairs):
    runs = []
    for code, _ in pairs:
        if runs and runs[-1][0] + runs[-1][1] == code:
            runs[-1][1] += 1
        else:
            runs.append([code, 1])
    return runs


def escaped(char):
    """The character as it stands in a literal: itself where a reader and an editor can take it."""
    value = ord(char)
    if char in '"\\':
        return "\\" + char
    if 0x20 <= value < 0x7F:
        return char
    if value < 0xA0:
        return f"\\{value:03o}"
    plain = (
        unicodedata.category(char)[0] in "LNPS"
        and unicodedata.bidirectional(char) not in ("R", "AL", "AN")
        and unicodedata.normalize("NFC", char) == char
        and not 0xE000 <= value <= 0xF8FF
    )
    return char if plain else f"\\u{value:04X}"


def columns_of(char):
    return 2 if unicodedata.east_asian_width(char) in "WF" else 1


def wrapped(pieces, width, columns):
    line, used = "", 0
    for piece in pieces:
        needed = columns(piece)
        if used + needed > width:
            yield line
            line, used = "", 0
        line += piece
        used += needed
    if line:
        yield line


def write_table(out, name, pairs):
    runs = [f"{{0x{code:02X}, {count}}}, " for code, count in runs_of(pairs)]
    out.append(f"constexpr CodeRun k{name}Runs[] = {{")
    out += ["    " + line.rstrip() for line in wrapped(runs, LINE_COLUMNS, len)]
    out.append("};")
    out.append(f"constexpr std::u16string_view k{name}Text =")
    pieces = [escaped(char) for _, char in pairs]
    columns = lambda piece: columns_of(piece) if len(piece) == 1 else len(piece)
    out += [f'    u"{line}"' for line in wrapped(pieces, LINE_COLUMNS - 4, columns)]
    out[-1] += "sv;"
    out.append("")


def main():
    out = ["// Made by make_tables.py. Do not edit.", ""]
    for _, name, pairs, count in TABLES:
        if len(pairs) != count:
            sys.exit(f"{name}: {len(pairs)} pairs instead of {count}")
        write_table(out, name, pairs)
    out.append("constexpr CodePage kCodePages[] = {")
    for number, name, _, _ in TABLES:
        out.append(f"    {{EncodingId{{{number}}}, k{name}Runs, k{name}Text}},")
    out.append("    {EncodingId{11}, kWindows874Runs, kWindows874Text},  // the same table")
    out.append("};")
    sys.stdout.buffer.write(("\n".join(out) + "\n").encode("utf-8"))


if __name__ == "__main__":
    main()
