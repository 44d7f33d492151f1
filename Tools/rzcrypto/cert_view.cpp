#include "cert_view.h"

#include <time.h>

#include <algorithm>

#include "cert_names.h"
#include "encoding.h"
#include "oid_names.h"
#include "outcome.h"
#include "tavo/framework/rsa.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

std::string Text(const SecureString& text) { return {text.data(), text.size()}; }

Owned<IX509Certificate> Open(const ByteArray& encoded) {
  return Checked([&] {
    auto created = Own(ICertificate::Create("X509", encoded));
    Owned<IX509Certificate> certificate(dynamic_cast<IX509Certificate*>(created.get()));
    if (!certificate) throw Failure{Exit::kInside, "the library returned another kind of certificate"};
    created.release();  // NOLINT(bugprone-unused-return-value): both point at the same certificate
    return certificate;
  });
}

/// What the DER library found wrong where the certificate object had been content.
void Require(std::uint32_t code, const char* what) {
  if (code != CSResult_OK) throw Failure{Exit::kBadInput, std::string(what) + " cannot be read"};
}

std::string NameText(Owned<IX500Name> name, unsigned long order) {
  return Checked([&] { return Text(name->GetName(order)); });
}

std::string MomentText(std::int64_t seconds) {
  const time_t moment = seconds;
  struct tm broken {};
  char text[64];
  const bool done =
      gmtime_r(&moment, &broken) != nullptr && strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &broken) != 0;
  return done ? text : std::to_string(seconds) + " s";
}

/// The seconds of a time in the certificate object's form, or nothing when it is of another form.
std::optional<std::int64_t> ParseUtc(const std::string& text) {
  struct tm broken {};
  const char* end = strptime(text.c_str(), "%Y-%m-%d %H-%M-%S", &broken);
  if (end == nullptr || *end != '\0') return std::nullopt;
  return timegm(&broken);
}

/// The offset from UTC that a time was written with, in seconds; 0 for one without.
std::int64_t OffsetOf(const CSTime* time) {
  const std::int32_t* hours = nullptr;
  const std::uint8_t* minutes = nullptr;
  CSASNUTCTime* utc = nullptr;
  CSASNGeneralizedTime* general = nullptr;
  if (CSTime_GetUtcTime(time, &utc) == CSResult_OK) {
    CSASNUTCTime_GetTimeData(utc, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &hours, &minutes);
  } else if (CSTime_GetGeneralTime(time, &general) == CSResult_OK) {
    CSASNGeneralizedTime_GetTimeData(general, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                     &hours, &minutes);
  }
  if (hours == nullptr) return 0;
  const std::int64_t sign = *hours < 0 ? -1 : 1;
  return *hours * 3600LL + (minutes != nullptr ? sign * *minutes * 60 : 0);
}

struct UsageBit {
  const char* name;
  bool (IX509Certificate::*is)();
};

constexpr UsageBit kUsageBits[] = {
    {"digitalSignature", &IX509Certificate::IsDigitalSignature},
    {"nonRepudiation", &IX509Certificate::IsNonRepudiation},
    {"keyEncipherment", &IX509Certificate::IsKeyEncipherment},
    {"dataEncipherment", &IX509Certificate::IsDataEncipherment},
    {"keyAgreement", &IX509Certificate::IsKeyAgreement},
    {"keyCertSign", &IX509Certificate::IsKeyCertSign},
    {"cRLSign", &IX509Certificate::IsCRLSign},
    {"encipherOnly", &IX509Certificate::IsEncipherOnly},
    {"decipherOnly", &IX509Certificate::IsDecipherOnly},
};

/// The bits of an RSA modulus that comes least significant byte first.
unsigned long CountBits(const ByteArray& modulus) {
  for (size_t i = modulus.size(); i > 0; --i) {
    if (modulus[i - 1] == 0) continue;
    unsigned long bits = 8 * (i - 1);
    for (unsigned int octet = modulus[i - 1]; octet != 0; octet >>= 1) ++bits;
    return bits;
  }
  return 0;
}

void ReadRsaKey(IX509Certificate& certificate, KeyFacts& facts) {
  Checked([&] {
    auto* key = dynamic_cast<IRSAPublicKey*>(certificate.GetPublicKey());
    if (key == nullptr) throw Failure{Exit::kInside, "the library returned another kind of key"};
    ByteArray modulus;
    key->GetModulus(modulus);
    facts.bits = CountBits(modulus);
  });
  try {
    facts.exponent = Checked([&] { return dynamic_cast<IRSAPublicKey&>(*certificate.GetPublicKey()).GetExponent(); });
  } catch (const Error&) {
    facts.exponent = 0;  // more than 32 bits
  }
}

std::string Dotted(const CSASNOID* oid) {
  std::uint64_t length = 0;
  Require(CSASNOID_GetStringLength(oid, &length), "an object identifier");
  std::string text(length, '\0');
  Require(CSASNOID_ToStringEx(oid, text.data(), length), "an object identifier");
  text.resize(length - 1);
  return text;
}

/// The curve of an elliptic-curve key, dotted; empty when its parameters name none.
std::string CurveOid(const CSAlgorithmIdentifier* algorithm) {
  CSASNAny* parameters = nullptr;
  if (CSAlgorithmIdentifier_GetParameters(algorithm, &parameters) != CSResult_OK) return "";
  const std::uint8_t* octets = nullptr;
  std::uint64_t length = 0;
  std::uint8_t isOid = 0;
  DerOwned<CSASNOID_Delete> curve;
  if (CSASNAny_TagMatches(parameters, 6, 0, 0, &isOid) != CSResult_OK || isOid == 0) return "";
  Require(CSASNAny_GetBytes(parameters, &octets, &length), "the curve");
  Require(CSASNOID_DERDecodeTLV(octets, &length, 2, Out(curve)), "the curve");
  return Dotted(curve.get());
}

}  // namespace

const char* PeriodName(Period period) {
  static constexpr const char* kNames[] = {"valid", "expired", "not yet valid", "unreadable"};
  return kNames[static_cast<int>(period)];
}

CertificateView::CertificateView(const ByteArray& encoded) : m_encoded(encoded), m_certificate(Open(encoded)) {}

const CSTBSCertificate* CertificateView::Record() const {
  std::uint64_t length = m_encoded.size();
  if (!m_record) Require(CSCertificate_DERDecodeTLV(m_encoded.data(), &length, 0, Out(m_record)), "the certificate");
  CSTBSCertificate* tbs = nullptr;
  Require(CSCertificate_GetTbsCertificate(m_record.get(), &tbs), "the certificate");
  return tbs;
}

std::string CertificateView::Subject(unsigned long order) const {
  return NameText(Checked([&] { return Own(m_certificate->GetSubjectDN()); }), order);
}

std::string CertificateView::Issuer(unsigned long order) const {
  return NameText(Checked([&] { return Own(m_certificate->GetIssuerDN()); }), order);
}

std::string CertificateView::Serial() const {
  ByteArray octets = Checked([&] { return m_certificate->GetSerialNumber(); });
  const bool negative = !octets.empty() && octets.front() >= 0x80;
  if (negative) {  // two's complement
    for (unsigned char& octet : octets) octet = static_cast<unsigned char>(~octet);
    for (size_t i = octets.size(); i > 0 && ++octets[i - 1] == 0; --i) continue;
  }
  const auto first = std::find_if(octets.begin(), octets.end(), [](unsigned char octet) { return octet != 0; });
  const std::string digits = Hex(ByteArray(first, octets.end()));
  return (negative ? "-" : "") + (digits.empty() ? "00" : digits);
}

int CertificateView::Version() const {
  std::uint8_t present = 0;
  Require(CSTBSCertificate_VersionIsPresent(Record(), &present), "the version");
  return present == 0 ? 1 : Checked([&] { return m_certificate->GetVersion(); }) + 1;
}

Moment CertificateView::Read(bool end) const {
  std::optional<std::int64_t> seconds;
  try {
    seconds =
        ParseUtc(Text(Checked([&] { return end ? m_certificate->GetNotAfter() : m_certificate->GetNotBefore(); })));
  } catch (const Error&) {
    seconds.reset();  // a time with an offset or a fraction
  }
  if (!seconds) {
    CSValidity* validity = nullptr;
    CSTime* time = nullptr;
    time_t moment = 0;
    Require(CSTBSCertificate_GetValidity(Record(), &validity), "the period of validity");
    Require(end ? CSValidity_GetNotAfter(validity, &time) : CSValidity_GetNotBefore(validity, &time), "a time");
    Require(CSTime_ToTime_t(time, &moment), "a time");
    seconds = moment - 2 * OffsetOf(time);  // the conversion adds the offset; UTC has it taken away
  }
  return {MomentText(*seconds), *seconds};
}

Moment CertificateView::NotBefore() const { return Read(false); }
Moment CertificateView::NotAfter() const { return Read(true); }

Period CertificateView::State() const {
  try {
    if (Checked([&] { return m_certificate->CheckValidity(); })) return Period::kValid;
    return time(nullptr) <= NotBefore().seconds ? Period::kNotYetValid : Period::kExpired;
  } catch (const Error&) {
    return Period::kUnreadable;
  }
}

std::vector<std::string> CertificateView::KeyUsage() const {
  std::vector<std::string> names;
  for (const UsageBit& bit : kUsageBits) {
    if (Checked([&] { return (m_certificate.get()->*bit.is)(); })) names.emplace_back(bit.name);
  }
  return names;
}

std::vector<std::string> CertificateView::Purposes() const {
  std::vector<std::string> purposes;
  for (const auto& oid : Checked([&] { return m_certificate->GetExtendedKeyUsage(); })) purposes.push_back(Text(oid));
  return purposes;
}

bool CertificateView::HasPrincipalName() const {
  const OwnedNames names(Checked([&] { return m_certificate->GetSubjectAlternativeNames(); }));
  return std::any_of(names.begin(), names.end(), [](IGeneralName* name) {
    return Checked([&] { return name->GetNameType() == "OtherName" && name->GetOID() == "1.3.6.1.4.1.311.20.2.3"; });
  });
}

bool CertificateView::HasPurpose(const char* oid) const {
  const auto purposes = Checked([&] { return m_certificate->GetExtendedKeyUsage(); });
  return std::find(purposes.begin(), purposes.end(), oid) != purposes.end();
}

bool CertificateView::HasLogonPurpose() const { return HasPurpose("1.3.6.1.4.1.311.20.2.2"); }

bool CertificateView::HasFileEncryption() const {
  try {
    return HasPurpose("1.3.6.1.4.1.311.10.3.4");
  } catch (const Error&) {
    return false;
  }
}

std::vector<AlternativeName> CertificateView::AlternativeNames() const {
  const OwnedNames names(Checked([&] { return m_certificate->GetSubjectAlternativeNames(); }));
  return ReadAlternativeNames(names, Record());
}

KeyFacts CertificateView::Key() const {
  CSSubjectPublicKeyInfo* info = nullptr;
  CSAlgorithmIdentifier* algorithm = nullptr;
  CSASNOID* oid = nullptr;
  Require(CSTBSCertificate_GetSubjectPublicKeyInfo(Record(), &info), "the public key");
  Require(CSSubjectPublicKeyInfo_GetAlgorithm(info, &algorithm), "the public key");
  Require(CSAlgorithmIdentifier_GetAlgorithm(algorithm, &oid), "the public key");
  KeyFacts facts;
  facts.oid = Dotted(oid);
  facts.algorithm = OidName(facts.oid).empty() ? facts.oid : OidName(facts.oid);
  facts.bits = CurveBits(facts.oid);
  if (facts.algorithm == "EC") {
    const std::string curve = CurveOid(algorithm);
    facts.algorithm += " " + std::string(OidName(curve).empty() ? curve : OidName(curve));
    facts.bits = CurveBits(curve);
  } else if (facts.algorithm.rfind("RSA", 0) == 0) {
    ReadRsaKey(*m_certificate, facts);
  }
  return facts;
}

std::string CertificateView::Fingerprint(const char* algorithm) const {
  return Checked([&] {
    const auto digest = Own(MessageDigest::Create(NewAlgorithm(algorithm).get(), NewParameters().get()));
    ByteArray hash;
    digest->Digest(m_encoded, hash);
    std::string text;
    for (const char c : Hex(hash)) {
      if (text.size() % 3 == 2) text += ':';
      text += static_cast<char>(c >= 'a' ? c - 'a' + 'A' : c);
    }
    return text;
  });
}

std::string CertificateView::Pem() const {
  const std::string base64 = Base64(m_encoded);
  std::string pem = "-----BEGIN CERTIFICATE-----\n";
  for (size_t i = 0; i < base64.size(); i += 64) pem += base64.substr(i, 64) + "\n";
  return pem + "-----END CERTIFICATE-----\n";
}

}  // namespace rzcrypto
