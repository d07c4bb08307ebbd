#!/usr/bin/env python3
"""count_instructions.py BUILD [--update]: checks that a start and parsing have grown no slower.

Instructions are counted, for they hardly vary on a busy machine: those of the start up to the first
painted window, in times of the lean empty window's, which holds with any release of the system; and
those of `parse_cert` for three certificates, which the toolkit's version decides. What was counted
before stands in expected_counts.txt beside this file; with --update it is written anew. Ends with 1
when a count differs by more than the margin: one that fell is news as well, for it hides what comes
after. Needs valgrind, and a display.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
EXPECTED = os.path.join(HERE, "expected_counts.txt")
EXAMPLES = os.path.join(os.path.dirname(HERE), "examples")
MARGIN = 0.10
OTHER_VERSION_MARGIN = 0.30  # another version of the toolkit counts otherwise by itself


def certificate(name):
    return os.path.join(EXAMPLES, name + ".pem")


class Counter:
    def __init__(self, build, scratch):
        self.bin = os.path.join(os.path.abspath(build), "bin")
        self.output = os.path.join(scratch, "callgrind.out")
        self.environment = {
            "PATH": os.environ["PATH"], "DISPLAY": os.environ["DISPLAY"], "HOME": scratch,
            "XAUTHORITY": os.environ.get("XAUTHORITY", ""), "XDG_RUNTIME_DIR": scratch,
            "XDG_CONFIG_HOME": scratch, "LC_ALL": "C.UTF-8", "TZ": "UTC",
            "PX_CONFIG_PATH": os.path.join(os.path.abspath(build), "settings", "EN"),
        }

    def program(self, name):
        return os.path.join(self.bin, name)

    def count(self, command, before=(), options=()):
        subprocess.run([*before, "valgrind", "--tool=callgrind", *options,
                        f"--callgrind-out-file={self.output}", *command],
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       env=self.environment)
        with open(self.output, encoding="utf-8") as file:
            return int(re.search(r"^(?:totals|summary): (\d+)", file.read(), re.MULTILINE)[1])

    def start(self, *command):
        return self.count(command, before=[self.program("window_clock")])

    def parse(self, *names):
        return self.count([self.program("certrows"), *map(certificate, names)],
                          options=["--toggle-collect=c_pxcert::parse_cert(QByteArray)"])


def counts(counter):
    lean = counter.start(counter.program("empty_window"), "--lean")
    viewer = counter.start(counter.program("PXViewCertTool"), certificate("server"))
    # The first certificate's count has the reading of the language file in it.
    first = counter.parse("ca")
    four = counter.parse("ca", "ca", "server", "long")
    return {"start": viewer / lean, "parse_cert": (four - first) / 1000}


def toolkit_version(counter):
    """Of the libraries that the viewer runs with: the name of the file that is loaded."""
    run = subprocess.run(["ldd", counter.program("PXViewCertTool")], check=True, text=True,
                         stdout=subprocess.PIPE)
    library = re.search(r"libQt\dCore\.so\S* => (\S+)", run.stdout)[1]
    return os.path.realpath(library).split(".so.")[1]


def read_expected():
    """{toolkit version: {name: count}}"""
    expected = {}
    with open(EXPECTED, encoding="utf-8") as file:
        for line in file:
            if not line.startswith("#"):
                version, name, count = line.split()
                expected.setdefault(version, {})[name] = float(count)
    return expected


def write_expected(expected):
    with open(EXPECTED, encoding="utf-8") as file:
        heading = [line for line in file if line.startswith("#")]
    with open(EXPECTED, "w", encoding="utf-8") as file:
        file.writelines(heading)
        for version in sorted(expected):
            for name, count in expected[version].items():
                file.write(f"{version} {name} {count:.2f}\n")


def closest(expected, version):
    """What is expected of this version, or of the last one of the same major; and the margin."""
    if version in expected:
        return expected[version], MARGIN
    major = version.split(".")[0]
    same = [other for other in sorted(expected) if other.split(".")[0] == major]
    return (expected[same[-1]] if same else {}), OTHER_VERSION_MARGIN


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="count-") as scratch:
        counter = Counter(arguments.build, scratch)
        version = toolkit_version(counter)
        found = counts(counter)
    expected = read_expected()
    if arguments.update:
        write_expected({**expected, version: found})
        return 0
    wanted, margin = closest(expected, version)
    failed = not wanted
    for name, count in found.items():
        change = count / wanted[name] - 1 if wanted else 0
        failed = failed or abs(change) > margin
        print(f"{name}: {count:.2f}, {change:+.1%} of what is expected with Qt {version},"
              f" at most {margin:.0%} either way")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
