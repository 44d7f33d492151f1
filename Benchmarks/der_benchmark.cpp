// The DER library beside libcrypto and, where they are installed, libtasn1 and GnuTLS: a certificate and a PKCS #8 key
// decoded and deleted, a certificate encoded. Then the shapes that hostile input may take, at 64 KiB, 256 KiB and 1
// MiB: time per octet must stay the same from size to size.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include "../Tests/support/certificates.h"
#include "../Tests/support/rsa.h"
#include "tavo/der.h"

#ifdef RZ_HAVE_GNUTLS
#include <gnutls/abstract.h>
#include <gnutls/x509.h>
#endif
#ifdef RZ_HAVE_LIBTASN1
#include <libtasn1.h>
#endif

namespace {

using Bytes = Tavo::Framework::ByteArray;

EVP_PKEY* RsaKey() { return CertificateKey("RSA:2048"); }

const Bytes& CertificateDer() {
  static const Bytes der = [] {
    CertificateRecipe recipe = LogonRecipe();
    recipe.key = "RSA:2048";
    recipe.texts = {{"subjectKeyIdentifier", "hash"},
                    {"crlDistributionPoints", "URI:http://host.example/crl"},
                    {"authorityInfoAccess", "OCSP;URI:http://host.example/ocsp"}};
    return MakeCertificate(recipe);
  }();
  return der;
}

const Bytes& KeyDer() {
  static const Bytes der =
      reference::Encoded(i2d_PKCS8_PRIV_KEY_INFO, reference::PrivateKeyInfo(EVP_PKEY2PKCS8(RsaKey())).get());
  return der;
}

void Fail(benchmark::State& state) { state.SkipWithError("failed"); }

// ---- a certificate ----

void CertificateDecode(benchmark::State& state) {
  const Bytes& der = CertificateDer();
  state.SetLabel(std::to_string(der.size()) + " octets");
  for (auto _ : state) {
    CSCertificate* certificate = nullptr;
    uint64_t length = der.size();
    if (CSCertificate_DERDecodeTLV(der.data(), &length, 0, &certificate) != 0) return Fail(state);
    CSCertificate_Delete(&certificate);
  }
}
BENCHMARK(CertificateDecode);

void CertificateDecodeLibcrypto(benchmark::State& state) {
  const Bytes& der = CertificateDer();
  for (auto _ : state) {
    const unsigned char* position = der.data();
    X509* certificate = d2i_X509(nullptr, &position, static_cast<long>(der.size()));
    if (certificate == nullptr) return Fail(state);
    X509_free(certificate);
  }
}
BENCHMARK(CertificateDecodeLibcrypto);

#ifdef RZ_HAVE_GNUTLS
void CertificateDecodeGnutls(benchmark::State& state) {
  const gnutls_datum_t der{const_cast<unsigned char*>(CertificateDer().data()),
                           static_cast<unsigned int>(CertificateDer().size())};
  for (auto _ : state) {
    gnutls_x509_crt_t certificate;
    gnutls_x509_crt_init(&certificate);
    if (gnutls_x509_crt_import(certificate, &der, GNUTLS_X509_FMT_DER) != 0) return Fail(state);
    gnutls_x509_crt_deinit(certificate);
  }
}
BENCHMARK(CertificateDecodeGnutls);
#endif

#ifdef RZ_HAVE_LIBTASN1
// RFC 5280 as far as the library's own type goes.
constexpr const char* kModule =
    "PKIX { }\nDEFINITIONS IMPLICIT TAGS ::=\nBEGIN\n"
    "AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters ANY DEFINED BY algorithm OPTIONAL }\n"
    "AttributeTypeAndValue ::= SEQUENCE { type OBJECT IDENTIFIER, value ANY DEFINED BY type }\n"
    "RelativeDistinguishedName ::= SET OF AttributeTypeAndValue\n"
    "RDNSequence ::= SEQUENCE OF RelativeDistinguishedName\n"
    "Name ::= CHOICE { rdnSequence RDNSequence }\n"
    "Time ::= CHOICE { utcTime UTCTime, generalTime GeneralizedTime }\n"
    "Validity ::= SEQUENCE { notBefore Time, notAfter Time }\n"
    "SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }\n"
    "Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }\n"
    "Extensions ::= SEQUENCE OF Extension\n"
    "TBSCertificate ::= SEQUENCE { version [0] EXPLICIT INTEGER OPTIONAL, serialNumber INTEGER,\n"
    "  signature AlgorithmIdentifier, issuer Name, validity Validity, subject Name,\n"
    "  subjectPublicKeyInfo SubjectPublicKeyInfo, issuerUniqueID [1] IMPLICIT BIT STRING OPTIONAL,\n"
    "  subjectUniqueID [2] IMPLICIT BIT STRING OPTIONAL, extensions [3] EXPLICIT Extensions OPTIONAL }\n"
    "Certificate ::= SEQUENCE { tbsCertificate TBSCertificate, signatureAlgorithm AlgorithmIdentifier,\n"
    "  signature BIT STRING }\nEND\n";

asn1_node Module() {
  static asn1_node module = [] {
    char name[] = "/tmp/rz-der-benchmark-XXXXXX";
    const int file = mkstemp(name);
    FILE* stream = fdopen(file, "w");
    fputs(kModule, stream);
    fclose(stream);
    asn1_node definitions = nullptr;
    char error[ASN1_MAX_ERROR_DESCRIPTION_SIZE] = "";
    if (asn1_parser2tree(name, &definitions, error) != ASN1_SUCCESS) std::abort();
    unlink(name);
    return definitions;
  }();
  return module;
}

void CertificateDecodeLibtasn1(benchmark::State& state) {
  const Bytes& der = CertificateDer();
  for (auto _ : state) {
    asn1_node certificate = nullptr;
    asn1_create_element(Module(), "PKIX.Certificate", &certificate);
    int length = static_cast<int>(der.size());
    if (asn1_der_decoding2(&certificate, der.data(), &length, 0, nullptr) != ASN1_SUCCESS) return Fail(state);
    asn1_delete_structure(&certificate);
  }
}
BENCHMARK(CertificateDecodeLibtasn1);
#endif

void CertificateEncode(benchmark::State& state) {
  const Bytes& der = CertificateDer();
  CSCertificate* certificate = nullptr;
  uint64_t length = der.size();
  if (CSCertificate_DERDecodeTLV(der.data(), &length, 0, &certificate) != 0) return Fail(state);
  for (auto _ : state) {
    uint8_t* buffer = nullptr;
    if (CSCertificate_DEREncodeTLV(certificate, &buffer, &length, 1, 1, 1) != 0) return Fail(state);
    benchmark::DoNotOptimize(buffer[length - 1]);
    free(buffer);
  }
  CSCertificate_Delete(&certificate);
}
BENCHMARK(CertificateEncode);

// libcrypto keeps the encoding of what has not been changed; the second one makes it anew.
void CertificateEncodeLibcrypto(benchmark::State& state, bool anew) {
  const reference::Certificate certificate = reference::Parsed(CertificateDer());
  for (auto _ : state) {
    unsigned char* buffer = nullptr;
    const int length = anew ? i2d_re_X509_tbs(certificate.get(), &buffer) : i2d_X509(certificate.get(), &buffer);
    if (length <= 0) return Fail(state);
    OPENSSL_free(buffer);
  }
}
BENCHMARK_CAPTURE(CertificateEncodeLibcrypto, kept, false);
BENCHMARK_CAPTURE(CertificateEncodeLibcrypto, anew, true);

// ---- a private key: the container and the key inside ----

void KeyDecode(benchmark::State& state) {
  const Bytes& der = KeyDer();
  state.SetLabel(std::to_string(der.size()) + " octets");
  for (auto _ : state) {
    CSPrivateKeyInfo* info = nullptr;
    CSASNOctetString* octets = nullptr;
    CSRSAPrivateKey* key = nullptr;
    const uint8_t* bytes = nullptr;
    uint64_t length = der.size();
    if (CSPrivateKeyInfo_DERDecodeTLV(der.data(), &length, 0, &info) != 0) return Fail(state);
    CSPrivateKeyInfo_GetPrivateKey(info, &octets);
    CSASNOctetString_GetBytes(octets, &bytes, &length);
    if (CSRSAPrivateKey_DERDecodeTLV(bytes, &length, 0, &key) != 0) return Fail(state);
    CSRSAPrivateKey_Delete(&key);
    CSPrivateKeyInfo_Delete(&info);
  }
}
BENCHMARK(KeyDecode);

void KeyDecodeLibcrypto(benchmark::State& state) {
  const Bytes& der = KeyDer();
  for (auto _ : state) {
    const unsigned char* position = der.data();
    PKCS8_PRIV_KEY_INFO* info = d2i_PKCS8_PRIV_KEY_INFO(nullptr, &position, static_cast<long>(der.size()));
    int length = 0;
    if (info == nullptr || PKCS8_pkey_get0(nullptr, &position, &length, nullptr, info) != 1) return Fail(state);
    RSA* key = d2i_RSAPrivateKey(nullptr, &position, length);
    if (key == nullptr) return Fail(state);
    RSA_free(key);
    PKCS8_PRIV_KEY_INFO_free(info);
  }
}
BENCHMARK(KeyDecodeLibcrypto);

#ifdef RZ_HAVE_GNUTLS
void KeyDecodeGnutls(benchmark::State& state) {
  const gnutls_datum_t der{const_cast<unsigned char*>(KeyDer().data()), static_cast<unsigned int>(KeyDer().size())};
  for (auto _ : state) {
    gnutls_x509_privkey_t key;
    gnutls_x509_privkey_init(&key);
    if (gnutls_x509_privkey_import_pkcs8(key, &der, GNUTLS_X509_FMT_DER, nullptr, GNUTLS_PKCS_PLAIN) != 0) {
      return Fail(state);
    }
    gnutls_x509_privkey_deinit(key);
  }
}
BENCHMARK(KeyDecodeGnutls);
#endif

// ---- hostile shapes ----

constexpr size_t kSizes[] = {64 << 10, 256 << 10, 1 << 20};

void Sizes(benchmark::internal::Benchmark* run) {
  for (const size_t size : kSizes) run->Arg(static_cast<int64_t>(size));
}

// `size` octets of contents, filled with a pattern, in an element.
Bytes Filled(uint8_t identifier, const Bytes& pattern, size_t size) {
  Bytes der = {identifier, 0x84, uint8_t(size >> 24), uint8_t(size >> 16), uint8_t(size >> 8), uint8_t(size)};
  const size_t header = der.size();
  der.resize(header + size / pattern.size() * pattern.size());
  for (size_t i = header; i < der.size(); ++i) der[i] = pattern[(i - header) % pattern.size()];
  const size_t contents = der.size() - header;
  for (int i = 0; i < 4; ++i) der[5 - i] = uint8_t(contents >> (8 * i));
  return der;
}

Bytes Nested(size_t size) {
  Bytes der;
  for (size_t i = 0; i < size / 4; ++i) der.insert(der.end(), {0x30, 0x80});
  der.resize(size / 4 * 4);
  return der;
}

template <class T>
void DecodeShape(benchmark::State& state, uint32_t (*decode)(const uint8_t*, uint64_t*, uint32_t, T**),
                 uint32_t (*drop)(T**), const Bytes& der, uint32_t expected) {
  for (auto _ : state) {
    T* object = nullptr;
    uint64_t length = der.size();
    if (decode(der.data(), &length, 0, &object) != expected) return Fail(state);
    if (object != nullptr) drop(&object);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * der.size()));
}

// Items of two octets: the most objects that an input can ask for.
void HostileListItems(benchmark::State& state) {
  DecodeShape(state, CSGeneralNames_DERDecodeTLV, CSGeneralNames_Delete,
              Filled(0x30, {0x82, 0x00}, static_cast<size_t>(state.range(0))), 0);
}
BENCHMARK(HostileListItems)->Apply(Sizes);

// An error in the last item: everything before it has been built.
void HostileLastItem(benchmark::State& state) {
  Bytes der = Filled(0x30, {0x82, 0x00}, static_cast<size_t>(state.range(0)));
  der[der.size() - 2] = 0x02;
  DecodeShape(state, CSGeneralNames_DERDecodeTLV, CSGeneralNames_Delete, der, CSResult_UNKNOWN_CHOICE);
}
BENCHMARK(HostileLastItem)->Apply(Sizes);

// Indefinite items, each of which is walked to be measured.
void HostileIndefiniteItems(benchmark::State& state) {
  DecodeShape(state, CSGeneralNames_DERDecodeTLV, CSGeneralNames_Delete,
              Filled(0x30, {0x82, 0x80, 0x00, 0x00}, static_cast<size_t>(state.range(0))), 0);
}
BENCHMARK(HostileIndefiniteItems)->Apply(Sizes);

void HostileNesting(benchmark::State& state) {
  const Bytes der = Nested(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    uint64_t total = 0;
    if (CSASNUtil_DERDetermineEncodingLength(der.data(), der.size(), &total) != 0) return Fail(state);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * der.size()));
}
BENCHMARK(HostileNesting)->Apply(Sizes);

// Nested as deep as the type goes, and further inside an ANY.
void HostileNestedName(benchmark::State& state) {
  const Bytes inner = Nested(static_cast<size_t>(state.range(0)));
  Bytes der = {0x30, 0x80, 0xA4, 0x80, 0x30, 0x80, 0x31, 0x80, 0x30, 0x80, 0x06, 0x01, 0x2A};
  der.insert(der.end(), inner.begin(), inner.end());
  der.resize(der.size() + 10);
  DecodeShape(state, CSGeneralNames_DERDecodeTLV, CSGeneralNames_Delete, der, 0);
}
BENCHMARK(HostileNestedName)->Apply(Sizes);

void HostileArcs(benchmark::State& state) {
  DecodeShape(state, CSASNOID_DERDecodeTLV, CSASNOID_Delete, Filled(0x06, {0x01}, static_cast<size_t>(state.range(0))),
              0);
}
BENCHMARK(HostileArcs)->Apply(Sizes);

void FeedByOctets(benchmark::State& state, const Bytes& der) {
  for (auto _ : state) {
    CSASNDecodeContext* context = nullptr;
    CSASNUtil_DERDecodeStart(&context);
    int32_t surplus = -1;
    uint32_t code = 0;
    for (const uint8_t octet : der) code = CSASNUtil_DERDecodeAddData(context, &octet, 1, &surplus);
    if (code != 0 || surplus != 0) return Fail(state);
    CSASNUtil_DeleteDecodeContext(&context);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * der.size()));
}

void HostileFeeding(benchmark::State& state) { FeedByOctets(state, Nested(static_cast<size_t>(state.range(0)))); }
BENCHMARK(HostileFeeding)->Apply(Sizes);

void DefiniteFeeding(benchmark::State& state) {
  FeedByOctets(state, Filled(0x04, {0x00}, static_cast<size_t>(state.range(0))));
}
BENCHMARK(DefiniteFeeding)->Apply(Sizes);

}  // namespace
