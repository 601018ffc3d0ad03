"""Names that share one value of a hash that anybody can compute, and others of the same looks.

The hash is that of std::hash in a common library: MurmurHash2 over the bytes of the text, with a
seed that is the same in each process. For two blocks of eight bytes it can be run backwards: from
any first block and the wanted value follows the second one.
"""
import re

FACTOR = 0xc6a4a7935bd1e995
SEED = 0xc70f6907
MASK = (1 << 64) - 1
INVERSE = pow(FACTOR, -1, 1 << 64)
VALUE = 0x0123456789abcdef  # of all names, in front of the last mixture
# Letters of 16 bits, so many that one in fifteen of all blocks of four units is a piece of a name.
LETTERS = '\u4e00-\u9fa5\uac00-\ud7a3'
IS_LETTER = bytearray(bool(re.match('[%s]' % LETTERS, chr(unit))) for unit in range(65536))


def mixed(block):
    block = block * FACTOR & MASK
    return (block ^ block >> 47) * FACTOR & MASK


def unmixed(block):
    block = block * INVERSE & MASK
    return (block ^ block >> 47) * INVERSE & MASK


def hash_of(name):
    data = name.encode('utf-16-le')
    value = SEED ^ len(data) * FACTOR & MASK
    for at in range(0, len(data), 8):
        value = (value ^ mixed(int.from_bytes(data[at:at + 8], 'little'))) * FACTOR & MASK
    value = (value ^ value >> 47) * FACTOR & MASK
    return value ^ value >> 47


def blocks():
    """Blocks of four letters each, of ever the same two at their end."""
    for second in range(0x4e00, 0x9fa6):
        for first in range(0x4e00, 0x9fa6):
            yield 0x5b575b57 << 32 | second << 16 | first


def is_name(block):
    return (IS_LETTER[block & 0xffff] and IS_LETTER[block >> 16 & 0xffff]
            and IS_LETTER[block >> 32 & 0xffff] and IS_LETTER[block >> 48])


def name_of(first, second):
    return (first | second << 64).to_bytes(16, 'little').decode('utf-16-le')


def colliding_names(count):
    start = SEED ^ 16 * FACTOR & MASK
    names = []
    for first in blocks():
        second = unmixed((start ^ mixed(first)) * FACTOR & MASK ^ VALUE)
        if is_name(second):
            names.append(name_of(first, second))
            if len(names) == count:
                return names


def plain_names(count):
    """They begin like the others, and have each another hash."""
    names = []
    for first in blocks():
        second = mixed(first)
        if is_name(second):
            names.append(name_of(first, second))
            if len(names) == count:
                return names
