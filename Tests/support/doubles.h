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
#define RZ_OPTION(Name, T, getter)     \
  void Set##Name(const T&) override {} \
  bool Get##Name(T&) const override { return getter; }
  RZ_OPTION(Padding, Text, Fail())
  RZ_OPTION(CipherMode, Text, Fail())
  RZ_OPTION(Iv, Bytes, Fail())
  RZ_OPTION(OaepEncodingParam, Bytes, Fail())
  RZ_OPTION(KeyPersistence, Text, false)
  RZ_OPTION(KeyLabel, Text, false)
  RZ_OPTION(ComponentIdentifier, Text, false)
  RZ_OPTION(ComponentName, Text, false)
#undef RZ_OPTION
  void SetTimeout(unsigned long) override {}
  bool GetTimeout(unsigned long&) const override { return false; }
  void SetFIPSMode(bool) override {}
  bool GetFIPSMode() const override { return false; }
  void SetHashAlgoX931(unsigned char) override {}
  bool GetHashAlgoX931(unsigned char&) const override { return false; }
  void SetPkcs1Operation(unsigned char) override {}
  bool GetPkcs1Operation(unsigned char&) const override { return false; }
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
