// Memory of the DER library: any allocation may fail, nothing leaks, and secrets are gone before a block is released.
#include "support/der_types.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>

#include "der/memory.h"
#include "support/der_vectors.h"

using Tavo::Framework::ByteArray;

namespace {

constexpr uint64_t kNever = UINT64_MAX;
constexpr uint8_t kSecret = 0xA5;

// What the functions below do and saw; they take the place of the library's own.
struct Memory {
  bool watched = false;
  uint64_t failing = kNever;  // the allocation that fails, counted from 0
  uint64_t made = 0;
  bool secretReleased = false;
  std::map<void*, uint64_t> live;  // blocks and their sizes
  uint64_t held = 0, most = 0;     // octets in them now, and at the peak
  uint64_t octets = 0;             // ever asked for

  void Watch(uint64_t fail) {
    watched = true;
    failing = fail;
    made = 0;
    secretReleased = false;
    live.clear();
    held = most = octets = 0;
  }
} memory;

constexpr uint64_t kPlenty = uint64_t{1} << 40;  // octets; more is never there

void* New(uint64_t octets, bool zeroed) {
  if (octets > kPlenty || (memory.watched && memory.made++ == memory.failing)) return nullptr;
  void* block = calloc(1, octets != 0 ? octets : 1);
  if (!zeroed) memset(block, 0xEE, octets);
  if (memory.watched) {
    memory.live[block] = octets;
    memory.octets += octets;
    memory.most = std::max(memory.most, memory.held += octets);
  }
  return block;
}

}  // namespace

void* Tavo::Der::Allocate(uint64_t octets) { return New(octets, false); }
void* Tavo::Der::AllocateZeroed(uint64_t octets) { return New(octets, true); }
void Tavo::Der::Release(void* block) {
  const auto found = memory.live.find(block);
  if (found != memory.live.end()) {
    const std::string_view contents(static_cast<const char*>(block), found->second);
    memory.secretReleased |= contents.find(std::string(8, static_cast<char>(kSecret))) != contents.npos;
    memory.held -= found->second;
    memory.live.erase(found);
  }
  free(block);
}

namespace {

// Runs `make` with the first, the second, ... allocation failing, until none fails. While one fails, it must return
// CSResult_OUT_OF_MEMORY and leave a null object and nothing that it allocated.
template <class T, class Make, class Drop>
void FailEach(const std::string& what, Make make, Drop drop) {
  SCOPED_TRACE(what);
  for (uint64_t k = 0;; ++k) {
    memory.Watch(k);
    T object = nullptr;
    const uint32_t code = make(object);
    EXPECT_EQ(code == 0, object != nullptr);
    if (object != nullptr) drop(object);
    memory.watched = false;
    EXPECT_TRUE(memory.live.empty()) << memory.live.size() << " blocks left after failing allocation " << k;
    EXPECT_EQ(code, memory.made <= k ? 0u : uint32_t{CSResult_OUT_OF_MEMORY}) << "allocation " << k;
    EXPECT_GT(memory.made, 0u) << "nothing was allocated";
    if (memory.made <= k) return;
  }
}

class DerMemory : public testing::TestWithParam<DerVector> {};

TEST_P(DerMemory, EveryAllocationMayFail) {
  const ByteArray& in = GetParam().in;
  if (GetParam().code != 0) return;
  const DerType& type = DerTypeNamed(GetParam().type);
  void* object = nullptr;
  uint64_t size = in.size();
  ASSERT_EQ(type.decode(in.data(), &size, 0, 0, object), 0u);

  FailEach<void*>("create", type.create, type.destroy);
  const auto decode = [&](void*& out) {
    out = &size;
    uint64_t length = in.size();
    const uint32_t code = type.decode(in.data(), &length, 0, 0, out);
    EXPECT_TRUE(code == 0 || length == in.size());
    return code;
  };
  FailEach<void*>("decode", decode, type.destroy);
  FailEach<void*>(
      "copy", [&](void*& out) { return type.copy(object, out = &size); }, type.destroy);
  const auto encode = [&](uint8_t*& out) {
    uint64_t length = 99;
    const uint32_t code = type.encode(object, &out, &length, true, true, true);
    EXPECT_TRUE(code == 0 || length == 99);
    return code;
  };
  FailEach<uint8_t*>("encode", encode, Tavo::Der::Release);
  const auto finish = [&](void*& out) {
    CSASNDecodeContext* context = nullptr;
    uint32_t code = CSASNUtil_DERDecodeStart(&context);
    if (code != 0) return code;
    int32_t surplus = 0;
    for (size_t i = 0; i < in.size() && (code == 0 || code == CSResult_INCOMPLETE_DATA); ++i) {
      code = CSASNUtil_DERDecodeAddData(context, &in[i], 1, &surplus);
    }
    if (code == 0) code = type.finish(context, out);
    CSASNUtil_DeleteDecodeContext(&context);
    return code;
  };
  FailEach<void*>("context", finish, type.destroy);
  type.destroy(object);
}

INSTANTIATE_TEST_SUITE_P(X690, DerMemory, testing::ValuesIn(LoadDerVectors()));

template <class T>
T* Pointee(uint32_t (*drop)(T**));

TEST(DerMemoryOf, PrimitivesFromValuesAndToText) {
  const uint8_t bytes[] = {1, 2, 3};
  CSASNOID* oid = nullptr;
  CSASNOctetString* string = nullptr;
  ASSERT_EQ(CSASNOID_FromString("1.2.840.113549", &oid), 0u);
  ASSERT_EQ(CSASNIA5String_FromBytes(bytes, 3, &string), 0u);
  const auto each = [](auto make, auto drop) {
    using Object = decltype(Pointee(drop));
    FailEach<Object>(
        "new", [&](Object& out) { return make(&out); }, [&](Object& gone) { drop(&gone); });
  };
  each([](auto out) { return CSASNInteger_FromUnsigned32(7, out); }, CSASNInteger_Delete);
  each([](auto out) { return CSASNInteger_FromSigned32(-7, out); }, CSASNInteger_Delete);
  each([&](auto out) { return CSASNOctetString_FromBytes(bytes, 3, out); }, CSASNOctetString_Delete);
  each([&](auto out) { return CSASNBitString_FromBytes(bytes, 3, out); }, CSASNBitString_Delete);
  each([&](auto out) { return CSASNOID_ToString(oid, out); }, CSASNUtil_FreeString);
  each([&](auto out) { return CSASNOID_ToWString(oid, out); }, CSASNUtil_FreeWString);
  each([&](auto out) { return CSASNIA5String_ToString(string, out); }, CSASNUtil_FreeString);
  each([&](auto out) { return CSASNIA5String_ToWString(string, out); }, CSASNUtil_FreeWString);
  CSASNOctetString_Delete(&string);
  CSASNOID_Delete(&oid);
}

// What fails over an object leaves it as it was; an arc that cannot be appended to a new one gives 400.
TEST(DerMemoryOf, FailingChanges) {
  const uint8_t octet = 1;
  uint64_t count = 9;
  CSASNOctetString* string = nullptr;
  CSASNBitString* bits = nullptr;
  CSExtKeyUsageSyntax* list = nullptr;
  CSASNOID *oid = nullptr, *none = nullptr;
  ASSERT_EQ(CSASNIA5String_FromBytes(&octet, 1, &string), 0u);
  ASSERT_EQ(CSASNBitString_Create(&bits), 0u);
  ASSERT_EQ(CSExtKeyUsageSyntax_Create(&list), 0u);
  ASSERT_EQ(CSASNOID_FromString("1.2.3", &oid), 0u);
  const auto failing = [](uint64_t allocation, auto&& body) {
    memory.Watch(allocation);
    const uint32_t code = body();
    memory.watched = false;
    EXPECT_TRUE(memory.live.empty());
    return code;
  };
  EXPECT_EQ(failing(0, [&] { return CSASNIA5String_SetBytes(string, &octet, 1); }), 3u);
  EXPECT_TRUE(CSASNIA5String_GetStringLength(string, &count) == 0 && count == 2);
  EXPECT_EQ(failing(0, [&] { return CSExtKeyUsageSyntax_AddItem(list, oid); }), 3u);
  EXPECT_EQ(CSExtKeyUsageSyntax_AddItem(list, oid), 0u);  // still the caller's after the failure
  EXPECT_EQ(failing(0, [&] { return CSASNOID_FromString("1.2.3", &none); }), 3u);
  EXPECT_EQ(failing(1, [&] { return CSASNOID_FromString("1.2.3", &none); }), 400u);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(CSASNBitString_SetBit(bits, UINT64_MAX, 1), 3u);
  EXPECT_EQ(CSASNBitString_SetBit(bits, UINT64_MAX - 1, 1), 3u);
  EXPECT_TRUE(CSASNBitString_GetBitCount(bits, &count) == 0 && count == 0);
  EXPECT_EQ(CSExtKeyUsageSyntax_Delete(&list) + CSASNBitString_Delete(&bits) + CSASNOctetString_Delete(&string), 0u);
}

// A key of one repeated octet through everything that copies or drops contents.
TEST(DerMemoryOf, SecretsAreWipedBeforeTheirBlockIsReleased) {
  const ByteArray secret(40, kSecret);
  memory.Watch(kNever);
  CSASNOctetString* octets = nullptr;
  ASSERT_EQ(CSASNOctetString_FromBytes(secret.data(), secret.size(), &octets), 0u);
  EXPECT_EQ(CSASNOctetString_SetBytes(octets, secret.data(), 30), 0u);
  EXPECT_EQ(CSASNOctetString_SetBytes(octets, secret.data(), 20), 0u);
  CSASNBitString* bits = nullptr;
  ASSERT_EQ(CSASNBitString_FromOctetString(octets, &bits), 0u);
  for (uint64_t i = 0; i < 2000; ++i) EXPECT_EQ(CSASNBitString_SetBit(bits, i, secret[0] << (i % 8) & 0x80), 0u);
  EXPECT_EQ(CSASNBitString_SetAllBits(bits, secret.data(), 320), 0u);
  EXPECT_EQ(CSASNBitString_Delete(&bits), 0u);

  CSPrivateKeyInfo* key = nullptr;
  ASSERT_EQ(CSPrivateKeyInfo_Create(&key), 0u);
  EXPECT_EQ(CSPrivateKeyInfo_SetPrivateKey(key, octets, nullptr), 0u);
  CSASNInteger* number = nullptr;
  uint64_t length = 42;
  ByteArray encoded = {2, 40};
  encoded.insert(encoded.end(), secret.begin(), secret.end());
  ASSERT_EQ(CSASNInteger_DERDecodeTLV(encoded.data(), &length, 0, &number), 0u);
  EXPECT_EQ(CSPrivateKeyInfo_SetVersion(key, number, nullptr), 0u);
  char* text = nullptr;
  EXPECT_EQ(CSASNInteger_ToHex(number, &text, &length, 0), 0u);
  memset(text, kSecret, length - 1);
  EXPECT_EQ(CSASNUtil_FreeString(&text), 0u);
  CSPrivateKeyInfo* copy = nullptr;
  EXPECT_EQ(CSPrivateKeyInfo_Copy(key, &copy), 0u);
  EXPECT_EQ(CSPrivateKeyInfo_Delete(&key), 0u);
  EXPECT_EQ(CSPrivateKeyInfo_Delete(&copy), 0u);

  CSASNGeneralizedTime* time = nullptr;
  CSASNGeneralizedTime* sameTime = nullptr;
  ASSERT_EQ(CSASNGeneralizedTime_Create(&time), 0u);
  const std::string fraction(9, static_cast<char>(kSecret));
  const auto set = [&](const char* text) {
    return CSASNGeneralizedTime_SetTimeData(time, 2020, 1, 1, 0, nullptr, nullptr, text, 1, nullptr, nullptr);
  };
  EXPECT_EQ(set(fraction.c_str()), 0u);
  EXPECT_EQ(CSASNGeneralizedTime_Copy(time, &sameTime), 0u);
  EXPECT_EQ(set(nullptr), 0u);
  EXPECT_EQ(CSASNGeneralizedTime_Delete(&time), 0u);
  EXPECT_EQ(CSASNGeneralizedTime_Delete(&sameTime), 0u);

  CSASNDecodeContext* context = nullptr;
  ASSERT_EQ(CSASNUtil_DERDecodeStart(&context), 0u);
  int32_t surplus = 0;
  for (const uint8_t octet : encoded) CSASNUtil_DERDecodeAddData(context, &octet, 1, &surplus);
  EXPECT_EQ(surplus, 0);
  EXPECT_EQ(CSASNUtil_DeleteDecodeContext(&context), 0u);
  memory.watched = false;
  EXPECT_FALSE(memory.secretReleased);
  EXPECT_TRUE(memory.live.empty());
}

// ---- hostile shapes: memory in proportion, and an end within the time of a test, which a quadratic step would not
// reach ----

ByteArray Element(uint8_t identifier, const ByteArray& pattern, size_t count) {
  const size_t size = pattern.size() * count;
  ByteArray der = {identifier, 0x84, uint8_t(size >> 24), uint8_t(size >> 16), uint8_t(size >> 8), uint8_t(size)};
  for (size_t i = 0; i < count; ++i) der.insert(der.end(), pattern.begin(), pattern.end());
  return der;
}

ByteArray Nested(size_t depth) {
  ByteArray der;
  for (size_t i = 0; i < depth; ++i) der.insert(der.end(), {0x30, 0x80});
  der.resize(4 * depth);
  return der;
}

constexpr uint64_t kOctetsForEach = 50;  // of memory, for an octet of input

TEST(DerHostile, MemoryGrowsWithTheInput) {
  struct {
    const char* type;
    uint8_t identifier;
    ByteArray item;
    uint32_t code;
  } const cases[] = {{"CSGeneralNames", 0x30, {0x82, 0x00}, 0},
                     {"CSGeneralNames", 0x30, {0x82, 0x80, 0x00, 0x00}, 0},
                     {"CSAttributeValues", 0x31, {0x05, 0x00}, 0},
                     {"CSExtKeyUsageSyntax", 0x30, {0x06, 0x00}, 0},
                     {"CSExtensions", 0x30, {0x30, 0x00}, 420},
                     {"CSRDNSequence", 0x30, {0x31, 0x00}, 0},
                     {"CSASNOID", 0x06, {0x01}, 0}};
  for (const auto& c : cases) {
    uint64_t before = 0;
    for (const size_t count : {50000, 500000}) {
      const ByteArray in = Element(c.identifier, c.item, count);
      const DerType& type = DerTypeNamed(c.type);
      memory.Watch(kNever);
      void* object = nullptr;
      uint64_t length = in.size();
      EXPECT_EQ(type.decode(in.data(), &length, 0, 0, object), c.code);
      if (object != nullptr) type.destroy(object);
      memory.watched = false;
      EXPECT_TRUE(memory.live.empty());
      EXPECT_LE(memory.most, kOctetsForEach * in.size()) << c.type;
      if (before != 0) {
        EXPECT_LE(memory.octets, 14 * before) << c.type;
      }
      before = memory.octets;
    }
  }
}

TEST(DerHostile, LengthsThatAreOnlyAnnouncedAllocateNothing) {
  const ByteArray in = FromHex("30 84 7F FF FF F0 02 84 7F FF FF E0 01");
  for (const DerType& type : DerTypes()) {
    memory.Watch(kNever);
    void* object = nullptr;
    uint64_t length = in.size();
    EXPECT_NE(type.decode(in.data(), &length, 0, 0, object), 0u);
    CSASNDecodeContext* context = nullptr;
    int32_t surplus = 0;
    EXPECT_EQ(CSASNUtil_DERDecodeStart(&context), 0u);
    EXPECT_EQ(CSASNUtil_DERDecodeAddData(context, in.data(), in.size(), &surplus), 0u);
    EXPECT_LT(memory.most, 200u) << type.name;
    CSASNUtil_DeleteDecodeContext(&context);
    memory.watched = false;
  }
}

TEST(DerHostile, DeepNestingFedByOctets) {
  const ByteArray in = Nested(100000);
  uint64_t total = 0;
  EXPECT_EQ(CSASNUtil_DERDetermineEncodingLength(in.data(), in.size(), &total), 0u);
  EXPECT_EQ(total, in.size() - 2);
  memory.Watch(kNever);
  CSASNDecodeContext* context = nullptr;
  ASSERT_EQ(CSASNUtil_DERDecodeStart(&context), 0u);
  int32_t surplus = -1;
  for (size_t i = 0; i < in.size(); ++i) {
    ASSERT_EQ(CSASNUtil_DERDecodeAddData(context, &in[i], 1, &surplus), i + 1 < in.size() ? 408u : 0u);
  }
  EXPECT_EQ(surplus, 0);
  CSASNAny* any = nullptr;
  EXPECT_EQ(CSASNAny_DERDecodeFinish(context, &any), 0u);
  EXPECT_LE(memory.octets, 10 * in.size());
  CSASNAny_Delete(&any);
  CSASNUtil_DeleteDecodeContext(&context);
  memory.watched = false;
}

}  // namespace
