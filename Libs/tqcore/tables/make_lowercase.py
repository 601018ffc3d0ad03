#!/usr/bin/env python3
"""Prints lowercase.def: the one-to-one lower-case mappings of the 16-bit units, as ranges."""
import sys
import unicodedata

LARGEST_UNIT = 0xFFFF


def mappings():
    for unit in range(LARGEST_UNIT + 1):
        lower = chr(unit).lower()
        if len(lower) == 1 and ord(lower) != unit and ord(lower) <= LARGEST_UNIT:
            yield unit, ord(lower) - unit


def ranges():
    """Runs of mappings with one difference and one distance between their units (1 or 2)."""
    rows = []
    for unit, difference in mappings():
        if rows and rows[-1][3] == difference:
            first, last, step, _ = rows[-1]
            distance = unit - last
            if distance in (1, 2) and (first == last or step == distance):
                rows[-1] = (first, unit, distance, difference)
                continue
        rows.append((unit, unit, 1, difference))
    return rows


def main():
    print("// Made by tables/make_lowercase.py from Unicode %s: "
          "KELMORA_LOWERCASE(first, last, step," % unicodedata.unidata_version)
    print("// difference), ascending.")
    for first, last, step, difference in ranges():
        print("KELMORA_LOWERCASE(0x%04X, 0x%04X, %d, %d)" % (first, last, step, difference))


if __name__ == "__main__":
    sys.exit(main())
