import os
import re
import shlex

import pytest
from conftest import table


def commands(tool, *path):
    """Every command path with a help page, as the help pages list them."""
    text = tool(*path, "--help").text
    section = re.search(r"^Subcommands:\n((?:  .*\n)+)", text, re.M)
    found = [path] if path else []
    for name in re.findall(r"^  ([a-z]+) ", section.group(1), re.M) if section else []:
        found += commands(tool, *path, name)
    return found


def test_every_command_has_a_help_page_with_an_example_and_stands_in_the_manual(tool):
    manual = open(__file__.replace("Tests/tool/test_main.py", "Docs/rzcrypto.1")).read().replace("\\-", "-")
    paths = commands(tool)
    assert ("digest",) in paths and ("algorithms",) in paths
    for path in paths:
        text = tool(*path, "--help").text
        assert re.search(r"Examples?:", text), path
        assert f"rzcrypto {path[0]}" in text, path
        assert re.search(rf"^\.B {path[0]}\b", manual, re.M), f"{path} is not in the manual page"


@pytest.mark.parametrize("line, what", table("usage.txt", " | "))
def test_a_command_line_that_makes_no_sense_is_usage_and_makes_nothing(tool, tmp_path, line, what):
    result = tool(*shlex.split(line), stdin=b"30 00")
    assert (result.code, result.out, os.listdir(tmp_path)) == (2, b"", [])
    assert result.err and what in result.err
