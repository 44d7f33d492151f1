// Every vector of der.txt through every way into a decoder and out of an encoder.
#include "support/der_types.h"

#include <gtest/gtest.h>

#include <set>

#include "support/der_vectors.h"

using Tavo::Framework::ByteArray;

namespace {

struct Object {
  explicit Object(const DerType& family) : type(family) {}
  ~Object() {
    if (object != nullptr) {
      EXPECT_EQ(type.destroy(object), 0u);
    }
    EXPECT_EQ(object, nullptr);
  }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  ByteArray Encoded(bool tag = true, bool length = true, bool contents = true) const {
    uint8_t* buffer = nullptr;
    uint64_t size = 0;
    EXPECT_EQ(type.encode(object, &buffer, &size, tag, length, contents), 0u);
    ByteArray bytes(buffer, buffer + size);
    free(buffer);
    return bytes;
  }

  const DerType& type;
  void* object = nullptr;
};

class DerVectors : public testing::TestWithParam<DerVector> {
 protected:
  const DerType& type = DerTypeNamed(GetParam().type);
  const ByteArray& in = GetParam().in;
  const uint32_t code = GetParam().code;
  const uint64_t consumed = GetParam().consumed;
  const std::string out = ToHex(GetParam().out);

  // Decodes `bytes` in a mode, with the identifier that was before them.
  void Decode(const ByteArray& bytes, uint32_t mode, uint64_t wanted) {
    const ExactOctets exact(bytes);
    Object decoded(type);
    uint64_t length = bytes.size();
    EXPECT_EQ(type.decode(exact.data(), &length, mode, in[0], decoded.object), code) << "mode " << mode;
    EXPECT_EQ(decoded.object == nullptr, code != 0);
    EXPECT_EQ(length, code == 0 ? wanted : bytes.size()) << "mode " << mode;
    if (code == 0) {
      EXPECT_EQ(ToHex(decoded.Encoded()), out) << "mode " << mode;
    }
  }

  ByteArray From(size_t first, size_t end) const { return ByteArray(in.begin() + long(first), in.begin() + long(end)); }
};

TEST_P(DerVectors, Decode) {
  Decode(in, 0, consumed);
  if (code != 0 || in[0] == 0) return;
  // Without its identifier; without identifier and length.
  Decode(From(1, in.size()), 1, consumed - 1);
  const size_t header = in[1] <= 0x80 ? 2 : 2 + (in[1] & 0x7F);
  Decode(From(header, consumed), 2, consumed - header);
}

TEST_P(DerVectors, EveryTruncationIsRefused) {
  if (code != 0 || in[0] == 0) return;
  for (size_t size = 0; size < consumed; ++size) {
    const ExactOctets exact(From(0, size));
    Object decoded(type);
    uint64_t length = size;
    EXPECT_EQ(type.decode(exact.data(), &length, 0, 0, decoded.object), uint32_t{CSResult_BUFFER_TOO_SMALL}) << size;
    EXPECT_EQ(decoded.object, nullptr);
  }
}

TEST_P(DerVectors, PiecesGiveTheSame) {
  if (code != 0) return;
  for (const size_t piece : {1, 3, 1000}) {
    CSASNDecodeContext* context = nullptr;
    ASSERT_EQ(CSASNUtil_DERDecodeStart(&context), 0u);
    uint32_t added = CSResult_INCOMPLETE_DATA;
    int32_t surplus = 0;
    for (size_t fed = 0; fed < in.size() && (added != 0 || surplus < 0); fed += piece) {
      added = CSASNUtil_DERDecodeAddData(context, &in[fed], std::min(piece, in.size() - fed), &surplus);
    }
    EXPECT_TRUE(added == 0 && surplus >= 0) << piece;
    Object decoded(type);
    EXPECT_EQ(type.finish(context, decoded.object), 0u);
    EXPECT_EQ(ToHex(decoded.Encoded()), out) << piece;
    EXPECT_EQ(CSASNUtil_DeleteDecodeContext(&context), 0u);
  }
}

TEST_P(DerVectors, CopiesAndPartsAgree) {
  if (code != 0) return;
  Object decoded(type);
  uint64_t length = in.size();
  ASSERT_EQ(type.decode(in.data(), &length, 0, 0, decoded.object), 0u);
  Object copy(type);
  ASSERT_EQ(type.copy(decoded.object, copy.object), 0u);
  uint8_t equal = 0;
  EXPECT_EQ(type.equals(decoded.object, copy.object, &equal), 0u);
  EXPECT_EQ(equal, 1);
  EXPECT_EQ(type.equals(decoded.object, nullptr, &equal), 0u);
  EXPECT_EQ(equal, 0);

  const ByteArray whole = copy.Encoded();
  uint64_t tag = 0, lengthOctets = 0, contents = 0, total = 0;
  EXPECT_EQ(type.lengths(copy.object, &tag, &lengthOctets, &contents), 0u);
  EXPECT_EQ(type.length(copy.object, &total), 0u);
  EXPECT_EQ(total, whole.size());
  // Each part alone, one after the other, is the whole.
  std::string parts;
  for (int part = 0; part < 3; ++part) parts += ToHex(copy.Encoded(part == 0, part == 1, part == 2));
  EXPECT_EQ(parts, ToHex(whole));
  EXPECT_EQ(tag + lengthOctets + contents, total);
  // A buffer of the caller's: exact, larger, one octet short.
  for (const int64_t extra : {0, 5, -1}) {
    ByteArray buffer(total + 5, 0xEE);
    uint8_t* start = buffer.data();
    uint64_t capacity = total + static_cast<uint64_t>(extra);
    EXPECT_EQ(type.encode(copy.object, &start, &capacity, true, true, true), extra < 0 ? 6u : 0u);
    EXPECT_EQ(capacity, extra < 0 ? total - 1 : total);
    EXPECT_TRUE(extra < 0 || std::equal(whole.begin(), whole.end(), buffer.begin()));
    EXPECT_EQ(buffer[total], 0xEE);
  }
}

INSTANTIATE_TEST_SUITE_P(X690, DerVectors, testing::ValuesIn(LoadDerVectors()));

// Tests of all types, here and elsewhere, go by the vectors.
TEST(DerTypes, EachHasAVectorThatDecodes) {
  std::set<std::string> decoded;
  for (const DerVector& vector : LoadDerVectors()) {
    if (vector.code == 0) decoded.insert(vector.type);
  }
  for (const DerType& type : DerTypes()) EXPECT_EQ(decoded.count(type.name), 1u) << type.name;
}

TEST(DerTypes, NullArgumentsAreRefusedEverywhere) {
  const uint8_t octets[] = {0x30, 0x00};
  for (const DerType& type : DerTypes()) {
    SCOPED_TRACE(type.name);
    uint64_t length = 2;
    uint8_t equal = 7;
    void* object = nullptr;
    EXPECT_EQ(type.destroy(object), 4u);
    EXPECT_EQ(type.finish(nullptr, object), 4u);
    EXPECT_EQ(type.decode(nullptr, &length, 0, 0, object), 4u);
    EXPECT_EQ(type.decode(octets, nullptr, 0, 0, object), 4u);
    EXPECT_EQ(type.copy(nullptr, object), 0u);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(type.equals(nullptr, nullptr, &equal), 0u);
    EXPECT_EQ(equal, 1);
    EXPECT_EQ(type.equals(nullptr, nullptr, nullptr), 4u);
    uint64_t tag = 7, lengthOctets = 7, contents = 7;
    EXPECT_EQ(type.lengths(nullptr, &tag, &lengthOctets, &contents), 0u);
    EXPECT_EQ(type.length(nullptr, nullptr), 4u);
    EXPECT_EQ(lengthOctets, 1u);
    EXPECT_EQ(contents, 0u);

    // INTEGER alone has an encoding of nothing: a length octet.
    const bool integer = type.name == "CSASNInteger";
    EXPECT_EQ(tag, integer ? 0u : 1u);
    uint8_t* buffer = nullptr;
    EXPECT_EQ(type.encode(nullptr, &buffer, &length, true, true, true), integer ? 0u : 4u);
    if (integer) {
      EXPECT_TRUE(length == 1 && buffer[0] == 0);
    }
    free(buffer);
    EXPECT_EQ(type.encode(octets, nullptr, &length, true, true, true), 4u);

    // A new object is encoded unless something mandatory is missing.
    Object created(type);
    ASSERT_EQ(type.create(created.object), 0u);
    const uint32_t code = type.encode(created.object, &(buffer = nullptr), &(length = 77), true, true, true);
    EXPECT_TRUE(code == 0 || (code == CSResult_MISSING_ELEMENT && buffer == nullptr && length == 77)) << code;
    free(buffer);
  }
}

}  // namespace
