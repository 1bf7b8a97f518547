"""The same random calls, seeded, through the Python package and through
`kavrin shell` on the same demo company: results, errors, written arguments,
list contents and message boxes must agree."""

import datetime
import json
import random
import subprocess

import kavrin
from conftest import kavrin_cli

CALLS = 300
SEED = 20260419

TEXTS = ["010101", "010102", "020101", "刨花板 18mm", "V001", "森林木业", "C001", "01", "02",
         "03", "0101", "0201", "1", "21", "1403", "001", "", "   ", "A'A", "zz",
         "01             原料库", "1,234.50", " -5 ", "2x", "223", "bTrack", "bFree1", "GL", "IA",
         "PU", "AA", "cGoodClass", "Inventory", "9001", "1001", "true"]
NUMBERS = [-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 13, 15, 22, 255, 300, 9001, 40000]
DOUBLES = [0.0, 1234.5, -5.125, 0.005, 86.5, 1e10]
ANYTHING = [None, True, False, -1, 0, 1, 2.5, "x", "0", kavrin.Missing, kavrin.Empty]


def random_argument(rng, kind, dao_path):
    if kind == "String":
        return rng.choice(TEXTS)
    if kind == "Boolean":
        return rng.choice([True, False, True, False, "x", 1, None])
    if kind in ("Integer", "Long", "Byte"):
        return rng.choice(NUMBERS + ["3", "x"])
    if kind == "Double":
        return rng.choice(DOUBLES + NUMBERS[:4] + ["1,234.50"])
    if kind == "Object":
        return ("dao", dao_path)
    return rng.choice(ANYTHING + [("list",), ("array", rng.choice([3, 10]), rng.choice(
        ["Boolean", "Variant", "Long"]))])


def random_call(rng, members, dao_path):
    name, _, _, parameters = rng.choice(members)
    args = [random_argument(rng, kind, dao_path) for _, kind, _, _ in parameters]
    # Leave out some trailing optional arguments, mark others as omitted.
    while args and parameters[len(args) - 1][2] and rng.random() < 0.4:
        args.pop()
    for i, (_, _, optional, _) in enumerate(parameters[:len(args)]):
        if optional and rng.random() < 0.1:
            args[i] = kavrin.Missing
    if rng.random() < 0.03:  # a wrong argument count now and then
        args = args + ["extra"] if rng.random() < 0.5 else args[:-1]
    return name, args


def to_python(arg):
    if isinstance(arg, tuple):
        if arg[0] == "dao":
            return kavrin.open_dao(arg[1])
        if arg[0] == "list":
            return kavrin.ListControl(["old"])
        default = {"Boolean": False, "Variant": kavrin.Empty, "Long": 0}[arg[2]]
        return kavrin.Array([default] * arg[1], element_type=arg[2])
    return arg


def to_json(arg):
    if arg is kavrin.Missing:
        return {"$missing": True}
    if arg is kavrin.Empty:
        return {"$empty": True}
    if isinstance(arg, tuple):
        if arg[0] == "dao":
            return {"$dao": arg[1]}
        if arg[0] == "list":
            return {"$list": ["old"]}
        default = {"Boolean": False, "Variant": {"$empty": True}, "Long": 0}[arg[2]]
        return {"$array": [default] * arg[1], "$lbound": 0, "$type": arg[2]}
    return arg


def shown(value):
    """A Python value as the shell shows one: {"type": ..., "value": ...}."""
    if value is kavrin.Empty:
        return {"type": "Empty"}
    if value is kavrin.Missing:
        return {"type": "Missing"}
    if value is None:
        return {"type": "Null"}
    if isinstance(value, bool):
        return {"type": "Boolean", "value": value}
    if isinstance(value, kavrin.Integer):
        return {"type": "Integer", "value": int(value)}
    if isinstance(value, kavrin.Byte):
        return {"type": "Byte", "value": int(value)}
    if isinstance(value, int):
        return {"type": "Long", "value": value}
    if isinstance(value, float):
        return {"type": "Double", "value": value}
    if isinstance(value, str):
        return {"type": "String", "value": value}
    if isinstance(value, datetime.datetime):
        return {"type": "Date", "value": value.strftime("%Y-%m-%dT%H:%M:%S")}
    if isinstance(value, kavrin.Array):
        return {"type": "Array",
                "value": {"lbound": value.lbound, "items": [shown(v) for v in value]}}
    if isinstance(value, kavrin.ListControl):
        return {"type": "Object", "value": {"items": value.items}}
    raise AssertionError(f"no shell form for {value!r}")


def test_python_and_shell_agree_on_random_calls(pub, demo_db, host):
    rng = random.Random(SEED)
    members = [m for m in kavrin.members() if m[1] == "method"]
    calls = [random_call(rng, members, demo_db) for _ in range(CALLS)]
    requests = "".join(json.dumps({"method": name, "args": [to_json(a) for a in args]}) + "\n"
                       for name, args in calls)
    shell = subprocess.run([kavrin_cli(), "shell", "--db", demo_db], input=requests,
                           capture_output=True, text=True, check=True)
    answers = [json.loads(line) for line in shell.stdout.splitlines()]
    assert len(answers) == CALLS

    parameters = {m[0]: m[3] for m in members}
    failures = 0
    for (name, args), answer in zip(calls, answers):
        given = [to_python(a) for a in args]
        host.messages = []
        seen = {"call": f"{name}{tuple(args)!r}"}
        try:
            outcome = getattr(pub, name)(*given)
            seen["ok"] = True
        except kavrin.Error as e:
            outcome = None
            seen["ok"] = False
            seen["error"] = {"number": e.number, "source": e.source,
                             "description": e.description}
        expected = {"call": seen["call"], "ok": answer["ok"]}
        if not answer["ok"]:
            # The shell shows the detail of a description apart; the library
            # keeps it in the description, after the platform's text.
            error = dict(answer["error"])
            detail = error.pop("detail", None)
            if detail:
                error["description"] += ": " + detail
            expected["error"] = error
        if seen["ok"]:
            written = [i for i, p in enumerate(parameters[name]) if p[3]]
            result = outcome[0] if written else outcome
            seen["result"] = shown(kavrin.Empty if result is None else result)
            expected["result"] = answer["result"]
            after = outcome[1:] if written else ()
            for index, value in zip(written, after):
                if index < len(args) and args[index] is not kavrin.Missing:
                    seen[f"arg{index}"] = shown(value)
                    expected[f"arg{index}"] = answer["args"][index]
        for index, value in enumerate(given):
            if isinstance(value, kavrin.ListControl):
                seen[f"list{index}"] = value.items
                expected[f"list{index}"] = answer["args"][index]["value"]["items"]
        seen["messages"] = host.messages
        expected["messages"] = [m["prompt"] for m in answer.get("messages", [])]
        assert seen == expected
        failures += not seen["ok"]
    assert 0 < failures < CALLS  # both paths were exercised
