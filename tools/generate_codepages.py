#!/usr/bin/env python3
"""Writes the tables of pxcpp/tables/code_tables.h from published mappings.

Sources (Debian package):
  932, 936, 949, 771   the C library's converters (libc-bin, libc6)
  950                  ICU's windows-950-2000 (icu-devtools)
  720 and the rest     Python's codecs
  upper case           UnicodeData.txt and DerivedAge.txt (unicode-data)

C1 controls and private-use characters are left out everywhere.

  generate_codepages.py           writes the tables
  generate_codepages.py --check   compares them with the files, 1 when they differ
"""

import bisect
import ctypes
import functools
import pathlib
import subprocess
import sys

TARGET = pathlib.Path(__file__).resolve().parent.parent / "pxcpp" / "tables"
UNICODE_DATA = pathlib.Path("/usr/share/unicode")

OEM_PAGES = (437, 720, 737, 771, 775, 850, 852, 855, 857,
             860, 861, 862, 863, 864, 865, 866, 869)
# The highest pair index searched; the pair there, at least, is a filler.
HIGHEST = {932: 7389, 936: 21792, 949: 17048, 950: 13503}
FILLER = (0xFFFF, 0)

UPPER_CASE_AGE = 5.0
UPPER_CASE_PAIRS = 891
# Command words of the upper-case records: what is added to the character.
UPPER_CASE_SHIFTS = {2: -16, 3: -32, 4: -48, 5: -26, 6: 8, 7: -80, 8: -0x1C60}


class Iconv:
    """One direction of the C library's converters, a character a call."""

    libc = ctypes.CDLL(None)
    libc.iconv_open.restype = ctypes.c_void_p
    libc.iconv.restype = ctypes.c_size_t
    libc.iconv.argtypes = [ctypes.c_void_p] * 5

    def __init__(self, target, source):
        self.handle = self.libc.iconv_open(target.encode(), source.encode())
        if self.handle == ctypes.c_void_p(-1).value:
            raise SystemExit(f"the C library has no converter from {source} to {target}")

    def __call__(self, octets):
        """The converted octets, or none when `octets` is not one whole, mapped character."""
        source = ctypes.create_string_buffer(octets, len(octets))
        target = ctypes.create_string_buffer(16)
        at = [ctypes.c_void_p(ctypes.addressof(source)), ctypes.c_size_t(len(source)),
              ctypes.c_void_p(ctypes.addressof(target)), ctypes.c_size_t(len(target))]
        self.libc.iconv(self.handle, None, None, None, None)
        lossy = self.libc.iconv(self.handle, *map(ctypes.byref, at))
        # The flush brings out a character held back for one that might combine with it.
        self.libc.iconv(self.handle, None, None, ctypes.byref(at[2]), ctypes.byref(at[3]))
        return b"" if lossy or at[1].value else target.raw[:len(target) - at[3].value]


def uconv(target, source, texts):
    """`texts` as ICU converts them, what it can't convert being empty."""
    newline = b"\0\n" if source == "UTF-16BE" else b"\n"
    result = subprocess.run(
        ["uconv", "-f", source, "-t", target,
         "--from-callback", "skip", "--to-callback", "skip"],
        input=b"".join(text + newline for text in texts), stdout=subprocess.PIPE, check=True).stdout
    lines = result.decode(target).split("\n") if target == "UTF-16BE" else result.split(b"\n")
    if len(lines) != len(texts) + 1:
        raise SystemExit("uconv ran characters together")
    return lines[:-1]


def is_public(character):
    """Neither a C1 control, a surrogate nor for private use."""
    return not (0x80 <= character < 0xA0 or 0xD800 <= character < 0xF900)


PUBLIC = [character for character in range(0x80, 0x10000) if is_public(character)]
# Every code a double-byte page may have; no trail octet is a control.
CODES = [bytes([octet]) for octet in range(0x80, 0x100)] + [
    bytes([lead, trail]) for lead in range(0x80, 0x100) for trail in range(0x40, 0x100)]


def number(octets):
    return int.from_bytes(octets, "big")


def iconv_page(page):
    """Both mappings of a code page as the C library has them."""
    encode, decode = Iconv(page, "UTF-16BE"), Iconv("UTF-16BE", page)
    forward = {c: number(code) for c in PUBLIC if (code := encode(c.to_bytes(2, "big")))}
    back = {number(code): number(character) for code in CODES
            if len(character := decode(code)) == 2 and is_public(number(character))}
    return forward, back


def icu_page(page):
    """The same as ICU has them."""
    encoded = uconv(page, "UTF-16BE", [c.to_bytes(2, "big") for c in PUBLIC])
    forward = {c: number(code) for c, code in zip(PUBLIC, encoded) if code}
    codes = [code for code in CODES
             if len(code) == 2 and 0x81 <= code[0] <= 0xFE and not 0x7F <= code[1] <= 0xA0
             and code[1] != 0xFF]
    back = {number(code): ord(character) for code, character in
            zip(codes, uconv("UTF-16BE", page, codes)) if character and is_public(ord(character))}
    return forward, back


def double_byte_page(page):
    if page == 950:
        # The C library's converter is not Microsoft's: it differs in four box-drawing characters.
        return icu_page("windows-950-2000")
    forward, back = iconv_page(f"CP{page}")
    if page == 932:
        # Doublets of the vendors' extensions and one-way substitutes stay out of both tables.
        forward = {c: code for c, code in forward.items() if back.get(code) == c}
        back = {code: c for c, code in forward.items()}
    return forward, back


def single_byte_page(page):
    """The 128 characters of the octets 0x80 to 0xFF, 0 where there is none."""
    if page == 771:
        decode = Iconv("UTF-16BE", "CP771")
        characters = [number(decode(bytes([octet]))) for octet in range(0x80, 0x100)]
    else:
        text = bytes(range(0x80, 0x100)).decode(f"cp{page}", "replace")
        characters = [0 if character == "\uFFFD" else ord(character) for character in text]
    return [character if is_public(character) else 0 for character in characters]


def upper_case_pairs():
    """Simple upper-case mappings within the BMP where both characters are old enough."""
    young = set()
    for line in (UNICODE_DATA / "DerivedAge.txt").read_text().splitlines():
        fields = line.split("#")[0].split(";")
        if len(fields) == 2 and float(fields[1]) > UPPER_CASE_AGE:
            first, _, last = fields[0].strip().partition("..")
            young.update(range(int(first, 16), int(last or first, 16) + 1))
    pairs = {}
    for line in (UNICODE_DATA / "UnicodeData.txt").read_text().splitlines():
        fields = line.split(";")
        if fields[12]:
            character, upper = int(fields[0], 16), int(fields[12], 16)
            if character < 0x10000 and not {character, upper} & young:
                pairs[character] = upper
    if len(pairs) != UPPER_CASE_PAIRS:
        raise SystemExit(f"{len(pairs)} upper-case pairs")
    return pairs


def upper_case_records(pairs):
    """The shortest sequence of records for `pairs`: (start, command, count, replacements)."""
    characters = sorted(pairs)

    def run(start, step, fits):
        count = 0
        while count + step <= 255 and fits(start + count):
            count += step
        return count

    def candidates(first):
        """Records that begin with the first character not covered yet."""
        for command, shift in UPPER_CASE_SHIFTS.items():
            if count := run(first, 1, lambda c, s=shift: pairs.get(c) == c + s):
                yield first, command, count, []
        if count := run(first - 1, 2, lambda c: c not in pairs and pairs.get(c + 1) == c):
            yield first - 1, 1, count, []
        for last in characters[bisect.bisect_left(characters, first):]:
            if last - first >= 255:
                break
            yield first, 0, last - first + 1, [pairs.get(c, c) for c in range(first, last + 1)]

    @functools.lru_cache(maxsize=None)
    def shortest(position):
        if position == len(characters):
            return 0, ()
        best = None
        for record in candidates(characters[position]):
            rest = shortest(bisect.bisect_left(characters, record[0] + record[2]))
            words = 2 + len(record[3]) + rest[0]
            if best is None or words < best[0]:
                best = words, (record, *rest[1])
        return best

    sys.setrecursionlimit(10000)
    return shortest(0)[1]


def rows(items, indent=4):
    """Items, each with a comma, in lines of at most 100 columns."""
    line = margin = " " * (indent - 1)
    for item in items:
        if len(line) + len(item) + 2 > 100:
            yield line
            line = margin
        line += f" {item},"
    yield line


def source(*arrays):
    """A source file that defines arrays given as declarator and lines."""
    text = ("// Generated by tools/generate_codepages.py; don't edit.\n"
            '#include "pxcpp/tables/code_tables.h"\n\n// clang-format off\nnamespace code_tables {\n\n')
    for declarator, lines in arrays:
        text += f"const {declarator} = {{\n" + "\n".join(lines) + "\n};\n\n"
    return text + "} // namespace code_tables\n"


def pair_rows(mapping, highest):
    pairs = sorted(mapping.items())
    pairs += [FILLER] * (highest + 1 - len(pairs))
    return rows(f"{{0x{left:X},0x{right:X}}}" for left, right in pairs)


def double_byte_source(page):
    forward, back = double_byte_page(page)
    # 950 alone has codes that come back to a character encoded otherwise.
    if len(back) != HIGHEST[page] or len(forward) != {950: 13493}.get(page, HIGHEST[page]):
        raise SystemExit(f"{page}: {len(forward)} pairs forward, {len(back)} back")
    size = HIGHEST[page] + 1
    return source((f"pair unicode_to_{page}[{size}]", pair_rows(forward, HIGHEST[page])),
                  (f"pair unicode_from_{page}[{size}]", pair_rows(back, HIGHEST[page])))


def single_byte_source():
    tables = []
    for page in OEM_PAGES:
        tables += [f"    {{ // {page}",
                   *rows((f"0x{c:04X}" for c in single_byte_page(page)), 8),
                   "    },"]
    return source(("std::uint16_t oem_pages[18]", rows([*map(str, OEM_PAGES), "0"])),
                  ("std::uint16_t oem_to_unicode[17][128]", tables))


def upper_case_source():
    pairs = upper_case_pairs()

    def lines(first, last):
        covered = {c: upper for c, upper in pairs.items() if first <= c <= last}
        for start, command, count, replacements in upper_case_records(covered):
            yield from rows(f"0x{word:04X}" for word in
                            (start, command << 8 | count, *replacements))
        yield "    0,"

    return source(("std::uint16_t upper_case_low[]", lines(0, 0xFFF)),
                  ("std::uint16_t upper_case_high[]", lines(0x1000, 0xFFFF)))


def main():
    files = {f"code_tables_{page}.cpp": double_byte_source(page) for page in HIGHEST}
    files["code_tables_oem.cpp"] = single_byte_source()
    files["code_tables_upper.cpp"] = upper_case_source()
    if sys.argv[1:] == ["--check"]:
        different = [name for name, text in files.items()
                     if not (TARGET / name).exists() or (TARGET / name).read_text() != text]
        for name in different:
            print(f"pxcpp/tables/{name} is not what tools/generate_codepages.py writes")
        return 1 if different else 0
    if sys.argv[1:]:
        print(__doc__)
        return 2
    for name, text in files.items():
        (TARGET / name).write_text(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
