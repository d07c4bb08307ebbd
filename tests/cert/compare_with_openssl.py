#!/usr/bin/env python3
"""compare_with_openssl.py CERTROWS: shows certificates that nobody here made, and compares with openssl.

Every certificate of ca-certificates, and the PKITS and custom certificates of
python3-cryptography-vectors. No file is left out without a line below that says why.
"""

import base64
import concurrent.futures
import csv
import datetime
import json
import os
import pathlib
import re
import subprocess
import sys

AUTHORITIES = pathlib.Path("/usr/share/ca-certificates/mozilla")
VECTORS = pathlib.Path("/usr/lib/python3/dist-packages/cryptography_vectors/x509")

# Files of the custom folder that are no certificates: revocation lists and keys.
NO_CERTIFICATES = re.compile(r"crl_.*|(in)?valid_signature_crl\.pem|(ca|rsa)_key\.pem")

# What openssl does not read at all, so that there is nothing to compare with.
UNREADABLE = {
    "invalid_utf8_common_name.pem": "a UTF8String that is no UTF-8, which openssl refuses",
    "long-form-name-attribute.pem": "a length that does not fit, under an armour of another name",
}

# Where the two readers differ: the file, the points, and why.
UNIQUE_IDENTIFIERS = "with unique identifiers its extensions do not stand at index 7"
DIFFERENCES = {
    "UIDCACert.crt": {
        "extensions": UNIQUE_IDENTIFIERS,
        "key usage": UNIQUE_IDENTIFIERS,
        "basic constraints": UNIQUE_IDENTIFIERS,
    },
    "ValidNameUIDsTest6EE.crt": {
        "extensions": UNIQUE_IDENTIFIERS,
        "key usage": UNIQUE_IDENTIFIERS,
    },
}

KEY_USAGES = {
    "Digital Signature": (1, "Digital Signature"),
    "Key Encipherment": (2, "Key Encipherment"),
    "Non Repudiation": (3, "Non-Repudiation"),
    "Data Encipherment": (4, "Data Encipherment"),
    "Key Agreement": (5, "Key Agreement"),
    "Certificate Sign": (6, "Certificate Signing"),
    "CRL Sign": (7, "Off_line CRL Signing, CRL Signing"),
    "Encipher Only": (8, "Encipher Only"),
    "Decipher Only": (9, "Decipher Only"),
}


TEXTS = pathlib.Path(__file__).parents[2] / "languages" / "texts.tsv"
with TEXTS.open(encoding="utf-8", newline="") as table:
    TEXT_KEYS = {row["name"]: row["key"] for row in csv.DictReader(table, delimiter="\t", quoting=csv.QUOTE_NONE)}


def run(*command, octets=None):
    return subprocess.run(command, input=octets, capture_output=True, check=False)


def openssl(path):
    """All that openssl says of a certificate in one go, which ends with its armour; None where it reads none."""
    form = "PEM" if b"-----BEGIN" in path.read_bytes() else "DER"
    said = run(
        "openssl", "x509", "-in", path, "-inform", form, "-text", "-certopt", "no_pubkey,no_sigdump,ext_dump",
        "-serial", "-startdate", "-enddate", "-dateopt", "iso_8601", "-issuer", "-subject",
        "-nameopt", "utf8,sep_multiline,oid,use_quote")
    return said.stdout.decode(errors="replace") if said.returncode == 0 else None


def object_identifiers():
    """openssl's long names (and, where it has none, its short ones) with their dotted texts."""
    names = {}
    for line in run("openssl", "list", "-objects").stdout.decode().splitlines():
        match = re.fullmatch(r"(\S.*?) = (?:(.*), )?([0-9.]+)", line)
        if match:
            names.setdefault(match[2] or match[1], match[3])
            names.setdefault(match[1], match[3])
    return names


def language_file(tree):
    """The OID section and the English texts, read without the program."""
    sections, section = {}, None
    text = (tree / "languages" / "PXViewCertTool_Lang.ini").read_text(encoding="utf-8")
    for line in text.splitlines():
        if line.startswith("["):
            section = sections.setdefault(line.strip("[] "), {})
        elif "=" in line and not line.startswith(";"):
            key, value = line.split("=", 1)
            section[key.strip()] = value.strip().strip('"').replace('\\"', '"').replace("\\\\", "\\")
    return sections["OID"], sections["EN"]


class Reader:
    """What openssl says of one certificate, in the words of the rows."""

    def __init__(self, said, identifiers, texts):
        self.identifiers = identifiers
        self.oid_section, self.english = texts
        self.text, serial, lines = said.partition("\nserial=")
        self.lines, _, armoured = (serial + lines).partition("-----BEGIN CERTIFICATE-----")
        self.der = base64.b64decode(armoured.partition("-----END")[0])

    def field(self, name):
        return re.search(f"^{name}=(.*)$", self.lines, re.MULTILINE)[1]

    def version(self):
        match = re.search(r"Version: (?:(\d+)|Unknown \((\d+)\))", self.text)
        return f"V{match[1] or int(match[2]) + 1}"

    def serial_number(self):
        return int(self.field("serial"), 16)

    def date(self, name):
        time = datetime.datetime.strptime(self.field(name), "%Y-%m-%d %H:%M:%SZ")
        time += datetime.timedelta(hours=8)
        return f"{time.day} {time:%b} {time.year:04} {time:%H:%M:%S}"

    def name(self, which):
        """The values as they are, the last first."""
        block = re.search(f"^{which}=\n((?:    .*\n)*)", self.lines, re.MULTILINE)[1]
        values = []
        for attribute in re.split(r"(?: \+ |^    )(?=[0-9.]+=)", block, flags=re.MULTILINE)[1:]:
            value = attribute.rstrip("\n").split("=", 1)[1]
            if len(value) > 1 and value[0] == value[-1] == '"':
                value = value[1:-1]
            values.append(re.sub(r"\\(.)", r"\1", value))
        return ",".join(reversed(values))

    def key(self):
        """The content of the subjectPublicKey, where openssl finds it: also of keys it can't use."""
        out = run("openssl", "asn1parse", "-inform", "DER", octets=self.der).stdout.decode(errors="replace")
        match = re.search(r"^ *(\d+):d=3 +hl=(\d+) +l= *(\d+) prim: +BIT STRING", out, re.MULTILINE)
        start, header, length = (int(number) for number in match.groups())
        return self.der[start + header:start + header + length]

    def extension_names(self):
        """In the order they stand, as the language file names them."""
        names = []
        for line in self.text.partition("X509v3 extensions:")[2].splitlines():
            match = re.fullmatch(r" {12}(\S.*?): ?(critical)?", line)
            if match:
                dotted = self.identifiers.get(match[1], match[1])
                key = self.oid_section.get(dotted, dotted)
                names.append(self.english.get(key, key))
        return names

    def extension(self, title):
        """Whether the first one of this title is critical, and its text."""
        match = re.search(f"^ {{12}}X509v3 {title}: (critical)?\n +(.*)$", self.text, re.MULTILINE)
        return (bool(match[1]), match[2]) if match else None

    def key_usage(self):
        found = self.extension("Key Usage")
        if not found:
            return None
        bits = sorted(KEY_USAGES[bit] for bit in found[1].split(", ") if bit)
        return ",".join(text for _, text in bits)

    def basic_constraints(self):
        """By the rule of the position in the list: critical flag, CA flag, path length."""
        found = self.extension("Basic Constraints")
        if not found:
            return None
        critical, value = found
        length = re.search(r"pathlen:(\d+)", value)
        subject = "Subject Type=" + ("CA" if "CA:TRUE" in value else "End Entity")
        if not critical:
            return "Subject Type=End Entity\n" if length else subject + "\nPath Length Constraint=None"
        if not length:
            return subject + "\n"
        number = int(length[1])
        octets = number.to_bytes(number.bit_length() // 8 + 1, "big")
        return f"{subject}\nPath Length Constraint={octets.hex(' ').upper()}\n"


def compare(path, shown, reader, english):
    """Yields each point in which the rows and openssl differ."""
    rows = {}
    for row in shown["rows"]:
        rows.setdefault(row["name"], row)

    def row(name, field="value"):
        return rows.get(english[TEXT_KEYS[name]], {}).get(field)

    def points():
        version = row("Version") or "V1"
        yield "version", version, reader.version()
        octets = bytes.fromhex(row("SerialNumber") or "")
        yield "serial number", int.from_bytes(octets, "big", signed=True), reader.serial_number()
        yield "issuer", row("Issuer"), reader.name("issuer")
        yield "not before", row("ValidFrom"), reader.date("notBefore")
        yield "not after", row("ValidTo"), reader.date("notAfter")
        yield "subject", row("Subject"), reader.name("subject")
        yield "key octets", "00 " + row("PublicKey", "full"), reader.key().hex(" ").upper() + " "
        extensions = [r["name"] for r in shown["rows"] if r["kind"] == 1]
        yield "extensions", extensions, reader.extension_names()
        yield "key usage", row("KeyUsage"), reader.key_usage()
        yield "basic constraints", row("BasicConstraints"), reader.basic_constraints()

    for point, ours, theirs in points():
        if ours != theirs:
            yield point, f"{path.name}: {point}: shown {ours!r}, openssl {theirs!r}"


def certificates():
    yield from sorted(AUTHORITIES.glob("*.crt"))
    yield from sorted((VECTORS / "PKITS_data" / "certs").glob("*.crt"))
    for path in sorted((VECTORS / "custom").rglob("*")):
        if path.is_file() and not NO_CERTIFICATES.fullmatch(path.name):
            yield path


def main():
    certrows = pathlib.Path(sys.argv[1]).resolve()
    paths = list(certificates())
    if len(paths) < 500:
        sys.exit(f"only {len(paths)} certificates: are both packages installed?")
    os.environ["LC_ALL"] = "C.UTF-8"
    os.environ["PX_CONFIG_PATH"] = str(certrows.parent.parent / "settings" / "EN")
    out = run(certrows, *paths)
    shown = [json.loads(line) for line in out.stdout.decode().splitlines()]
    assert [entry["file"] for entry in shown] == [str(path) for path in paths]

    identifiers = object_identifiers()
    texts = language_file(certrows.parent.parent)

    def check(pair):
        path, entry = pair
        if not entry["loaded"]:
            return [("loaded", f"{path.name}: not loaded")]
        said = openssl(path)
        if path.name in UNREADABLE or not said:
            return [] if path.name in UNREADABLE and not said else [
                ("readable", f"{path.name}: openssl {'reads' if said else 'does not read'} it")]
        return list(compare(path, entry, Reader(said, identifiers, texts), texts[1]))

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(check, zip(paths, shown)))

    failures, known = [], set()
    for path, differences in zip(paths, results):
        for point, message in differences:
            if point in DIFFERENCES.get(path.name, {}):
                known.add((path.name, point))
            else:
                failures.append(message)
    for name, points in DIFFERENCES.items():
        failures += [f"{name}: {point}: no difference any more" for point in points
                     if (name, point) not in known]
    print("\n".join(failures))
    print(f"{len(paths)} certificates compared, {len(known)} differences known, {len(failures)} not")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
