// Every operation of the BER-TLV buffer against a list of objects that was read without it.

#include <cstdint>
#include <cstdlib>
#include <map>
#include <vector>

#include "tavo/bertlv.h"
#include "tavo/owned.h"

using namespace Tavo::Framework;

namespace {

struct Object {
  ByteArray tag;
  ByteArray value;
  ByteArray whole;
};

void Require(bool condition) {
  if (!condition) std::abort();
}

/// Whether `body` returned; a failure must be the buffer's own.
template <class Body>
bool Accepted(Body&& body) {
  try {
    body();
    return true;
  } catch (CGctlvException* exception) {
    Require(Own(exception)->getID() == GCTLV_INVALID_BUFFER_FORMAT);
    return false;
  }
}

/// Reads octet by octet; false when the objects do not fill the input exactly.
bool ReadObjects(const uint8_t* data, size_t size, std::vector<Object>& objects) {
  size_t at = 0;
  while (at < size) {
    const size_t begin = at;
    const bool more = (data[at++] & 0x1f) == 0x1f;
    if (more) {
      while (at < size && data[at] >= 0x80) ++at;
      if (at++ >= size) return false;
    }
    const size_t tagEnd = at;
    if (at >= size) return false;
    uint64_t length = data[at++];
    if (length >= 0x80) {
      size_t count = length - 0x80;
      if (at + count >= size) return false;
      for (length = 0; count > 0; --count) length = length * 256 + data[at++];
    }
    if (length > size - at) return false;
    const ByteArray tag(data + begin, data + tagEnd);
    objects.push_back({tag, ByteArray(data + at, data + at + length), ByteArray(data + begin, data + at + length)});
    at += length;
  }
  return true;
}

void CheckParsersAt(const BERTLVBuffer& buffer, size_t size, unsigned long start) {
  ByteArray tag;
  unsigned long length = 0;
  unsigned long pos = start;
  if (Accepted([&] { buffer.ParseTag(pos, tag); })) {
    Require(pos == start + tag.size() && pos <= size && !tag.empty());
  } else {
    Require(pos == start && tag.empty());
  }
  pos = start;
  if (Accepted([&] { buffer.ParseLength(pos, length); })) {
    Require(pos > start && pos <= size);
  } else {
    Require(pos == start && length == 0);
  }
}

void CheckLookups(const BERTLVBuffer& buffer, const std::vector<Object>& objects) {
  ByteArrayList tags;
  buffer.ListTags(tags);
  Require(tags.size() == objects.size());
  std::map<ByteArray, ByteArrayList> values;
  for (const Object& object : objects) {
    Require(tags.front() == object.tag);
    tags.pop_front();
    values[object.tag].push_back(object.value);
  }
  for (const auto& [tag, expected] : values) {
    ByteArrayList list;
    ByteArray first;
    buffer.GetValueList(tag, list);
    Require(list == expected && buffer.IsTagPresent(tag) && buffer.GetValue(tag, first) && first == expected.front());
  }
}

/// The same objects appended one by one read back as the same objects.
void CheckRebuilt(const std::vector<Object>& objects) {
  BERTLVBuffer rebuilt;
  for (const Object& object : objects) rebuilt.AppendValue(object.tag, object.value);
  rebuilt.SetBuffer(rebuilt);
  CheckLookups(rebuilt, objects);
}

void CheckRemoval(const BERTLVBuffer& buffer, const std::vector<Object>& objects, const ByteArray& tag) {
  ByteArray allButFirst;
  ByteArray others;
  bool found = false;
  for (const Object& object : objects) {
    const bool match = object.tag == tag;
    if (!match || found) AppendBytes(allButFirst, object.whole);
    if (!match) AppendBytes(others, object.whole);
    found = found || match;
  }
  BERTLVBuffer copy(buffer);
  Require(copy.RemoveValue(tag) == found && static_cast<const ByteArray&>(copy) == allButFirst);
  copy = buffer;
  copy.RemoveValueList(tag);
  Require(static_cast<const ByteArray&>(copy) == others);
  copy = buffer;
  copy.AddValue(tag, copy);
  BERTLVBuffer expected;
  expected.AppendValue(tag, buffer);
  AppendBytes(others, expected);
  Require(static_cast<const ByteArray&>(copy) == others);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const ByteArray input(data, data + size);
  std::vector<Object> objects;
  const bool wellFormed = ReadObjects(data, size, objects);
  BERTLVBuffer buffer;
  Require(Accepted([&] { buffer.SetBuffer(input); }) == wellFormed);
  Require(static_cast<const ByteArray&>(buffer) == input);
  for (unsigned long pos = 0; pos <= size + 1 && pos < 8; ++pos) CheckParsersAt(buffer, size, pos);
  CheckParsersAt(buffer, size, ~0UL);
  if (wellFormed) {
    CheckLookups(buffer, objects);
    CheckRebuilt(objects);
    const size_t tried = objects.size() < 8 ? objects.size() : 8;
    for (size_t i = 0; i < tried; ++i) CheckRemoval(buffer, objects, objects[i].tag);
    CheckRemoval(buffer, objects, {0x5f, 0xff, 0x7f});
  } else {
    const ByteArray tag = objects.empty() ? input : objects.front().tag;
    Require(!Accepted([&] { buffer.RemoveValueList(tag); }) && !Accepted([&] { buffer.RemoveValue(tag); }));
    Require(static_cast<const ByteArray&>(buffer) == input);
  }
  return 0;
}
