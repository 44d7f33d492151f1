"""Transcripts of rzcrypto at a prompt, a paragraph each, in Tests/data/transcript_*.txt. The first two characters of a
line tell its kind: `< ` hex for standard input (aa*130: 130 times); `$ ` a command for bash -eo pipefail with that input,
and its answer: `? ` the exit code, 0 if there is none; `> ` a line of standard output, `~ ` a part of it, `= ` a place in
its JSON and the value; `! ` a part of standard error. Without > ~ = standard output is empty, without ! standard error."""
import json
import re
import subprocess

import pytest
from conftest import DATA, environment


def transcripts():
    for path in sorted(DATA.glob("transcript_*.txt")):
        for paragraph in re.split(r"\n\n+", re.sub(r"^#.*\n", "", path.read_text(), flags=re.M).strip("\n")):
            lines = [(line[0], line[2:]) for line in paragraph.split("\n")]
            assert all(kind in "<$?>~=!" for kind, _ in lines), paragraph
            yield pytest.param(lines, id=path.stem + ": " + next(text for kind, text in lines if kind == "$"))


def at(value, path):
    for step in path.split("."):
        value = value[int(step) if isinstance(value, list) else step]
    return value


def check(command, given, answer, folder):
    process = subprocess.run(["bash", "-eo", "pipefail", "-c", command], input=given, capture_output=True, cwd=folder,
                             timeout=120, env=environment())
    out, err = (text.decode(errors="backslashreplace") for text in (process.stdout, process.stderr))
    wanted = {mark: [text for kind, text in answer if kind == mark] for mark in "?>~=!"}
    assert wanted["?"] == ([str(process.returncode)] if process.returncode else []), (command, err)
    assert all(part in err for part in wanted["!"]) and bool(err) == bool(wanted["!"]), (command, err)
    assert not wanted[">"] or out == "".join(line + "\n" for line in wanted[">"]), command
    assert all(part in out for part in wanted["~"]), (command, out)
    assert out == "" or wanted[">"] or wanted["~"] or wanted["="], command
    for path, value in (line.split(" ", 1) for line in wanted["="]):
        assert at(json.loads(out), path) == json.loads(value), (command, path)


@pytest.mark.parametrize("lines", transcripts())
def test_transcript(lines, tmp_path):
    given = b""
    starts = [i for i, (kind, _) in enumerate(lines) if kind in "<$"]
    for start, end in zip(starts, [*starts[1:], len(lines)]):
        kind, text = lines[start]
        if kind == "$":
            check(text, given, lines[start + 1:end], tmp_path)
        else:
            given = re.sub(r"(\w\w)\*(\d+)", lambda found: found[1] * int(found[2]), text).encode()
