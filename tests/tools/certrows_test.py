#!/usr/bin/env python3
"""certrows_test.py CERTROWS: what scripts rely on when they read its output."""

import json
import os
import pathlib
import resource
import subprocess
import sys
import tempfile
import unittest

CERTROWS = pathlib.Path(sys.argv.pop(1)).resolve()
TREE = CERTROWS.parent.parent
TOP = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = TOP / "examples"
sys.path.insert(0, str(TOP / "bench"))
import hostile  # noqa: E402

SANITIZED = b"__asan_init" in CERTROWS.read_bytes()


def run(*arguments, folder=EXAMPLES, **environment):
    clean = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY", "PX_CONFIG_PATH")}
    clean |= {"LC_ALL": "C.UTF-8", "XDG_CONFIG_HOME": "/nonexistent"} | environment
    return subprocess.run([CERTROWS, *arguments], cwd=folder, env=clean, capture_output=True, timeout=60,
                          check=True)


def results(*arguments, **options):
    return [json.loads(line) for line in run(*arguments, **options).stdout.decode("utf-8").splitlines()]


class CertRows(unittest.TestCase):
    def test_form(self):
        (result,) = results("server.pem", PX_CONFIG_PATH=str(TREE / "settings" / "EN"))
        self.assertEqual(set(result), {"file", "loaded", "normal", "rows"})
        self.assertEqual(result["file"], "server.pem")
        self.assertIs(result["loaded"], True)
        self.assertEqual([block for _, block in result["normal"]], [0, 1])
        self.assertIn("示例根证书 Example Root CA", result["normal"][1][0])
        for row in result["rows"]:
            self.assertEqual(set(row), {"name", "value", "full", "kind"})
        self.assertEqual(result["rows"][0], {"name": "Version", "value": "V3", "full": "V3", "kind": 0})
        self.assertEqual(result["rows"][-1]["kind"], 1)

    def test_one_line_a_file_in_order_each_by_a_fresh_model(self):
        files = ["server.pem", "ca.pem", "server.pem"]
        out = results(*files)
        self.assertEqual([result["file"] for result in out], files)
        self.assertEqual(out[0], out[2])
        self.assertLess(len(out[1]["rows"]), len(out[0]["rows"]))

    def test_libraries_print_elsewhere(self):
        out = run("--verbose", "server.pem")
        self.assertEqual(out.stdout.count(b"\n"), 1)
        self.assertIn(b"Path = ", out.stderr)
        self.assertIn(b"[PXAsn::open]...", out.stderr)
        quiet = run("server.pem")
        self.assertEqual(quiet.stdout, out.stdout)
        self.assertEqual(quiet.stderr, b"")

    def test_relative_to_where_it_is_called(self):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "证书 文件.pem").write_bytes((EXAMPLES / "ca.pem").read_bytes())
            (result,) = results("证书 文件.pem", folder=folder)
            self.assertEqual(result["file"], "证书 文件.pem")
            self.assertTrue(result["rows"])

    def test_texts_longer_than_a_piece(self):
        common_name = "a" * 65535 + "\U0001F600\"\\\n\x01" + "é" * 70000
        (result,) = self.result_of(common_name.encode())
        (row,) = [row for row in result["rows"] if row["name"] == "Subject"]
        self.assertEqual(row["value"], common_name)
        self.assertEqual(row["full"], "CN= " + common_name + "\n")

    @unittest.skipIf(SANITIZED, "the sanitizer keeps what is freed, and more")
    def test_memory_of_a_long_text(self):
        size = 16_000_000
        before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
        self.result_of(b"n" * size)
        after = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
        self.assertGreater(after, before)
        self.assertLess(after * 1024, 12 * size)

    def result_of(self, common_name):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "file").write_bytes(
                hostile.certificate(subject=hostile.name(common_name)))
            return results("file", folder=folder, PX_CONFIG_PATH=str(TREE / "settings" / "EN"))

    def test_file_that_is_not_there(self):
        (result,) = results("missing.pem")
        self.assertEqual(result, {"file": "missing.pem", "loaded": False, "normal": [], "rows": []})

    def test_no_file(self):
        self.assertEqual(run().stdout, b"")

    def test_section(self):
        for section in ("CN", "TW", "EN"):
            out = run("--section", PX_CONFIG_PATH=str(TREE / "settings" / section))
            self.assertEqual(out.stdout.decode(), section + "\n")
        self.assertEqual(run("--section", PX_CONFIG_PATH="/nonexistent").stdout, b"CN\n")


if __name__ == "__main__":
    unittest.main()
