import base64
import hashlib
import os
import re
import stat
import uuid

import pytest
from conftest import on_terminal


def fingerprint(spki):
    return "SHA256:" + hashlib.sha256(spki).hexdigest()


@pytest.mark.parametrize("bits", [1024, 1536, 2048, 4096])
def test_openssl_and_we_read_each_others_rsa_keys(tool, sh, bits):
    made = tool("key", "generate", "-a", "RSA", "--bits", bits, "-o", "ours.pem", "--public", "public.pem")
    assert (made.code, made.out, made.err) == (0, b"", "")
    sh("openssl", "pkey", "-in", "ours.pem", "-check", "-noout")
    spki = sh("openssl", "pkey", "-in", "ours.pem", "-pubout", "-outform", "DER")
    assert sh("openssl", "pkey", "-pubin", "-in", "public.pem", "-pubout", "-outform", "DER") == spki
    sh("openssl", "req", "-x509", "-key", "ours.pem", "-subj", "/CN=x", "-out", "certificate.pem")
    shown = tool("key", "show", "--json", "ours.pem", "public.pem", "certificate.pem").json["keys"]
    assert [key["encoding"] for key in shown] == ["PKCS #8", "SubjectPublicKeyInfo", "certificate"]
    for key in shown:
        assert (key["bits"], key["exponent"], key["fingerprint"]) == (bits, 65537, fingerprint(spki))
        assert "prime1" not in key


def test_every_form_of_a_foreign_key_shows_the_same_facts(tool, sh, tmp_path):
    sh("openssl", "genrsa", "-3", "-out", "pkcs8.pem", "1024")
    sh("openssl", "rsa", "-in", "pkcs8.pem", "-traditional", "-out", "pkcs1.pem")
    sh("openssl", "rsa", "-in", "pkcs8.pem", "-RSAPublicKey_out", "-out", "pkcs1-public.pem")
    sh("openssl", "rsa", "-in", "pkcs8.pem", "-pubout", "-out", "spki.pem")
    sh("openssl", "req", "-x509", "-key", "pkcs8.pem", "-subj", "/CN=x", "-out", "certificate.pem")
    text = sh("openssl", "rsa", "-in", "pkcs8.pem", "-noout", "-text").decode()
    spki = sh("openssl", "rsa", "-in", "pkcs8.pem", "-pubout", "-outform", "DER")

    def number(name):
        digits = re.search(rf"^{name}:\n((?:    .*\n)+)", text, re.M).group(1)
        return int(re.sub(r"[\s:]", "", digits), 16)

    forms = ["pkcs8", "pkcs1", "pkcs1-public", "spki", "certificate"]
    for form in forms:  # in DER, in hex and from standard input
        pem = (tmp_path / f"{form}.pem").read_text()
        der = base64.b64decode("".join(line for line in pem.splitlines() if "-----" not in line))
        (tmp_path / f"{form}.der").write_bytes(der)
        (tmp_path / f"{form}.hex").write_text(der.hex() + "\n")
    for ending in "pem", "der", "hex":
        files = [f"{form}.{ending}" for form in forms]
        keys = tool("key", "show", "--private", "--json", *files).json["keys"]
        assert [key["encoding"] for key in keys] == \
            ["PKCS #8", "PKCS #1", "PKCS #1", "SubjectPublicKeyInfo", "certificate"]
        assert ["private" in key["kind"] for key in keys] == [True, True, False, False, False]
        for key in keys:
            assert (key["bits"], key["exponent"], key["fingerprint"]) == (1024, 3, fingerprint(spki))
            assert int(key["modulus"], 16) == number("modulus")
        for name in "privateExponent", "prime1", "prime2", "exponent1", "exponent2", "coefficient":
            assert {int(key[name], 16) for key in keys[:2]} == {number(name)}
    both = (tmp_path / "certificate.pem").read_bytes() + (tmp_path / "pkcs8.pem").read_bytes()
    text = tool("key", "show", stdin=both).text
    assert "standard input (block 1): RSA public key, 1024 bits\n" in text
    assert "standard input (block 2): RSA private key, 1024 bits\n" in text
    assert f"  fingerprint      {fingerprint(spki)}\n" in text and "prime1" not in text


@pytest.mark.parametrize("algorithm, size, expected", [("AES", None, 16), ("3DES", None, 24), ("DES", None, 8),
                                                       ("AES", 32, 32), ("AES", 4096, 4096)])
def test_secret_keys_are_new_each_time_and_shown_only_when_asked(tool, tmp_path, algorithm, size, expected):
    options = ["--size", size] if size else []
    for name in "a.key", "b.key":
        assert tool("key", "generate", "-a", algorithm, *options, "-o", name).code == 0
    one, two = ((tmp_path / name).read_bytes() for name in ("a.key", "b.key"))
    assert len(one) == len(two) == expected and one != two
    hidden = tool("key", "show", "a.key")
    assert hidden.text == f"a.key: secret key, {expected} bytes\n  encoding         raw\n"
    shown = tool("key", "show", "--private", "--json", "a.key").json["keys"][0]
    assert shown["key"] == one.hex() and shown["fingerprint"] == fingerprint(one)
    printed = tool("key", "generate", "-a", algorithm, *options, "--hex", "-o", "-").text
    assert re.fullmatch(rf"[0-9a-f]{{{2 * expected}}}\n", printed)


def test_files_are_for_their_owner_and_are_not_overwritten(tool, tmp_path):
    make = ["key", "generate", "-a", "AES", "-o", "k"]
    old = os.umask(0)
    try:
        assert tool(*make).code == 0
    finally:
        os.umask(old)
    assert stat.S_IMODE((tmp_path / "k").stat().st_mode) == 0o600
    before = (tmp_path / "k").read_bytes()
    for again in make, ["random", "5", "-o", "k"], ["key", "generate", "-a", "RSA", "-o", "new", "--public", "k"]:
        refused = tool(*again)
        assert (refused.code, refused.out) == (4, b"")
        assert refused.err == "rzcrypto: k: exists already; --force replaces it\n"
    os.link(tmp_path / "k", tmp_path / "link")
    same = tool("key", "generate", "-a", "RSA", "--bits", "512", "-o", "k", "--public", "link", "--force")
    assert same.code == 2 and "same file" in same.err
    os.unlink(tmp_path / "link")
    lost = tool("key", "generate", "-a", "RSA", "--bits", "512", "-o", "new", "--public", "missing/k")
    assert lost.code == 4 and lost.err.startswith("rzcrypto: missing/k: No such")
    assert (tmp_path / "k").read_bytes() == before and os.listdir(tmp_path) == ["k"]
    os.chmod(tmp_path / "k", 0o644)
    assert tool(*make, "--force").code == 0
    assert stat.S_IMODE((tmp_path / "k").stat().st_mode) == 0o600
    assert (tmp_path / "k").read_bytes() != before and os.listdir(tmp_path) == ["k"]
    assert tool("random", "5", "-o", "missing/k").code == 4
    assert tool("random", "5", "-o", "missing/k", "--force").code == 4
    assert tool("random", "100", "-o", "/dev/full", "--force").code == 4
    assert tool("random", "100", "-o", "/dev/null", "--force").code == 0


def test_random_bytes_have_the_length_and_the_form_asked_for(tool, tmp_path):
    assert len(tool("random", "010").out) == 10  # not octal
    for count in 0, 1, 16, 100_001:
        raw = tool("random", count)
        assert (raw.code, len(raw.out)) == (0, count)
        assert len(bytes.fromhex(tool("random", count, "--hex").text)) == count
        assert len(base64.b64decode(tool("random", count, "--base64").text, validate=False)) == count
    assert tool("random", 100_001, "--base64").text.count("\n") == 1
    assert tool("random", "32").out != tool("random", "32").out
    assert tool("random", "20", "-o", "r").code == 0
    assert len((tmp_path / "r").read_bytes()) == 20
    assert tool("guid").text != tool("guid").text
    guids = tool("guid", "-n", "50").text.splitlines()
    assert len({uuid.UUID(guid) for guid in guids}) == 50 and all(re.fullmatch(r"[0-9a-f-]{36}", g) for g in guids)
    assert len({guid[14] for guid in guids}) > 1  # where a UUID has its version
    assert len(tool("guid", "-n", "3", "--json").json["guids"]) == 3


def test_a_failing_random_source_gives_nothing(tool, tmp_path):
    (tmp_path / "openssl.cnf").write_text(
        "openssl_conf = begin\n[begin]\nrandom = none\n[none]\nrandom = NO-SUCH-GENERATOR\n")
    broken = {"OPENSSL_CONF": str(tmp_path / "openssl.cnf")}
    for command in (["random", "16"], ["random", "16", "-o", "out"], ["guid"],
                    ["key", "generate", "-a", "AES", "-o", "out"],
                    ["key", "generate", "-a", "RSA", "--bits", "1024", "-o", "out"]):
        result = tool(*command, env=broken)
        assert (result.code, result.out) == (6, b""), command
        assert result.err
    assert os.listdir(tmp_path) == ["openssl.cnf"]


def test_what_is_no_key_is_named_and_the_others_are_shown(tool, sh, tmp_path):
    sh("openssl", "genpkey", "-algorithm", "EC", "-pkeyopt", "ec_paramgen_curve:P-256", "-out", "ec.pem")
    sh("openssl", "req", "-x509", "-key", "ec.pem", "-subj", "/CN=x", "-out", "ec-certificate.pem")
    sh("openssl", "genrsa", "-out", "rsa.pem", "1024")
    sh("openssl", "pkcs8", "-topk8", "-in", "rsa.pem", "-passout", "pass:x", "-out", "encrypted.pem")
    sh("openssl", "rsa", "-in", "rsa.pem", "-traditional", "-aes128", "-passout", "pass:x", "-out", "traditional.pem")
    sh("openssl", "pkey", "-in", "ec.pem", "-traditional", "-out", "sec1.pem")
    rsa = sh("openssl", "pkcs8", "-topk8", "-nocrypt", "-in", "rsa.pem", "-outform", "DER")
    (tmp_path / "cut.der").write_bytes(rsa[:-1])
    (tmp_path / "damaged.der").write_bytes(rsa[:26] + b"\x31" + rsa[27:])
    (tmp_path / "sequence.der").write_bytes(bytes.fromhex("3006020101040100"))
    (tmp_path / "dsa.der").write_bytes(bytes.fromhex("3012" + "020100" * 6))  # as a DSA private key begins
    (tmp_path / "long").write_bytes(b"x" * 4097)
    (tmp_path / "empty").write_bytes(b"")
    cases = {
        "ec.pem": (5, "a key of the algorithm 1.2.840.10045.2.1: the library has RSA keys only"),
        "ec-certificate.pem": (5, "a key of the algorithm 1.2.840.10045.2.1: the library has RSA keys only"),
        "sec1.pem": (5, "a key of the algorithm 1.2.840.10045.2.1: the library has RSA keys only"),
        "encrypted.pem": (5, "the key is encrypted: decrypt it first (openssl pkey)"),
        "traditional.pem": (5, "the key is encrypted: decrypt it first (openssl pkey)"),
        "cut.der": (3, f"DER that is cut short: {len(rsa) - 1} of {len(rsa)} bytes"),
        "damaged.der": (3, "PKCS #8: CSRSAPrivateKey_DERDecode() failed"),
        "sequence.der": (3, "a DER SEQUENCE, but no key"),
        "dsa.der": (3, "a DER SEQUENCE, but no key"),
        "long": (3, "no key, and too long for a secret one"),
        "empty": (3, "empty"),
        "missing": (4, "No such file or directory"),
    }
    for name, (code, message) in cases.items():
        result = tool("key", "show", name)
        assert (result.code, result.out, result.err) == (code, b"", f"rzcrypto: {name}: {message}\n")
        assert tool("key", "show", "--json", name).json == {"keys": [{"file": name, "error": message}]}
    assert tool("key", "show", "--raw", "sequence.der").text.startswith("sequence.der: secret key, 8 bytes\n")
    (tmp_path / "two\nlines").write_bytes(rsa + b"xx")
    result = tool("key", "show", "two\nlines")
    assert result.code == 0 and result.text.startswith("two\\x0alines: RSA private key, 1024 bits\n")
    assert result.err == "rzcrypto: two\\x0alines: note: 2 bytes follow the key\n"
    result = tool("key", "show", "long", "rsa.pem")
    assert result.code == 3 and result.text.startswith("rsa.pem: RSA private key, 1024 bits\n")


def test_a_terminal_sees_that_a_long_generation_goes_on(tmp_path):
    code, seen, out = on_terminal("stderr", ["key", "generate", "-a", "RSA", "--bits", "4096", "-o", "k"], tmp_path)
    assert (code, out) == (0, b"")
    # It is silent for the first second; what it then shows it wipes away.
    assert re.fullmatch(rb"(?:(?:\rgenerating an RSA key of 4096 bits \.\.\. \d+ s\x1b\[K)+\r\x1b\[K)?", seen)
