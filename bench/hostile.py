"""Hostile and large files: what nobody should send, written out by hand."""

MIB = 1024 * 1024


def tlv(tag, content):
    size = len(content)
    if size < 0x80:
        return bytes([tag, size]) + content
    octets = size.to_bytes((size.bit_length() + 7) // 8, "big")
    return bytes([tag, 0x80 | len(octets)]) + octets + content


def long_header(tag, size):
    return bytes([tag, 0x84]) + size.to_bytes(4, "big")


def name(octets):
    """A Name of one common name."""
    common_name = tlv(0x30, bytes.fromhex("0603550403") + tlv(0x0C, octets))
    return tlv(0x30, tlv(0x31, common_name))


def certificate(subject=None, extensions=None):
    algorithm = bytes.fromhex("300D06092A864886F70D01010B0500")
    validity = tlv(0x30, tlv(0x17, b"240101000000Z") + tlv(0x17, b"440101000000Z"))
    key = tlv(0x30, bytes.fromhex("300D06092A864886F70D0101010500") + tlv(0x03, b"\0" * 65))
    fields = bytes.fromhex("A003020102020101") + algorithm + name(b"issuer") + validity
    fields += (subject or name(b"subject")) + key
    if extensions is not None:
        fields += tlv(0xA3, tlv(0x30, extensions))
    return tlv(0x30, tlv(0x30, fields) + algorithm + tlv(0x03, b"\0" * 65))


def extension(identifier, value):
    return tlv(0x30, identifier + tlv(0x04, value))


KEY_IDENTIFIER = bytes.fromhex("0603551D0E")
CERTIFICATE_POLICIES = bytes.fromhex("0603551D20")
A_POLICY = tlv(0x30, bytes.fromhex("06032A0304"))


def armoured(lines):
    return b"-----BEGIN CERTIFICATE-----\n" + lines + b"-----END CERTIFICATE-----\n"


# What a file may cost: beyond the start's own memory so many times its size, and so many seconds.
NO_CERTIFICATE, HUGE_VALUE, SMALL_ELEMENTS = 5, 12, 60

LARGE = (
    ("64 MiB of zeros", NO_CERTIFICATE, 3, lambda: b"\0" * (64 * MIB)),
    ("64 MiB of a letter and a zero", NO_CERTIFICATE, 3, lambda: b"a\0" * (32 * MIB)),
    ("64 MiB of 0xFF", NO_CERTIFICATE, 3, lambda: b"\xff" * (64 * MIB)),
    ("64 MiB of UTF-16 text", NO_CERTIFICATE, 3,
     lambda: b"\xff\xfe" + "certificate ".encode("utf-16-le") * (64 * MIB // 24 - 1)),
    ("64 MiB of armour, lines of one character", NO_CERTIFICATE, 3,
     lambda: armoured(b"A\n" * (32 * MIB - 32))),
    ("a name of 60 MB", HUGE_VALUE, 3, lambda: certificate(subject=name(b"n" * 60_000_000))),
    ("four million elements of two octets", SMALL_ELEMENTS, 8,
     lambda: tlv(0x30, b"\x05\x00" * 4_000_000)),
    ("a million extensions", SMALL_ELEMENTS, 8,
     lambda: certificate(extensions=extension(KEY_IDENTIFIER, b"\x04\x01k") * 1_000_000)),
    ("a million policies", SMALL_ELEMENTS, 8,
     lambda: certificate(extensions=extension(CERTIFICATE_POLICIES,
                                              tlv(0x30, A_POLICY * 1_000_000)))),
)


def nested(tag, levels, core, behind):
    """Levels around a core; each level's header comes before and `behind` after what it holds."""
    inner = len(core)
    headers = []
    for _ in range(levels):
        inner += len(behind)
        headers.append(long_header(tag, inner))
        inner += 6
    return b"".join(reversed(headers)) + core + behind * levels


def extended(content):
    return long_header(0xA3, len(content)) + content


NULL = b"\x05\x00"

# By their size in octets.
SHAPES = (
    ("octet strings, garbage in each",
     lambda size: extended(nested(0x04, size // 7, NULL, b"\xff"))),
    ("octet strings, garbage in the innermost",
     lambda size: extended(nested(0x04, size // 6, b"\xff", b""))),
    ("octet strings, an element behind each",
     lambda size: extended(nested(0x04, size // 8, NULL, NULL))),
    ("a hundred octet strings around elements and garbage",
     lambda size: extended(nested(0x04, 100, NULL * (size // 2) + b"\xff", b""))),
    ("a hundred octet strings, garbage in the outermost",
     lambda size: extended(long_header(0x04, size // 2 * 2 + 601) +
                           nested(0x04, 100, NULL * (size // 2), b"") + b"\xff")),
    ("sequences", lambda size: nested(0x30, size // 6, NULL, b"")),
    ("sequences, garbage in each", lambda size: nested(0x30, size // 7, NULL, b"\xff")),
    ("octet strings of one element each", lambda size: extended(b"\x04\x02\x05\x00" * (size // 4))),
)
SHAPE_SIZES = (128 * 1024, MIB, 8 * MIB)
