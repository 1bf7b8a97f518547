"""A demo company made by the kavrin tool for the whole session, and a clsPub on it."""

import os
import pathlib
import subprocess

import pytest

import kavrin

ROOT = pathlib.Path(__file__).resolve().parents[2]


def kavrin_cli():
    return os.environ.get("KAVRIN_CLI", str(ROOT / "build" / "tools" / "kavrin" / "kavrin"))


@pytest.fixture(scope="session")
def demo_db(tmp_path_factory):
    path = tmp_path_factory.mktemp("kavrin") / "demo.db"
    subprocess.run([kavrin_cli(), "init-db", str(path), "--demo"], check=True,
                   stdout=subprocess.DEVNULL)
    return str(path)


@pytest.fixture
def pub(demo_db):
    return kavrin.ClsPub(demo_db)


@pytest.fixture
def host():
    """Records message boxes; .focused is the control active_control answers."""

    class Host:
        messages = []
        focused = None

    kavrin.set_host(message_box=lambda prompt, buttons, title: Host.messages.append(prompt),
                    active_control=lambda: Host.focused)
    yield Host
    kavrin.set_host()
