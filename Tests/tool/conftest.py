import json
import os
import subprocess

import pytest

TOOL = os.environ["RZCRYPTO"]


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
