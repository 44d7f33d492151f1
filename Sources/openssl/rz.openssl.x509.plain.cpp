#include "rz.openssl.x509.plain.h"

#include <algorithm>
#include <span>

#include "tavo/text.h"

namespace Tavo::Framework {

namespace {

using Octets = std::span<const unsigned char>;

enum Tag : unsigned char {
  kBoolean = 0x01,
  kInteger = 0x02,
  kBitString = 0x03,
  kOctetString = 0x04,
  kNull = 0x05,
  kObjectIdentifier = 0x06,
  kUtf8String = 0x0C,
  kPrintableString = 0x13,
  kT61String = 0x14,
  kIA5String = 0x16,
  kUtcTime = 0x17,
  kGeneralizedTime = 0x18,
  kSequence = 0x30,
  kSet = 0x31,
  kVersion = 0xA0,
  kExtensions = 0xA3,
};

/// Element takes the next element off `rest` when it has this identifier and a length in the fewest octets that lies
/// within what remains. At most 65,535 octets: what is longer is not plain.
bool Element(Octets& rest, unsigned char tag, Octets& contents) {
  if (rest.size() < 2 || rest[0] != tag) return false;
  size_t length = rest[1];
  size_t header = 2;
  if (length == 0x81 && rest.size() > 2) {
    length = rest[2];
    header = 3;
    if (length < 0x80) return false;
  } else if (length == 0x82 && rest.size() > 3) {
    length = static_cast<size_t>(rest[2]) << 8 | rest[3];
    header = 4;
    if (length < 0x100) return false;
  } else if (length >= 0x80) {
    return false;
  }
  if (length > rest.size() - header) return false;
  contents = rest.subspan(header, length);
  rest = rest.subspan(header + length);
  return true;
}

bool IsNext(Octets rest, unsigned char tag) { return !rest.empty() && rest[0] == tag; }

/// Each takes one field of a certificate off `rest`.
bool Integer(Octets& rest) {
  Octets number;
  if (!Element(rest, kInteger, number) || number.empty()) return false;
  const bool padded =
      number.size() > 1 && ((number[0] == 0x00 && number[1] < 0x80) || (number[0] == 0xFF && number[1] >= 0x80));
  return !padded;
}

bool ObjectIdentifier(Octets& rest) {
  Octets id;
  if (!Element(rest, kObjectIdentifier, id) || id.empty() || id.back() >= 0x80) return false;
  bool first = true;  // octet of an arc: 0x80 there would be padding
  for (const unsigned char octet : id) {
    if (first && octet == 0x80) return false;
    first = octet < 0x80;
  }
  return true;
}

bool BitString(Octets& rest) {
  Octets bits;
  return Element(rest, kBitString, bits) && bits.size() > 1 && bits[0] == 0;
}

/// An algorithm with no parameters, NULL or an object identifier (a curve).
bool Algorithm(Octets& rest) {
  Octets algorithm;
  Octets null;
  if (!Element(rest, kSequence, algorithm) || !ObjectIdentifier(algorithm)) return false;
  if (IsNext(algorithm, kNull)) return Element(algorithm, kNull, null) && null.empty() && algorithm.empty();
  return algorithm.empty() || (ObjectIdentifier(algorithm) && algorithm.empty());
}

bool IsAscii(Octets text) {
  return std::all_of(text.begin(), text.end(), [](unsigned char octet) { return octet < 0x80; });
}

bool Attribute(Octets& rest) {
  Octets attribute;
  Octets text;
  if (!Element(rest, kSequence, attribute) || !ObjectIdentifier(attribute) || attribute.empty()) return false;
  const unsigned char tag = attribute[0];
  if (!Element(attribute, tag, text) || text.empty() || !attribute.empty()) return false;
  if (tag == kUtf8String) return IsUtf8(text.data(), text.size());
  return tag == kT61String || ((tag == kPrintableString || tag == kIA5String) && IsAscii(text));
}

/// A name may be empty, a set in it may not.
bool Name(Octets& rest) {
  Octets name;
  Octets set;
  if (!Element(rest, kSequence, name)) return false;
  while (!name.empty()) {
    if (!Element(name, kSet, set) || set.empty()) return false;
    while (!set.empty()) {
      if (!Attribute(set)) return false;
    }
  }
  return true;
}

bool Time(Octets& rest) {
  Octets text;
  if (IsNext(rest, kUtcTime)) return Element(rest, kUtcTime, text) && text.size() == 13 && IsAscii(text);
  return Element(rest, kGeneralizedTime, text) && text.size() == 15 && IsAscii(text);
}

bool Validity(Octets& rest) {
  Octets ends;
  return Element(rest, kSequence, ends) && Time(ends) && Time(ends) && ends.empty();
}

bool KeyInfo(Octets& rest) {
  Octets info;
  return Element(rest, kSequence, info) && Algorithm(info) && BitString(info) && info.empty();
}

bool Extension(Octets& rest) {
  Octets extension;
  Octets critical;
  Octets value;
  if (!Element(rest, kSequence, extension) || !ObjectIdentifier(extension)) return false;
  if (IsNext(extension, kBoolean) &&
      !(Element(extension, kBoolean, critical) && critical.size() == 1 && critical[0] == 0xFF)) {
    return false;
  }
  return Element(extension, kOctetString, value) && extension.empty();
}

bool Extensions(Octets& rest) {
  Octets tagged;
  Octets list;
  if (!Element(rest, kExtensions, tagged) || !Element(tagged, kSequence, list) || !tagged.empty()) return false;
  do {
    if (!Extension(list)) return false;
  } while (!list.empty());
  return true;
}

bool Version3(Octets& rest) {
  static constexpr unsigned char kNumber[] = {kInteger, 1, 2};
  Octets version;
  return Element(rest, kVersion, version) && std::ranges::equal(version, kNumber);
}

bool ToBeSigned(Octets& rest) {
  Octets fields;
  return Element(rest, kSequence, fields) && Version3(fields) && Integer(fields) && Algorithm(fields) && Name(fields) &&
         Validity(fields) && Name(fields) && KeyInfo(fields) && Extensions(fields) && fields.empty();
}

}  // namespace

bool IsPlainX509(const ByteArray& encoded) {
  Octets rest(encoded);
  Octets certificate;
  return Element(rest, kSequence, certificate) && ToBeSigned(certificate) && Algorithm(certificate) &&
         BitString(certificate) && certificate.empty();
}

}  // namespace Tavo::Framework
