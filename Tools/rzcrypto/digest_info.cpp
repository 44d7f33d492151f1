#include "digest_info.h"

#include "outcome.h"
#include "tavo/der_owned.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

constexpr uint32_t kSequence = 16, kNull = 5, kUniversal = 0;

void Require(uint32_t code) {
  if (code != CSResult_OK)
    throw Failure{Exit::kInside, "a DigestInfo cannot be made: DER code " + std::to_string(code)};
}

/// Appends the encoding of an object of the DER library.
template <class T>
void Append(ByteArray& to, uint32_t (*encode)(const T*, uint8_t**, uint64_t*, uint8_t, uint8_t, uint8_t),
            const T* object) {
  uint8_t* raw = nullptr;
  uint64_t size = 0;
  Require(encode(object, &raw, &size, 1, 1, 1));
  const DerBuffer buffer(raw);
  AppendBytes(to, buffer.get(), size);
}

/// AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters NULL }
DerOwned<CSAlgorithmIdentifier_Delete> Identifier(const std::string& algorithm) {
  DerOwned<CSAlgorithmIdentifier_Delete> identifier;
  DerOwned<CSASNOID_Delete> oid;
  DerOwned<CSASNAny_Delete> null;
  Require(CSAlgorithmIdentifier_Create(Out(identifier)));
  Require(CSASNOID_FromString(NewAlgorithm(algorithm.c_str())->GetOID().c_str(), Out(oid)));
  Require(CSASNAny_Create(Out(null)));
  Require(CSASNAny_SetTag(null.get(), kNull, kUniversal, 0));
  Require(CSAlgorithmIdentifier_SetAlgorithm(identifier.get(), oid.get(), nullptr));
  static_cast<void>(oid.release());  // the record has it
  Require(CSAlgorithmIdentifier_SetParameters(identifier.get(), null.get(), nullptr));
  static_cast<void>(null.release());
  return identifier;
}

}  // namespace

ByteArray DigestInfo(const std::string& algorithm, const ByteArray& hash) {
  DerOwned<CSASNOctetString_Delete> octets;
  DerOwned<CSASNAny_Delete> sequence;
  ByteArray contents;
  Append(contents, CSAlgorithmIdentifier_DEREncodeTLV,
         static_cast<const CSAlgorithmIdentifier*>(Identifier(algorithm).get()));
  Require(CSASNOctetString_FromBytes(hash.data(), hash.size(), Out(octets)));
  Append(contents, CSASNOctetString_DEREncodeTLV, static_cast<const CSASNOctetString*>(octets.get()));
  Require(CSASNAny_Create(Out(sequence)));
  Require(CSASNAny_SetTag(sequence.get(), kSequence, kUniversal, 1));
  Require(CSASNAny_SetBytes(sequence.get(), contents.data(), contents.size()));
  ByteArray encoded;
  Append(encoded, CSASNAny_DEREncodeTLV, static_cast<const CSASNAny*>(sequence.get()));
  return encoded;
}

std::optional<std::string> DigestInfoAlgorithm(const ByteArray& encoded) {
  for (const char* name : {"SHA1", "SHA224", "SHA256", "SHA384", "SHA512", "MD5"}) {
    const auto digest = Own(MessageDigest::Create(NewAlgorithm(name).get(), NewParameters().get()));
    const size_t length = digest->GetDigestLength();
    if (encoded.size() < length) continue;
    if (DigestInfo(name, ByteArray(encoded.end() - static_cast<long>(length), encoded.end())) == encoded) return name;
  }
  return std::nullopt;
}

}  // namespace rzcrypto
