#!/usr/bin/env python3
"""run_benchmarks.py BUILD [--rounds N]: measures the viewer of a build tree beside its peers and
prints the results as Markdown. Run by bench.sh, on a display of its own.

What is compared runs in turn, round by round, so that a busy moment meets all alike, and in an order
of the round's own. A ratio is the median of the rounds' ratios.
"""

import argparse
import glob
import os
import platform
import random
import statistics
import subprocess
import sys
import tempfile
import time

import hostile

TOP = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
CERTIFICATE = os.path.join(TOP, "examples", "server.pem")
QUIET = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}


class Bench:
    def __init__(self, build, rounds, scratch):
        self.bin = os.path.join(build, "bin")
        self.rounds = rounds
        self.scratch = scratch
        self.missed = []
        for variable in ("DBUS_SESSION_BUS_ADDRESS", "XDG_CURRENT_DESKTOP", "DESKTOP_SESSION",
                         "QT_QPA_PLATFORMTHEME", "QT_XCB_GL_INTEGRATION", "WAYLAND_DISPLAY"):
            os.environ.pop(variable, None)
        os.environ.update(LC_ALL="C.UTF-8", TZ="UTC", XDG_RUNTIME_DIR=self.folder("runtime"),
                          XDG_CONFIG_HOME=self.folder("config"),
                          PX_CONFIG_PATH=os.path.join(build, "settings", "EN"))

    def folder(self, name):
        path = os.path.join(self.scratch, name)
        os.makedirs(path, mode=0o700, exist_ok=True)
        return path

    def program(self, name):
        return os.path.join(self.bin, name)

    def clock(self, *command, **environment):
        """Milliseconds and kilobytes."""
        run = subprocess.run([self.program("window_clock"), *command], check=True, text=True,
                             stdout=subprocess.PIPE, env={**os.environ, **environment})
        milliseconds, kilobytes = run.stdout.split()
        return float(milliseconds), int(kilobytes)

    def limited(self, what, value, limit, form="{:.2f}"):
        """The value beside its limit, as two cells of a table; a limit of None is none."""
        shown = form.format(value)
        if limit is None:
            return f"{shown} | "
        met = value <= limit
        if not met:
            self.missed.append(what)
        return f"{shown}{'' if met else ' (missed)'} | {form.format(limit)}"


class SessionBus:
    def __enter__(self):
        self.process = subprocess.Popen(
            ["dbus-daemon", "--session", "--nofork", "--print-address"], text=True,
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        return self.process.stdout.readline().strip()

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()


def start_commands(bench, bus):
    """Each start: its name, what runs it."""
    viewer = bench.program("PXViewCertTool")
    empty = bench.program("empty_window")
    apart = bench.folder("second")
    gnome = {"XDG_CURRENT_DESKTOP": "GNOME", "DBUS_SESSION_BUS_ADDRESS": bus}
    return {
        "lean empty window": lambda: bench.clock(empty, "--lean"),
        "the toolkit's own empty window": lambda: bench.clock(empty),
        "gcr-viewer": lambda: bench.clock("gcr-viewer", CERTIFICATE),
        "viewer": lambda: bench.clock(viewer, CERTIFICATE),
        "viewer on GNOME": lambda: bench.clock(viewer, CERTIFICATE, **gnome),
        "viewer, no argument": lambda: bench.clock("--exit", viewer),
        "viewer, second start": lambda: bench.clock("--exit", viewer, CERTIFICATE,
                                                    XDG_RUNTIME_DIR=apart),
    }


def measure_starts(bench):
    apart = bench.folder("second")
    running = subprocess.Popen([bench.program("PXViewCertTool"), CERTIFICATE], **QUIET,
                               env={**os.environ, "XDG_RUNTIME_DIR": apart,
                                    # Windows are translucent till they are painted: none lies below.
                                    "QT_QPA_PLATFORM": "offscreen"})
    try:
        time.sleep(2)
        with SessionBus() as bus:
            commands = start_commands(bench, bus)
            for run in commands.values():
                run()  # what is read once from the disk
            results = {name: [] for name in commands}
            for _ in range(bench.rounds):
                # What ran before leaves its libraries in the caches.
                for name in random.sample(list(commands), len(commands)):
                    results[name].append(commands[name]())
    finally:
        running.terminate()
        running.wait()
    return results


STARTS = (
    ("viewer", "lean empty window", 1.20),
    ("viewer", "gcr-viewer", 0.90),
    ("viewer", "the toolkit's own empty window", 0.75),
    ("viewer on GNOME", "lean empty window", 1.35),
    ("viewer, no argument", "lean empty window", None),
    ("viewer, second start", "lean empty window", 0.60),
)


def paired_ratio(results, what, against, column):
    return statistics.median(one[column] / other[column]
                             for one, other in zip(results[what], results[against]))


def report_starts(bench):
    results = measure_starts(bench)
    print("## Start\n\nFrom exec to the first painted window, or to the end of a start that shows"
          f" none; medians of {bench.rounds} rounds.\n\n| what | ms | peak MB |\n|---|---|---|")
    for name, values in results.items():
        milliseconds = statistics.median(value[0] for value in values)
        peak = statistics.median(value[1] for value in values) / 1000
        print(f"| {name} | {milliseconds:.1f} | {peak:.1f} |")
    print("\n| time of | by that of | ratio | at most |\n|---|---|---|---|")
    for what, against, limit in STARTS:
        ratio = paired_ratio(results, what, against, 0)
        print(f"| {what} | {against} | {bench.limited(what, ratio, limit)} |")
    ratio = paired_ratio(results, "viewer", "lean empty window", 1)
    print("| viewer, peak memory | lean empty window | "
          f"{bench.limited('peak memory', ratio, 1.12)} |")


CERTIFICATES = (
    ("block-tree", "gnutls-import", 0.17),
    ("parse_cert", "gnutls-import-print", 0.40),
    ("parse_cert", "openssl-parse-print", None),
)


def report_certificates(bench):
    files = glob.glob("/usr/share/ca-certificates/mozilla/*.crt")
    run = subprocess.run([bench.program("bench_certificates"), *files], check=True, text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    times = {name: float(value) for name, value in map(str.split, run.stdout.splitlines())}
    print(f"\n## Certificates\n\nAll {len(files)} of ca-certificates; medians, in microseconds a"
          " certificate.\n\n| what | µs |\n|---|---|")
    for name, value in times.items():
        print(f"| {name} | {value:.1f} |")
    print("\n| time of | by that of | ratio | at most |\n|---|---|---|---|")
    for what, against, limit in CERTIFICATES:
        ratio = times[what] / times[against]
        print(f"| {what} | {against} | {bench.limited(what, ratio, limit)} |")


ROWS = (
    ("10,000 rows", ("--rows", "10000"), {"selected": 50, "paged": 16}),
    ("a million rows of one name", ("--same-rows", "1000000"), {}),
)


def report_rows(bench):
    print("\n## Rows\n\nUp to the next picture, in milliseconds; medians.\n\n"
          "| window | what | ms | at most |\n|---|---|---|---|")
    for window, arguments, limits in ROWS:
        runs = []
        for _ in range(3):
            run = subprocess.run([bench.program("bench_window"), *arguments], check=True, text=True,
                                 stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
            runs.append({name: float(value)
                         for name, value in map(str.split, run.stdout.splitlines())})
        for name in ("shown", "selected", "paged", "clicked"):
            value = statistics.median(run[name] for run in runs)
            print(f"| {window} | {name} | {bench.limited(window, value, limits.get(name), '{:.1f}')} |")
        peak = statistics.median(run["peak"] for run in runs) / 1000
        print(f"| {window} | peak MB | {peak:.0f} | |")


def run_rows(bench, path):
    return bench.clock("--exit", bench.program("certrows"), path)


def write(path, content):
    with open(path, "wb") as file:
        file.write(content)


def report_large_files(bench):
    path = os.path.join(bench.scratch, "large")
    write(path, b"\0")
    own = {"rows": run_rows(bench, path)[1],
           "window": bench.clock(bench.program("PXViewCertTool"), path)[1]}
    print("\n## Large files\n\nPeak memory beyond the start's own, in times of the file's size.\n\n"
          "| file | size MB | printed as rows: s | at most | peak MB | of the size | at most |"
          " shown in the window: s | at most | peak MB | of the size | at most |\n"
          "|---|---|---|---|---|---|---|---|---|---|---|---|")
    for name, most_memory, most_seconds, make in hostile.LARGE:
        content = make()
        size = len(content)
        write(path, content)
        del content
        cells = [name, f"{size / 1e6:.1f}"]
        for where, run in (("rows", lambda: run_rows(bench, path)),
                           ("window", lambda: bench.clock(bench.program("PXViewCertTool"), path))):
            milliseconds, peak = run()
            times_size = (peak - own[where]) * 1024 / size
            cells += [bench.limited(f"{name}: time", milliseconds / 1000, most_seconds),
                      f"{peak / 1000:.0f}",
                      bench.limited(f"{name}: memory", times_size, most_memory, "{:.1f}")]
        print("| " + " | ".join(cells) + " |", flush=True)
    os.remove(path)


def processor_time(bench, path):
    """Milliseconds of the row printer, the kernel's for it included: a file of a megabyte takes less
    than what a busy machine adds to the clock on the wall."""
    command = [bench.program("certrows"), path]
    pid = os.posix_spawn(command[0], command, os.environ,
                         file_actions=[(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)])
    _, status, used = os.wait4(pid, 0)
    if status != 0:
        raise subprocess.CalledProcessError(status, command)
    return (used.ru_utime + used.ru_stime) * 1000


def times_of_shape(bench, make, path):
    """For each size the median, less that of the start alone. Each round has its own order: what
    comes after a large file finds the caches empty."""
    most_rounds, least_rounds, most_milliseconds = 101, 7, 3000
    paths = [path] + [f"{path}-{size}" for size in hostile.SHAPE_SIZES]
    for name, size in zip(paths[1:], hostile.SHAPE_SIZES):
        write(name, make(size))
    taken = {name: [] for name in paths}
    for done in range(most_rounds):
        for name in random.sample(paths, len(paths)):
            if done < least_rounds or sum(taken[name]) < most_milliseconds:
                taken[name].append(processor_time(bench, name))
    for name in paths[1:]:
        os.remove(name)
    own, *others = (statistics.median(taken[name]) for name in paths)
    return [other - own for other in others]


def report_shapes(bench):
    path = os.path.join(bench.scratch, "shape")
    write(path, b"\0")
    print("\n## Nested shapes\n\nPrinted as rows, in milliseconds of the processor beyond the start's"
          " own; medians of up to 101 rounds. Eight times the input takes at most 9 times the time.\n\n"
          "| shape | 128 KiB | 1 MiB | 8 MiB | growth | at most |\n|---|---|---|---|---|---|")
    for name, make in hostile.SHAPES:
        times = times_of_shape(bench, make, path)
        shown = " | ".join(f"{value:.2f}" for value in times)
        print(f"| {name} | {shown} | {bench.limited(name, times[2] / times[1], 9, '{:.1f}')} |",
              flush=True)


def versions():
    packages = ("libqt5widgets5", "libqt6widgets6", "gcr", "libgnutls30", "libssl3", "xvfb",
                "libfontconfig1", "fonts-noto-cjk")
    run = subprocess.run(["dpkg-query", "-W", "-f", "${Package} ${Version}\n", *packages],
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    return ", ".join(line for line in run.stdout.splitlines() if line.split()[1:])


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = next((line.split(":")[1].strip() for line in file if "model name" in line), "?")
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    return f"{os.cpu_count()} x {model}, {memory:.0f} GiB, Linux {platform.release()}"


PARTS = {
    "start": report_starts,
    "certificates": report_certificates,
    "rows": report_rows,
    "large": report_large_files,
    "shapes": report_shapes,
}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("parts", nargs="*", choices=[[], *PARTS])
    parser.add_argument("--rounds", type=int, default=41)
    arguments = parser.parse_args()
    print(f"Machine: {machine()}; load {os.getloadavg()[0]:.1f} when it began.  \n"
          f"Versions: {versions()}.\n")
    with tempfile.TemporaryDirectory(prefix="bench-") as scratch:
        bench = Bench(os.path.abspath(arguments.build), arguments.rounds, scratch)
        for part in arguments.parts or PARTS:
            PARTS[part](bench)
    print(f"\nLimits missed: {', '.join(dict.fromkeys(bench.missed)) or 'none'}.")
    return 1 if bench.missed else 0


if __name__ == "__main__":
    sys.exit(main())
