import base64
import hashlib
import re

import pytest
from conftest import on_terminal


def fingerprint(spki):
    return "SHA256:" + hashlib.sha256(spki).hexdigest()


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


def test_a_terminal_sees_that_a_long_generation_goes_on(tmp_path):
    code, seen, out = on_terminal("stderr", ["key", "generate", "-a", "RSA", "--bits", "4096", "-o", "k"], tmp_path)
    assert (code, out) == (0, b"")
    # It is silent for the first second; what it then shows it wipes away.
    assert re.fullmatch(rb"(?:(?:\rgenerating an RSA key of 4096 bits \.\.\. \d+ s\x1b\[K)+\r\x1b\[K)?", seen)
