#include "rz/cext.h"

namespace Tavo::Framework {

RZData::RZData(const ByteArray& value) { AssignBytes(m_value.emplace<ByteArray>(), value); }

ByteArray RZData::byteArray() const {
  ByteArray copy;
  if (const auto* bytes = Is<ByteArray>()) AssignBytes(copy, *bytes);
  return copy;
}

SecureString RZData::string() const {
  const auto* text = Is<SecureString>();
  return text != nullptr ? *text : SecureString();
}

namespace {

void Assign(ByteArray& to, const ByteArray& from) { AssignBytes(to, from); }

template <class T>
void Assign(T& to, const T& from) {
  to = from;
}

template <class T>
bool GetAs(const RZData* found, T& value) {
  const T* typed = found != nullptr ? found->Is<T>() : nullptr;
  if (typed != nullptr) Assign(value, *typed);
  return typed != nullptr;
}

}  // namespace

DataMap::DataMap() = default;
DataMap::~DataMap() = default;
void DataMap::EnterProtectedSection() const {}
void DataMap::LeaveProtectedSection() const {}

void DataMap::Add(const SecureString& key, const RZData& value) { m_values.insert_or_assign(key, value); }
void DataMap::Add(const SecureString& key, const ByteArray& value) { m_values.insert_or_assign(key, RZData(value)); }
void DataMap::Add(const SecureString& key, const SecureString& value) { m_values.insert_or_assign(key, RZData(value)); }
void DataMap::Add(const SecureString& key, const SecureStringList& value) {
  m_values.insert_or_assign(key, RZData(value));
}
void DataMap::Add(const SecureString& key, const unsigned char& value) {
  m_values.insert_or_assign(key, RZData(value));
}
void DataMap::Add(const SecureString& key, const unsigned long& value) {
  m_values.insert_or_assign(key, RZData(value));
}

const RZData* DataMap::Find(std::string_view key) const {
  const auto found = m_values.find(key);
  return found != m_values.end() ? &found->second : nullptr;
}

bool DataMap::Get(const SecureString& key, RZData& value) const {
  const RZData* found = Find(key);
  if (found != nullptr) value = *found;
  return found != nullptr;
}
bool DataMap::Get(const SecureString& key, ByteArray& value) const { return GetAs(Find(key), value); }
bool DataMap::Get(const SecureString& key, SecureString& value) const { return GetAs(Find(key), value); }
bool DataMap::Get(const SecureString& key, SecureStringList& value) const { return GetAs(Find(key), value); }
bool DataMap::Get(const SecureString& key, unsigned char& value) const { return GetAs(Find(key), value); }
bool DataMap::Get(const SecureString& key, unsigned long& value) const { return GetAs(Find(key), value); }
bool DataMap::Get(const SecureString& key) const { return Find(key) != nullptr; }

void DataMap::erase(const SecureString& key) { m_values.erase(key); }
void DataMap::clear() { m_values.clear(); }

DataMap2::DataMap2() = default;
DataMap2::~DataMap2() = default;

}  // namespace Tavo::Framework
