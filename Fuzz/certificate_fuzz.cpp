// A certificate: everything that can be asked of it, and the rules. What we accept libcrypto accepts.

#include <openssl/err.h>
#include <openssl/x509.h>

#include <cstdint>
#include <cstdlib>

#include "tavo/owned.h"

using namespace Tavo::Framework;

namespace {

/// Runs a getter; what it throws is one of the documented failures.
template <class Body>
void Ask(Body&& body) {
  try {
    body();
  } catch (IException* exception) {
    const auto owner = Own(exception);
    const auto id = exception->getID();
    if (id != CRYPTO_BAD_PARAM && id != CRYPTO_UNKNOWN_ERROR && id != CRYPTO_INTERNAL_ERROR) std::abort();
  }
}

void AskName(IX500Name* created) {
  const auto name = Own(created);
  ByteArray encoded;
  SecureStringList values;
  name->GetEncoded(encoded);
  Ask([&] { name->GetName(0); });
  Ask([&] { name->GetName(1); });
  const SecureStringList types = name->ListAttributes();
  for (const auto& type : types) {
    if (!name->GetAttributeValue(type, values)) std::abort();
  }
}

void AskNames(IX509Certificate& certificate) {
  const OwnedNames names(certificate.GetSubjectAlternativeNames());
  for (IGeneralName* name : names) {
    ByteArray encoded;
    name->GetEncoded(encoded);
    if (name->GetFormat() == "STRING" && name->GetString().size() != encoded.size()) std::abort();
  }
}

void AskEverything(IX509Certificate& certificate) {
  ByteArray octets;
  Ask([&] { certificate.GetTBSCertificate(octets); });
  Ask([&] { certificate.GetVersion(); });
  Ask([&] { certificate.GetSerialNumber(); });
  Ask([&] { certificate.GetIssuerUniqueID(); });
  Ask([&] { certificate.GetSubjectUniqueID(); });
  Ask([&] { certificate.GetNotBefore(); });
  Ask([&] { certificate.GetNotAfter(); });
  Ask([&] { certificate.CheckValidity(); });
  Ask([&] { certificate.CheckValidity("2024-06-01 12-00-00"); });
  Ask([&] { certificate.GetExtendedKeyUsage(); });
  Ask([&] { certificate.GetPublicKey(); });
  Ask([&] { AskNames(certificate); });
  Ask([&] { AskName(certificate.GetSubjectDN()); });
  Ask([&] { AskName(certificate.GetIssuerDN()); });
  if (certificate.IsDecipherOnly() && certificate.GetKeyUsage().size() < 2) std::abort();
}

/// The rules agree with each other, and a certificate that is none has no priority.
void AskRules(const uint8_t* data, unsigned int size, bool isCertificate) {
  using Rules = ICertificateProperties;
  const int all = Rules::rzGetCertPriorityForSetAsDefault(data, size, false);
  const int ignoring = Rules::rzGetCertPriorityForSetAsDefault(data, size, true);
  bool found = false;
  const bool any = Rules::rzGetEKUFromCertificate(data, size, "1.3.6.1.4.1.311.20.2.2", &found);
  if (ignoring != (all & ~1) || Rules::rzIsCertOKForPKILogon(data, size) != ((all & 4) != 0) ||
      Rules::rzIsCertOKForSetAsDefault(data, size, true) != (ignoring > 0) || ((all & 4) != 0 && !found) ||
      (found && !any) || (!isCertificate && (all != 0 || any))) {
    std::abort();
  }
}

bool LibcryptoAccepts(const uint8_t* data, size_t size) {
  const unsigned char* position = data;
  X509* certificate = d2i_X509(nullptr, &position, static_cast<long>(size));
  ERR_clear_error();
  X509_free(certificate);
  return certificate != nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ByteArray encoded;
  AssignBytes(encoded, data, size);
  Owned<ICertificate> certificate;
  Ask([&] { certificate = Own(ICertificate::Create("X509", encoded)); });
  if (certificate) {
    if (!LibcryptoAccepts(data, size)) std::abort();
    AskEverything(dynamic_cast<IX509Certificate&>(*certificate));
    Ask([&] { Own(certificate->Clone())->GetEncoded(encoded); });
    if (encoded.size() != size) std::abort();
  }
  AskRules(data, static_cast<unsigned int>(size), certificate != nullptr);
  return 0;
}
