import json
import os
import pathlib
import pty
import subprocess
import time

import pytest

TOOL = os.environ["RZCRYPTO"]
DATA = pathlib.Path(__file__).parent.parent / "data"
SAMPLES = DATA.parents[1] / "Examples" / "certificates"


def table(name, separator):
    """The lines of a file in Tests/data that have the separator, cut at it."""
    lines = (DATA / name).read_text().splitlines()
    return [line.split(separator) for line in lines if separator in line and line[0] != "#"]


def environment(**more):
    """That of this process, with `rzcrypto` as a command and the examples in $SAMPLES."""
    return {**os.environ, "PATH": os.path.dirname(TOOL) + ":" + os.environ["PATH"], "SAMPLES": str(SAMPLES), **more}


def on_terminal(stream, arguments, cwd, feed=()):
    """Runs rzcrypto with that stream on a terminal; what its input gets is fed piece by piece, a pause after each.
    Returns its code, what the terminal saw and its standard output."""
    master, slave = pty.openpty()
    streams = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, stream: slave}
    with subprocess.Popen([TOOL, *arguments], cwd=cwd, **streams) as process:
        os.close(slave)
        for piece in feed:
            process.stdin.write(piece)
            process.stdin.flush()
            time.sleep(1.5)
        out, _ = process.communicate(timeout=300)
    seen = b""
    with open(master, "rb", buffering=0) as reading:
        try:
            while chunk := reading.read(1000):
                seen += chunk
        except OSError:
            pass  # the other end is closed
    return process.returncode, seen, out


class Result:
    def __init__(self, process):
        self.code = process.returncode
        self.out = process.stdout
        self.err = process.stderr.decode(errors="replace")

    @property
    def text(self):
        return self.out.decode()

    @property
    def json(self):
        return json.loads(self.out)


@pytest.fixture
def tool(tmp_path):
    """Runs rzcrypto in an empty folder: tool("digest", "x", stdin=b"...") -> Result."""

    def run(*arguments, stdin=b"", env=None, **options):
        process = subprocess.run(
            [TOOL, *map(str, arguments)], input=stdin, capture_output=True, cwd=tmp_path, timeout=120,
            env={**os.environ, **(env or {})}, **options)
        # A sanitizer's report or a signal is never an answer.
        assert process.returncode in range(7), process.stderr.decode(errors="replace")
        return Result(process)

    return run


@pytest.fixture
def sh(tmp_path):
    """Runs another program, which must succeed, in the same folder and returns what it prints."""

    def run(*command, stdin=b""):
        return subprocess.run(command, input=stdin, capture_output=True, cwd=tmp_path, check=True, timeout=120).stdout

    return run
