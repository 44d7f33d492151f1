// Damaged certificates: cut anywhere, and every octet changed to every other value. Nothing crashes or leaks, and where
// libcrypto reads the certificate too, both read the same.

#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/x509v3.h>

#include "support/caught.h"
#include "support/certificates.h"
#include "support/rsa.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

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
  const reference::Holder<ASN1_BIT_STRING, ASN1_BIT_STRING_free> usage(
      static_cast<ASN1_BIT_STRING*>(X509_get_ext_d2i(parsed, NID_key_usage, &status, nullptr)));
  if (!usage) return;  // doubled, or refused by one reader
  const ByteArray octets(usage->data, usage->data + usage->length);
  const ByteArray ours = certificate.GetKeyUsage();
  EXPECT_TRUE(octets.empty() || ours.empty() || ((octets.front() ^ ours.front()) & 0x80) == 0);
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
  const reference::Certificate parsed = reference::Parsed(encoded);
  ERR_clear_error();
  EXPECT_FALSE(certificate && !parsed) << "accepted what libcrypto refuses, octet " << place;
  if (!certificate || !parsed) return;
  AskEverything(*certificate);
  const ByteArray serial = reference::Encoded(i2d_ASN1_INTEGER, X509_get0_serialNumber(parsed.get()));
  EXPECT_EQ(certificate->GetSerialNumber(), ByteArray(serial.begin() + 2, serial.end())) << place;  // a short number
  ExpectSameTime(*certificate, parsed.get());
  ExpectSameKeyUsage(*certificate, parsed.get());
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
  CertificateRecipe small = LogonRecipe();
  small.key = "ED25519";
  small.subject = "/CN=Ada";
  const ByteArray whole = MakeCertificate(small);
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
