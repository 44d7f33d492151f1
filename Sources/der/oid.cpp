#include "tavo/der/primitive.h"

#include "catalogue.h"
#include "text.h"

using namespace Tavo::Der;

namespace {

constexpr uint64_t kArc = sizeof(uint32_t);  // octets of a stored arc

const CSASNOID& Object(const void* object) { return *static_cast<const CSASNOID*>(object); }

// A new OID with room for `capacity` arcs in the same block; null when out of memory.
CSASNOID* NewOid(uint64_t capacity) {
  if (capacity > (PTRDIFF_MAX - sizeof(CSASNOID)) / kArc) return nullptr;
  auto* oid = static_cast<CSASNOID*>(Allocate(sizeof(CSASNOID) + capacity * kArc));
  if (oid != nullptr) *oid = {reinterpret_cast<uint32_t*>(oid + 1), 0, capacity};
  return oid;
}

void ReleaseArcs(CSASNOID* oid) {
  if (oid->arcs != reinterpret_cast<uint32_t*>(oid + 1)) Release(oid->arcs);
}

// ---- leaf operations ----

// The first octet holds two arcs; each later arc ends at an octet without the high bit and wraps at 32 bits.
Code Read(uint8_t, Input contents, void*& object) {
  uint64_t count = contents.remaining == 0 ? 0 : 2;
  for (uint64_t i = 1; i < contents.remaining; ++i) count += contents.position[i] < 0x80 ? 1 : 0;
  CSASNOID* oid = NewOid(count);
  if (oid == nullptr) return CSResult_OUT_OF_MEMORY;
  object = oid;
  oid->count = count;
  if (count == 0) return CSResult_OK;
  const uint8_t first = contents.position[0];
  uint32_t* arc = oid->arcs;
  *arc++ = first < 80 ? first / 40 : 2;
  *arc++ = first < 80 ? first % 40 : first - 80;
  uint32_t value = 0;
  for (uint64_t i = 1; i < contents.remaining; ++i) {
    const uint8_t octet = contents.position[i];
    value = value << 7 | (octet & 0x7F);
    if (octet >= 0x80) continue;
    *arc++ = value;
    value = 0;
  }
  return CSResult_OK;
}

uint64_t ArcOctets(uint32_t arc) {
  uint64_t octets = 1;
  for (; arc > 0x7F; arc >>= 7) ++octets;
  return octets;
}

Code Size(const void* object, uint64_t& octets) {
  const CSASNOID& oid = Object(object);
  octets = oid.count == 0 ? 0 : 1;
  for (uint64_t i = 2; i < oid.count; ++i) octets += ArcOctets(oid.arcs[i]);
  return CSResult_OK;
}

// First octet: 40 for each unit of the first arc, plus the low eight bits of the second.
uint8_t* Write(const void* object, uint8_t* end) {
  const CSASNOID& oid = Object(object);
  for (uint64_t i = oid.count; i-- > 2;) {
    uint32_t arc = oid.arcs[i];
    *--end = arc & 0x7F;
    while (arc >>= 7) *--end = static_cast<uint8_t>(0x80 | (arc & 0x7F));
  }
  if (oid.count != 0) *--end = static_cast<uint8_t>(oid.arcs[0] * 40 + (oid.count > 1 ? oid.arcs[1] : 0));
  return end;
}

Code Copy(const void* from, void*& to) {
  const CSASNOID& oid = Object(from);
  CSASNOID* copy = NewOid(oid.count);
  if (copy == nullptr) return CSResult_OUT_OF_MEMORY;
  CopyOctets(copy->arcs, oid.arcs, oid.count * kArc);
  copy->count = oid.count;
  to = copy;
  return CSResult_OK;
}

bool Equal(const void* a, const void* b) {
  return Object(a).count == Object(b).count && SameOctets(Object(a).arcs, Object(b).arcs, Object(a).count * kArc);
}

void Destroy(void* object) {
  ReleaseArcs(static_cast<CSASNOID*>(object));
  Release(object);
}

// ---- text ----

// One number at the start of `text`, moved past it. False without a digit or above 32 bits.
bool ReadArc(const char*& text, uint32_t& arc) {
  if (!IsDigit(*text)) return false;
  uint64_t value = 0;
  for (; IsDigit(*text); ++text) {
    value = value * 10 + static_cast<uint64_t>(*text - '0');
    if (value > UINT32_MAX) return false;
  }
  arc = static_cast<uint32_t>(value);
  return true;
}

Code AppendText(CSASNOID* oid, const char* text) {
  while (IsDigit(*text)) {
    uint32_t arc = 0;
    if (!ReadArc(text, arc) || CSASNOID_AddArc(oid, arc) != 0) return CSResult_BAD_FORMAT;
    if (text[0] == '.' && IsDigit(text[1])) ++text;
  }
  return CSResult_OK;
}

// With the NUL.
uint64_t TextLength(const CSASNOID& oid) {
  uint64_t length = 0;
  for (uint64_t i = 0; i < oid.count; ++i) length += DecimalDigits(oid.arcs[i]) + 1;
  return length == 0 ? 1 : length;
}

template <class Character>
void WriteText(const CSASNOID& oid, Character* out) {
  *out = 0;
  for (uint64_t i = 0; i < oid.count; ++i) {
    Character* end = out + DecimalDigits(oid.arcs[i]);
    WriteDecimal(oid.arcs[i], end);
    *end = static_cast<Character>(i + 1 < oid.count ? '.' : 0);
    out = end + 1;
  }
}

template <class Character>
Code ToText(const CSASNOID* oid, Character* buffer, uint64_t capacity) {
  if (oid == nullptr || buffer == nullptr) return CSResult_BAD_PARAMETER;
  if (capacity < TextLength(*oid)) return CSResult_BUFFER_TOO_SMALL;
  WriteText(*oid, buffer);
  return CSResult_OK;
}

template <class Character>
Code NewText(const CSASNOID* oid, Character** text) {
  if (text == nullptr) return CSResult_BAD_PARAMETER;
  *text = nullptr;
  if (oid == nullptr) return CSResult_BAD_PARAMETER;
  auto* copy = static_cast<Character*>(Allocate(TextLength(*oid) * sizeof(Character)));
  if (copy == nullptr) return CSResult_OUT_OF_MEMORY;
  WriteText(*oid, copy);
  *text = copy;
  return CSResult_OK;
}

}  // namespace

const Leaf Tavo::Der::kOid = {Read, Size, Write, Copy, Equal, Destroy};

uint32_t CSASNOID_FromString(const char* text, CSASNOID** out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  *out = nullptr;
  if (text == nullptr) return CSResult_BAD_PARAMETER;
  CSASNOID* oid = NewOid(0);
  if (oid == nullptr) return CSResult_OUT_OF_MEMORY;
  if (const Code code = AppendText(oid, text); code != 0) {
    Destroy(oid);
    return code;
  }
  *out = oid;
  return CSResult_OK;
}

uint32_t CSASNOID_ToString(const CSASNOID* oid, char** text) { return NewText(oid, text); }

uint32_t CSASNOID_ToWString(const CSASNOID* oid, wchar_t** text) { return NewText(oid, text); }

uint32_t CSASNOID_ToStringEx(const CSASNOID* oid, char* buffer, uint64_t capacity) {
  return ToText(oid, buffer, capacity);
}

uint32_t CSASNOID_ToWStringEx(const CSASNOID* oid, wchar_t* buffer, uint64_t capacity) {
  return ToText(oid, buffer, capacity);
}

uint32_t CSASNOID_GetStringLength(const CSASNOID* oid, uint64_t* length) {
  if (oid == nullptr || length == nullptr) return CSResult_BAD_PARAMETER;
  *length = TextLength(*oid);
  return CSResult_OK;
}

uint32_t CSASNOID_AddArc(CSASNOID* oid, uint32_t arc) {
  constexpr uint64_t kFirstCapacity = 8;
  if (oid == nullptr) return CSResult_BAD_PARAMETER;
  if (oid->count == oid->capacity) {
    const uint64_t capacity = oid->capacity == 0 ? kFirstCapacity : oid->capacity * 2;
    auto* arcs = capacity > PTRDIFF_MAX / kArc ? nullptr : static_cast<uint32_t*>(Allocate(capacity * kArc));
    if (arcs == nullptr) return CSResult_OUT_OF_MEMORY;
    CopyOctets(arcs, oid->arcs, oid->count * kArc);
    ReleaseArcs(oid);
    oid->arcs = arcs;
    oid->capacity = capacity;
  }
  oid->arcs[oid->count++] = arc;
  return CSResult_OK;
}

uint32_t CSASNOID_MatchesString(const CSASNOID* oid, const char* text, uint8_t* match) {
  if (oid == nullptr || text == nullptr || match == nullptr) return CSResult_BAD_PARAMETER;
  *match = 0;
  for (uint64_t i = 0; i < oid->count; ++i) {
    uint32_t arc = 0;
    if (!ReadArc(text, arc) || arc != oid->arcs[i]) return CSResult_OK;
    if (text[0] != '.') continue;
    if (!IsDigit(*++text)) return CSResult_OK;
  }
  *match = *text == 0 ? 1 : 0;
  return CSResult_OK;
}
