#include "tavo/framework/signature.h"

#include <gtest/gtest.h>
#include <openssl/err.h>

#include "support/caught.h"
#include "support/doubles.h"
#include "support/rsa.h"
#include "support/trace.h"
#include "support/vectors.h"
#include "tavo/framework/rsa.h"

using namespace Tavo::Framework;

namespace {

constexpr const char* kFile = "Sources/openssl/rz.crypto.openssl.Signature";

struct Verifier {
  explicit Verifier(const char* padding) : algorithm(NewAlgorithm("RSA")), map(NewParameters()) {
    if (padding != nullptr) map->SetPadding(padding);
    signature = Own(Signature::Create(algorithm.get(), map.get()));
  }
  bool Verify(IPublicKey& key, const ByteArray& data, const ByteArray& signed_) {
    signature = Own(Signature::Create(algorithm.get(), map.get()));
    signature->Init(&key);
    return signature->Verify(data, signed_);
  }
  Owned<IAlgorithm> algorithm;
  Owned<ICryptoParserParameterMap> map;
  Owned<Signature> signature;
};

/// A signer made by libcrypto, and its public key.
struct Signer {
  explicit Signer(int bits) : rsa(reference::NewRsa(bits)) {
    key = Own(IRSAPublicKey::Create(NewAlgorithm("RSA").get(), reference::LittleEndian(RSA_get0_n(rsa.get())),
                                    reference::LittleEndian(RSA_get0_e(rsa.get()))));
  }
  size_t size() const { return static_cast<size_t>(RSA_size(rsa.get())); }
  ByteArray Sign(const ByteArray& data, int padding) const {
    ByteArray out(size());
    EXPECT_EQ(RSA_private_encrypt(static_cast<int>(data.size()), data.data(), out.data(), rsa.get(), padding),
              static_cast<int>(out.size()));
    return out;
  }
  reference::Rsa rsa;
  Owned<IRSAPublicKey> key;
};

const Signer& SmallSigner() {
  static const Signer signer(1024);
  return signer;
}

class SignatureSizes : public testing::TestWithParam<int> {};

TEST_P(SignatureSizes, ASignatureOfLibcryptoIsValidAndNothingElseIs) {
  const Signer signer(GetParam());
  // The DigestInfo of SHA-256 (RFC 8017, 9.2, note 1) under a signature that hashes for itself.
  const ByteArray message = FromText("the signed text");
  unsigned char hash[32];
  EVP_Digest(message.data(), message.size(), hash, nullptr, EVP_sha256(), nullptr);
  ByteArray info = FromHex("3031300d060960864801650304020105000420");
  info.insert(info.end(), hash, hash + sizeof hash);
  ByteArray signed_(signer.size());
  size_t size = signed_.size();
  const std::unique_ptr<EVP_MD_CTX, reference::Deleter<EVP_MD_CTX_free>> context(EVP_MD_CTX_new());
  EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, reference::PkeyOf(signer.rsa.get()).get());
  ASSERT_EQ(EVP_DigestSign(context.get(), signed_.data(), &size, message.data(), message.size()), 1);

  Verifier v("PKCS1");
  EXPECT_TRUE(v.Verify(*signer.key, info, signed_));
  for (const size_t at : {size_t{0}, info.size() - 1}) {
    ByteArray other = info;
    other[at] ^= 1;
    EXPECT_FALSE(v.Verify(*signer.key, other, signed_)) << at;
  }
  ByteArray longer = info;
  longer.push_back(0);
  EXPECT_FALSE(v.Verify(*signer.key, longer, signed_));
  EXPECT_FALSE(v.Verify(*signer.key, ByteArray(info.begin(), info.end() - 1), signed_));
  for (const size_t at : {size_t{0}, signed_.size() - 1}) {
    ByteArray other = signed_;
    other[at] ^= 1;
    EXPECT_FALSE(v.Verify(*signer.key, info, other)) << at;
  }

  ByteArray block(signer.size(), 0x17);
  block[0] = 0;
  for (const char* none : {static_cast<const char*>(nullptr), "None"}) {
    Verifier raw(none);
    EXPECT_TRUE(raw.Verify(*signer.key, block, signer.Sign(block, RSA_NO_PADDING)));
    EXPECT_FALSE(raw.Verify(*signer.key, info, signed_)) << "the whole block is compared, padding included";
  }
}

INSTANTIATE_TEST_SUITE_P(Bits, SignatureSizes, testing::Values(1024, 1025, 2048, 4096));

TEST(Signature, OnlyTheModulusLengthIsTaken) {
  const Signer& signer = SmallSigner();
  Verifier v("PKCS1");
  ByteArray data, signed_;
  for (unsigned char i = 0; signed_.empty() || signed_[0] != 0; ++i) {  // one whose first octet is zero
    data.push_back(i);
    if (data.size() > 100) data.clear();
    signed_ = signer.Sign(data, RSA_PKCS1_PADDING);
  }
  EXPECT_TRUE(v.Verify(*signer.key, data, signed_));
  const Trace trace(1UL << 1);
  EXPECT_FALSE(v.Verify(*signer.key, data, ByteArray(signed_.begin() + 1, signed_.end())));
  ByteArray longer = signed_;
  longer.insert(longer.begin(), 0);
  EXPECT_FALSE(v.Verify(*signer.key, data, longer));
  Verifier raw("None");
  EXPECT_FALSE(raw.Verify(*signer.key, ByteArray(signer.size()), ByteArray())) << "nothing opens to zeros";
  ASSERT_EQ(trace.lines().size(), 3U);
  for (const auto& line : trace.lines()) {
    EXPECT_EQ(line.rfind("1 COpensslSignature::Verify : RSA_public_decrypt - Verification failed with error 0x", 0), 0U)
        << line;
  }
}

TEST(Signature, AnEmptyPayloadMatchesNoData) {
  const Signer& signer = SmallSigner();
  Verifier v("PKCS1");
  const ByteArray empty = signer.Sign({}, RSA_PKCS1_PADDING);
  EXPECT_TRUE(v.Verify(*signer.key, {}, empty));
  EXPECT_FALSE(v.Verify(*signer.key, ByteArray(1), empty));
}

TEST(Signature, StatesAndTheirRefusals) {
  const Signer& signer = SmallSigner();
  const ByteArray data = FromText("data");
  const ByteArray signed_ = signer.Sign(data, RSA_PKCS1_PADDING);
  const auto privateKey = Own(IKey::Create(NewAlgorithm("RSA").get(), "PKCS8", reference::Pkcs8Of(signer.rsa.get())));
  auto* const signingKey = dynamic_cast<IPrivateKey*>(privateKey.get());
  Verifier v("PKCS1");
  Signature& s = *v.signature;
  ByteArray out(2, 9);
  EXPECT_EQ(s.GetAlgorithm(), v.algorithm.get());
  EXPECT_THROWS(4009, 221, "Signature is not initialized", s.Update(data));
  EXPECT_THROWS(4009, 249, "Signature is not initialized", s.Verify(data, signed_));
  EXPECT_THROWS(4009, 299, "Signature is not initialized", s.Verify(signed_));
  EXPECT_THROWS(4009, 143, "Signature is not initialized", s.Sign(data, out));
  EXPECT_THROWS(4009, 183, "Signature is not initialized", s.Sign(out));
  EXPECT_THROWS(4000, 62, "pPrivateKey should not be NULL", s.Init(static_cast<IPrivateKey*>(nullptr)));
  EXPECT_THROWS(4000, 104, "pPublicKey should not be NULL", s.Init(static_cast<IPublicKey*>(nullptr)));
  EXPECT_THROWS(4001, 72, "Not Implemented", s.Init(signingKey));
  EXPECT_EQ(Catch([&] { s.Init(signingKey); }).file, kFile);

  s.Init(signer.key.get());
  EXPECT_THROWS(4009, 110, "Signature is already initialized", s.Init(signer.key.get()));
  EXPECT_THROWS(4009, 68, "Signature is already initialized", s.Init(signingKey));
  EXPECT_THROWS(4000, 149, "Invalid operation", s.Sign(data, out));
  EXPECT_THROWS(4000, 189, "Invalid operation", s.Sign(out));
  EXPECT_EQ(out, ByteArray(2, 9));
  s.Update(FromText("da"));
  EXPECT_FALSE(s.Verify(signed_));
  EXPECT_TRUE(s.Verify(FromText("ta"), signed_));
  EXPECT_TRUE(s.Verify(signed_)) << "nothing is dropped";
  EXPECT_FALSE(s.Verify(FromText("ta"), signed_));
}

TEST(Signature, OptionsAreCheckedBeforeTheKey) {
  TestKey stranger("RSA", ByteArray(1));
  for (const char* padding : {"OAEP", "X_931", "pkcs1"}) {
    Verifier v(padding);
    EXPECT_THROWS(4007, 332, "Unsupported padding", v.Verify(stranger, {}, {}));
  }
  Verifier v("PKCS1");
  EXPECT_THROWS(4002, 340, "Only Openssl RSA Public keys are supported", v.Verify(stranger, {}, {}));
  const auto zero = Own(IRSAPublicKey::Create(v.algorithm.get(), ByteArray(1), ByteArray(1, 3)));
  EXPECT_THROWS(4002, 349, "pRSAPublicKey is NULL", v.Verify(*zero, {}, {}));
}

TEST(Signature, TheFactoryChecksItsArgumentsInOrderAndTakesAnyName) {
  Verifier v("PKCS1");
  EXPECT_NE(Own(Signature::Create(NewAlgorithm("CMAC").get(), v.map.get())), nullptr);
  v.map->SetFIPSMode(true);
  EXPECT_THROWS(4000, 870, "pAlgorithm should not be NULL", Signature::Create(nullptr, v.map.get()));
  EXPECT_THROWS(4000, 0, "Bad Parameters", Signature::Create(v.algorithm.get(), nullptr));
  EXPECT_THROWS(4011, 876, "FIPS Mode is not supported on linux", Signature::Create(v.algorithm.get(), v.map.get()));
}

TEST(Signature, TheTraceOfBothAnswersAndOfAFailure) {
  const Signer& signer = SmallSigner();
  const ByteArray signed_ = signer.Sign(FromText("x"), RSA_PKCS1_PADDING);
  Verifier v("PKCS1");
  v.signature->Init(signer.key.get());
  const auto own = [&](const ByteArray& signature) {
    const Trace trace;
    Catch([&] { v.signature->Verify(signature); });
    return trace.WithoutAddresses();
  };
  EXPECT_EQ(own(signed_),
            (std::vector<std::string>{"8 COpensslSignature::Verify : this=*",
                                      "0 COpensslSignature::Verify : Calling RSA_public_decrypt",
                                      "0 COpensslSignature::Verify : Signature is invalid",
                                      "0 COpensslSignature::Verify: returns false", "16 COpensslSignature::Verify"}));
  v.signature->Update(FromText("x"));
  EXPECT_EQ(own(signed_)[2], "0 COpensslSignature::Verify : Signature is valid");
  EXPECT_EQ(own(signed_)[3], "0 COpensslSignature::Verify: returns true");
  v.map->SetPadding("OAEP");
  EXPECT_EQ(own(signed_), (std::vector<std::string>{"8 COpensslSignature::Verify : this=*",
                                                    "1 COpensslSignature::Verify : Unsupported padding: OAEP",
                                                    "0 COpensslSignature::Verify: returns false",
                                                    "16 COpensslSignature::Verify Returns Unsupported padding"}));
}

}  // namespace
