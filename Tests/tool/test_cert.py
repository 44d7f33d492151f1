import base64
import os
import subprocess
import time

import pytest
from conftest import TOOL, on_terminal

SAMPLES = os.path.join(os.path.dirname(__file__), "..", "..", "Examples", "certificates")
LOGON = "1.3.6.1.4.1.311.20.2.2"
UPN = "1.3.6.1.4.1.311.20.2.3"
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


@pytest.fixture
def make(sh, tmp_path):
    """make("name.pem", extension lines..., key="EC", subject="/CN=x", days="3650") -> a self-signed certificate."""
    algorithms = {"EC": ["-algorithm", "EC", "-pkeyopt", "ec_paramgen_curve:P-256"], "ED25519": ["-algorithm", "ED25519"],
                  "RSA-PSS": ["-algorithm", "RSA-PSS", "-pkeyopt", "rsa_keygen_bits:2048"]}

    def made(name, *extensions, key="EC", subject="/CN=Card", days="3650", options=()):
        sh("openssl", "genpkey", "-quiet", *algorithms[key], "-out", "key.pem")
        (tmp_path / "x.cnf").write_text("[req]\ndistinguished_name=d\n[d]\n[x]\n" + "\n".join(extensions) + "\n")
        form = "DER" if name.endswith(".der") else "PEM"
        sh("openssl", "req", "-x509", "-new", "-utf8", "-config", "x.cnf", "-extensions", "x", "-key", "key.pem", "-days", days,
           "-subj", subject, "-outform", form, "-out", name, *options)
        return name

    return made


def logon_extensions(name="ada@example.org"):
    return ("keyUsage=digitalSignature", f"extendedKeyUsage={LOGON}", f"subjectAltName=otherName:{UPN};UTF8:{name}")


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


def test_show_for_people(tool):
    result = tool("cert", "show", sample("ada-logon.pem"))
    assert result.code == 0 and result.err == ""
    for line in ("Subject               CN=Ada Lehmann,OU=People,O=Example Cards,C=DE",
                 "                      as encoded: C=DE,O=Example Cards,OU=People,CN=Ada Lehmann",
                 "Serial number         0x1001", "Key                   RSA, 2048 bits, exponent 65537",
                 f"Extended key usage    smart-card logon ({LOGON})",
                 f"Alternative names     user principal name: ada.lehmann@example.org ({UPN}, UTF8String)",
                 "                      e-mail: ada.lehmann@example.org"):
        assert "\n  " + line + "\n" in result.text


def test_every_kind_of_alternative_name(tool, make):
    make("all.pem", "subjectAltName=@a", "[a]", f"otherName.1={UPN};FORMAT:UTF8,BMP:Zoë", f"otherName.2={UPN};T61:caf",
         f"otherName.3={UPN};INTEGER:5", "otherName.4=1.2.3.4;UTF8:abc", "email.1=a@b.c", "DNS.1=host.example", "IP.1=192.0.2.1",
         "IP.2=2001:db8::1", "URI.1=https://example.org/", "RID.1=1.2.840.113549", "dirName.1=n", "[n]", "O=Example", "CN=Dir")
    names = tool("cert", "show", "--json", "all.pem").json["certificates"][0]["alternativeNames"]
    seen = [(entry["name"], entry["text"], entry.get("stringType")) for entry in names]
    assert seen == [("user principal name", "Zoë", "BMPString"), ("user principal name", "caf", "T61String"),
                    ("user principal name", None, None), ("other name", "abc", "UTF8String"), ("e-mail", "a@b.c", None),
                    ("DNS", "host.example", None), ("IP address", "192.0.2.1", None), ("IP address", "2001:db8::1", None),
                    ("URI", "https://example.org/", None), ("registered identifier", "1.2.840.113549", None),
                    ("directory name", "CN=Dir,O=Example", None)]
    assert names[2]["hex"] == "05" and names[3]["oid"] == "1.2.3.4"
    text = tool("cert", "show", "all.pem").text
    assert f"user principal name: hex 05 (\\x05) ({UPN})" in text
    assert "other name: abc (1.2.3.4, UTF8String)" in text


@pytest.mark.parametrize("key, shown", [("EC", "EC P-256, 256 bits"), ("ED25519", "Ed25519, 253 bits"),
                                        ("RSA-PSS", "RSA (PSS), 2048 bits, exponent 65537")])
def test_shapes_of_certificates(tool, sh, make, tmp_path, key, shown):
    make("x.der", key=key, days="40000", options=("-set_serial", "-128"), subject="/O=A+OU=B/CN=Zoë, \"the\" <card>")
    text = tool("cert", "show", "x.der").text
    assert f"  Key                   {shown}\n" in text
    assert "  Serial number         -0x80\n" in text
    assert "  Subject               CN=Zoë\\, \\\"the\\\" \\<card\\>,O=A+OU=B\n" in text or "OU=B+O=A" in text
    assert "  Key usage             none\n" in text and "  Extended key usage    none\n" in text
    assert "  Alternative names     none\n" in text
    assert tool("cert", "rank", "x.der").code == 1
    # Without extensions: version 1; the serial number of a positive and of no sign.
    sh("openssl", "req", "-new", "-key", "key.pem", "-subj", "/CN=Old", "-config", "x.cnf", "-out", "x.csr")
    for number, shown in (0, "0x00"), (2 ** 159, "0x80" + 38 * "0"):
        sh("openssl", "x509", "-req", "-in", "x.csr", "-signkey", "key.pem", "-set_serial", str(number), "-out", "old.pem")
        text = tool("cert", "show", "old.pem").text
        assert "  Version               1\n" in text and f"  Serial number         {shown}\n" in text


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


def test_logon_for_people(tool):
    result = tool("cert", "logon", SAMPLES)
    assert result.code == 3
    assert result.err.count("\n") == 1 and "hugo-cut-short.der: " + CUT in result.err
    assert result.text.endswith("7 certificates: 2 qualified, 5 not; 1 input could not be read\n")
    assert "cleo-no-principal-name.pem\n  CN=Cleo Martin,OU=People,O=Example Cards,C=DE\n" \
           "  NO   user principal name  none, only e-mail cleo.martin@example.org\n" \
           "  yes  digital signature    key usage: digitalSignature\n" in result.text
    assert result.text.count("  QUALIFIES for") == 2 and result.text.count("DOES NOT QUALIFY for") == 5
    assert "\033" not in result.text


def test_exit_codes_of_logon(tool):
    ada, ben = sample("ada-logon.pem"), sample("ben-no-signature-bit.pem")
    assert tool("cert", "logon", ada).code == 0
    assert tool("cert", "logon", ada, ben).code == 1
    assert tool("cert", "logon", ben, sample("hugo-cut-short.der"), ada).code == 3
    missing = tool("cert", "logon", "nowhere.pem", ada)
    assert missing.code == 4 and "nowhere.pem: No such file or directory" in missing.err and "QUALIFIES" in missing.text
    assert tool("cert", "logon", "--nonsense").code == 2 and tool("cert").code == 2


def test_logon_with_broken_parts(tool, make):
    make("san.pem", "keyUsage=digitalSignature", f"extendedKeyUsage={LOGON}", "subjectAltName=DER:3003820561")
    make("eku.pem", "keyUsage=digitalSignature", "extendedKeyUsage=DER:3003060561", f"subjectAltName=otherName:{UPN};INTEGER:7")
    entries = by_file(tool("cert", "logon", "--json", "san.pem", "eku.pem"))
    names = entries["san.pem"]["conditions"]["userPrincipalName"]
    assert names == {"holds": False, "evidence": "its alternative names cannot be read: CSGeneralNames_DERDecode() failed"}
    purposes = entries["eku.pem"]["conditions"]["smartCardLogon"]
    assert purposes == {"holds": False, "evidence": "its extended key usage cannot be read: CSExtKeyUsageSyntax_DERDecode() failed"}
    assert any("its value is no text" in note for note in entries["eku.pem"]["notes"])
    shown = tool("cert", "show", "san.pem")
    assert shown.code == 3 and "  Alternative names     broken: CSGeneralNames_DERDecode() failed\n" in shown.text


def test_rank_orders_by_priority_expiry_and_file(tool, make):
    agent = "extendedKeyUsage=1.3.6.1.4.1.311.20.2.1,1.3.6.1.4.1.311.10.3.4"
    make("late.pem", *logon_extensions(), days="2000")
    make("early.pem", *logon_extensions(), days="1000")
    make("agent.pem", agent, days="9000")
    time.sleep(1.1)  # in its first second a certificate is not yet valid
    result = tool("cert", "rank", "--json", "agent.pem", "early.pem", "late.pem", "early.pem", sample("ben-no-signature-bit.pem"))
    order = [(os.path.basename(entry["file"]), entry["priority"], entry["tied"], entry["default"])
             for entry in result.json["certificates"]]
    assert order == [("late.pem", 4, True, True), ("early.pem", 4, True, False), ("early.pem", 4, True, False),
                     ("agent.pem", 3, False, False), ("ben-no-signature-bit.pem", 0, False, False)]
    assert result.json["default"] == {"file": "late.pem", "number": 1} and result.code == 0
    assert result.json["choice"] == "priority 4, tied with 2 others: it expires last"
    ignoring = tool("cert", "rank", "--json", "--ignore-efs", "agent.pem").json["certificates"][0]
    assert (ignoring["priority"], ignoring["requestAgent"], ignoring["fileEncryption"]) == (2, True, False)


def test_rank_for_people(tool):
    result = tool("cert", "rank", SAMPLES)
    assert result.code == 3 and CUT in result.err
    lines = result.text.splitlines()
    assert lines[0].split() == ["RANK", "PRIORITY", "EXPIRES", "FILE", "SUBJECT", "WHY"]
    ranked = [(int(line.split()[0]), os.path.basename([word for word in line.split() if "/" in word][0])) for line in lines[1:8]]
    assert ranked == list(enumerate(["ada-logon.pem", "fay-expired.pem", "dora-enrolment-agent.pem", "emil-file-encryption.pem",
                                     "ben-no-signature-bit.pem", "cleo-no-principal-name.pem", "gita-client-only.pem"], 1))
    assert lines[1].endswith("smart-card logon (4)") and lines[2].endswith("smart-card logon (4); expired")
    assert lines[4].endswith("file encryption (1); for logon it lacks digital signature, smart-card logon")
    assert lines[-1].startswith("Default: ") and lines[-1].endswith("ada-logon.pem, priority 4, tied with 1 other: it expires last")
    same = tool("cert", "rank", sample("ada-logon.pem"), sample("ada-logon.pem")).text
    assert same.endswith("priority 4, tied with 1 other: of those that expire last it was given first\n")
    none = tool("cert", "rank", sample("gita-client-only.pem"))
    assert none.code == 1 and "Default: none, no certificate fits" in none.text
    expired = tool("cert", "rank", sample("fay-expired.pem")).text
    assert expired.endswith("fay-expired.pem, priority 4; it is expired, which the rule does not look at\n")


def test_bundles_folders_and_standard_input(tool, sh, tmp_path):
    ada, ben = ((open(sample(name), "rb").read()) for name in ("ada-logon.pem", "ben-no-signature-bit.pem"))
    der = sh("openssl", "x509", "-in", sample("ada-logon.pem"), "-outform", "DER")
    sh("openssl", "genpkey", "-quiet", "-algorithm", "ED25519", "-out", "key.pem")
    broken = b"-----BEGIN CERTIFICATE-----\nMIIB!\n-----END CERTIFICATE-----\n"
    unended = b"-----BEGIN CERTIFICATE-----\nMIIB\n"
    key = (tmp_path / "key.pem").read_bytes()
    (tmp_path / "bundle.pem").write_bytes(b"text in front\n" + ada + key + broken + unended + ben + b"\ntext behind")
    result = tool("cert", "logon", "--json", "bundle.pem")
    assert [(entry["file"], entry["number"], entry.get("qualifies")) for entry in result.json["certificates"]] == \
        [("bundle.pem", 1, True), ("bundle.pem", 2, None), ("bundle.pem", 3, None), ("bundle.pem", 4, False)]
    assert "bundle.pem#2: PEM: the block CERTIFICATE is not plain base64" in result.err
    assert "bundle.pem#3: PEM: no end of the block CERTIFICATE" in result.err

    for cut in range(0, 27, 2):  # the reads of 64 KiB end anywhere in the last line of the first block
        (tmp_path / "cut.pem").write_bytes(b" " * (65536 - len(ada) + cut) + ada + ben)
        entries = tool("cert", "logon", "--json", "cut.pem").json["certificates"]
        assert [entry.get("qualifies") for entry in entries] == [True, False], cut

    only_key = tool("cert", "show", "key.pem")
    assert only_key.code == 3 and "key.pem: no certificate in it, but PRIVATE KEY" in only_key.err
    trusted = sh("openssl", "x509", "-trustout", "-addtrust", "clientAuth", stdin=ada)
    shown = tool("cert", "show", "--json", stdin=der).json
    for form in der.hex().encode(), ada, der + b"behind", der + bytes(100), trusted:
        assert tool("cert", "show", "--json", stdin=form).json == shown, "what is behind is no part of it"
    both = tool("cert", "logon", "--json", stdin=der + der + der[:50]).json["certificates"]
    assert [(entry["number"], entry.get("qualifies")) for entry in both] == [(1, True), (2, True), (3, None)]
    assert "standard input: not a certificate: empty" in tool("cert", "logon").err
    assert "not a certificate: neither DER nor PEM nor hex" in tool("cert", "logon", "-", stdin=b"hello").err

    folder = tmp_path / "cards"
    (folder / "inner").mkdir(parents=True)
    (folder / ".hidden").write_bytes(b"not looked at")
    os.mkfifo(folder / "pipe")
    (folder / "b.der").write_bytes(der)
    (folder / "a.hex").write_text(der.hex())
    files = [entry["file"] for entry in tool("cert", "show", "--json", "cards").json["certificates"]]
    assert files == ["cards/a.hex", "cards/b.der"]
    assert "cards/inner: no file in this folder" in tool("cert", "show", "cards/inner").err


def test_names_cannot_forge_lines_or_hide(tool, make):
    principal = "301e a01c 060a 2b060104018237140203 a00e 0c0c 1b5b324a0ae280ae6578652e".replace(" ", "")
    make("evil.pem", f"subjectAltName=DER:{principal}", "keyUsage=digitalSignature", f"extendedKeyUsage={LOGON}", subject="/CN=\x1b[31mred\u202egnp.exe")
    for verb in "show", "logon", "rank":
        text = tool("cert", verb, "evil.pem").text
        assert "\x1b" not in text and "\u202e" not in text, verb
    assert "user principal name  \\x1b[2J\\x0a\\xe2\\x80\\xaeexe." in tool("cert", "logon", "evil.pem").text


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
