#include "rz.crypto.generalname.h"

#include "rz.crypto.trace.h"

namespace Tavo::Framework {

namespace {

constexpr const char* kText = "STRING";
constexpr const char* kOctets = "RAW";

}  // namespace

CGeneralName::CGeneralName(const SecureString& text, const SecureString& kind) : m_sKind(kind), m_sFormat(kText) {
  Traced("CGeneralName::CGeneralName", this,
         [&] { AssignBytes(m_baEncoded, reinterpret_cast<const unsigned char*>(text.data()), text.size()); });
}

CGeneralName::CGeneralName(const ByteArray& encoded, const SecureString& kind, const SecureString& oid)
    : m_sKind(kind), m_sFormat(kOctets), m_sOID(kind == "OtherName" ? oid : SecureString()) {
  Traced("CGeneralName::CGeneralName", this, [&] { AssignBytes(m_baEncoded, encoded); });
}

CGeneralName::~CGeneralName() {
  Traced("CGeneralName::~CGeneralName", this, [] {});
}

SecureString CGeneralName::GetNameType() {
  return Traced("CGeneralName::GetNameType", this, [&] {
    LogDetail("CGeneralName::GetNameType : m_sKind=%s", m_sKind.c_str());
    return m_sKind;
  });
}

SecureString CGeneralName::GetFormat() {
  return Traced("CGeneralName::GetFormat", this, [&] {
    LogDetail("CGeneralName::GetFormat : m_sFormat=%s", m_sFormat.c_str());
    return m_sFormat;
  });
}

void CGeneralName::GetEncoded(ByteArray& encoded) {
  Traced("CGeneralName::GetEncoded", this, [&] {
    rzlogLogBin(kComponent, kDetail, m_baEncoded.data(), m_baEncoded.size(), "CGeneralName::GetEncoded : baEncoded:");
    AssignBytes(encoded, m_baEncoded);
  });
}

SecureString CGeneralName::GetString() {
  return Traced("CGeneralName::GetString", this, [&] {
    if (m_sFormat != kText) return SecureString();
    return SecureString(reinterpret_cast<const char*>(m_baEncoded.data()), m_baEncoded.size());
  });
}

SecureString CGeneralName::GetOID() {
  return Traced("CGeneralName::GetOID", this, [&] {
    LogDetail("CGeneralName::GetOID : m_sOID=%s", m_sOID.c_str());
    return m_sOID;
  });
}

}  // namespace Tavo::Framework
