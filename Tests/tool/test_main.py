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


def test_an_unknown_command_is_named(tool):
    assert tool("nonsense").err.startswith("rzcrypto: nonsense: no such command\n")
    assert tool("digest", "--nonsense").err.startswith("rzcrypto: usage: ")


def test_version(tool):
    assert re.fullmatch(r"rzcrypto \d+\.\d+\.\d+\n", tool("--version").text)


def test_trace_shows_each_call_and_keeps_standard_output_clean(tool):
    result = tool("--trace", "digest", stdin=b"abc")
    assert result.text.startswith("ba7816bf")
    entries = re.findall(r"ENTER (\S+)", result.err)
    assert "MessageDigest::Create" in entries and "COpensslMessageDigest::Digest" in entries
    assert entries == re.findall(r"ENTER (\S+)", tool("digest", "--trace", stdin=b"abc").err)


def test_algorithms_lists_the_registry_and_asks_each_service(tool, sh):
    listing = tool("algorithms", "--json").json
    assert listing["servicesOfEvery"] == ["key generator", "random", "signature"]
    rows = {row["name"]: row for row in listing["algorithms"]}
    assert len(rows) == 24
    assert "digest" in rows["SHA256"]["services"]
    for name in "MD2", "AES", "CMAC", "ECDH_P256":
        assert "digest" not in rows[name]["services"]
    assert rows["CMAC"]["oid"] is None
    for name in "SHA256", "SHA512", "MD5":  # as openssl writes them in its DER
        der = sh("openssl", "asn1parse", "-genstr", "OID:" + rows[name]["oid"])
        assert name.lower() in der.decode().lower().replace("-", "")
    table = tool("algorithms").text.splitlines()
    assert len(table) == 27 and table[0].split() == ["NAME", "OID", "FAMILY", "SERVICES"]
