#!/usr/bin/env python3
"""Runs the README's shell examples and its Python client on the demo company.

Each "$ kavrin ..." line of a console block is run in a folder holding
demo.db and must print the lines that follow it. The Python block that
drives `kavrin shell` is run as it stands: what it prints must match the
comments of its print() lines, and its call() must turn every answer shape
of the shell into the exception it promises.

Usage: readme_examples.py README.md PATH/TO/kavrin
"""
import io
import math
import os
import shlex
import subprocess
import sys
import tempfile
from contextlib import redirect_stdout

failures = []


def expect(ok, what):
    print(("ok      " if ok else "FAILED  ") + what)
    if not ok:
        failures.append(what)


def blocks(readme, language):
    """(first line number, lines) of each ```language block."""
    found, current = [], None
    for number, line in enumerate(readme.split("\n"), 1):
        if current is None and line.strip() == "```" + language:
            current = (number + 1, [])
        elif current is not None and line.strip() == "```":
            found.append(current)
            current = None
        elif current is not None:
            current[1].append(line)
    return found


def console_examples(readme):
    for start, lines in blocks(readme, "console"):
        i = 0
        while i < len(lines):
            if not lines[i].startswith("$ kavrin "):
                i += 1
                continue
            command, shown = lines[i][2:], []
            i += 1
            while i < len(lines) and not lines[i].startswith("$ "):
                shown.append(lines[i])
                i += 1
            run = subprocess.run(shlex.split(command), capture_output=True, encoding="utf-8")
            printed = run.stdout.rstrip("\n").split("\n")
            expect(printed == shown, f"README.md:{start}: {command}" +
                   ("" if printed == shown else f"\n  printed {run.stdout!r}"))


def raises(kind, call, *args):
    try:
        call(*args)
    except kind as e:
        return str(e)
    except Exception as e:  # the wrong exception is a failure too
        return f"{type(e).__name__}: {e}"
    return None


def python_client(readme):
    clients = [(start, lines) for start, lines in blocks(readme, "python")
               if any('"shell"' in line for line in lines)]
    expect(len(clients) == 1, "the README has one Python client of kavrin shell")
    start, lines = clients[0]
    printed = io.StringIO()
    namespace = {}
    with redirect_stdout(printed):
        exec(compile("\n".join(lines), f"README.md:{start}", "exec"), namespace)
    shown = [line.split("#", 1)[1].strip() for line in lines if line.startswith("print(")]
    expect(printed.getvalue().rstrip("\n").split("\n") == shown,
           f"README.md:{start}: the client prints {shown}")

    call = namespace["call"]
    failed = raises(RuntimeError, call, "CodeToNam", "010101", 0)
    expect(failed is not None and "438" in failed and "did you mean CodeToName" in failed,
           f"a failed call raises RuntimeError with number and detail: {failed}")
    for args in (("FormatNum", math.nan), ("CodeToName", {"$what": 1}, 0)):
        usage = raises(ValueError, call, *args)
        expect(usage is not None and not usage.startswith(("RuntimeError", "JSONDecodeError")),
               f"an unreadable request raises ValueError: {usage}")
    expect(call("FormatNum", 0) == "", "the session goes on after them")
    namespace["kavrin"].kill()
    namespace["kavrin"].wait()
    ended = raises((EOFError, BrokenPipeError), call, "FormatNum", 1)
    expect(ended is not None and not ended.startswith("JSONDecodeError"),
           f"a call after the shell ended raises a clear error: {ended}")


def main(readme_path, kavrin):
    with open(readme_path, encoding="utf-8") as f:
        readme = f.read()
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.environ["PATH"] = os.path.dirname(os.path.abspath(kavrin)) + os.pathsep + os.environ["PATH"]
        subprocess.run([kavrin, "init-db", "demo.db", "--demo"], check=True, capture_output=True)
        console_examples(readme)
        python_client(readme)
    if failures:
        sys.exit(f"{len(failures)} README example(s) failed")


if __name__ == "__main__":
    main(*sys.argv[1:])
