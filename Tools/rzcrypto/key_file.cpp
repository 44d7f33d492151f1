#include "key_file.h"

#include <algorithm>
#include <initializer_list>

#include "outcome.h"
#include "tavo/der_owned.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

constexpr size_t kLongestSecret = 4096;  // bytes: one page
constexpr size_t kSurelyNoSecret = 64;   // bytes: a longer input that begins like a cut SEQUENCE is one

constexpr unsigned char kSequence = 0x30, kInteger = 0x02, kBitString = 0x03, kOctetString = 0x04;
const ByteArray kVersion0 = {0x02, 0x01, 0x00};
const ByteArray kRsaOid = {0x06, 0x09, 0x2a, 0x86, 0x48, 0x86, 0xf7, 0x0d, 0x01, 0x01, 0x01};
const ByteArray kNull = {0x05, 0x00};

ByteArray Element(unsigned char tag, std::initializer_list<ByteArray> parts) {
  size_t size = 0;
  for (const auto& part : parts) size += part.size();
  uint8_t length[9];
  uint64_t count = 0;
  CSASNUtil_DEREncodeLength(length, &count, size);
  ByteArray element(1, tag);
  AppendBytes(element, length, count);
  for (const auto& part : parts) AppendBytes(element, part);
  return element;
}

/// A positive INTEGER.
ByteArray Integer(const ByteArray& number) {
  const bool needsZero = number.empty() || number[0] >= 0x80;
  return Element(kInteger, {ByteArray(needsZero ? 1 : 0), number});
}

ByteArray WithoutZeros(const unsigned char* bytes, size_t size) {
  const auto* begin = std::find_if(bytes, bytes + size, [](unsigned char byte) { return byte != 0; });
  return ByteArray(begin, bytes + size);
}

ByteArray Reversed(const ByteArray& bytes) { return ByteArray(bytes.rbegin(), bytes.rend()); }

/// Decoded returns the object, or nothing when the bytes are no T.
template <auto Delete, class T>
DerOwned<Delete> DecodedAs(uint32_t (*decode)(const uint8_t*, uint64_t*, uint32_t, T**), const ByteArray& bytes) {
  DerOwned<Delete> object;
  uint64_t size = bytes.size();
  if (decode(bytes.data(), &size, 0, Out(object)) != CSResult_OK) object.reset();
  return object;
}

ByteArray Contents(const CSASNInteger* integer) {
  const uint8_t* bytes = nullptr;
  uint64_t size = 0;
  if (CSASNInteger_GetBytes(integer, &bytes, &size) != CSResult_OK) throw Failure{Exit::kInside, "an INTEGER is lost"};
  return ByteArray(bytes, bytes + size);
}

[[noreturn]] void ThrowOther(const char* oid) {
  throw Failure{Exit::kNotSupported, std::string("a key of the algorithm ") + oid + ": the library has RSA keys only"};
}

/// Private keys in PEM whose encoding does not name their algorithm.
constexpr struct {
  std::string_view label;
  const char* oid;
} kOtherKeys[] = {{"EC PRIVATE KEY", "1.2.840.10045.2.1"}, {"DSA PRIVATE KEY", "1.2.840.10040.4.1"}};

/// Throws unless the identifier is that of RSA.
void RequireRsa(const CSAlgorithmIdentifier* identifier) {
  CSASNOID* oid = nullptr;
  char text[256] = "unknown";
  if (CSAlgorithmIdentifier_GetAlgorithm(identifier, &oid) == CSResult_OK) CSASNOID_ToStringEx(oid, text, sizeof text);
  if (std::string_view(text) != "1.2.840.113549.1.1.1") ThrowOther(text);
}

Owned<IKey> NewRsaKey(const char* format, const ByteArray& bytes) {
  return Own(IKey::Create(NewAlgorithm("RSA").get(), format, bytes));
}

// Each reader returns nothing when the bytes are something else.

Owned<IKey> FromPkcs8(const ByteArray& bytes) {
  const auto info = DecodedAs<CSPrivateKeyInfo_Delete>(CSPrivateKeyInfo_DERDecodeTLV, bytes);
  if (!info) return nullptr;
  CSAlgorithmIdentifier* identifier = nullptr;
  CSPrivateKeyInfo_GetPrivateKeyAlgorithm(info.get(), &identifier);
  RequireRsa(identifier);
  return NewRsaKey("PKCS8", bytes);
}

Owned<IKey> FromCertificate(const ByteArray& bytes) {
  const auto certificate = DecodedAs<CSCertificate_Delete>(CSCertificate_DERDecodeTLV, bytes);
  if (!certificate) return nullptr;
  CSTBSCertificate* body = nullptr;
  CSSubjectPublicKeyInfo* info = nullptr;
  CSAlgorithmIdentifier* identifier = nullptr;
  CSCertificate_GetTbsCertificate(certificate.get(), &body);
  CSTBSCertificate_GetSubjectPublicKeyInfo(body, &info);
  CSSubjectPublicKeyInfo_GetAlgorithm(info, &identifier);
  RequireRsa(identifier);
  return NewRsaKey("X509", bytes);
}

Owned<IKey> FromRsaPrivateKey(const ByteArray& bytes) {
  if (!DecodedAs<CSRSAPrivateKey_Delete>(CSRSAPrivateKey_DERDecodeTLV, bytes)) return nullptr;
  return NewRsaKey("PKCS8",
                   Element(kSequence, {kVersion0, Element(kSequence, {kRsaOid}), Element(kOctetString, {bytes})}));
}

Owned<IKey> FromRsaPublicKey(const ByteArray& bytes) {
  const auto record = DecodedAs<CSRSAPublicKey_Delete>(CSRSAPublicKey_DERDecodeTLV, bytes);
  uint64_t size = 0;
  // The decoder ignores what follows the second number: other keys begin with two numbers as well.
  if (!record || CSRSAPublicKey_DEREncodedLength(record.get(), &size) != CSResult_OK ||
      size != bytes.size() - TrailingSize(bytes)) {
    return nullptr;
  }
  CSASNInteger* modulus = nullptr;
  CSASNInteger* exponent = nullptr;
  CSRSAPublicKey_GetModulus(record.get(), &modulus);
  CSRSAPublicKey_GetPublicExponent(record.get(), &exponent);
  return Own(
      IRSAPublicKey::Create(NewAlgorithm("RSA").get(), Reversed(Contents(modulus)), Reversed(Contents(exponent))));
}

Owned<IKey> FromSubjectPublicKeyInfo(const ByteArray& bytes) {
  const auto info = DecodedAs<CSSubjectPublicKeyInfo_Delete>(CSSubjectPublicKeyInfo_DERDecodeTLV, bytes);
  if (!info) return nullptr;
  CSAlgorithmIdentifier* identifier = nullptr;
  CSASNBitString* bits = nullptr;
  CSSubjectPublicKeyInfo_GetAlgorithm(info.get(), &identifier);
  RequireRsa(identifier);
  const uint8_t* octets = nullptr;
  uint64_t count = 0;
  CSSubjectPublicKeyInfo_GetSubjectPublicKey(info.get(), &bits);
  CSASNBitString_GetAllBits(bits, &octets, &count);
  const ByteArray contents(octets, octets + count);
  auto key = FromRsaPublicKey(contents);
  if (!key || TrailingSize(contents) != 0) throw Failure{Exit::kBadInput, "the public key is no RSAPublicKey"};
  return key;
}

struct Reader {
  KeyFile::Kind kind;
  const char* encoding;
  Owned<IKey> (*read)(const ByteArray& bytes);
};

// A private key's numbers must be looked for before a public key's: they are the longer row.
constexpr Reader kReaders[] = {
    {KeyFile::Kind::kPrivate, "PKCS #8", FromPkcs8},
    {KeyFile::Kind::kPublic, "certificate", FromCertificate},
    {KeyFile::Kind::kPublic, "SubjectPublicKeyInfo", FromSubjectPublicKeyInfo},
    {KeyFile::Kind::kPrivate, "PKCS #1", FromRsaPrivateKey},
    {KeyFile::Kind::kPublic, "PKCS #1", FromRsaPublicKey},
};

constexpr const char* kEncrypted = "the key is encrypted: decrypt it first (openssl pkey)";

/// The octets after the header of the element, none when it is cut short.
ByteArray ContentsOf(const ByteArray& element) {
  const uint8_t* cursor = element.data() + 1;
  uint64_t size = element.size() - 1;
  uint64_t length = 0;
  if (CSASNUtil_DERDecodeLengthInternal(&cursor, &size, nullptr, &length) != CSResult_OK) return ByteArray();
  return ByteArray(cursor, cursor + length);
}

/// Throws for a SEQUENCE that is a private key all the same: an encrypted one (RFC 5958, section 3), known by the
/// scheme of PKCS #5 or PKCS #12 that it begins with, or one of a curve (RFC 5915, section 3) of 112 to 571 bits.
void RequireNoOtherKey(const ByteArray& contents) {
  static const ByteArray kEcBegin = {kInteger, 0x01, 0x01, kOctetString};
  const size_t lengthAt = kEcBegin.size();
  if (contents.size() > lengthAt && std::equal(kEcBegin.begin(), kEcBegin.end(), contents.begin()) &&
      contents[lengthAt] >= 14 && contents[lengthAt] <= 72) {
    ThrowOther(kOtherKeys[0].oid);
  }
  const auto scheme = DecodedAs<CSAlgorithmIdentifier_Delete>(CSAlgorithmIdentifier_DERDecodeTLV, contents);
  CSASNOID* oid = nullptr;
  char text[256] = "";
  if (!scheme || CSAlgorithmIdentifier_GetAlgorithm(scheme.get(), &oid) != CSResult_OK) return;
  CSASNOID_ToStringEx(oid, text, sizeof text);
  for (const std::string_view family : {"1.2.840.113549.1.5.", "1.2.840.113549.1.12.1."}) {
    if (std::string_view(text).substr(0, family.size()) == family) throw Failure{Exit::kNotSupported, kEncrypted};
  }
}

/// Throws for what looks like DER: those bytes are no secret key.
void RequireNoDer(const ByteArray& bytes) {
  uint64_t total = 0;
  if (bytes.empty() || bytes[0] != kSequence) return;
  const bool complete = CSASNUtil_DERDetermineEncodingLength(bytes.data(), bytes.size(), &total) == CSResult_OK;
  if (complete && total == bytes.size()) {
    RequireNoOtherKey(ContentsOf(bytes));
    throw Failure{Exit::kBadInput, "a DER SEQUENCE, but no key"};
  }
  if (complete && total > bytes.size() && bytes.size() > kSurelyNoSecret) {
    throw Failure{Exit::kBadInput,
                  "DER that is cut short: " + std::to_string(bytes.size()) + " of " + std::to_string(total) + " bytes"};
  }
}

}  // namespace

KeyFile ReadKey(const Block& block) {
  if (block.label.find("ENCRYPTED") != std::string::npos) {
    throw Failure{Exit::kNotSupported, kEncrypted};
  }
  for (const auto& reader : kReaders) {
    try {
      if (auto key = Checked([&] { return reader.read(block.bytes); })) {
        return {reader.kind, reader.encoding, std::move(key)};
      }
    } catch (const Error& error) {
      throw Failure{Exit::kBadInput, std::string(reader.encoding) + ": " + error.what()};
    }
  }
  for (const auto& other : kOtherKeys) {
    if (block.label == other.label) ThrowOther(other.oid);
  }
  if (!block.label.empty()) throw Failure{Exit::kBadInput, "PEM " + block.label + ": no key that the library knows"};
  RequireNoDer(block.bytes);
  return RawKey(block.bytes);
}

size_t TrailingSize(const ByteArray& bytes) {
  uint64_t total = 0;
  const bool complete = CSASNUtil_DERDetermineEncodingLength(bytes.data(), bytes.size(), &total) == CSResult_OK;
  return complete && total < bytes.size() ? bytes.size() - total : 0;
}

KeyFile RawKey(const ByteArray& bytes) {
  if (bytes.empty()) throw Failure{Exit::kBadInput, "empty"};
  if (bytes.size() > kLongestSecret) throw Failure{Exit::kBadInput, "no key, and too long for a secret one"};
  return {KeyFile::Kind::kSecret, "raw", Own(IKey::Create(NewAlgorithm("AES").get(), "RAW", bytes))};
}

RsaNumbers PublicNumbers(const KeyFile& file) {
  ByteArray modulus, exponent;
  if (auto* key = dynamic_cast<IRSAPrivateCRTKey*>(file.key.get())) {
    key->GetModulus(modulus);
    key->GetPubExponent(exponent);
  } else {
    ByteArray encoded;
    file.key->GetEncoded(encoded);
    const auto record = DecodedAs<CSRSAPublicKey_Delete>(CSRSAPublicKey_DERDecodeTLV, encoded);
    if (!record) throw Failure{Exit::kBadInput, "no RSA public key"};
    CSASNInteger* number = nullptr;
    CSRSAPublicKey_GetModulus(record.get(), &number);
    modulus = Contents(number);
    CSRSAPublicKey_GetPublicExponent(record.get(), &number);
    exponent = Contents(number);
  }
  return {WithoutZeros(modulus.data(), modulus.size()), WithoutZeros(exponent.data(), exponent.size())};
}

ByteArray RsaPublicKey(const RsaNumbers& numbers) {
  return Element(kSequence, {Integer(numbers.modulus), Integer(numbers.exponent)});
}

ByteArray SubjectPublicKeyInfo(const RsaNumbers& numbers) {
  const ByteArray wholeOctets(1, 0);
  return Element(kSequence,
                 {Element(kSequence, {kRsaOid, kNull}), Element(kBitString, {wholeOctets, RsaPublicKey(numbers)})});
}

}  // namespace rzcrypto
