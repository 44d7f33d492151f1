#include "rz.crypto.asner.x500name.h"

#include "rz.crypto.asner.namewriter.h"

namespace Tavo::Framework {

namespace {

constexpr Module kModule{"Sources/asner/rz.crypto.asner.x500name"};

constexpr unsigned long kRfc4514Order = 0;
constexpr unsigned long kEncodedOrder = 1;

/// Attributes walks the attributes of a name in encoded order: visit(index of the relative name, type, value).
template <class Visit>
void Attributes(const DerSteps& check, const CSName* name, Visit&& visit) {
  CSRDNSequence* sequence = nullptr;
  check("CSName_GetRdnSequence", CSName_GetRdnSequence(name, &sequence));
  std::uint64_t count = 0;
  check("CSRDNSequence_GetItemCount", CSRDNSequence_GetItemCount(sequence, &count));
  for (std::uint64_t i = 0; i < count; ++i) {
    CSRelativeDistinguishedName* relative = nullptr;
    check("CSRDNSequence_GetItemAt", CSRDNSequence_GetItemAt(sequence, i, &relative));
    std::uint64_t parts = 0;
    check("CSRelativeDistinguishedName_GetItemCount", CSRelativeDistinguishedName_GetItemCount(relative, &parts));
    for (std::uint64_t k = 0; k < parts; ++k) {
      CSAttributeTypeAndValue* attribute = nullptr;
      CSASNOID* type = nullptr;
      CSASNAny* value = nullptr;
      check("CSRelativeDistinguishedName_GetItemAt", CSRelativeDistinguishedName_GetItemAt(relative, k, &attribute));
      check("CSAttributeTypeAndValue_GetType", CSAttributeTypeAndValue_GetType(attribute, &type));
      check("CSAttributeTypeAndValue_GetValue", CSAttributeTypeAndValue_GetValue(attribute, &value));
      visit(i, type, value);
    }
  }
}

/// The relative names as text, in encoded order.
SecureStringList RelativeNames(const DerSteps& check, const CSName* name) {
  SecureStringList names;
  std::uint64_t last = 0;
  Attributes(check, name, [&](std::uint64_t index, const CSASNOID* type, const CSASNAny* value) {
    if (names.empty() || index != last) {
      names.emplace_back();
    } else {
      names.back() += '+';
    }
    last = index;
    AppendAttribute(check, type, value, names.back());
  });
  return names;
}

}  // namespace

CAsnerX500Name::CAsnerX500Name(const ByteArray& encoded) {
  static constexpr const char* kOperation = "CAsnerX500Name::CAsnerX500Name";
  Traced(kOperation, this, [&] {
    std::uint64_t length = encoded.size();
    AssignBytes(m_baEncoded, encoded);
    DerSteps(kModule, kOperation)("CSName_DERDecode",
                                  CSName_DERDecodeTLV(encoded.data(), &length, 0, 0, 0, 0, Out(m_pName)));
  });
}

CAsnerX500Name::~CAsnerX500Name() {
  Traced("CAsnerX500Name::~CAsnerX500Name", this, [&] { m_pName.reset(); });
}

void CAsnerX500Name::GetEncoded(ByteArray& encoded) {
  Traced("CAsnerX500Name::GetEncoded", this, [&] { AssignBytes(encoded, m_baEncoded); });
}

SecureString CAsnerX500Name::GetName(unsigned long format) {
  static constexpr const char* kOperation = "CAsnerX500Name::GetName";
  return Traced(kOperation, this, [&] {
    if (format != kRfc4514Order && format != kEncodedOrder) {
      LogError("CAsnerX500Name::GetName : Unknown name format: %lu", format);
      throw kModule.Error(__LINE__, "Unknown name format", CRYPTO_BAD_PARAM);
    }
    SecureStringList names = RelativeNames(DerSteps(kModule, kOperation), m_pName.get());
    if (format == kRfc4514Order) names.reverse();
    SecureString text;
    for (const SecureString& name : names) {
      if (!text.empty()) text += ',';
      text += name;
    }
    return text;
  });
}

SecureStringList CAsnerX500Name::ListAttributes() {
  static constexpr const char* kOperation = "CAsnerX500Name::ListAttributes";
  return Traced(kOperation, this, [&] {
    const DerSteps check(kModule, kOperation);
    SecureStringList types;
    Attributes(check, m_pName.get(), [&](std::uint64_t, const CSASNOID* type, const CSASNAny*) {
      types.push_back(DottedText(check, "CSASNOID_ToString", type));
    });
    return types;
  });
}

bool CAsnerX500Name::GetAttributeValue(SecureString oid, SecureStringList& values) {
  static constexpr const char* kOperation = "CAsnerX500Name::GetAttributeValue";
  return Traced(kOperation, this, [&] {
    const DerSteps check(kModule, kOperation);
    SecureStringList found;
    Attributes(check, m_pName.get(), [&](std::uint64_t, const CSASNOID* type, const CSASNAny* value) {
      if (DottedText(check, "CSASNOID_ToString", type) == oid) found.push_back(Contents(check, value));
    });
    const bool any = !found.empty();
    values.splice(values.end(), found);
    return any;
  });
}

}  // namespace Tavo::Framework
