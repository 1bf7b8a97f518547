#!/usr/bin/env python3
"""What a call costs from Python, against the same call from C++ and through
the JSON pipe (`kavrin shell`), measured in one run on the demo company.

    PYTHONPATH=build/python python3 bench/python_calls.py [--build build] [--calls 2000]

For each case: the C++ call made directly and by name, the call through the
C interface from C++, the Python call (kavrin.ClsPub), and one request and
answer through a running `kavrin shell`. Wall-clock microseconds per call,
the median of interleaved repetitions (so that the machine's load falls on
every column alike). The target: a Python call within 3 times the C++ call.
"""

import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

CASES = {
    "CheckDirNoGrade": ("CheckDirNoGrade", ["010101", 0]),
    "CodeToName": ("CodeToName", ["010101", 0]),
    "SepCode": ("SepCode", ["01             store"]),
    "FormatNum": ("FormatNum", [1234.5]),
}
TARGET = 3.0


def time_python(pub, calls):
    figures = {}
    for case, (member, args) in CASES.items():
        method = getattr(pub, member)
        method(*args)
        start = time.perf_counter()
        for _ in range(calls):
            method(*args)
        figures[case] = (time.perf_counter() - start) / calls * 1e6
    return figures


def time_shell(shell, calls):
    figures = {}
    for case, (member, args) in CASES.items():
        request = (json.dumps({"method": member, "args": args}) + "\n").encode()
        shell.stdin.write(request)
        shell.stdin.flush()
        shell.stdout.readline()
        start = time.perf_counter()
        for _ in range(calls):
            shell.stdin.write(request)
            shell.stdin.flush()
            answer = shell.stdout.readline()
        figures[case] = (time.perf_counter() - start) / calls * 1e6
        assert json.loads(answer)["ok"], answer
    return figures


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", default="build", help="the build directory")
    parser.add_argument("--calls", type=int, default=2000, help="calls per case and repetition")
    parser.add_argument("--repetitions", type=int, default=7)
    options = parser.parse_args()
    build = pathlib.Path(options.build).resolve()
    sys.path.insert(0, str(build / "python"))
    import kavrin

    cli = build / "tools" / "kavrin" / "kavrin"
    cpp = build / "python" / "kavrin-cpp-calls"
    with tempfile.TemporaryDirectory() as folder:
        db = os.path.join(folder, "demo.db")
        subprocess.run([cli, "init-db", db, "--demo"], check=True, stdout=subprocess.DEVNULL)
        pub = kavrin.ClsPub(db)
        shell = subprocess.Popen([cli, "shell", "--db", db], stdin=subprocess.PIPE,
                                 stdout=subprocess.PIPE)
        samples = {name: {column: [] for column in ("typed", "late", "c", "python", "shell")}
                   for name in CASES}
        for _ in range(options.repetitions):
            native = json.loads(subprocess.run(
                [cpp, db, str(options.calls), "1"], check=True, capture_output=True,
                text=True).stdout)
            python = time_python(pub, options.calls)
            piped = time_shell(shell, max(options.calls // 10, 50))
            for name in CASES:
                for column in ("typed", "late", "c"):
                    samples[name][column].append(native[name][column])
                samples[name]["python"].append(python[name])
                samples[name]["shell"].append(piped[name])
        shell.stdin.close()
        shell.wait()

    print(f"{'case':<18}{'C++':>9}{'C++ late':>10}{'C':>9}{'Python':>9}{'shell':>9}"
          f"{'Py/C++':>8}{'shell/Py':>10}")
    medians = {}
    for name in CASES:
        m = {column: statistics.median(values) for column, values in samples[name].items()}
        medians[name] = m
        print(f"{name:<18}{m['typed']:>9.2f}{m['late']:>10.2f}{m['c']:>9.2f}{m['python']:>9.2f}"
              f"{m['shell']:>9.2f}{m['python'] / m['typed']:>8.2f}"
              f"{m['shell'] / m['python']:>10.1f}")
    print("(wall-clock microseconds per call, medians of "
          f"{options.repetitions} interleaved repetitions)")
    ratio = medians["CheckDirNoGrade"]["python"] / medians["CheckDirNoGrade"]["typed"]
    verdict = "met" if ratio <= TARGET else "NOT met"
    print(f"a Python CheckDirNoGrade within {TARGET:g}x the C++ call: {ratio:.2f}x, {verdict}")
    return 0 if ratio <= TARGET else 1


if __name__ == "__main__":
    sys.exit(main())
