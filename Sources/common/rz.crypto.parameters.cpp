#include "rz.crypto.parameters.h"

namespace Tavo::Framework {

namespace {

/// Option ties a key to the one type that is stored under it.
template <class T>
struct Option {
  std::string_view key;

  void Set(DataMap& map, const T& value) const { map.Add(SecureString(key), value); }

  bool Get(const DataMap& map, T& value) const {
    const RZData* found = map.Find(key);
    const T* typed = found != nullptr ? found->Is<T>() : nullptr;
    if (typed == nullptr) return false;
    if constexpr (std::is_same_v<T, ByteArray>) {
      AssignBytes(value, *typed);
    } else {
      value = *typed;
    }
    return true;
  }
};

using Text = Option<SecureString>;
using Bytes = Option<ByteArray>;
using Number = Option<unsigned long>;
using Octet = Option<unsigned char>;
using Texts = Option<SecureStringList>;

bool GetBool(const Octet& option, const DataMap& map, bool& value) {
  unsigned char stored = 0;
  if (!option.Get(map, stored)) return false;
  value = stored != 0;
  return true;
}

void SetBool(const Octet& option, DataMap& map, bool value) { option.Set(map, value ? 1 : 0); }

constexpr Number kTimeout{"CryptoParameterTimeout"};
constexpr Text kPadding{"CryptoParameterPadding"};
constexpr Text kCipherMode{"CryptoParameterCipherMode"};
constexpr Bytes kIv{"CryptoParameterIV"};
constexpr Octet kFIPSMode{"CryptoParameterFIPSMode"};
constexpr Octet kHashAlgoX931{"CryptoParameterHashAlgoPaddingMode"};
constexpr Bytes kOaepEncodingParam{"CryptoParameterOAEPEncodingParamMode"};
constexpr Octet kPkcs1Operation{"CryptoParameterPkcs1OperationMode"};
constexpr Text kKeyPersistence{"CryptoParameterTypePersistence"};
constexpr Text kKeyLabel{"CryptoParameterKeyLabel"};
constexpr Text kComponentIdentifier{"CryptoParameterComponentIdentifier"};
constexpr Text kComponentName{"CryptoParameterComponentName"};

constexpr Texts kFilterOID{"CryptoFilterOID"};
constexpr Octet kFilterCritical{"CryptoFilterCritical"};
constexpr Octet kFilterPrivateKey{"CryptoFilterContainsPrivateKey"};
constexpr Text kFilterLabel{"CryptoFilterLabel"};
constexpr Text kFilterComponentIdentifier{"CryptoFilterComponentIdentifier"};
constexpr Text kFilterComponentName{"CryptoFilterComponentName"};

}  // namespace

void CCryptoParameterMap::SetTimeout(unsigned long timeout) { kTimeout.Set(*this, timeout); }
bool CCryptoParameterMap::GetTimeout(unsigned long& timeout) const { return kTimeout.Get(*this, timeout); }
void CCryptoParameterMap::SetPadding(const SecureString& padding) { kPadding.Set(*this, padding); }
bool CCryptoParameterMap::GetPadding(SecureString& padding) const { return kPadding.Get(*this, padding); }
void CCryptoParameterMap::SetCipherMode(const SecureString& mode) { kCipherMode.Set(*this, mode); }
bool CCryptoParameterMap::GetCipherMode(SecureString& mode) const { return kCipherMode.Get(*this, mode); }
void CCryptoParameterMap::SetIv(const ByteArray& iv) { kIv.Set(*this, iv); }
bool CCryptoParameterMap::GetIv(ByteArray& iv) const { return kIv.Get(*this, iv); }
void CCryptoParameterMap::SetFIPSMode(bool on) {
  if (on) {
    kFIPSMode.Set(*this, 1);
  } else {
    erase(SecureString(kFIPSMode.key));
  }
}
bool CCryptoParameterMap::GetFIPSMode() const { return Find(kFIPSMode.key) != nullptr; }
void CCryptoParameterMap::SetHashAlgoX931(unsigned char identifier) { kHashAlgoX931.Set(*this, identifier); }
bool CCryptoParameterMap::GetHashAlgoX931(unsigned char& identifier) const {
  return kHashAlgoX931.Get(*this, identifier);
}
void CCryptoParameterMap::SetOaepEncodingParam(const ByteArray& label) { kOaepEncodingParam.Set(*this, label); }
bool CCryptoParameterMap::GetOaepEncodingParam(ByteArray& label) const { return kOaepEncodingParam.Get(*this, label); }
void CCryptoParameterMap::SetPkcs1Operation(unsigned char operation) { kPkcs1Operation.Set(*this, operation); }
bool CCryptoParameterMap::GetPkcs1Operation(unsigned char& operation) const {
  return kPkcs1Operation.Get(*this, operation);
}
void CCryptoParameterMap::SetKeyPersistence(const SecureString& persistence) {
  kKeyPersistence.Set(*this, persistence);
}
bool CCryptoParameterMap::GetKeyPersistence(SecureString& persistence) const {
  return kKeyPersistence.Get(*this, persistence);
}
void CCryptoParameterMap::SetKeyLabel(const SecureString& label) { kKeyLabel.Set(*this, label); }
bool CCryptoParameterMap::GetKeyLabel(SecureString& label) const { return kKeyLabel.Get(*this, label); }
void CCryptoParameterMap::SetComponentIdentifier(const SecureString& identifier) {
  kComponentIdentifier.Set(*this, identifier);
}
bool CCryptoParameterMap::GetComponentIdentifier(SecureString& identifier) const {
  return kComponentIdentifier.Get(*this, identifier);
}
void CCryptoParameterMap::SetComponentName(const SecureString& name) { kComponentName.Set(*this, name); }
bool CCryptoParameterMap::GetComponentName(SecureString& name) const { return kComponentName.Get(*this, name); }

void CCryptoFilter::AddOIDCriteria(const SecureStringList& oids) { kFilterOID.Set(*this, oids); }
bool CCryptoFilter::GetOIDCriteria(SecureStringList& oids) const { return kFilterOID.Get(*this, oids); }
void CCryptoFilter::SetCriticalCriterion(bool critical) { SetBool(kFilterCritical, *this, critical); }
bool CCryptoFilter::GetCriticalCriterion(bool& critical) const { return GetBool(kFilterCritical, *this, critical); }
void CCryptoFilter::SetPrivateKeyCriterion(bool hasPrivateKey) { SetBool(kFilterPrivateKey, *this, hasPrivateKey); }
bool CCryptoFilter::GetPrivateKeyCriterion(bool& hasPrivateKey) const {
  return GetBool(kFilterPrivateKey, *this, hasPrivateKey);
}
void CCryptoFilter::SetLabel(const SecureString& label) { kFilterLabel.Set(*this, label); }
bool CCryptoFilter::GetLabel(SecureString& label) const { return kFilterLabel.Get(*this, label); }
void CCryptoFilter::SetComponentIdentifier(const SecureString& identifier) {
  kFilterComponentIdentifier.Set(*this, identifier);
}
bool CCryptoFilter::GetComponentIdentifier(SecureString& identifier) const {
  return kFilterComponentIdentifier.Get(*this, identifier);
}
void CCryptoFilter::SetComponentName(const SecureString& name) { kFilterComponentName.Set(*this, name); }
bool CCryptoFilter::GetComponentName(SecureString& name) const { return kFilterComponentName.Get(*this, name); }

}  // namespace Tavo::Framework
