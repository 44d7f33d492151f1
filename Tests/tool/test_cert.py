import base64
import os
import subprocess

import pytest
from conftest import SAMPLES, TOOL, on_terminal

# What each sample was made to show: priority, the conditions of smart-card logon that hold, a note.
STORIES = {
    "ada-logon.pem": (4, {"userPrincipalName", "digitalSignature", "smartCardLogon"}, ""),
    "ben-no-signature-bit.pem": (0, {"userPrincipalName", "smartCardLogon"}, "if its key usage had digitalSignature"),
    "cleo-no-principal-name.pem": (0, {"digitalSignature", "smartCardLogon"}, "if it had a user principal name"),
    "dora-enrolment-agent.pem": (2, {"digitalSignature"}, "and if its extended key usage had smart-card logon"),
    "emil-file-encryption.pem": (1, {"userPrincipalName"}, "if its key usage had digitalSignature, and if"),
    "fay-expired.pem": (4, {"userPrincipalName", "digitalSignature", "smartCardLogon"}, "expired on 2020-12-31"),
    "gita-client-only.pem": (0, {"userPrincipalName", "digitalSignature"}, "client authentication does not take"),
}
CUT = "not a certificate: cut short: 600 of "


def sample(name):
    return os.path.join(SAMPLES, name)


def by_file(result):
    return {os.path.basename(entry["file"]): entry for entry in result.json["certificates"]}


def test_show_tells_what_openssl_tells(tool, sh):
    shown = by_file(tool("cert", "show", "--json", *map(sample, STORIES)))
    for name in STORIES:
        def ask(*what):
            return sh("openssl", "x509", "-in", sample(name), "-noout", "-nameopt", "RFC2253", *what).decode().strip()
        entry = shown[name]
        assert "subject=" + entry["subject"]["rfc4514"] == ask("-subject")
        assert "issuer=" + entry["issuer"]["rfc4514"] == ask("-issuer")
        assert entry["subject"]["encodedOrder"].startswith("C=DE,O=Example Cards,OU=People,CN=")
        assert "serial=" + entry["serialNumber"].upper() == ask("-serial")
        assert ask("-fingerprint", "-sha1").endswith("=" + entry["sha1"])
        assert ask("-fingerprint", "-sha256").endswith("=" + entry["sha256"])
        assert "notAfter=" + entry["notAfter"]["time"].replace(" UTC", "Z") == ask("-enddate", "-dateopt", "iso_8601")
        assert "notBefore=" + entry["notBefore"].replace(" UTC", "Z") == ask("-startdate", "-dateopt", "iso_8601")
        assert entry["version"] == 3
        assert entry["key"] == {"algorithm": "RSA", "oid": "1.2.840.113549.1.1.1", "bits": 2048, "exponent": 65537}
        assert entry["pem"].encode() == sh("openssl", "x509", "-in", sample(name))
    assert shown["fay-expired.pem"]["period"] == "expired"
    assert shown["fay-expired.pem"]["notAfter"]["daysLeft"] < -2000


def test_logon_tells_each_condition_with_its_evidence(tool):
    result = tool("cert", "logon", "--json", SAMPLES)
    assert result.code == 3
    entries = by_file(result)
    assert list(entries) == sorted([*STORIES, "hugo-cut-short.der"])
    for name, (priority, holding, note) in STORIES.items():
        entry = entries[name]
        assert {key for key, condition in entry["conditions"].items() if condition["holds"]} == holding, name
        assert entry["qualifies"] == (len(holding) == 3) == (priority >= 4)
        assert note in " ".join(entry["notes"]), name
        assert base64.b64decode("".join(entry["pem"].splitlines()[1:-1]))[0] == 0x30
    assert entries["ada-logon.pem"]["notes"] == []
    assert entries["hugo-cut-short.der"]["error"].startswith(CUT)
    assert result.json["summary"] == {"certificates": 7, "qualified": 2, "unreadable": 1}


def test_blocks_are_found_wherever_a_read_ends(tool, tmp_path):
    ada, ben = ((open(sample(name), "rb").read()) for name in ("ada-logon.pem", "ben-no-signature-bit.pem"))
    for cut in range(0, 27, 2):  # the reads of 64 KiB end anywhere in the last line of the first block
        (tmp_path / "cut.pem").write_bytes(b" " * (65536 - len(ada) + cut) + ada + ben)
        entries = tool("cert", "logon", "--json", "cut.pem").json["certificates"]
        assert [entry.get("qualifies") for entry in entries] == [True, False], cut


def peak(tmp_path, *arguments):
    """The largest resident size of one run, in KiB."""
    quiet = {**os.environ, "ASAN_OPTIONS": "quarantine_size_mb=1"}
    with open(os.devnull, "wb") as null:
        process = subprocess.Popen([TOOL, *arguments], stdout=null, stderr=null, cwd=tmp_path, env=quiet)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    assert process.returncode == 0
    return usage.ru_maxrss


@pytest.mark.parametrize("verb", ["show", "logon", "rank"])
def test_memory_does_not_grow_with_the_number_of_certificates(tmp_path, verb):
    ada = open(sample("ada-logon.pem"), "rb").read()
    (tmp_path / "few.pem").write_bytes(ada * 100)
    (tmp_path / "many.pem").write_bytes(ada * 4000)
    for json in (), ("--json",):
        assert peak(tmp_path, "cert", verb, *json, "many.pem") < peak(tmp_path, "cert", verb, *json, "few.pem") + 3000


def test_a_long_run_shows_its_progress_on_a_terminal(tmp_path):
    ada = open(sample("ada-logon.pem"), "rb").read()
    code, seen, out = on_terminal("stderr", ["cert", "rank"], tmp_path, [ada * 3, ada * 100])
    assert code == 0 and out.count(b"smart-card logon (4)") == 103
    assert b"certificates ..." in seen and seen.endswith(b"\r\x1b[K")
