#include "tavo/bertlv.h"

#include <string.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

using Tavo::Framework::AppendBytes;
using Tavo::Framework::AssignBytes;
using Tavo::Framework::ByteArray;
using Tavo::Framework::ByteArrayList;
using Tavo::Framework::SecureString;
using Tavo::Framework::Detail::CopyBytes;

namespace {

using Bytes = std::span<const unsigned char>;

CGctlvException* Malformed(unsigned long line, const char* message) {
  return new CGctlvException("Sources/tavobertlvbuffer", line, message, GCTLV_INVALID_BUFFER_FORMAT, nullptr);
}

/// What is read lies at the front of `rest`, the bytes from there to the end of the buffer. These three functions are
/// the only ones that interpret bytes.
size_t TagSize(Bytes rest) {
  constexpr const char* kMessage = "Invalid format while parsing BER TLV tag";
  if (rest.empty()) throw Malformed(__LINE__, kMessage);
  size_t size = 1;
  if ((rest[0] & 0x1f) != 0x1f) return size;
  do {
    if (size == rest.size()) throw Malformed(__LINE__, kMessage);
  } while ((rest[size++] & 0x80) != 0);
  return size;
}

struct Length {
  size_t octets;  // that it takes itself
  std::uint64_t value;
};

Length ReadLength(Bytes rest) {
  constexpr const char* kMessage = "Invalid format while parsing BER TLV length";
  if (rest.empty()) throw Malformed(__LINE__, kMessage);
  if (rest[0] < 0x80) return {1, rest[0]};
  const size_t count = rest[0] & 0x7f;
  if (count >= rest.size() - 1) throw Malformed(__LINE__, kMessage);
  std::uint64_t value = 0;
  for (const unsigned char octet : rest.subspan(1, count)) value = value << 8 | octet;
  return {1 + count, value};
}

struct Object {
  Bytes tag;
  Bytes value;
  Bytes whole;
};

/// Takes the first object off `rest`.
Object TakeObject(Bytes& rest) {
  const size_t tagSize = TagSize(rest);
  const Length length = ReadLength(rest.subspan(tagSize));
  const size_t header = tagSize + length.octets;
  if (length.value > rest.size() - header) throw Malformed(__LINE__, "Invalid format while updating BER TLV buffer");
  const Object object{rest.first(tagSize), rest.subspan(header, length.value), rest.first(header + length.value)};
  rest = rest.subspan(object.whole.size());
  return object;
}

/// The bytes from `pos` on; none when `pos` is beyond the end.
Bytes From(const ByteArray& buffer, unsigned long pos) { return Bytes(buffer).subspan(std::min(pos, buffer.size())); }

/// The first object with `tag` taken off `rest`; its tag is empty when there is none.
Object Find(Bytes& rest, Bytes tag) {
  while (!rest.empty()) {
    const Object object = TakeObject(rest);
    if (std::ranges::equal(object.tag, tag)) return object;
  }
  return {};
}

void CheckAll(Bytes rest) {
  while (!rest.empty()) TakeObject(rest);
}

ByteArray Copy(Bytes bytes) {
  ByteArray copy;
  AssignBytes(copy, bytes.data(), bytes.size());
  return copy;
}

/// An argument that stays as it is while the buffer changes, even if it was the buffer itself.
class Stable {
 public:
  Stable(const ByteArray& argument, const ByteArray& buffer)
      : m_copy(&argument == &buffer ? Copy(argument) : ByteArray()),
        m_bytes(&argument == &buffer ? m_copy : argument) {}
  Stable(const Stable&) = delete;
  Stable& operator=(const Stable&) = delete;
  const ByteArray& operator*() const { return m_bytes; }

 private:
  const ByteArray m_copy;
  const ByteArray& m_bytes;
};

/// The octets of a length in the shortest form.
struct EncodedLength {
  unsigned char octets[1 + sizeof(std::uint64_t)];
  size_t size;
};

EncodedLength EncodeLength(std::uint64_t value) {
  EncodedLength encoded{{static_cast<unsigned char>(value)}, 1};
  if (value < 0x80) return encoded;
  size_t count = 0;
  for (std::uint64_t left = value; left != 0; left >>= 8) ++count;
  encoded.octets[0] = static_cast<unsigned char>(0x80 | count);
  for (size_t i = 0; i < count; ++i) encoded.octets[count - i] = static_cast<unsigned char>(value >> (8 * i));
  encoded.size = 1 + count;
  return encoded;
}

size_t ObjectSize(const ByteArray& tag, const ByteArray& value) {
  return tag.size() + EncodeLength(value.size()).size + value.size();
}

size_t ObjectSize(const ByteArray& tag, const ByteArrayList& values) {
  size_t size = 0;
  for (const ByteArray& value : values) size += ObjectSize(tag, value);
  return size;
}

/// Makes room for `size` bytes more, so that appending them cannot fail. The capacity at least doubles when it grows.
void MakeRoom(ByteArray& buffer, size_t size) {
  if (size <= buffer.capacity() - buffer.size()) return;
  const size_t doubled = std::min(2 * buffer.capacity(), buffer.max_size());
  ByteArray grown;
  grown.reserve(std::max(buffer.size() + size, doubled));
  AppendBytes(grown, buffer);
  buffer.swap(grown);
}

unsigned char* Put(unsigned char* to, Bytes bytes) {
  CopyBytes(to, bytes.data(), bytes.size());
  return to + bytes.size();
}

/// Appends an object for which there is room.
void Append(ByteArray& buffer, const ByteArray& tag, const ByteArray& value) {
  const EncodedLength length = EncodeLength(value.size());
  const size_t held = buffer.size();
  buffer.resize(held + ObjectSize(tag, value));
  unsigned char* to = Put(buffer.data() + held, tag);
  to = Put(to, {length.octets, length.size});
  Put(to, value);
}

void Append(ByteArray& buffer, const ByteArray& tag, const ByteArrayList& values) {
  for (const ByteArray& value : values) Append(buffer, tag, value);
}

/// Ends the buffer at `size`. What was behind it may have been a key: capacity keeps it until the block is released.
void Cut(ByteArray& buffer, size_t size) {
  if (size == buffer.size()) return;
  explicit_bzero(buffer.data() + size, buffer.size() - size);
  buffer.resize(size);
}

void RemoveAll(ByteArray& buffer, const ByteArray& tag) {
  CheckAll(buffer);
  unsigned char* to = buffer.data();
  for (Bytes rest(buffer); !rest.empty();) {
    const Object object = TakeObject(rest);
    if (std::ranges::equal(object.tag, tag)) continue;
    if (to != object.whole.data()) memmove(to, object.whole.data(), object.whole.size());
    to += object.whole.size();
  }
  Cut(buffer, static_cast<size_t>(to - buffer.data()));
}

}  // namespace

CGctlvException::CGctlvException(SecureString file, unsigned long line, SecureString message, GCTLVExceptionId id,
                                 CGctlvException* inner)
    : CException(std::move(file), line, std::move(message), id, inner) {}

CGctlvException::CGctlvException(CGctlvException& other) = default;
CGctlvException::CGctlvException(const CGctlvException& other) = default;
CGctlvException::~CGctlvException() = default;

SecureString CGctlvException::StringFromId() {
  SecureString text = "ID:";
  text += std::to_string(getID());
  text += getID() == GCTLV_INVALID_BUFFER_FORMAT ? " (GCTLV_INVALID_BUFFER_FORMAT)" : " (Unknown Exception Id)";
  return text;
}

BERTLVBuffer::BERTLVBuffer() = default;
BERTLVBuffer::BERTLVBuffer(const ByteArray& buffer) { SetBuffer(buffer); }
BERTLVBuffer::BERTLVBuffer(const BERTLVBuffer& other) : m_baBuffer(Copy(other.m_baBuffer)) {}
BERTLVBuffer::BERTLVBuffer(BERTLVBuffer&& other) noexcept = default;
BERTLVBuffer& BERTLVBuffer::operator=(const BERTLVBuffer& other) {
  AssignBytes(m_baBuffer, other.m_baBuffer);
  return *this;
}
BERTLVBuffer& BERTLVBuffer::operator=(BERTLVBuffer&& other) noexcept = default;
BERTLVBuffer::~BERTLVBuffer() = default;

void BERTLVBuffer::SetBuffer(const ByteArray& buffer) {
  Cut(m_baBuffer, std::min(m_baBuffer.size(), buffer.size()));
  AssignBytes(m_baBuffer, buffer);
  CheckAll(m_baBuffer);
}

BERTLVBuffer::operator const ByteArray&() const { return m_baBuffer; }

void BERTLVBuffer::ParseTag(unsigned long& pos, ByteArray& tag) const {
  tag.clear();
  const Bytes rest = From(m_baBuffer, pos);
  const size_t size = TagSize(rest);
  AssignBytes(tag, rest.data(), size);
  pos += size;
}

void BERTLVBuffer::ParseLength(unsigned long& pos, unsigned long& length) const {
  const Length read = ReadLength(From(m_baBuffer, pos));
  length = read.value;
  pos += read.octets;
}

bool BERTLVBuffer::IsTagPresent(const ByteArray& tag) const {
  Bytes rest(m_baBuffer);
  return !Find(rest, tag).tag.empty();
}

bool BERTLVBuffer::GetValue(const ByteArray& tag, ByteArray& value) const {
  Bytes rest(m_baBuffer);
  const Object found = Find(rest, tag);
  if (found.tag.empty()) return false;
  AssignBytes(value, found.value.data(), found.value.size());
  return true;
}

void BERTLVBuffer::GetValueList(const ByteArray& tag, ByteArrayList& values) const {
  ByteArrayList found;
  for (Bytes rest(m_baBuffer); !rest.empty();) {
    const Object object = Find(rest, tag);
    if (!object.tag.empty()) found.push_back(Copy(object.value));
  }
  values.splice(values.end(), found);
}

void BERTLVBuffer::ListTags(ByteArrayList& tags) const {
  ByteArrayList found;
  for (Bytes rest(m_baBuffer); !rest.empty();) found.push_back(Copy(TakeObject(rest).tag));
  tags.splice(tags.end(), found);
}

void BERTLVBuffer::AppendValue(const ByteArray& tag, const ByteArray& value) {
  const Stable stableTag(tag, m_baBuffer);
  const Stable stableValue(value, m_baBuffer);
  MakeRoom(m_baBuffer, ObjectSize(*stableTag, *stableValue));
  Append(m_baBuffer, *stableTag, *stableValue);
}

void BERTLVBuffer::AppendValueList(const ByteArray& tag, const ByteArrayList& values) {
  const Stable stableTag(tag, m_baBuffer);
  MakeRoom(m_baBuffer, ObjectSize(*stableTag, values));
  Append(m_baBuffer, *stableTag, values);
}

void BERTLVBuffer::AddValue(const ByteArray& tag, const ByteArray& value) {
  const Stable stableTag(tag, m_baBuffer);
  const Stable stableValue(value, m_baBuffer);
  MakeRoom(m_baBuffer, ObjectSize(*stableTag, *stableValue));
  RemoveAll(m_baBuffer, *stableTag);
  Append(m_baBuffer, *stableTag, *stableValue);
}

void BERTLVBuffer::AddValueList(const ByteArray& tag, const ByteArrayList& values) {
  const Stable stableTag(tag, m_baBuffer);
  MakeRoom(m_baBuffer, ObjectSize(*stableTag, values));
  RemoveAll(m_baBuffer, *stableTag);
  Append(m_baBuffer, *stableTag, values);
}

bool BERTLVBuffer::RemoveValue(const ByteArray& tag) {
  CheckAll(m_baBuffer);
  Bytes rest(m_baBuffer);
  const Bytes removed = Find(rest, tag).whole;
  if (removed.empty()) return false;
  memmove(m_baBuffer.data() + (removed.data() - m_baBuffer.data()), rest.data(), rest.size());
  Cut(m_baBuffer, m_baBuffer.size() - removed.size());
  return true;
}

void BERTLVBuffer::RemoveValueList(const ByteArray& tag) { RemoveAll(m_baBuffer, tag); }
