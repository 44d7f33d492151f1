// The types of the library. Each entry stands under its grammar; the engine and the exported functions follow from it.
//
// To add a type: its entry here, its lines in a header under Include/tavo/der, and vectors.
#pragma once

#include <iterator>

#include "leaf.h"

struct CSAlgorithmIdentifier;
struct CSAttributeTypeAndValue;
struct CSAttributeValues;
struct CSRelativeDistinguishedName;
struct CSRDNSequence;
struct CSName;
struct CSOtherName;
struct CSGeneralName;
struct CSGeneralNames;
struct CSExtension;
struct CSExtensions;
struct CSExtKeyUsageSyntax;
struct CSTime;
struct CSValidity;
struct CSSubjectPublicKeyInfo;
struct CSTBSCertificate;
struct CSCertificate;
struct CSRSAPublicKey;
struct CSOtherPrimeInfo;
struct CSOtherPrimeInfos;
struct CSRSAPrivateKey;
struct CSContextSet;
struct CSPrivateKeyAttribute;
struct CSSetOfPrivateKeyAttributes;
struct CSSeqOfPrivateKeyAttributes;
struct CSPrivateKeyAttributes;
struct CSPrivateKeyInfo;

namespace Tavo::Der {

template <class T>
extern const Type kTypeOf;

constexpr bool kOptional = true;
constexpr uint8_t kAllBits = 0xFF;

template <class C>
constexpr Field Plain(const char* name, bool optional = false) {
  return {name, &kTypeOf<C>, Tagging::Plain, kTypeOf<C>.identifier, kTypeOf<C>.mask, optional};
}
// Either the primitive or the constructed form.
template <class C>
constexpr Field EitherForm(const char* name) {
  return {name, &kTypeOf<C>, Tagging::Plain, kTypeOf<C>.identifier, kAllBits & ~kConstructed, false};
}
template <class C>
constexpr Field Implicit(uint32_t number, const char* name, bool optional = false) {
  return {name,
          &kTypeOf<C>,
          Tagging::Implicit,
          IdentifierOf(number, CSTagClass_CONTEXT_SPECIFIC, kTypeOf<C>.identifier & kConstructed),
          kAllBits,
          optional};
}
template <class C>
constexpr Field Explicit(uint32_t number, const char* name, bool optional = false) {
  return {name,     &kTypeOf<C>, Tagging::Explicit, IdentifierOf(number, CSTagClass_CONTEXT_SPECIFIC, kConstructed),
          kAllBits, optional};
}

#define CS_COMPOUND(T, kind, identifier, mask, wrong, octets, ...)                            \
  inline constexpr Field k##T##Fields[] = {__VA_ARGS__};                                      \
  template <>                                                                                 \
  inline constexpr Type kTypeOf<T> {                                                          \
#T, kind, identifier, mask, wrong, k##T##Fields, std::size(k##T##Fields), octets, nullptr \
  }
#define SEQUENCE(T, ...)                                                                                            \
  CS_COMPOUND(T, Kind::Record, 0x30, kAllBits, CSResult_EXPECTED_SEQUENCE, sizeof(void*) * std::size(k##T##Fields), \
              __VA_ARGS__)
#define SEQUENCE_OF(T, I) \
  CS_COMPOUND(T, Kind::List, 0x30, kAllBits, CSResult_EXPECTED_SEQUENCE, sizeof(List), Plain<I>("item"))
#define SET_OF(T, I) CS_COMPOUND(T, Kind::List, 0x31, kAllBits, CSResult_EXPECTED_SET, sizeof(List), Plain<I>("item"))
#define CHOICE(T, ...) CS_COMPOUND(T, Kind::Choice, 0, 0, CSResult_UNKNOWN_CHOICE, sizeof(Choice), __VA_ARGS__)
#define PRIMITIVE(T, identifier, mask, wrong, leaf)                       \
  template <>                                                             \
  inline constexpr Type kTypeOf<T> {                                      \
#T, Kind::Leaf, identifier, mask, wrong, nullptr, 0, sizeof(T), &leaf \
  }

PRIMITIVE(Boolean, 0x01, kAllBits, CSResult_EXPECTED_BOOLEAN, kBoolean);
PRIMITIVE(CSASNInteger, 0x02, kAllBits, CSResult_EXPECTED_INTEGER, kInteger);
PRIMITIVE(CSASNBitString, 0x03, kAllBits, CSResult_EXPECTED_BIT_STRING, kBitString);
PRIMITIVE(CSASNOctetString, 0x04, kAllBits, CSResult_EXPECTED_OCTET_STRING, kOctetString);
PRIMITIVE(CSASNOID, 0x06, kAllBits, CSResult_EXPECTED_OID, kOid);
PRIMITIVE(CSASNUTCTime, 0x17, kAllBits, CSResult_EXPECTED_UTCTIME, kUtcTime);
PRIMITIVE(CSASNGeneralizedTime, 0x18, kAllBits, CSResult_EXPECTED_GENERALIZEDTIME, kGeneralizedTime);
PRIMITIVE(CSASNAny, 0, 0, CSResult_BAD_FORMAT, kAny);

// AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters ANY DEFINED BY algorithm OPTIONAL }
SEQUENCE(CSAlgorithmIdentifier, Plain<CSASNOID>("Algorithm"), Plain<CSASNAny>("Parameters", kOptional));

// AttributeTypeAndValue ::= SEQUENCE { type OBJECT IDENTIFIER, value ANY DEFINED BY type }
SEQUENCE(CSAttributeTypeAndValue, Plain<CSASNOID>("Type"), Plain<CSASNAny>("Value"));

// AttributeValues ::= SET OF ANY
SET_OF(CSAttributeValues, CSASNAny);

// RelativeDistinguishedName ::= SET OF AttributeTypeAndValue
SET_OF(CSRelativeDistinguishedName, CSAttributeTypeAndValue);

// RDNSequence ::= SEQUENCE OF RelativeDistinguishedName
SEQUENCE_OF(CSRDNSequence, CSRelativeDistinguishedName);

// Name ::= CHOICE { rdnSequence RDNSequence }
CHOICE(CSName, Plain<CSRDNSequence>("RdnSequence"));

// OtherName ::= SEQUENCE { type-id OBJECT IDENTIFIER, value [0] EXPLICIT ANY DEFINED BY type-id }
SEQUENCE(CSOtherName, Plain<CSASNOID>("TypeID"), Explicit<CSASNAny>(0, "Value"));

// GeneralName ::= CHOICE {
//   otherName [0] OtherName,      rfc822Name [1] IA5String,     dNSName [2] IA5String,
//   x400Address [3] ORAddress,    directoryName [4] Name,       ediPartyName [5] EDIPartyName,
//   uniformResourceIdentifier [6] IA5String,  iPAddress [7] OCTET STRING,  registeredID [8] OBJECT IDENTIFIER }
// x400Address and ediPartyName are kept as the first element of their contents.
CHOICE(CSGeneralName, Implicit<CSOtherName>(0, "OtherName"), Implicit<CSASNOctetString>(1, "Rfc822Name"),
       Implicit<CSASNOctetString>(2, "DNSName"), Explicit<CSASNAny>(3, "X400Address"),
       Explicit<CSName>(4, "DirectoryName"), Explicit<CSASNAny>(5, "EdiPartyName"),
       Implicit<CSASNOctetString>(6, "UniformResourceIdentifier"), Implicit<CSASNOctetString>(7, "IPAddress"),
       Implicit<CSASNOID>(8, "RegisteredID"));

// GeneralNames ::= SEQUENCE OF GeneralName
SEQUENCE_OF(CSGeneralNames, CSGeneralName);

// Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }
SEQUENCE(CSExtension, Plain<CSASNOID>("ExtID"), Plain<Boolean>("Critical", kOptional),
         Plain<CSASNOctetString>("ExtnValue"));

// Extensions ::= SEQUENCE OF Extension
SEQUENCE_OF(CSExtensions, CSExtension);

// ExtKeyUsageSyntax ::= SEQUENCE OF KeyPurposeId
SEQUENCE_OF(CSExtKeyUsageSyntax, CSASNOID);

// Time ::= CHOICE { utcTime UTCTime, generalTime GeneralizedTime }
CHOICE(CSTime, EitherForm<CSASNUTCTime>("UtcTime"), Plain<CSASNGeneralizedTime>("GeneralTime"));

// Validity ::= SEQUENCE { notBefore Time, notAfter Time }
SEQUENCE(CSValidity, Plain<CSTime>("NotBefore"), Plain<CSTime>("NotAfter"));

// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
SEQUENCE(CSSubjectPublicKeyInfo, Plain<CSAlgorithmIdentifier>("Algorithm"), Plain<CSASNBitString>("SubjectPublicKey"));

// TBSCertificate ::= SEQUENCE {
//   version [0] EXPLICIT Version DEFAULT v1,      serialNumber CertificateSerialNumber,
//   signature AlgorithmIdentifier,                issuer Name,
//   validity Validity,                            subject Name,
//   subjectPublicKeyInfo SubjectPublicKeyInfo,    issuerUniqueID [1] IMPLICIT UniqueIdentifier OPTIONAL,
//   subjectUniqueID [2] IMPLICIT UniqueIdentifier OPTIONAL,  extensions [3] EXPLICIT Extensions OPTIONAL }
SEQUENCE(CSTBSCertificate, Explicit<CSASNInteger>(0, "Version", kOptional), Plain<CSASNInteger>("SerialNumber"),
         Plain<CSAlgorithmIdentifier>("Signature"), Plain<CSName>("Issuer"), Plain<CSValidity>("Validity"),
         Plain<CSName>("Subject"), Plain<CSSubjectPublicKeyInfo>("SubjectPublicKeyInfo"),
         Implicit<CSASNBitString>(1, "IssuerUniqueID", kOptional),
         Implicit<CSASNBitString>(2, "SubjectUniqueID", kOptional), Explicit<CSExtensions>(3, "Extensions", kOptional));

// Certificate ::= SEQUENCE { tbsCertificate TBSCertificate, signatureAlgorithm AlgorithmIdentifier,
//   signature BIT STRING }
SEQUENCE(CSCertificate, Plain<CSTBSCertificate>("TbsCertificate"), Plain<CSAlgorithmIdentifier>("SignatureAlgorithm"),
         Plain<CSASNBitString>("Signature"));

// RSAPublicKey ::= SEQUENCE { modulus INTEGER, publicExponent INTEGER }
SEQUENCE(CSRSAPublicKey, Plain<CSASNInteger>("Modulus"), Plain<CSASNInteger>("PublicExponent"));

// OtherPrimeInfo ::= SEQUENCE { prime INTEGER, exponent INTEGER, coefficient INTEGER }
SEQUENCE(CSOtherPrimeInfo, Plain<CSASNInteger>("Prime"), Plain<CSASNInteger>("Exponent"),
         Plain<CSASNInteger>("Coefficient"));

// OtherPrimeInfos ::= SEQUENCE OF OtherPrimeInfo
SEQUENCE_OF(CSOtherPrimeInfos, CSOtherPrimeInfo);

// RSAPrivateKey ::= SEQUENCE { version Version, modulus INTEGER, publicExponent INTEGER, privateExponent INTEGER,
//   prime1 INTEGER, prime2 INTEGER, exponent1 INTEGER, exponent2 INTEGER, coefficient INTEGER,
//   otherPrimeInfos OtherPrimeInfos OPTIONAL }
SEQUENCE(CSRSAPrivateKey, Plain<CSASNInteger>("Version"), Plain<CSASNInteger>("Modulus"),
         Plain<CSASNInteger>("PublicExponent"), Plain<CSASNInteger>("PrivateExponent"), Plain<CSASNInteger>("Prime1"),
         Plain<CSASNInteger>("Prime2"), Plain<CSASNInteger>("Exponent1"), Plain<CSASNInteger>("Exponent2"),
         Plain<CSASNInteger>("Coefficient"), Plain<CSOtherPrimeInfos>("OtherPrimeInfos", kOptional));

// ContextSet ::= SET OF ANY
SET_OF(CSContextSet, CSASNAny);

// PrivateKeyAttribute ::= SEQUENCE { type OBJECT IDENTIFIER, values AttributeValues, valuesWithContext ContextSet
//   OPTIONAL }
SEQUENCE(CSPrivateKeyAttribute, Plain<CSASNOID>("Type"), Plain<CSAttributeValues>("Values"),
         Plain<CSContextSet>("ValuesWithContext", kOptional));

// SetOfPrivateKeyAttributes ::= SET OF PrivateKeyAttribute, SeqOfPrivateKeyAttributes ::= SEQUENCE OF the same
SET_OF(CSSetOfPrivateKeyAttributes, CSPrivateKeyAttribute);
SEQUENCE_OF(CSSeqOfPrivateKeyAttributes, CSPrivateKeyAttribute);

// PrivateKeyAttributes ::= CHOICE { SeqOfPrivateKeyAttributes, SetOfPrivateKeyAttributes }
CHOICE(CSPrivateKeyAttributes, Plain<CSSeqOfPrivateKeyAttributes>("CSeqOf"),
       Plain<CSSetOfPrivateKeyAttributes>("CSetoF"));

// PrivateKeyInfo ::= SEQUENCE { version Version, privateKeyAlgorithm AlgorithmIdentifier, privateKey OCTET STRING,
//   attributes [0] IMPLICIT SET OF PrivateKeyAttribute OPTIONAL }
SEQUENCE(CSPrivateKeyInfo, Plain<CSASNInteger>("Version"), Plain<CSAlgorithmIdentifier>("PrivateKeyAlgorithm"),
         Plain<CSASNOctetString>("PrivateKey"), Implicit<CSSetOfPrivateKeyAttributes>(0, "Attributes", kOptional));

#undef CS_COMPOUND
#undef SEQUENCE
#undef SEQUENCE_OF
#undef SET_OF
#undef CHOICE
#undef PRIMITIVE

}  // namespace Tavo::Der
