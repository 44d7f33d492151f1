#include "tavo/framework/signature.h"

#include "support/caught.h"
#include "support/doubles.h"
#include "support/rsa.h"
#include "support/services.h"
#include "support/trace.h"

using namespace Tavo::Framework;

namespace {

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
  const std::pair<ByteArray, std::string> kWrong[] = {
      {Part(signed_, 1, signed_.size()), "0 ("}, {longer, "200006c ("}, {ByteArray(), "0 ("}};
  for (const auto& wrong : kWrong) {
    LeavesTheHostsErrors([&] {
      const Trace trace(1UL << 1);
      EXPECT_FALSE(Verify("PKCS1", *signer.publicKey, data, wrong.first));
      EXPECT_TRUE(trace.Begins(failed + wrong.second) && trace.lines().size() == 1) << wrong.second;
    });
  }
  EXPECT_FALSE(Verify("None", *signer.publicKey, ByteArray(signer.size), {})) << "nothing opens to zeros";
  const ByteArray empty = Signed(signer, {});
  EXPECT_TRUE(Verify("PKCS1", *signer.publicKey, {}, empty)) << "an empty payload";
  EXPECT_FALSE(Verify("PKCS1", *signer.publicKey, ByteArray(1), empty));
}

TEST(Signature, VerifyDropsNothing) {
  const ByteArray signed_ = Signed(SmallPair(), FromText("data"));
  const Made<Signature> v("RSA", "PKCS1");
  v->Init(SmallPair().publicKey.get());
  v->Update(FromText("da"));
  EXPECT_FALSE(v->Verify(signed_));
  EXPECT_TRUE(v->Verify(FromText("ta"), signed_));
  EXPECT_TRUE(v->Verify(signed_));
  EXPECT_FALSE(v->Verify(FromText("ta"), signed_));
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
  EXPECT_EQ(own(signed_), LoadParagraph("traces.txt", "a signature that is not valid"));
  v->Update(FromText("x"));
  EXPECT_EQ(own(signed_)[2], "0 COpensslSignature::Verify : Signature is valid");
  EXPECT_EQ(own(signed_)[3], "0 COpensslSignature::Verify: returns true");
  v.map->SetPadding("OAEP");
  EXPECT_EQ(own(signed_), LoadParagraph("traces.txt", "a signature under another padding"));
}

}  // namespace
