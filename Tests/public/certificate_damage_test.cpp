// Damaged certificates: cut anywhere, and every octet changed to every other value. Nothing crashes or leaks, and where
// libcrypto reads the certificate too, both read the same.

#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/x509v3.h>

#include <memory>

#include "support/caught.h"
#include "support/certificates.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

struct Freer {
  void operator()(X509* certificate) const { X509_free(certificate); }
};
using Parsed = std::unique_ptr<X509, Freer>;

/// As libcrypto reads it, in the default library context.
Parsed Parse(const ByteArray& encoded) {
  const unsigned char* cursor = encoded.data();
  Parsed certificate(d2i_X509(nullptr, &cursor, static_cast<long>(encoded.size())));
  ERR_clear_error();
  return certificate;
}

ByteArray IntegerOctets(const ASN1_INTEGER* integer) {
  unsigned char* der = nullptr;
  const int length = i2d_ASN1_INTEGER(integer, &der);
  const ByteArray octets(der + 2, der + length);  // short numbers only
  OPENSSL_free(der);
  return octets;
}

/// Whatever is asked of the certificate, it answers or throws.
void AskEverything(IX509Certificate& certificate) {
  Catch([&] { certificate.GetVersion(); });
  Catch([&] { certificate.CheckValidity(); });
  Catch([&] { certificate.GetPublicKey(); });
  Catch([&] { certificate.GetExtendedKeyUsage(); });
  Catch([&] { OwnedNames(certificate.GetSubjectAlternativeNames()); });
  Catch([&] { Own(certificate.GetIssuerDN())->GetName(0); });
  Catch([&] { Own(certificate.GetSubjectDN())->GetName(1); });
}

void ExpectSameKeyUsage(IX509Certificate& certificate, X509* parsed) {
  int status = 0;
  auto* usage = static_cast<ASN1_BIT_STRING*>(X509_get_ext_d2i(parsed, NID_key_usage, &status, nullptr));
  if (usage == nullptr) return;  // doubled, or refused by one reader
  const ByteArray octets(usage->data, usage->data + usage->length);
  const ByteArray ours = certificate.GetKeyUsage();
  EXPECT_TRUE(octets.empty() || ours.empty() || ((octets.front() ^ ours.front()) & 0x80) == 0);
  ASN1_BIT_STRING_free(usage);
}

void ExpectSameTime(IX509Certificate& certificate, X509* parsed) {
  struct tm theirs {};
  SecureString ours;
  if (ASN1_TIME_to_tm(X509_get0_notAfter(parsed), &theirs) != 1) return;
  if (Catch([&] { ours = certificate.GetNotAfter(); }).thrown) return;
  char text[64];
  strftime(text, sizeof text, "%Y-%m-%d %H-%M-%S", &theirs);
  EXPECT_EQ(ours, text);
}

void Check(const ByteArray& encoded, size_t place) {
  Owned<IX509Certificate> certificate;
  Catch([&] { certificate = Own(dynamic_cast<IX509Certificate*>(ICertificate::Create("X509", encoded))); });
  const Parsed parsed = Parse(encoded);
  EXPECT_FALSE(certificate && !parsed) << "accepted what libcrypto refuses, octet " << place;
  if (!certificate || !parsed) return;
  AskEverything(*certificate);
  EXPECT_EQ(certificate->GetSerialNumber(), IntegerOctets(X509_get0_serialNumber(parsed.get()))) << place;
  ExpectSameTime(*certificate, parsed.get());
  ExpectSameKeyUsage(*certificate, parsed.get());
}

ByteArray SmallCertificate() {
  CertificateRecipe recipe = LogonRecipe();
  recipe.key = "ED25519";
  recipe.subject = "/CN=Ada";
  return MakeCertificate(recipe);
}

TEST(DamagedCertificate, CutAnywhere) {
  const ByteArray whole = MakeCertificate(LogonRecipe());
  for (size_t size = 0; size < whole.size(); ++size) {
    const ByteArray cut(whole.begin(), whole.begin() + static_cast<long>(size));
    EXPECT_TRUE(Catch([&] { Own(ICertificate::Create("X509", cut)); }).thrown) << size;
    EXPECT_EQ(
        ICertificateProperties::rzGetCertPriorityForSetAsDefault(cut.data(), static_cast<unsigned int>(size), false),
        0);
  }
}

/// Split in parts that run side by side.
class DamagedOctet : public testing::TestWithParam<unsigned int> {};

constexpr unsigned int kParts = 8;
#ifdef RZ_SANITIZED
constexpr unsigned int kStep = 13;
#else
constexpr unsigned int kStep = 1;
#endif

TEST_P(DamagedOctet, ToEveryOtherValue) {
  const ByteArray whole = SmallCertificate();
  for (size_t place = GetParam(); place < whole.size(); place += kParts) {
    ByteArray damaged = whole;
    for (unsigned int change = 1 + GetParam() % kStep; change < 256; change += kStep) {
      damaged[place] = static_cast<unsigned char>(whole[place] ^ change);
      Check(damaged, place);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Parts, DamagedOctet, testing::Range(0U, kParts));

}  // namespace
