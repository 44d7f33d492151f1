#ifndef RZ_TESTS_DOUBLES_H
#define RZ_TESTS_DOUBLES_H

#include "tavo/framework/certificate.h"
#include "tavo/framework/exception.h"
#include "tavo/framework/key.h"
#include "tavo/owned.h"

/// A key that says what it is told to: any algorithm (null: none), any format, any bytes. It is a key of every kind
/// that is none of the library's own.
class TestKey : public Tavo::Framework::IPublicKey {
 public:
  TestKey(const char* name, Tavo::Framework::ByteArray raw)
      : algorithm(Tavo::Framework::NewAlgorithm(name)), bytes(std::move(raw)) {}
  Tavo::Framework::IKey* Clone() const override { return nullptr; }
  Tavo::Framework::IAlgorithm* GetAlgorithm() override { return algorithm.get(); }
  Tavo::Framework::SecureString GetFormat() override { return format; }
  void GetEncoded(Tavo::Framework::ByteArray& out) override { out = bytes; }

  Tavo::Framework::Owned<Tavo::Framework::IAlgorithm> algorithm;
  Tavo::Framework::SecureString format = "RAW";
  Tavo::Framework::ByteArray bytes;
};

/// A parameter map whose options cannot be read, as one over a failing store.
class BrokenMap : public Tavo::Framework::ICryptoParserParameterMap {
  using Text = Tavo::Framework::SecureString;
  using Bytes = Tavo::Framework::ByteArray;

 public:
  static bool Fail() {
    throw static_cast<Tavo::Framework::IException*>(
        new Tavo::Framework::CCryptoException("store", 1, "no store", Tavo::Framework::CRYPTO_NOT_SUPPORTED, nullptr));
  }
  void SetTimeout(unsigned long) override {}
  bool GetTimeout(unsigned long&) const override { return false; }
  void SetPadding(const Text&) override {}
  bool GetPadding(Text&) const override { return Fail(); }
  void SetCipherMode(const Text&) override {}
  bool GetCipherMode(Text&) const override { return Fail(); }
  void SetIv(const Bytes&) override {}
  bool GetIv(Bytes&) const override { return Fail(); }
  void SetFIPSMode(bool) override {}
  bool GetFIPSMode() const override { return false; }
  void SetHashAlgoX931(unsigned char) override {}
  bool GetHashAlgoX931(unsigned char&) const override { return false; }
  void SetOaepEncodingParam(const Bytes&) override {}
  bool GetOaepEncodingParam(Bytes&) const override { return Fail(); }
  void SetPkcs1Operation(unsigned char) override {}
  bool GetPkcs1Operation(unsigned char&) const override { return false; }
  void SetKeyPersistence(const Text&) override {}
  bool GetKeyPersistence(Text&) const override { return false; }
  void SetKeyLabel(const Text&) override {}
  bool GetKeyLabel(Text&) const override { return false; }
  void SetComponentIdentifier(const Text&) override {}
  bool GetComponentIdentifier(Text&) const override { return false; }
  void SetComponentName(const Text&) override {}
  bool GetComponentName(Text&) const override { return false; }
};

/// A certificate that has this key, or none that can be read when it is null.
class TestCertificate : public Tavo::Framework::ICertificate {
  using Bytes = Tavo::Framework::ByteArray;

 public:
  explicit TestCertificate(Tavo::Framework::IPublicKey* publicKey) : key(publicKey) {}
  Tavo::Framework::ICertificate* Clone() const override { return nullptr; }
  void GetEncoded(Bytes&) override {}
  Tavo::Framework::SecureString GetFormat() override { return "X509"; }
  Tavo::Framework::IPublicKey* GetPublicKey() override {
    if (key == nullptr) BrokenMap::Fail();
    return key;
  }
  bool VerifySignature(Tavo::Framework::IPublicKey*) override { return false; }
  bool VerifyTrust(Tavo::Framework::ICryptoParserParameterMap*) override { return false; }
  Bytes GetSignature() override { return {}; }
  bool Compare(Tavo::Framework::ICertificate*) override { return false; }

  Tavo::Framework::IPublicKey* key;
};

#endif
