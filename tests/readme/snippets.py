#!/usr/bin/env python3
"""Turns the C++ blocks of README.md into one function that a test runs.

The blocks run in order in one scope, as a reader would type them one after
the other; their #include lines go to the top of the file. A block that
reaches a database server ("odbc:") is compiled but not run: there is none
here.

A comment that starts with an answer is checked when the line has run:
  kavrin::String name = pub.CodeToName(code, 0);   // "刨花板 18mm"
checks the variable the line declares or assigns; "EXPR == VALUE" checks
EXPR. Several go one after the other, separated by ", " or "; ", and prose
after them is not read. VALUE is a "text", a number, true or false.

Usage: snippets.py README.md OUTPUT.cpp
"""
import re
import sys

VALUE = r'"(?:[^"\\]|\\.)*"|-?\d+(?:\.\d+)?|true|false'
EXPECTED_ONLY = re.compile(rf"({VALUE})(?=$|[\s,;(])")
EXPRESSION = re.compile(rf"([A-Za-z_][\w.\->\[\]()]*?)\s*==\s*({VALUE})(?=$|[\s,;(])")
ASSIGNED = re.compile(r"([A-Za-z_]\w*)\s*(?:\{[^}]*\})?\s*=(?!=)")


def split_comment(line):
    """The code and the // comment of a line, minding string literals."""
    quoted = False
    for i, c in enumerate(line):
        if c == '"' and (i == 0 or line[i - 1] != "\\"):
            quoted = not quoted
        elif not quoted and line.startswith("//", i):
            return line[:i], line[i + 2:].strip()
    return line, ""


def parts(comment):
    """The comment cut at ", " and "; " outside quotes."""
    out, current, quoted = [], "", False
    for i, c in enumerate(comment):
        if c == '"' and (i == 0 or comment[i - 1] != "\\"):
            quoted = not quoted
        if not quoted and c in ",;" and comment[i + 1:i + 2] in (" ", ""):
            out.append(current.strip())
            current = ""
        else:
            current += c
    out.append(current.strip())
    return out


def checks(code, comment, where):
    """(expression, value) pairs the comment states, up to the first prose."""
    found = []
    for part in parts(comment):
        if m := EXPRESSION.match(part):
            found.append((m.group(1), m.group(2)))
        elif m := EXPECTED_ONLY.match(part):
            target = ASSIGNED.search(code)
            if not target:
                sys.exit(f"{where}: an answer in a comment needs a line that assigns a variable")
            found.append((target.group(1), m.group(1)))
        else:
            break
    if found and not code.rstrip().endswith((";", "{", "}")) and code.strip():
        sys.exit(f"{where}: a checked comment must end a complete statement")
    return found


def cpp_value(value):
    return "u" + value if value.startswith('"') else value


def main(readme, output):
    with open(readme, encoding="utf-8") as f:
        lines = f.read().split("\n")
    includes, body, count, block = [], [], 0, None
    for number, line in enumerate(lines, 1):
        if block is None:
            if line.strip() == "```cpp":
                block, start = [], number
            continue
        if line.strip() != "```":
            block.append((number, line))
            continue
        text = "\n".join(l for _, l in block)
        runs = "odbc:" not in text
        body.append(f"  // README.md:{start}" + ("" if runs else ", compiled only: no server here"))
        # Runnable blocks share one scope: names a block declares serve the
        # blocks after it.
        if not runs:
            body.append(f"  [[maybe_unused]] auto not_run_{start} = [&] {{")
        for n, l in block:
            if l.startswith("#include"):
                includes.append(l)
                continue
            body.append(f'#line {n} "README.md"')
            body.append("  " + l)
            code, comment = split_comment(l)
            for expression, value in checks(code, comment, f"{readme}:{n}") if runs else []:
                body.append(f"  readme::Check({count}, {n}, {expression}, {cpp_value(value)},")
                body.append(f"                R\"({expression} == {value})\");")
                count += 1
        if not runs:
            body.append("  };")
        block = None
    with open(output, "w", encoding="utf-8") as f:
        f.write("// Generated from README.md by tests/readme/snippets.py: do not edit.\n")
        f.write("\n".join(sorted(set(includes), key=includes.index)) + "\n")
        f.write('#include "ReadmeCheck.h"\n\n')
        f.write(f"const int readme::kChecks = {count};\n\n")
        f.write("void readme::RunSnippets() {\n" + "\n".join(body) + "\n}\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
