#include "tavo/framework/signature.h"

#include "support/caught.h"
#include "support/doubles.h"
#include "support/rsa.h"
#include "support/services.h"
#include "support/trace.h"

using namespace Tavo::Framework;

namespace {

constexpr const char* kFile = "Sources/openssl/rz.crypto.openssl.Signature";

using reference::Pair;
using reference::SmallPair;

/// A signature object for each call.
bool Verify(const char* padding, IPublicKey& key, const ByteArray& data, const ByteArray& signed_) {
  const Made<Signature> signature("RSA", padding);
  signature->Init(&key);
  return signature->Verify(data, signed_);
}

ByteArray Signed(const Pair& signer, const ByteArray& data, int padding = RSA_PKCS1_PADDING) {
  ByteArray out(signer.size);
  EXPECT_EQ(RSA_private_encrypt(static_cast<int>(data.size()), data.data(), out.data(), signer.rsa.get(), padding),
            static_cast<int>(out.size()));
  return out;
}

class SignatureSizes : public testing::TestWithParam<int> {};

TEST_P(SignatureSizes, ASignatureOfLibcryptoIsValidAndNothingElseIs) {
  const Pair signer(GetParam());
  // The DigestInfo of SHA-256 (RFC 8017, 9.2, note 1) under a signature that hashes for itself.
  const ByteArray message = FromText("the signed text");
  unsigned char hash[32];
  EVP_Digest(message.data(), message.size(), hash, nullptr, EVP_sha256(), nullptr);
  ByteArray info = FromHex("3031300d060960864801650304020105000420");
  info.insert(info.end(), hash, hash + sizeof hash);
  ByteArray signed_(signer.size);
  size_t size = signed_.size();
  const reference::Holder<EVP_MD_CTX, EVP_MD_CTX_free> context(EVP_MD_CTX_new());
  EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, signer.pkey.get());
  ASSERT_EQ(EVP_DigestSign(context.get(), signed_.data(), &size, message.data(), message.size()), 1);

  const auto valid = [&](const ByteArray& data, const ByteArray& signature) {
    return Verify("PKCS1", *signer.publicKey, data, signature);
  };
  EXPECT_TRUE(valid(info, signed_));
  for (const bool front : {true, false}) {
    ByteArray data = info, signature = signed_;
    (front ? data.front() : data.back()) ^= 1;
    (front ? signature.front() : signature.back()) ^= 1;
    EXPECT_FALSE(valid(data, signed_)) << front;
    EXPECT_FALSE(valid(info, signature)) << front;
  }
  ByteArray longer = info;
  longer.push_back(0);
  EXPECT_FALSE(valid(longer, signed_));
  EXPECT_FALSE(valid(Part(info, 0, info.size() - 1), signed_));

  ByteArray block(signer.size, 0x17);
  block[0] = 0;
  for (const char* none : {static_cast<const char*>(nullptr), "None"}) {
    EXPECT_TRUE(Verify(none, *signer.publicKey, block, Signed(signer, block, RSA_NO_PADDING)));
    EXPECT_FALSE(Verify(none, *signer.publicKey, info, signed_)) << "the whole block is compared, padding included";
  }
}

INSTANTIATE_TEST_SUITE_P(Bits, SignatureSizes, testing::Values(1024, 1025, 2048, 4096));

TEST(Signature, OnlyTheModulusLengthIsTaken) {
  const Pair& signer = SmallPair();
  ByteArray data, signed_;
  for (unsigned char i = 0; signed_.empty() || signed_[0] != 0; ++i) {  // one whose first octet is zero
    data.push_back(i);
    if (data.size() > 100) data.clear();
    signed_ = Signed(signer, data);
  }
  EXPECT_TRUE(Verify("PKCS1", *signer.publicKey, data, signed_));
  const std::string failed = "1 COpensslSignature::Verify : RSA_public_decrypt - Verification failed with error 0x";
  ByteArray longer = signed_;
  longer.insert(longer.begin(), 0);
  for (const ByteArray& wrong : {Part(signed_, 1, signed_.size()), longer, ByteArray()}) {
    const Trace trace(1UL << 1);
    EXPECT_FALSE(Verify("PKCS1", *signer.publicKey, data, wrong));
    EXPECT_TRUE(trace.Begins(failed) && trace.lines().size() == 1);
  }
  EXPECT_FALSE(Verify("None", *signer.publicKey, ByteArray(signer.size), {})) << "nothing opens to zeros";
  const ByteArray empty = Signed(signer, {});
  EXPECT_TRUE(Verify("PKCS1", *signer.publicKey, {}, empty)) << "an empty payload";
  EXPECT_FALSE(Verify("PKCS1", *signer.publicKey, ByteArray(1), empty));
}

TEST(Signature, StatesAndTheirRefusals) {
  const Pair& signer = SmallPair();
  const ByteArray data = FromText("data");
  const ByteArray signed_ = Signed(signer, data);
  auto* const signingKey = dynamic_cast<IPrivateKey*>(signer.privateKey.get());
  const Made<Signature> v("RSA", "PKCS1");
  Signature& s = *v.service;
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

  s.Init(signer.publicKey.get());
  EXPECT_THROWS(4009, 110, "Signature is already initialized", s.Init(signer.publicKey.get()));
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
    EXPECT_THROWS(4007, 332, "Unsupported padding", Verify(padding, stranger, {}, {}));
  }
  EXPECT_THROWS(4002, 340, "Only Openssl RSA Public keys are supported", Verify("PKCS1", stranger, {}, {}));
  const auto zero = Own(IRSAPublicKey::Create(NewAlgorithm("RSA").get(), ByteArray(1), ByteArray(1, 3)));
  EXPECT_THROWS(4002, 349, "pRSAPublicKey is NULL", Verify("PKCS1", *zero, {}, {}));
}

TEST(Signature, TheTraceOfBothAnswersAndOfAFailure) {
  const Pair& signer = SmallPair();
  const ByteArray signed_ = Signed(signer, FromText("x"));
  const Made<Signature> v("RSA", "PKCS1");
  v->Init(signer.publicKey.get());
  const auto own = [&](const ByteArray& signature) {
    const Trace trace;
    Catch([&] { v->Verify(signature); });
    return trace.WithoutAddresses();
  };
  EXPECT_EQ(own(signed_),
            (std::vector<std::string>{"8 COpensslSignature::Verify : this=*",
                                      "0 COpensslSignature::Verify : Calling RSA_public_decrypt",
                                      "0 COpensslSignature::Verify : Signature is invalid",
                                      "0 COpensslSignature::Verify: returns false", "16 COpensslSignature::Verify"}));
  v->Update(FromText("x"));
  EXPECT_EQ(own(signed_)[2], "0 COpensslSignature::Verify : Signature is valid");
  EXPECT_EQ(own(signed_)[3], "0 COpensslSignature::Verify: returns true");
  v.map->SetPadding("OAEP");
  EXPECT_EQ(own(signed_), (std::vector<std::string>{"8 COpensslSignature::Verify : this=*",
                                                    "1 COpensslSignature::Verify : Unsupported padding: OAEP",
                                                    "0 COpensslSignature::Verify: returns false",
                                                    "16 COpensslSignature::Verify Returns Unsupported padding"}));
}

}  // namespace
