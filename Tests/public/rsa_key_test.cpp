#include <gtest/gtest.h>

#include "support/caught.h"
#include "support/certificates.h"
#include "support/counted_algorithm.h"
#include "support/rsa.h"
#include "support/services.h"
#include "support/trace.h"

using namespace Tavo::Framework;
using reference::BigEndian;
using reference::LittleEndian;

namespace {

ByteArray Encoded(IKey& key) {
  ByteArray encoded(3, 0xee);
  key.GetEncoded(encoded);
  return encoded;
}

ByteArray WithZeroInFront(ByteArray number) {
  if (number[0] >= 0x80) number.insert(number.begin(), 0);
  return number;
}

/// A component: how libcrypto and how the key give it.
struct Component {
  const char* name;
  const BIGNUM* (*expected)(const RSA*);
  void (IRSAPrivateCRTKey::*get)(ByteArray&);
};
const Component kComponents[] = {
    {"p", RSA_get0_p, &IRSAPrivateCRTKey::GetPFactor},
    {"q", RSA_get0_q, &IRSAPrivateCRTKey::GetQFactor},
    {"dP", RSA_get0_dmp1, &IRSAPrivateCRTKey::GetPExponent},
    {"dQ", RSA_get0_dmq1, &IRSAPrivateCRTKey::GetQExponent},
    {"qInv", RSA_get0_iqmp, &IRSAPrivateCRTKey::GetCRTCoefficient},
    {"n", RSA_get0_n, &IRSAPrivateCRTKey::GetModulus},
    {"e", RSA_get0_e, &IRSAPrivateCRTKey::GetPubExponent},
    {"d", RSA_get0_d, &IRSAPrivateCRTKey::GetPrivExponent},
};

ByteArray Get(IRSAPrivateCRTKey& key, const Component& component) {
  ByteArray out(3, 0xee);
  (key.*component.get)(out);
  return out;
}

/// The key, and a clone of it once the key is gone.
template <class Key>
void ForKeyAndClone(IKey* made, void (*check)(Key& key, const RSA* rsa), const RSA* rsa) {
  auto key = Own(made);
  ASSERT_NE(dynamic_cast<Key*>(key.get()), nullptr);
  check(dynamic_cast<Key&>(*key), rsa);
  const auto clone = Own(key->Clone());
  EXPECT_NE(key->GetAlgorithm(), clone->GetAlgorithm());
  EXPECT_EQ(Encoded(*key), Encoded(*clone));
  key.reset();
  check(dynamic_cast<Key&>(*clone), rsa);
}

class RsaKeys : public testing::TestWithParam<int> {
 protected:
  EVP_PKEY* const pkey = CertificateKey("RSA:" + std::to_string(GetParam()));
  RSA* const rsa = const_cast<RSA*>(EVP_PKEY_get0_RSA(pkey));
  Owned<IAlgorithm> algorithm = NewAlgorithm("RSA");
};
// 1025 bits leave the modulus' top octet 01: no zero in front.
INSTANTIATE_TEST_SUITE_P(Bits, RsaKeys, testing::Values(512, 1024, 1025, 2048));

TEST_P(RsaKeys, APrivateKeyFromPkcs8IsKeptAsGivenAndReadBigEndian) {
  ByteArray encoded = reference::Pkcs8Of(rsa);  // with NULL parameters
  EXPECT_EQ(Encoded(*Own(IKey::Create(algorithm.get(), "PKCS8", encoded))), encoded);
  ForKeyAndClone<IRSAPrivateCRTKey>(
      IKey::Create(algorithm.get(), "PKCS8", encoded),
      [](IRSAPrivateCRTKey& key, const RSA* expected) {
        EXPECT_EQ(key.GetFormat(), "PKCS8");
        for (const auto& component : kComponents) {
          ByteArray number = BigEndian(component.expected(expected));
          if (component.expected != RSA_get0_n) number = WithZeroInFront(number);
          EXPECT_EQ(Get(key, component), number) << component.name;
        }
      },
      rsa);
  encoded.insert(encoded.end(), 5, 0);  // what follows the key is kept, too
  EXPECT_EQ(Encoded(*Own(IKey::Create(algorithm.get(), "PKCS8", encoded))), encoded);
}

TEST_P(RsaKeys, APrivateKeyFromNumbersIsEncodedForLibcryptoAndAnswersLittleEndian) {
  const auto le = [&](auto get) { return LittleEndian(get(rsa)); };
  const auto make = [&] {
    return IRSAPrivateCRTKey::Create(algorithm.get(), le(RSA_get0_p), le(RSA_get0_q), le(RSA_get0_dmp1),
                                     le(RSA_get0_dmq1), le(RSA_get0_iqmp), le(RSA_get0_n), le(RSA_get0_e),
                                     le(RSA_get0_d));
  };
  ForKeyAndClone<IRSAPrivateCRTKey>(
      make(),
      [](IRSAPrivateCRTKey& key, const RSA* expected) {
        for (const auto& component : kComponents) {
          const bool quirk = component.expected == RSA_get0_dmq1;
          EXPECT_EQ(Get(key, component), LittleEndian((quirk ? RSA_get0_dmp1 : component.expected)(expected)));
        }
      },
      rsa);

  const ByteArray encoded = Encoded(*Own(make()));
  const reference::Key read = reference::ParsedKey(encoded);
  ASSERT_NE(read, nullptr);
  for (const auto& component : kComponents) {
    EXPECT_EQ(BN_cmp(component.expected(EVP_PKEY_get0_RSA(read.get())), component.expected(rsa)), 0) << component.name;
  }
  EXPECT_EQ(RSA_check_key(EVP_PKEY_get0_RSA(read.get())), 1);
}

TEST_P(RsaKeys, APublicKeyFromNumbersOrCertificateAgreesWithLibcrypto) {
  const auto check = [](IRSAPublicKey& key, const RSA* expected) {
    EXPECT_EQ(key.GetFormat(), "X509");
    EXPECT_EQ(key.GetExponent(), 65537U);
    ByteArray modulus(999, 0xee);
    key.GetModulus(modulus);
    EXPECT_EQ(modulus, LittleEndian(RSA_get0_n(expected)));
  };
  ByteArray modulus = WithZeroInFront(BigEndian(RSA_get0_n(rsa)));
  std::reverse(modulus.begin(), modulus.end());
  const auto fromNumbers = Own(IRSAPublicKey::Create(algorithm.get(), modulus, LittleEndian(RSA_get0_e(rsa))));
  EXPECT_EQ(Encoded(*fromNumbers), reference::Encoded(i2d_RSAPublicKey, rsa));
  ForKeyAndClone<IRSAPublicKey>(fromNumbers->Clone(), check, rsa);

  CertificateRecipe recipe;
  recipe.key = "RSA:" + std::to_string(GetParam());
  ByteArray encoded = MakeCertificate(recipe);
  encoded.push_back(0);  // what follows a certificate is ignored
  const auto fromCertificate = Own(IKey::Create(algorithm.get(), "X509", encoded));
  EXPECT_EQ(Encoded(*fromCertificate), Encoded(*fromNumbers));
  ForKeyAndClone<IRSAPublicKey>(fromCertificate->Clone(), check, rsa);
}

class RsaPublicKeys : public VectorTest {};
INSTANTIATE_TEST_SUITE_P(HandMade, RsaPublicKeys, testing::ValuesIn(LoadVectors("rsa_public_key.txt")));

TEST_P(RsaPublicKeys, TheBytesGivenAreEncodedAsTheyAre) {
  const Vector& v = GetParam();
  const auto algorithm = NewAlgorithm(v.section().c_str());
  const auto key = Own(IRSAPublicKey::Create(algorithm.get(), v.Bytes("modulus"), v.Bytes("exponent")));
  EXPECT_EQ(ToHex(Encoded(*key)), ToHex(v.Bytes("encoded")));
  ByteArray modulus;
  key->GetModulus(modulus);
  EXPECT_EQ(modulus, v.Bytes("modulus back"));
  EXPECT_EQ(key->GetExponent(), v.Number("exponent back"));
}

TEST(RsaPublicKey, AnExponentThatIsTooLargeIsRefusedWhenAskedFor) {
  const auto wide = Own(IRSAPublicKey::Create(NewAlgorithm("RSA").get(), FromHex("0102"), FromHex("0000000001")));
  const Trace trace;
  EXPECT_THROWS(4004, 434, "CSASNInteger_ToUnsigned32() failed", wide->GetExponent());
  EXPECT_TRUE(trace.Has("1 COpensslRSAPublicKey::GetExponent : CSASNInteger_ToUnsigned32 (err = 6)"));
  EXPECT_TRUE(trace.Has("16 COpensslRSAPublicKey::GetExponent Returns CSASNInteger_ToUnsigned32() failed"));
}

TEST(RsaKey, EmptyNumbersAndAMissingAlgorithmAreRefused) {
  CountedAlgorithm algorithm("RSA");
  const ByteArray one(1, 1), none;
  EXPECT_THROWS(4000, 233, "Component RSA=empty!", IRSAPublicKey::Create(&algorithm, none, one));
  EXPECT_THROWS(4000, 233, "Component RSA=empty!", IRSAPublicKey::Create(&algorithm, one, none));
  EXPECT_THROWS(4000, 0, "pAlgorithm should not be NULL", IRSAPublicKey::Create(nullptr, one, one));
  const Trace trace;
  for (int missing = 0; missing < 8; ++missing) {
    const auto n = [&](int i) { return i == missing ? none : one; };
    EXPECT_THROWS(4000, 0, "Component RSA=empty!",
                  IRSAPrivateCRTKey::Create(&algorithm, n(0), n(1), n(2), n(3), n(4), n(5), n(6), n(7)));
  }
  const std::string name = "COpensslRSAPrivateCRTKey::COpensslRSAPrivateCRTKey(chinese parameters)";
  EXPECT_TRUE(trace.Has("1 " + name + " : Component RSA=empty!"));
  EXPECT_TRUE(trace.Has("16 " + name + " Returns Component RSA=empty!"));
  EXPECT_THROWS(4000, 0, "pAlgorithm should not be NULL",
                IRSAPrivateCRTKey::Create(nullptr, one, one, one, one, one, one, one, one));
  EXPECT_THROWS(4002, 470, "Unsupported format", IKey::Create(&algorithm, "RAW", one));
  EXPECT_EQ(algorithm.clones(), 0) << "a constructor that throws keeps nothing";
}

class RsaBrokenEncodings : public VectorTest {};
INSTANTIATE_TEST_SUITE_P(HandMade, RsaBrokenEncodings, testing::ValuesIn(LoadVectors("rsa_key.txt")));

TEST_P(RsaBrokenEncodings, AreRefusedAndLeakNothing) {
  const Vector& vector = GetParam();
  CountedAlgorithm algorithm("RSA");
  EXPECT_THROWS(vector.Number("id"), 0, vector.Text("message"),
                IKey::Create(&algorithm, vector.section().c_str(), vector.Bytes("encoded")));
  EXPECT_EQ(algorithm.clones(), 0);
}

TEST(RsaKey, ACertificateOfAnotherKindOfKeyHasNoRsaKey) {
  const auto algorithm = NewAlgorithm("RSA");
  const Trace trace(1UL << 1);
  EXPECT_THROWS(4003, 0, "Unable to parse public key", IKey::Create(algorithm.get(), "X509", MakeCertificate({})));
  ASSERT_EQ(trace.lines().size(), 1U);
  EXPECT_TRUE(trace.Begins("1 COpensslRSAPublicKey::COpensslRSAPublicKey : Unable to parse public key with error 0x"));
}

TEST(RsaKey, EveryTruncationOfAKeyIsRefused) {
  const ByteArray encoded = reference::Pkcs8Of(reference::NewRsa(512).get());
  CountedAlgorithm algorithm("RSA");
  for (size_t size = 0; size < encoded.size(); ++size) {
    EXPECT_TRUE(Catch([&] { IKey::Create(&algorithm, "PKCS8", Part(encoded, 0, size)); }).thrown) << size;
  }
  EXPECT_EQ(algorithm.clones(), 0);
}

}  // namespace
