#ifndef RZCRYPTO_CERT_VIEW_H
#define RZCRYPTO_CERT_VIEW_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tavo/der_owned.h"
#include "tavo/owned.h"

namespace rzcrypto {

using Tavo::Framework::ByteArray;

/// A moment as people read it, "2049-12-31 23:59:59 UTC", and in seconds since 1970.
struct Moment {
  std::string text;
  std::int64_t seconds;
};

/// Where now lies: in the certificate's period of validity or not.
enum class Period { kValid, kExpired, kNotYetValid, kUnreadable };
/// PeriodName returns "valid", "expired", "not yet valid" or "unreadable".
const char* PeriodName(Period period);

/// One subject alternative name.
struct AlternativeName {
  std::string kind;        // as IGeneralName has it, and "directoryName"
  std::string oid;         // of an other-name
  std::string text;        // in UTF-8; empty when the value is no text
  std::string stringType;  // "UTF8String", ... of a decoded other-name
  ByteArray octets;        // what stands in the certificate
};

struct KeyFacts {
  std::string algorithm;  // "RSA", "EC P-256", or the dotted identifier
  std::string oid;
  unsigned long bits = 0;     // 0 when unknown
  unsigned int exponent = 0;  // of an RSA key; 0 when it does not fit
};

/// CertificateView reads what a card administrator looks for out of the library's certificate object. Where the object
/// has no answer (the type of a string, the algorithm of a key that is not RSA, directory names), it looks into the
/// certificate with the DER library. Every function throws the library's Error when its part is broken.
class CertificateView {
 public:
  explicit CertificateView(const ByteArray& encoded);

  /// The names as text; 0 for the order of RFC 4514, 1 for that of the encoding.
  std::string Subject(unsigned long order) const;
  std::string Issuer(unsigned long order) const;
  /// The serial number in hex, with "-" in front of a negative one.
  std::string Serial() const;
  /// 1, 2 or 3.
  int Version() const;
  Moment NotBefore() const;
  Moment NotAfter() const;
  Period State() const;
  /// The names of the key usage bits that are set.
  std::vector<std::string> KeyUsage() const;
  /// What smart-card logon asks for.
  bool HasPrincipalName() const;
  bool HasDigitalSignature() const { return m_certificate->IsDigitalSignature(); }
  bool HasLogonPurpose() const;
  /// Whether an extended key usage that can be read has the encrypting file system.
  bool HasFileEncryption() const;
  /// The dotted extended key usages.
  std::vector<std::string> Purposes() const;
  std::vector<AlternativeName> AlternativeNames() const;
  KeyFacts Key() const;
  /// The hash of the whole certificate in upper-case hex with colons.
  std::string Fingerprint(const char* algorithm) const;
  std::string Pem() const;

 private:
  const CSTBSCertificate* Record() const;
  bool HasPurpose(const char* oid) const;
  Moment Read(bool end) const;

  const ByteArray& m_encoded;
  Tavo::Framework::Owned<Tavo::Framework::IX509Certificate> m_certificate;
  mutable Tavo::Framework::DerOwned<CSCertificate_Delete> m_record;
};

}  // namespace rzcrypto

#endif
