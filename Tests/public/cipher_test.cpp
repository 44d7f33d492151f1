#include "tavo/framework/cipher.h"

#include "support/caught.h"
#include "support/doubles.h"
#include "support/services.h"

using namespace Tavo::Framework;

namespace {

/// One implementation of the interface, and the lines of its refusals.
struct Subject {
  const char* name;
  const char* file;
  unsigned long nullKey, keyTwice, keyOperation;
  unsigned long nullCertificate, certificateTwice, certificateOperation;
  unsigned long finalWith, finalWithOperation, final, finalOperation, update;
  unsigned long unwrap, unwrapOperation, unwrapAlways, wrap, wrapOperation, wrapAlways;
};

#define RZ_SYMMETRIC                                                                                                 \
  "Sources/openssl/rz.crypto.openssl.SymmetricCipher", 60, 66, 78, 111, 117, 129, 170, 176, 218, 224, 264, 294, 300, \
      304, 333, 339, 343
const Subject kSubjects[] = {
    {"DES", RZ_SYMMETRIC},
    {"3DES", RZ_SYMMETRIC},
    {"AES", RZ_SYMMETRIC},
    {"RSA", "Sources/openssl/rz.crypto.openssl.RSACipher", 62, 68, 80, 113, 119, 131, 172, 178, 220, 226, 266, 296, 302,
     306, 335, 341, 345},
};
#undef RZ_SYMMETRIC

void PrintTo(const Subject& subject, std::ostream* out) { *out << subject.name; }

class CipherBehaviour : public testing::TestWithParam<Subject> {
 protected:
  const Subject& s = GetParam();
  Made<Cipher> cipher{s.name};
  IAlgorithm* algorithm = cipher.algorithm.get();
  TestKey key{"AES", ByteArray(24, 7)};
  ByteArray out = ByteArray(2, 9);
};

TEST_P(CipherBehaviour, RefusesEverythingButInitAtRest) {
  const ByteArray data(3, 1);
  EXPECT_EQ(cipher->GetAlgorithm(), algorithm);
  EXPECT_THROWS(4009, s.update, "Cipher is not initialized", cipher->Update(data));
  EXPECT_THROWS(4009, s.finalWith, "Cipher is not initialized", cipher->DoFinal(data, out));
  EXPECT_THROWS(4009, s.final, "Cipher is not initialized", cipher->DoFinal(out));
  EXPECT_THROWS(4009, s.unwrap, "Cipher is not initialized", cipher->Unwrap(data, algorithm));
  EXPECT_THROWS(4009, s.wrap, "Cipher is not initialized", cipher->Wrap(&key, out));
  EXPECT_EQ(Catch([&] { cipher->DoFinal(out); }).file, s.file);
}

TEST_P(CipherBehaviour, InitChecksItsArgumentsInOrder) {
  TestCertificate certificate(&key);
  IKey* const noKey = nullptr;
  ICertificate* const noCertificate = nullptr;
  for (const bool initialized : {false, true}) {
    EXPECT_THROWS(4000, s.nullKey, "pKey should not be NULL", cipher->Init(4, noKey));
    EXPECT_THROWS(4000, s.nullCertificate, "pCertificate should not be NULL", cipher->Init(4, noCertificate));
    for (const int operation : {-1, 4}) {
      const unsigned long id = initialized ? 4009 : 4000;
      const char* message = initialized ? "Cipher is already initialized" : "Unknown operation";
      EXPECT_THROWS(id, initialized ? s.keyTwice : s.keyOperation, message, cipher->Init(operation, &key));
      EXPECT_THROWS(id, initialized ? s.certificateTwice : s.certificateOperation, message,
                    cipher->Init(operation, &certificate));
    }
    if (!initialized) cipher->Init(ENCRYPT_MODE, &key);
  }
}

TEST_P(CipherBehaviour, KeysAreNeitherWrappedNorUnwrapped) {
  const auto start = [&](int operation) {
    cipher.Renew();
    cipher->Init(operation, &key);
  };
  start(WRAP_MODE);
  EXPECT_THROWS(4000, s.finalWithOperation, "Invalid operation", cipher->DoFinal(ByteArray(), out));
  EXPECT_THROWS(4000, s.finalOperation, "Invalid operation", cipher->DoFinal(out));
  EXPECT_THROWS(4000, s.unwrapOperation, "Invalid operation", cipher->Unwrap(out, algorithm));
  EXPECT_THROWS(4001, s.wrapAlways, "Not Implemented", cipher->Wrap(&key, out));
  start(UNWRAP_MODE);
  EXPECT_THROWS(4000, s.finalOperation, "Invalid operation", cipher->DoFinal(out));
  EXPECT_THROWS(4000, s.wrapOperation, "Invalid operation", cipher->Wrap(&key, out));
  EXPECT_THROWS(4001, s.unwrapAlways, "Not Implemented", cipher->Unwrap(out, algorithm));
  start(DECRYPT_MODE);
  EXPECT_THROWS(4000, s.wrapOperation, "Invalid operation", cipher->Wrap(&key, out));
  EXPECT_THROWS(4000, s.unwrapOperation, "Invalid operation", cipher->Unwrap(out, algorithm));
  EXPECT_EQ(out, ByteArray(2, 9));
}

INSTANTIATE_TEST_SUITE_P(All, CipherBehaviour, testing::ValuesIn(kSubjects),
                         [](const auto& info) { return "With" + std::string(info.param.name); });

}  // namespace
