/// RSA keys (PKCS #1, RFC 8017 appendix A.1) and the PKCS #8 private key container (RFC 5208).
///
/// Conventions are told in core.h, the functions of the CS_... lines in family.h. The buffers that encoders fill hold
/// the key in clear: wipe them before they are freed.
#ifndef TAVO_DER_KEY_H
#define TAVO_DER_KEY_H

#include "tavo/der/name.h"

/// CSRSAPublicKey ::= SEQUENCE { modulus INTEGER, publicExponent INTEGER }
typedef struct CSRSAPublicKey CSRSAPublicKey;
/// CSOtherPrimeInfo ::= SEQUENCE { prime INTEGER, exponent INTEGER, coefficient INTEGER }
typedef struct CSOtherPrimeInfo CSOtherPrimeInfo;
/// CSOtherPrimeInfos ::= SEQUENCE OF OtherPrimeInfo
typedef struct CSOtherPrimeInfos CSOtherPrimeInfos;
/// CSRSAPrivateKey ::= SEQUENCE { version, modulus, publicExponent, privateExponent, prime1, prime2, exponent1,
/// exponent2, coefficient INTEGER, otherPrimeInfos OtherPrimeInfos OPTIONAL }
typedef struct CSRSAPrivateKey CSRSAPrivateKey;
/// CSContextSet ::= SET OF ANY
typedef struct CSContextSet CSContextSet;
/// CSPrivateKeyAttribute ::= SEQUENCE { type OBJECT IDENTIFIER, values AttributeValues, valuesWithContext ContextSet
/// OPTIONAL }
typedef struct CSPrivateKeyAttribute CSPrivateKeyAttribute;
/// CSSetOfPrivateKeyAttributes ::= SET OF PrivateKeyAttribute
typedef struct CSSetOfPrivateKeyAttributes CSSetOfPrivateKeyAttributes;
/// CSSeqOfPrivateKeyAttributes ::= SEQUENCE OF PrivateKeyAttribute
typedef struct CSSeqOfPrivateKeyAttributes CSSeqOfPrivateKeyAttributes;
/// CSPrivateKeyAttributes ::= CHOICE { SEQUENCE OF PrivateKeyAttribute, SET OF PrivateKeyAttribute }
typedef struct CSPrivateKeyAttributes CSPrivateKeyAttributes;
/// CSPrivateKeyInfo ::= SEQUENCE { version INTEGER, privateKeyAlgorithm AlgorithmIdentifier, privateKey OCTET STRING,
/// attributes [0] IMPLICIT SET OF PrivateKeyAttribute OPTIONAL }
typedef struct CSPrivateKeyInfo CSPrivateKeyInfo;

CS_BEGIN_DECLARATIONS

CS_RECORD(CSRSAPublicKey)
CS_FIELD(CSRSAPublicKey, Modulus, CSASNInteger)
CS_FIELD(CSRSAPublicKey, PublicExponent, CSASNInteger)

CS_RECORD(CSOtherPrimeInfo)
CS_FIELD(CSOtherPrimeInfo, Prime, CSASNInteger)
CS_FIELD(CSOtherPrimeInfo, Exponent, CSASNInteger)
CS_FIELD(CSOtherPrimeInfo, Coefficient, CSASNInteger)

CS_LIST(CSOtherPrimeInfos, CSOtherPrimeInfo)

CS_RECORD(CSRSAPrivateKey)
CS_FIELD(CSRSAPrivateKey, Version, CSASNInteger)
CS_FIELD(CSRSAPrivateKey, Modulus, CSASNInteger)
CS_FIELD(CSRSAPrivateKey, PublicExponent, CSASNInteger)
CS_FIELD(CSRSAPrivateKey, PrivateExponent, CSASNInteger)
CS_FIELD(CSRSAPrivateKey, Prime1, CSASNInteger)
CS_FIELD(CSRSAPrivateKey, Prime2, CSASNInteger)
CS_FIELD(CSRSAPrivateKey, Exponent1, CSASNInteger)
CS_FIELD(CSRSAPrivateKey, Exponent2, CSASNInteger)
CS_FIELD(CSRSAPrivateKey, Coefficient, CSASNInteger)
CS_OPTIONAL_FIELD(CSRSAPrivateKey, OtherPrimeInfos, CSOtherPrimeInfos)

CS_LIST(CSContextSet, CSASNAny)

CS_RECORD(CSPrivateKeyAttribute)
CS_FIELD(CSPrivateKeyAttribute, Type, CSASNOID)
CS_FIELD(CSPrivateKeyAttribute, Values, CSAttributeValues)
CS_OPTIONAL_FIELD(CSPrivateKeyAttribute, ValuesWithContext, CSContextSet)

CS_LIST(CSSetOfPrivateKeyAttributes, CSPrivateKeyAttribute)
CS_LIST(CSSeqOfPrivateKeyAttributes, CSPrivateKeyAttribute)

CS_CHOICE(CSPrivateKeyAttributes)
CS_ALTERNATIVE(CSPrivateKeyAttributes, CSeqOf, CSSeqOfPrivateKeyAttributes)
CS_ALTERNATIVE(CSPrivateKeyAttributes, CSetoF, CSSetOfPrivateKeyAttributes)

CS_RECORD(CSPrivateKeyInfo)
CS_FIELD(CSPrivateKeyInfo, Version, CSASNInteger)
CS_FIELD(CSPrivateKeyInfo, PrivateKeyAlgorithm, CSAlgorithmIdentifier)
CS_FIELD(CSPrivateKeyInfo, PrivateKey, CSASNOctetString)
CS_OPTIONAL_FIELD(CSPrivateKeyInfo, Attributes, CSSetOfPrivateKeyAttributes)

CS_END_DECLARATIONS

#endif
