#include <gtest/gtest.h>

#include <sstream>

#include "support/caught.h"
#include "support/certificates.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

struct Attribute {
  std::string type;
  ByteArray value;  // contents octets
};

std::string Der(const std::string& type, const std::string& tag, const std::string& octets) {
  ASN1_OBJECT* object = OBJ_txt2obj(type.c_str(), 1);
  const std::string oid = ToHex(ByteArray(OBJ_get0_data(object), OBJ_get0_data(object) + OBJ_length(object)));
  ASN1_OBJECT_free(object);
  return DerHex(0x30, DerHex(0x06, oid) + DerHex(static_cast<unsigned char>(std::stoul(tag, nullptr, 16)), octets));
}

/// The encoding of a `name` in the vector file, and its attributes.
ByteArray Build(const std::string& text, std::vector<Attribute>& attributes) {
  std::string name;
  std::string relative;
  std::istringstream in(text);
  std::string type, tag, octets, mark;
  while (in >> type >> tag) {
    octets.clear();
    mark.clear();
    if (in >> octets && (octets == ";" || octets == "+")) {
      mark.swap(octets);
    } else {
      in >> mark;
    }
    relative += Der(type, tag, octets);
    attributes.push_back({type, FromHex(octets)});
    if (mark == "+") continue;
    name += DerHex(0x31, relative);
    relative.clear();
  }
  return FromHex(DerHex(0x30, name));
}

std::string Unquoted(const std::string& text) { return text.substr(1, text.size() - 2); }

class X500Name : public VectorTest {};

TEST_P(X500Name, TextsAndAttributes) {
  std::vector<Attribute> attributes;
  const ByteArray encoded = Build(GetParam().Text("name"), attributes);
  const auto name = Own(IX500Name::Create(encoded));
  EXPECT_EQ(name->GetName(0).c_str(), Unquoted(GetParam().Text("rfc4514")));
  EXPECT_EQ(name->GetName(1).c_str(), Unquoted(GetParam().Text("encoded")));
  ByteArray copy;
  name->GetEncoded(copy);
  EXPECT_EQ(copy, encoded);

  const SecureStringList types = name->ListAttributes();
  ASSERT_EQ(types.size(), attributes.size());
  size_t i = 0;
  for (const auto& type : types) EXPECT_EQ(type.c_str(), attributes[i++].type);
  for (const char* wanted : {"2.5.4.3", "2.5.4.10", "1.3.6.1.4.1.1466.0", "2.5.4"}) {
    std::vector<ByteArray> expected;
    for (const auto& attribute : attributes) {
      if (attribute.type == wanted) expected.push_back(attribute.value);
    }
    SecureStringList values{"kept"};
    EXPECT_EQ(name->GetAttributeValue(wanted, values), !expected.empty());
    ASSERT_EQ(values.size(), expected.size() + 1);
    EXPECT_EQ(values.front(), "kept");
    values.pop_front();
    i = 0;
    for (const auto& value : values) EXPECT_EQ(ByteArray(value.begin(), value.end()), expected[i++]);
  }
}

INSTANTIATE_TEST_SUITE_P(Rfc4514, X500Name, testing::ValuesIn(LoadVectors("x500name.txt")));

TEST(X500NameFactory, RefusesWhatIsNoName) {
  for (const char* hex : {"", "30", "3005 310330", "3102 3000", "3004 3102 0500", "020105"}) {
    EXPECT_THROWS(4004, 0, "CSName_DERDecode() failed", IX500Name::Create(FromHex(hex)));
  }
  const ByteArray trailing = FromHex("3000 ff");
  const auto name = Own(IX500Name::Create(trailing));
  EXPECT_THROWS(4000, 0, "Unknown name format", name->GetName(2));
  ByteArray encoded;
  name->GetEncoded(encoded);
  EXPECT_EQ(encoded, trailing);
}

}  // namespace
