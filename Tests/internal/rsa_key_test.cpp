#include "openssl/rz.crypto.openssl.rsakeypair.h"
#include "openssl/rz.crypto.openssl.rsaprivatecrtkey.h"
#include "openssl/rz.crypto.openssl.rsapublickey.h"
#include "support/caught.h"
#include "support/counted_algorithm.h"
#include "support/rsa.h"
#include "support/services.h"
#include "support/trace.h"

using namespace Tavo::Framework;

namespace {

ByteArray Encoded(IKey& key) {
  ByteArray encoded;
  key.GetEncoded(encoded);
  return encoded;
}

TEST(RsaPrivateKey, EngineKeyPkcs1AndPkcs8GiveTheSameKey) {
  CountedAlgorithm algorithm("RSA");
  const auto rsa = reference::NewRsa(1024);
  const ByteArray pkcs1 = reference::Encoded(i2d_RSAPrivateKey, rsa.get());
  COpensslRSAPrivateCRTKey fromRsa(&algorithm, rsa.get());
  COpensslRSAPrivateCRTKey fromPkcs1(&algorithm, pkcs1, false);
  COpensslRSAPrivateCRTKey fromPkcs8(&algorithm, Encoded(fromPkcs1), true);
  EXPECT_EQ(Encoded(fromRsa), Encoded(fromPkcs1));
  EXPECT_EQ(Encoded(fromPkcs8), Encoded(fromPkcs1));
  for (auto* key : {&fromRsa, &fromPkcs1, &fromPkcs8}) {  // the public tests read every number of the last
    ByteArray modulus, coefficient;
    key->GetModulus(modulus);
    key->GetCRTCoefficient(coefficient);
    EXPECT_EQ(modulus, reference::BigEndian(RSA_get0_n(rsa.get())));
    EXPECT_EQ(BN_cmp(reference::Number(coefficient).get(), RSA_get0_iqmp(rsa.get())), 0);
  }

  // RFC 5208 by hand: version 0, the rsaEncryption identifier without parameters, the PKCS #1 key.
  ByteArray expected = FromHex("3082027202010030 0b06092a864886f70d010101 0482025e");
  ASSERT_GE(pkcs1.size(), 600U);
  expected[2] = static_cast<unsigned char>((pkcs1.size() + 20) >> 8);
  expected[3] = static_cast<unsigned char>(pkcs1.size() + 20);
  expected[22] = static_cast<unsigned char>(pkcs1.size() >> 8);
  expected[23] = static_cast<unsigned char>(pkcs1.size());
  AppendBytes(expected, pkcs1);
  EXPECT_EQ(ToHex(Encoded(fromRsa)), ToHex(expected));
}

TEST(RsaKeyPair, ItsKeysOutliveIt) {
  auto pair = std::make_unique<COpensslRSAKeyPair>(reference::NewRsa(512).release());
  const auto publicKey = Own(pair->GetPublicKey());
  const auto privateKey = Own(pair->GetPrivateKey());
  const auto another = Own(pair->GetPublicKey());
  EXPECT_NE(publicKey, another);
  pair.reset();
  const auto clone = Own(privateKey->Clone());
  const RSA* ours = dynamic_cast<COpensslRSAPublicKey&>(*publicKey).GetRSAKey();
  EXPECT_EQ(RSA_size(ours), 64);
  EXPECT_EQ(dynamic_cast<COpensslRSAPrivateCRTKey&>(*clone).GetRSAKey(), ours) << "one key, shared";
  EXPECT_EQ(Encoded(*publicKey), reference::Encoded(i2d_RSAPublicKey, ours));
  EXPECT_EQ(publicKey->GetAlgorithm()->GetFriendlyName(), "RSA");
  EXPECT_EQ(publicKey->GetFormat(), "X509");
}

TEST(RsaKeyPair, WithoutAKeyThereIsNoPairAndWithAnEmptyOneThereAreNoKeys) {
  const Trace trace;
  EXPECT_THROWS(4000, 41, "m_RSA undefined", COpensslRSAKeyPair(nullptr));
  EXPECT_TRUE(trace.Has("1 COpensslRSAKeyPair::COpensslRSAKeyPair : m_RSA undefined"));
  EXPECT_TRUE(trace.Has("16 COpensslRSAKeyPair::COpensslRSAKeyPair Returns m_RSA undefined"));
  COpensslRSAKeyPair empty(RSA_new());
  EXPECT_THROWS(4003, 0, "Unable to encode public key", empty.GetPublicKey());
  EXPECT_THROWS(4003, 0, "Unable to encode private key", empty.GetPrivateKey());

  CountedAlgorithm algorithm("RSA");
  RSA* none = nullptr;
  EXPECT_THROWS(4003, 0, "Unable to encode public key", COpensslRSAPublicKey(&algorithm, none));
  EXPECT_THROWS(4003, 0, "Unable to encode private key", COpensslRSAPrivateCRTKey(&algorithm, none));
  const auto whole = reference::NewRsa(512);
  const ByteArray publicPart = reference::Encoded(i2d_RSAPublicKey, whole.get());
  const unsigned char* at = publicPart.data();
  const reference::Rsa half(d2i_RSAPublicKey(nullptr, &at, static_cast<long>(publicPart.size())));
  EXPECT_EQ(Encoded(*Own<IKey>(new COpensslRSAPublicKey(&algorithm, half.get()))), publicPart);
  EXPECT_THROWS(4003, 0, "Unable to encode private key", COpensslRSAPrivateCRTKey(&algorithm, half.get()));
  EXPECT_THROWS(4000, 0, "pAlgorithm should not be NULL", COpensslRSAPublicKey(nullptr, whole.get()));
  EXPECT_THROWS(4000, 0, "pAlgorithm should not be NULL", COpensslRSAPrivateCRTKey(nullptr, whole.get()));
  EXPECT_THROWS(4000, 0, "pAlgorithm should not be NULL", COpensslRSAPrivateCRTKey(nullptr, ByteArray(1), true));
  EXPECT_EQ(algorithm.clones(), 0);
}

TEST(RsaPublicKey, ACertificateGivesItsBitsAsTheyAre) {
  const auto rsa = reference::NewRsa(512);
  const reference::Certificate certificate(X509_new());
  X509_set_pubkey(certificate.get(), reference::PkeyOf(rsa.get()).get());
  COpensslRSAPublicKey key(certificate.get(), ByteArray(1, 9));
  EXPECT_EQ(Encoded(key), reference::Encoded(i2d_RSAPublicKey, rsa.get()));
  EXPECT_EQ(key.GetAlgorithm()->GetFriendlyName(), "RSA");
  X509* none = nullptr;
  EXPECT_THROWS(4003, 0, "Unable to parse public key", COpensslRSAPublicKey(none, ByteArray()));

  // Empty INTEGERs, which libcrypto lets pass; and two octets after the SEQUENCE.
  const ByteArray odd = FromHex("3004 0200 0200 0500");
  ASN1_BIT_STRING* bits = X509_get0_pubkey_bitstr(certificate.get());
  ASSERT_EQ(ASN1_STRING_set(bits, odd.data(), static_cast<int>(odd.size())), 1);
  COpensslRSAPublicKey empty(certificate.get(), ByteArray());
  EXPECT_EQ(Encoded(empty), odd);
  ByteArray modulus(5);
  empty.GetModulus(modulus);
  EXPECT_TRUE(modulus.empty());
  EXPECT_EQ(empty.GetExponent(), 0U);
}

TEST(RsaKey, FailuresReportTheFirstErrorAndLeaveTheHostsQueue) {
  CountedAlgorithm algorithm("RSA");
  const ByteArray bytes(9, 1);
  ERR_clear_error();
  EXPECT_EQ(reference::Parsed(bytes), nullptr);
  char expected[256];
  ERR_error_string_n(ERR_peek_error(), expected, sizeof expected);
  const Trace trace(1UL << 1);
  LeavesTheHostsErrors(
      [&] { EXPECT_THROWS(4003, 0, "Unable to parse certificate", COpensslRSAPublicKey(&algorithm, bytes)); });
  ASSERT_EQ(trace.lines().size(), 2U);
  EXPECT_NE(trace.lines()[0].find(expected), std::string::npos) << trace.lines()[0] << " has no " << expected;
}

}  // namespace
