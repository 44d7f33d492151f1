#include <gtest/gtest.h>
#include <openssl/ec.h>

#include "support/caught.h"
#include "support/counted_algorithm.h"
#include "support/rsa.h"
#include "support/trace.h"
#include "support/vectors.h"

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
  reference::Rsa rsa = reference::NewRsa(GetParam());
  Owned<IAlgorithm> algorithm = NewAlgorithm("RSA");
};
// 1025 bits leave the modulus' top octet 01: no zero in front.
INSTANTIATE_TEST_SUITE_P(Bits, RsaKeys, testing::Values(512, 1024, 1025, 2048));

TEST_P(RsaKeys, APrivateKeyFromPkcs8IsKeptAsGivenAndReadBigEndian) {
  ByteArray encoded = reference::Pkcs8Of(rsa.get());  // with NULL parameters
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
      rsa.get());
  encoded.insert(encoded.end(), 5, 0);  // what follows the key is kept, too
  EXPECT_EQ(Encoded(*Own(IKey::Create(algorithm.get(), "PKCS8", encoded))), encoded);
}

TEST_P(RsaKeys, APrivateKeyFromNumbersIsEncodedForLibcryptoAndAnswersLittleEndian) {
  const auto le = [&](auto get) { return LittleEndian(get(rsa.get())); };
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
      rsa.get());

  const ByteArray encoded = Encoded(*Own(make()));
  const unsigned char* at = encoded.data();
  const reference::Key read(d2i_AutoPrivateKey(nullptr, &at, static_cast<long>(encoded.size())));
  ASSERT_NE(read, nullptr);
  for (const auto& component : kComponents) {
    EXPECT_EQ(BN_cmp(component.expected(EVP_PKEY_get0_RSA(read.get())), component.expected(rsa.get())), 0)
        << component.name;
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
  ByteArray modulus = WithZeroInFront(BigEndian(RSA_get0_n(rsa.get())));
  std::reverse(modulus.begin(), modulus.end());
  const auto fromNumbers = Own(IRSAPublicKey::Create(algorithm.get(), modulus, LittleEndian(RSA_get0_e(rsa.get()))));
  EXPECT_EQ(Encoded(*fromNumbers), reference::Encoded(i2d_RSAPublicKey, rsa.get()));
  ForKeyAndClone<IRSAPublicKey>(fromNumbers->Clone(), check, rsa.get());

  const auto certificate = reference::CertificateOf(reference::PkeyOf(rsa.get()).get());
  ByteArray encoded = reference::Encoded(i2d_X509, certificate.get());
  encoded.push_back(0);  // what follows a certificate is ignored
  const auto fromCertificate = Own(IKey::Create(algorithm.get(), "X509", encoded));
  EXPECT_EQ(Encoded(*fromCertificate), Encoded(*fromNumbers));
  ForKeyAndClone<IRSAPublicKey>(fromCertificate->Clone(), check, rsa.get());
}

TEST(RsaPublicKey, TheBytesGivenAreEncodedAsTheyAre) {
  struct {
    const char* modulus;  // least significant byte first, as is the exponent
    const char* exponent;
    const char* encoded;
    const char* modulusBack;
    unsigned int value;
  } const cases[] = {
      {"0102", "03", "3007 02020201 020103", "0102", 3},            // hand-made, a 10-bit modulus
      {"01f0", "03", "3007 0202f001 020103", "01f0", 3},            // top bit set: no zero is put in front
      {"01f000", "03", "3008 020300f001 020103", "01f0", 3},        // a zero given is written, and not read back
      {"01f00000", "03", "3009 02040000f001 020103", "01f000", 3},  // only one of them
      {"0102", "ff", "3007 02020201 0201ff", "0102", 255},          // an exponent is unsigned
      {"0102", "01000080", "300a 02020201 020480000001", "0102", 0x80000001},
      {"0102", "0100000000", "300b 02020201 02050000000001", "0102", 1},  // zeros in front do not count
      {"00", "00", "3006 020100 020100", "", 0},                          // nothing is validated
  };
  const auto algorithm = NewAlgorithm("RSA");
  for (const auto& c : cases) {
    const auto key = Own(IRSAPublicKey::Create(algorithm.get(), FromHex(c.modulus), FromHex(c.exponent)));
    EXPECT_EQ(Encoded(*key), FromHex(c.encoded)) << c.encoded;
    ByteArray modulus;
    key->GetModulus(modulus);
    EXPECT_EQ(modulus, FromHex(c.modulusBack)) << c.encoded;
    EXPECT_EQ(key->GetExponent(), c.value) << c.encoded;
  }
  const auto wide = Own(IRSAPublicKey::Create(algorithm.get(), FromHex("0102"), FromHex("0000000001")));
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
  EC_KEY* ec = EC_KEY_new_by_curve_name(NID_X9_62_prime256v1);
  EC_KEY_generate_key(ec);
  const reference::Key key(EVP_PKEY_new());
  EVP_PKEY_assign_EC_KEY(key.get(), ec);
  const auto encoded = reference::Encoded(i2d_X509, reference::CertificateOf(key.get()).get());
  const auto algorithm = NewAlgorithm("RSA");
  const Trace trace(1UL << 1);
  EXPECT_THROWS(4003, 0, "Unable to parse public key", IKey::Create(algorithm.get(), "X509", encoded));
  ASSERT_EQ(trace.lines().size(), 1U);
  EXPECT_EQ(trace.lines()[0].rfind("1 COpensslRSAPublicKey::COpensslRSAPublicKey : Unable to parse public key with "
                                   "error 0x",
                                   0),
            0U)
      << trace.lines()[0];
}

TEST(RsaKey, EveryTruncationOfAKeyIsRefused) {
  const auto rsa = reference::NewRsa(512);
  const ByteArray encoded = reference::Pkcs8Of(rsa.get());
  CountedAlgorithm algorithm("RSA");
  for (size_t size = 0; size < encoded.size(); ++size) {
    const ByteArray cut(encoded.begin(), encoded.begin() + static_cast<long>(size));
    EXPECT_TRUE(Catch([&] { IKey::Create(&algorithm, "PKCS8", cut); }).thrown) << size;
  }
  EXPECT_EQ(algorithm.clones(), 0);
}

}  // namespace
