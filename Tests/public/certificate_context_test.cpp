#include <gtest/gtest.h>

#include "support/caught.h"
#include "support/certificates.h"
#include "support/trace.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

/// A private key that counts its living copies, and whose Clone can fail or be a key of another kind.
class CountedKey : public IPrivateKey {
 public:
  enum Kind { kGood, kFails, kOther };
  explicit CountedKey(int& living, Kind kind = kGood) : m_living(living), m_kind(kind) { ++m_living; }
  CountedKey(const CountedKey&) = delete;
  CountedKey& operator=(const CountedKey&) = delete;
  ~CountedKey() override { --m_living; }
  IKey* Clone() const override {
    if (m_kind == kOther) return IKey::Create(NewAlgorithm("AES").get(), "RAW", ByteArray(16));
    if (m_kind == kGood) return new CountedKey(m_living);
    throw static_cast<IException*>(new CCryptoException("test", 1, "no clone", CRYPTO_INVALID_KEY, nullptr));
  }
  IAlgorithm* GetAlgorithm() override { return nullptr; }
  SecureString GetFormat() override { return "test"; }
  void GetEncoded(ByteArray& encoded) override { encoded.clear(); }

 private:
  int& m_living;
  Kind m_kind;
};

Owned<ICertificate> NewCertificate() { return Own(ICertificate::Create("X509", MakeCertificate(LogonRecipe()))); }

TEST(CertificateContext, OwnsClonesOfBoth) {
  int living = 0;
  {
    auto certificate = NewCertificate();
    auto key = std::make_unique<CountedKey>(living);
    const auto context = Own(ICertContext::Create(certificate.get(), key.get()));
    EXPECT_EQ(living, 2);
    EXPECT_NE(context->GetCertificate(), certificate.get());
    ByteArray expected;
    certificate->GetEncoded(expected);
    key.reset();
    certificate.reset();

    const auto clone = Own(context->Clone());
    EXPECT_EQ(living, 2);
    EXPECT_NE(clone->GetPrivateKey(), context->GetPrivateKey());
    ByteArray encoded;
    clone->GetCertificate()->GetEncoded(encoded);
    EXPECT_EQ(encoded, expected);
  }
  EXPECT_EQ(living, 0);
}

TEST(CertificateContext, EitherMayBeMissing) {
  int living = 0;
  const auto certificate = NewCertificate();
  CountedKey key(living);
  const auto alone = Own(ICertContext::Create(certificate.get()));
  EXPECT_NE(alone->GetCertificate(), nullptr);
  EXPECT_EQ(alone->GetPrivateKey(), nullptr);
  EXPECT_EQ(Own(alone->Clone())->GetPrivateKey(), nullptr);

  {
    const Trace trace;
    alone->GetPrivateKey();
    EXPECT_EQ(trace.lines()[1], "0 CCertContext::GetPrivateKey : m_pPrivateKey=0");
  }
  const Trace trace(1UL << 2);
  EXPECT_EQ(Own(ICertContext::Create(certificate.get(), nullptr))->GetPrivateKey(), nullptr);
  const auto empty = Own(ICertContext::Create(nullptr, &key));
  EXPECT_EQ(empty->GetCertificate(), nullptr);
  EXPECT_EQ(empty->GetPrivateKey(), nullptr);
  EXPECT_EQ(Own(empty->Clone())->GetCertificate(), nullptr);
  EXPECT_EQ(trace.lines(), LoadParagraph("traces.txt", "a context without key and without certificate"));
  EXPECT_EQ(living, 1);
}

TEST(CertificateContext, AFailingCloneIsWrapped) {
  int living = 0;
  const auto certificate = NewCertificate();
  CountedKey failing(living, CountedKey::kFails), wrong(living, CountedKey::kOther);
  const Caught caught = Catch([&] { ICertContext::Create(certificate.get(), &failing); });
  EXPECT_EQ(caught.id, 4008UL);
  EXPECT_EQ(caught.line, 1322UL);
  EXPECT_EQ(caught.message, "new CCertContext() failed");
  EXPECT_EQ(caught.file, "Sources/rz.crypto.linux.API");
  EXPECT_EQ(caught.causes, "4008 no clone");
  EXPECT_EQ(Catch([&] { ICertContext::Create(certificate.get(), &wrong); }).causes, "4004 IPrivateKey::Clone() failed");
}

}  // namespace
