#include "rz.crypto.algorithm.h"

#include <array>
#include <iterator>
#include <typeinfo>

#include "rz.crypto.trace.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/common/rz.crypto.algorithm"};

constexpr const char* kNoOID = "Unknown OID";

constexpr AlgorithmEntry kRegistry[] = {
    {"RSA", "1.2.840.113549.1.1.1", "asymmetric cipher / signature", true},
    {"DES", "1.3.14.3.2.7", "block cipher", true},
    {"3DES", "1.2.840.113549.3.7", "block cipher", true},
    {"AES", "2.16.840.1.101.3.4.1.2", "block cipher", true},
    {"SHA1", "1.3.14.3.2.26", "digest", true},
    {"SHA224", "2.16.840.1.101.3.4.2.4", "digest", true},
    {"SHA256", "2.16.840.1.101.3.4.2.1", "digest", true},
    {"SHA384", "2.16.840.1.101.3.4.2.2", "digest", true},
    {"SHA512", "2.16.840.1.101.3.4.2.3", "digest", true},
    {"MD2", "1.2.840.113549.2.2", "digest", true},
    {"MD4", "1.2.840.113549.2.4", "digest", true},
    {"MD5", "1.2.840.113549.2.5", "digest", true},
    {"HMAC_SHA1", "1.2.840.113549.2.7", "MAC", true},
    {"HMAC_SHA224", "1.2.840.113549.2.8", "MAC", true},
    {"HMAC_SHA256", "1.2.840.113549.2.9", "MAC", true},
    {"HMAC_SHA384", "1.2.840.113549.2.10", "MAC", true},
    {"HMAC_SHA512", "1.2.840.113549.2.11", "MAC", true},
    {"ECDH_P224", "1.3.132.0.33", "key agreement curve", true},
    {"ECDH_P256", "1.2.840.10045.3.1.7", "key agreement curve", true},
    {"ECDH_P384", "1.3.132.0.34", "key agreement curve", true},
    {"ECDH_P521", "1.3.132.0.35", "key agreement curve", true},
    {"CMAC", kNoOID, "MAC", false},
    {"FIPS186DSARNG", kNoOID, "random generator", false},
    {"800_56A_KDF", kNoOID, "key derivation", false},
};

/// One column of the registry with the lengths of its texts: most rows differ in length from what is looked for.
template <const char* AlgorithmEntry::*kColumn>
constexpr auto Column() {
  std::array<std::string_view, std::size(kRegistry)> texts;
  for (std::size_t i = 0; i < texts.size(); ++i) texts[i] = kRegistry[i].*kColumn;
  return texts;
}

constexpr auto kNames = Column<&AlgorithmEntry::friendlyName>();
constexpr auto kOIDs = Column<&AlgorithmEntry::oid>();

constexpr std::string_view kEncodedKey = "AlgorithmParametersEncoded";

/// A copy of what the creator of an algorithm passed. Null stands for empty parameters of this library, which nearly
/// all are: GetParameters makes them when somebody asks for them.
IAlgorithmParameters* CloneOf(const IAlgorithmParameters* parameters) {
  if (parameters == nullptr) throw kModule.Error(__LINE__, "pParameters should not be NULL", CRYPTO_BAD_PARAM);
  if (typeid(*parameters) == typeid(CAlgorithmParameters) &&
      static_cast<const CAlgorithmParameters*>(parameters)->Encoded() == nullptr) {
    return nullptr;
  }
  IAlgorithmParameters* clone = parameters->Clone();
  if (clone == nullptr) throw kModule.Error(__LINE__, "pParameters should not be NULL", CRYPTO_BAD_PARAM);
  return clone;
}

}  // namespace

const AlgorithmEntry* ListAlgorithms(std::size_t& count) {
  count = std::size(kRegistry);
  return kRegistry;
}

const AlgorithmEntry* FindAlgorithmByName(const SecureString& name) {
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (kNames[i] == std::string_view(name)) return &kRegistry[i];
  }
  return nullptr;
}

const AlgorithmEntry* FindAlgorithmByOID(const SecureString& oid) {
  for (std::size_t i = 0; i < kOIDs.size(); ++i) {
    if (kRegistry[i].fromOID && kOIDs[i] == std::string_view(oid)) return &kRegistry[i];
  }
  return nullptr;
}

IAlgorithmParameters* CAlgorithmParameters::Clone() const {
  auto copy = std::make_unique<CAlgorithmParameters>();
  if (const ByteArray* encoded = Encoded()) copy->SetEncoded(*encoded);
  return copy.release();
}

void CAlgorithmParameters::SetEncoded(const ByteArray& encoded) { Add(SecureString(kEncodedKey), encoded); }

const ByteArray* CAlgorithmParameters::Encoded() const {
  const RZData* found = Find(kEncodedKey);
  return found != nullptr ? found->Is<ByteArray>() : nullptr;
}

bool CAlgorithmParameters::GetEncoded(ByteArray& encoded) const {
  const ByteArray* bytes = Encoded();
  if (bytes != nullptr) AssignBytes(encoded, *bytes);
  return bytes != nullptr;
}

CAlgorithm::CAlgorithm(const SecureString& oid, const SecureString& friendlyName, IAlgorithmParameters* parameters)
    : m_sOID(oid), m_sFriendlyName(friendlyName), m_pParameters(CloneOf(parameters)) {
  LogLine(kEntry, "CAlgorithm::CAlgorithm : this=%#x", Address(this));
}

CAlgorithm::CAlgorithm(const CAlgorithm& other)
    : IAlgorithm(),
      m_sOID(other.m_sOID),
      m_sFriendlyName(other.m_sFriendlyName),
      m_pParameters(other.m_pParameters ? CloneOf(other.m_pParameters.get()) : nullptr) {
  LogLine(kEntry, "CAlgorithm::CAlgorithm");
}

CAlgorithm::~CAlgorithm() { LogLine(kEntry, "CAlgorithm::~CAlgorithm : this=%#x", Address(this)); }

IAlgorithm* CAlgorithm::Clone() const {
  return Traced("CAlgorithm::Clone", this, [&] { return new CAlgorithm(*this); });
}

// The three getters have always traced under the name of Clone, and readers of traces know it.

SecureString CAlgorithm::GetOID() {
  return Traced("CAlgorithm::Clone", [&] {
    LogDetail("CAlgorithm::Clone : m_sOID=%s", m_sOID.c_str());
    return m_sOID;
  });
}

SecureString CAlgorithm::GetFriendlyName() {
  return Traced("CAlgorithm::Clone", [&] {
    LogDetail("CAlgorithm::Clone : m_sFriendlyName=%s", m_sFriendlyName.c_str());
    return m_sFriendlyName;
  });
}

IAlgorithmParameters* CAlgorithm::GetParameters() {
  return Traced("CAlgorithm::Clone", [&] {
    if (!m_pParameters) m_pParameters = std::make_unique<CAlgorithmParameters>();
    LogDetail("CAlgorithm::Clone : m_pParameters=%#x", Address(m_pParameters.get()));
    return m_pParameters.get();
  });
}

}  // namespace Tavo::Framework
