#include "tavo/framework/certproperties.h"

#include <cstring>
#include <memory>
#include <optional>

#include "rz.crypto.trace.h"
#include "tavo/owned.h"

namespace Tavo::Framework {

namespace {

constexpr const char* kUserPrincipalName = "1.3.6.1.4.1.311.20.2.3";
constexpr const char* kSmartCardLogon = "1.3.6.1.4.1.311.20.2.2";
constexpr const char* kRequestAgent = "1.3.6.1.4.1.311.20.2.1";
constexpr const char* kEncryptingFileSystem = "1.3.6.1.4.1.311.10.3.4";

enum Weight : int { kLogonWeight = 4, kAgentWeight = 2, kFileSystemWeight = 1 };

/// The call of a rule: its name for the trace and the octets that it judges.
struct Request {
  const char* rule;
  const unsigned char* bytes;
  unsigned int length;
};

/// Answered runs a rule between its entry and exit lines. Nothing leaves it: what cannot be answered is "no".
template <class Body>
auto Answered(const char* rule, Body&& body) noexcept -> decltype(body()) {
  LogLine(kEntry, "%s", rule);
  decltype(body()) answer{};
  try {
    answer = body();
  } catch (IException* exception) {
    const auto owner = Own(exception);
  } catch (...) {
    answer = {};  // out of memory
  }
  LogLine(kExit, "%s : ret=(%d)", rule, static_cast<int>(answer));
  return answer;
}

/// Succeeds runs one step of a rule and returns whether it threw nothing; what it threw is logged.
template <class Step>
bool Succeeds(const char* rule, const char* step, Step&& run) {
  try {
    run();
    return true;
  } catch (IException* exception) {
    const auto owner = Own(exception);
    const SecureString text = exception->getMessage();
    LogError("%s : %s failed: %s", rule, step, text.c_str());
    return false;
  }
}

void LogRequest(const Request& request) {
  if (request.bytes != nullptr) {
    LogDetail("%s : pusCertificateValue=%#x", request.rule, Address(request.bytes));
  } else {
    LogStep("%s : pusCertificateValue=NULL!", request.rule);
  }
  if (request.length != 0) {
    LogDetail("%s : unCertificateValueLen=%u", request.rule, request.length);
  } else {
    LogStep("%s : unCertificateValueLen=0!", request.rule);
  }
}

/// The certificate, or null when the octets are none.
Owned<IX509Certificate> Open(const Request& request) {
  Owned<IX509Certificate> certificate;
  Succeeds(request.rule, "ICertificate::Create(CERT_FORMAT_X509)", [&] {
    ByteArray encoded;
    if (request.bytes != nullptr) AssignBytes(encoded, request.bytes, request.length);
    auto created = Own(ICertificate::Create("X509", encoded));
    certificate.reset(dynamic_cast<IX509Certificate*>(created.get()));
    if (certificate) created.release();  // NOLINT(bugprone-unused-return-value): both point at the same certificate
  });
  return certificate;
}

bool HasUserPrincipalName(IX509Certificate& certificate) {
  const OwnedNames names(certificate.GetSubjectAlternativeNames());
  for (IGeneralName* name : names) {
    if (name->GetNameType() == "OtherName" && name->GetOID() == kUserPrincipalName) return true;
  }
  return false;
}

bool ReadPurposes(const char* rule, IX509Certificate& certificate, SecureStringList& purposes) {
  return Succeeds(rule, "getting extented key usage", [&] { purposes = certificate.GetExtendedKeyUsage(); });
}

/// What the rules about defaults and logon look at.
struct Facts {
  bool userPrincipalName = false;
  bool digitalSignature = false;
  bool smartCardLogon = false;
  bool requestAgent = false;
  bool encryptingFileSystem = false;

  bool Logon() const { return userPrincipalName && digitalSignature && smartCardLogon; }
};

/// The facts of a certificate, in the order in which they are read, or nothing when one of them cannot be read.
std::optional<Facts> Examine(const Request& request) {
  LogRequest(request);
  const auto certificate = Open(request);
  Facts facts;
  SecureStringList purposes;
  if (!certificate || !Succeeds(request.rule, "getting subject alternative names",
                                [&] { facts.userPrincipalName = HasUserPrincipalName(*certificate); })) {
    return std::nullopt;
  }
  facts.digitalSignature = certificate->IsDigitalSignature();
  if (!ReadPurposes(request.rule, *certificate, purposes)) return std::nullopt;
  for (const SecureString& purpose : purposes) {
    facts.smartCardLogon |= purpose == kSmartCardLogon;
    facts.requestAgent |= purpose == kRequestAgent;
    facts.encryptingFileSystem |= purpose == kEncryptingFileSystem;
  }
  return facts;
}

int Priority(const Request& request, bool ignoreFileSystem) {
  const auto facts = Examine(request);
  if (!facts) return 0;
  return (facts->Logon() ? kLogonWeight : 0) + (facts->requestAgent ? kAgentWeight : 0) +
         (facts->encryptingFileSystem && !ignoreFileSystem ? kFileSystemWeight : 0);
}

}  // namespace

bool ICertificateProperties::rzIsCertOKForPKILogon(const unsigned char* pusCertificateValue,
                                                   unsigned int unCertificateValueLen) {
  static constexpr const char* kRule = "ICertificateProperties::rzIsCertOKForPKILogon";
  return Answered(kRule, [&] {
    const auto facts = Examine({kRule, pusCertificateValue, unCertificateValueLen});
    return facts && facts->Logon();
  });
}

bool ICertificateProperties::rzIsCertOKForSetAsDefault(const unsigned char* pusCertificateValue,
                                                       unsigned int unCertificateValueLen, bool bIgnoreEFS) {
  static constexpr const char* kRule = "ICertificateProperties::rzIsCertOKForSetAsDefault";
  return Answered(kRule, [&] { return Priority({kRule, pusCertificateValue, unCertificateValueLen}, bIgnoreEFS) > 0; });
}

int ICertificateProperties::rzGetCertPriorityForSetAsDefault(const unsigned char* pusCertificateValue,
                                                             unsigned int unCertificateValueLen, bool bIgnoreEFS) {
  static constexpr const char* kRule = "ICertificateProperties::rzGetCertPriorityForSetAsDefault";
  return Answered(kRule, [&] { return Priority({kRule, pusCertificateValue, unCertificateValueLen}, bIgnoreEFS); });
}

bool ICertificateProperties::rzGetEKUFromCertificate(const unsigned char* pusCertificateValue,
                                                     unsigned int unCertificateValueLen, const char* szOID,
                                                     bool* pbFound) {
  static constexpr const char* kRule = "ICertificateProperties::rzGetEKUFromCertificate";
  return Answered(kRule, [&] {
    const Request request{kRule, pusCertificateValue, unCertificateValueLen};
    LogRequest(request);
    if (szOID != nullptr) {
      LogDetail("%s : szOID=%#x", kRule, Address(szOID));
    } else {
      LogStep("%s : szOID=NULL!", kRule);
    }
    if (pbFound != nullptr) *pbFound = false;
    const auto certificate = Open(request);
    SecureStringList purposes;
    if (!certificate || !ReadPurposes(kRule, *certificate, purposes)) return false;
    for (const SecureString& purpose : purposes) {
      if (pbFound != nullptr && szOID != nullptr && std::strcmp(purpose.c_str(), szOID) == 0) *pbFound = true;
    }
    return !purposes.empty();
  });
}

}  // namespace Tavo::Framework
