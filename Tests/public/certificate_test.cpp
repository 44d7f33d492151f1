#include <gtest/gtest.h>
#include <openssl/x509v3.h>

#include <algorithm>

#include "support/caught.h"
#include "support/opened_certificate.h"
#include "support/rsa.h"
#include "support/trace.h"

using namespace Tavo::Framework;

namespace {

Owned<IX509Certificate> Open(const CertificateRecipe& recipe) { return OpenCertificate(MakeCertificate(recipe)); }

/// A certificate whose only extension has this identifier and value.
Owned<IX509Certificate> WithExtension(const std::string& oid, const std::string& hex) {
  CertificateRecipe recipe;
  recipe.extensions = {{oid, hex}};
  return Open(recipe);
}

/// What answers for each bit of the key usage.
constexpr bool (IX509Certificate::*kBits[])() = {
    &IX509Certificate::IsDigitalSignature, &IX509Certificate::IsNonRepudiation, &IX509Certificate::IsKeyEncipherment,
    &IX509Certificate::IsDataEncipherment, &IX509Certificate::IsKeyAgreement,   &IX509Certificate::IsKeyCertSign,
    &IX509Certificate::IsCRLSign,          &IX509Certificate::IsEncipherOnly,   &IX509Certificate::IsDecipherOnly};

std::string Purposes(IX509Certificate& certificate) {
  std::string text;
  for (const auto& oid : certificate.GetExtendedKeyUsage())
    text += (text.empty() ? "" : " ") + std::string(oid.c_str());
  return text;
}

/// "kind:oid:text or hex" of each name.
std::string Names(IX509Certificate& certificate) {
  std::string text;
  const OwnedNames names(certificate.GetSubjectAlternativeNames());
  for (IGeneralName* name : names) {
    ByteArray octets;
    name->GetEncoded(octets);
    EXPECT_TRUE(name->GetFormat() == "STRING" || name->GetString().empty()) << "octets have no text";
    const std::string value = name->GetFormat() == "STRING" ? name->GetString().c_str() : ToHex(octets);
    text += (text.empty() ? "" : " ") + std::string(name->GetNameType().c_str()) + ":" + name->GetOID().c_str() + ":" +
            value;
  }
  return text;
}

TEST(Certificate, TheFactoryRefuses) {
  const ByteArray good = MakeCertificate({});
  for (const char* format : {"x509", "X509 ", "", "PKCS7"}) {
    const Trace trace(1UL << 1);
    EXPECT_THROWS(4002, 0, "Unsupported format", ICertificate::Create(format, good));
    EXPECT_TRUE(trace.Has(std::string("1 ICertificate::Create : Unsupported format: ") + format));
  }
  EXPECT_THROWS(4000, 0, "X509 encoded buffer should not be empty", ICertificate::Create("X509", ByteArray()));
  EXPECT_THROWS(4004, 0, "d2i_X509() failed", ICertificate::Create("X509", FromHex("3003020105")));
  EXPECT_EQ(Catch([] { ICertificate::Create("X509", FromHex("30")); }).file,
            "Sources/openssl/rz.crypto.openssl.rsacertificate");
}

/// What libcrypto reads and this library does not: the certificate is refused by the second reader. An identifier of
/// several octets is in no type of the DER library.
TEST(Certificate, BothParsersMustBeContent) {
  CertificateRecipe recipe;
  recipe.keyUsage = "digitalSignature";
  ByteArray encoded = MakeCertificate(recipe);
  const ByteArray critical = FromHex("0603551d0f0404");  // extnID, then extnValue without `critical`
  const auto at = std::search(encoded.begin(), encoded.end(), critical.begin(), critical.end());
  ASSERT_NE(at, encoded.end());
  *(at + 7) = 0x1f;  // the BIT STRING inside
  EXPECT_THROWS(4004, 0, "CSKeyUsage_DERDecode() failed", ICertificate::Create("X509", encoded));
}

TEST(Certificate, FieldsOfACommonCertificate) {
  CertificateRecipe recipe = LogonRecipe();
  recipe.serial = "7F00FF";
  const ByteArray encoded = MakeCertificate(recipe);
  const auto certificate = OpenCertificate(encoded);
  EXPECT_EQ(certificate->GetFormat(), "X509");
  EXPECT_EQ(certificate->GetVersion(), 2);
  EXPECT_EQ(ToHex(certificate->GetSerialNumber()), "7f00ff");
  EXPECT_EQ(certificate->GetNotBefore(), "2024-01-01 00-00-00");
  EXPECT_EQ(certificate->GetNotAfter(), "2049-12-31 23-59-59");
  EXPECT_EQ(Own(certificate->GetSubjectDN())->GetName(0), "CN=Ada Lehmann,O=Example,C=DE");
  EXPECT_EQ(Own(certificate->GetIssuerDN())->GetName(1), "C=DE,O=Example,CN=Ada Lehmann");
  EXPECT_EQ(ToHex(certificate->GetKeyUsage()), "80");
  EXPECT_EQ(Purposes(*certificate), "1.3.6.1.4.1.311.20.2.2 1.3.6.1.5.5.7.3.2");
  EXPECT_EQ(Names(*certificate),
            "OtherName:1.3.6.1.4.1.311.20.2.3:616461406578616d706c652e6f7267 rfc822Name::ada@example.org");
  EXPECT_THROWS(4004, 0, "CSTBSCertificate_GetIssuerUniqueID() failed", certificate->GetIssuerUniqueID());
  EXPECT_THROWS(4004, 0, "CSTBSCertificate_GetSubjectUniqueID() failed", certificate->GetSubjectUniqueID());

  ByteArray copy;
  certificate->GetEncoded(copy);
  EXPECT_EQ(copy, encoded);
  const auto clone = Own(certificate->Clone());
  clone->GetEncoded(copy);
  EXPECT_EQ(copy, encoded);
}

TEST(Certificate, TheTbsComesWithoutItsHeader) {
  const ByteArray encoded = MakeCertificate(LogonRecipe());
  const ByteArray tbs = reference::Encoded(i2d_re_X509_tbs, reference::Parsed(encoded).get());
  ASSERT_GT(tbs.size(), 260U);  // so the header has four octets
  ByteArray contents;
  OpenCertificate(encoded)->GetTBSCertificate(contents);
  EXPECT_EQ(contents, ByteArray(tbs.begin() + 4, tbs.end()));
}

TEST(Certificate, VersionOneHasNoVersionAndNoExtensions) {
  CertificateRecipe recipe;
  recipe.version = 0;
  const auto certificate = Open(recipe);
  EXPECT_THROWS(4004, 0, "CSTBSCertificate_GetVersion() failed", certificate->GetVersion());
  EXPECT_EQ(certificate->GetKeyUsage(), ByteArray());
  EXPECT_EQ(Purposes(*certificate), "");
  EXPECT_EQ(Names(*certificate), "");
  EXPECT_FALSE(certificate->IsDigitalSignature());
  EXPECT_FALSE(certificate->IsDecipherOnly());
}

TEST(Certificate, SerialNumbersOfAnySizeAndSign) {
  CertificateRecipe recipe;
  const std::string huge(80, 'a');
  recipe.serial = huge;
  EXPECT_EQ(ToHex(Open(recipe)->GetSerialNumber()), "00" + huge);
  recipe.serial = "-80";
  EXPECT_EQ(ToHex(Open(recipe)->GetSerialNumber()), "80");
  recipe.serial = "-0100";
  EXPECT_EQ(ToHex(Open(recipe)->GetSerialNumber()), "ff00");
}

TEST(Certificate, UniqueIdentifiers) {
  const ByteArray octets = FromHex("01020380");
  const auto certificate = OpenChanged({}, [&](CSTBSCertificate* tbs) {
    for (const auto set : {CSTBSCertificate_SetIssuerUniqueID, CSTBSCertificate_SetSubjectUniqueID}) {
      CSASNBitString* bits = nullptr;
      ASSERT_EQ(CSASNBitString_FromBytes(octets.data(), octets.size(), &bits), 0U);
      ASSERT_EQ(set(tbs, bits, nullptr), 0U);
    }
  });
  EXPECT_EQ(certificate->GetIssuerUniqueID(), octets);
  EXPECT_EQ(certificate->GetSubjectUniqueID(), octets);
}

class CertificateExtensions : public VectorTest {};

TEST_P(CertificateExtensions, AreReadOrRefused) {
  const Vector& vector = GetParam();
  const std::string& oid = vector.section();
  const std::string value = ToHex(vector.Bytes("value"));
  std::string read, bits;
  const Caught caught = Catch([&] {
    const auto certificate = WithExtension(oid, value);
    if (oid == "2.5.29.37") read = Purposes(*certificate);
    if (oid == "2.5.29.17") read = Names(*certificate);
    if (oid != "2.5.29.15") return;
    read = ToHex(certificate->GetKeyUsage());
    for (size_t i = 0; i < std::size(kBits); ++i) {
      if ((certificate.get()->*kBits[i])()) bits += (bits.empty() ? "" : " ") + std::to_string(i);
    }
  });
  if (vector.Has("throws")) {
    EXPECT_EQ(caught.id, 4004UL);
    EXPECT_EQ(caught.message, vector.Text("throws"));
  } else {
    EXPECT_EQ(read, vector.Text("reads")) << caught;
    EXPECT_EQ(bits, vector.Has("bits") ? vector.Text("bits") : "");
  }
}

INSTANTIATE_TEST_SUITE_P(Rfc5280, CertificateExtensions, testing::ValuesIn(LoadVectors("certificate_extensions.txt")));

TEST(Certificate, ATextMayHoldAZeroOctet) {
  const auto certificate = WithExtension("2.5.29.17", DerHex(0x30, DerHex(0x82, "612e6f7267002e6576696c")));
  const OwnedNames names(certificate->GetSubjectAlternativeNames());
  EXPECT_EQ((*names.begin())->GetString(), SecureString("a.org\0.evil", 11));
}

TEST(Certificate, TheObsoleteAlternativeNameCountsOnlyAloneAndOfADoubledExtensionTheFirst) {
  const std::pair<std::string, std::string> a = {"2.5.29.17", DerHex(0x30, "8201 61")}, null = {"2.5.29.17", "0500"};
  const std::pair<std::string, std::string> obsolete = {"2.5.29.7", DerHex(0x30, "8201 62")};
  CertificateRecipe recipe;
  recipe.extensions = {obsolete};
  EXPECT_EQ(Names(*Open(recipe)), "dNSName::b");
  recipe.extensions = {obsolete, a, null, {"2.5.29.15", "03020780"}, {"2.5.29.15", "03020640"}};
  EXPECT_EQ(Names(*Open(recipe)), "dNSName::a");
  EXPECT_EQ(ToHex(Open(recipe)->GetKeyUsage()), "80");
  recipe.extensions = {obsolete, null};
  EXPECT_THROWS(4004, 0, "CSGeneralNames_DERDecode() failed", Open(recipe)->GetSubjectAlternativeNames());
}

TEST(Certificate, ThePublicKeyIsMadeOnceAndLentAndOtherKindsAreRefusedOnlyWhenAskedFor) {
  for (const char* kind : {"RSA:2048", "RSA-PSS:2048", "EC:P-256", "ED25519"}) {
    SCOPED_TRACE(kind);
    CertificateRecipe recipe;
    recipe.key = kind;
    const ByteArray encoded = MakeCertificate(recipe);
    const auto certificate = OpenCertificate(encoded);
    if (kind[0] == 'R') {
      IPublicKey* key = certificate->GetPublicKey();
      EXPECT_EQ(certificate->GetPublicKey(), key);
      EXPECT_EQ(key->GetAlgorithm()->GetFriendlyName(), "RSA");
      ByteArray octets;
      key->GetEncoded(octets);
      const reference::Certificate parsed = reference::Parsed(encoded);
      const ASN1_BIT_STRING* bits = X509_get0_pubkey_bitstr(parsed.get());
      EXPECT_EQ(octets, ByteArray(bits->data, bits->data + bits->length));
      continue;
    }
    for (int i = 0; i < 2; ++i) {
      const Caught caught = Catch([&] { certificate->GetPublicKey(); });
      EXPECT_EQ(caught.message, "Error while creating Public Key");
      EXPECT_EQ(caught.causes.substr(0, 5), std::to_string(caught.id) + " ") << "the identifier is that of the cause";
    }
  }
}

TEST(Certificate, WhatIsNotProvided) {
  const auto certificate = Open(CertificateRecipe());
  ByteArray octets;
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->Compare(certificate.get()));
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->GetExtensionValue("2.5.29.15", octets));
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->ListExtensions(nullptr));
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->GetHash());
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->GetSignature());
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->VerifyTrust(nullptr));
  EXPECT_THROWS(4001, 0, "Not Implemented", certificate->VerifySignature(nullptr));
}

TEST(Certificate, TheTraceOfAFailingGetter) {
  const auto certificate = WithExtension("2.5.29.37", "0500");
  const Trace trace(1UL << 1 | 1UL << 8 | 1UL << 16);
  Catch([&] { certificate->GetExtendedKeyUsage(); });
  EXPECT_EQ(trace.WithoutAddresses(), LoadParagraph("traces.txt", "a getter of a certificate that fails"));
}

}  // namespace
