/// Distinguished names and general names (RFC 5280, 4.1.2.4 and 4.2.1.6), and AlgorithmIdentifier (4.1.1.2).
///
/// Conventions are told in core.h, the functions of the CS_... lines in family.h.
#ifndef TAVO_DER_NAME_H
#define TAVO_DER_NAME_H

#include "tavo/der/primitive.h"

/// CSAlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters ANY OPTIONAL }
typedef struct CSAlgorithmIdentifier CSAlgorithmIdentifier;
/// CSAttributeTypeAndValue ::= SEQUENCE { type OBJECT IDENTIFIER, value ANY }
typedef struct CSAttributeTypeAndValue CSAttributeTypeAndValue;
/// CSAttributeValues ::= SET OF ANY
typedef struct CSAttributeValues CSAttributeValues;
/// CSRelativeDistinguishedName ::= SET OF AttributeTypeAndValue
typedef struct CSRelativeDistinguishedName CSRelativeDistinguishedName;
/// CSRDNSequence ::= SEQUENCE OF RelativeDistinguishedName
typedef struct CSRDNSequence CSRDNSequence;
/// CSName ::= CHOICE { rdnSequence RDNSequence }
typedef struct CSName CSName;
/// CSOtherName ::= SEQUENCE { type-id OBJECT IDENTIFIER, value [0] EXPLICIT ANY }. The value is the inner element.
typedef struct CSOtherName CSOtherName;
/// CSGeneralName ::= CHOICE of nine alternatives, context-specific 0 to 8. Of x400Address and ediPartyName the first
/// element of the contents is kept.
typedef struct CSGeneralName CSGeneralName;
/// CSGeneralNames ::= SEQUENCE OF GeneralName
typedef struct CSGeneralNames CSGeneralNames;

CS_BEGIN_DECLARATIONS

CS_RECORD(CSAlgorithmIdentifier)
CS_FIELD(CSAlgorithmIdentifier, Algorithm, CSASNOID)
CS_OPTIONAL_FIELD(CSAlgorithmIdentifier, Parameters, CSASNAny)

CS_RECORD(CSAttributeTypeAndValue)
CS_FIELD(CSAttributeTypeAndValue, Type, CSASNOID)
CS_FIELD(CSAttributeTypeAndValue, Value, CSASNAny)

CS_LIST(CSAttributeValues, CSASNAny)
CS_LIST(CSRelativeDistinguishedName, CSAttributeTypeAndValue)
CS_LIST(CSRDNSequence, CSRelativeDistinguishedName)

CS_CHOICE(CSName)
CS_ALTERNATIVE(CSName, RdnSequence, CSRDNSequence)

CS_RECORD(CSOtherName)
CS_FIELD(CSOtherName, TypeID, CSASNOID)
CS_FIELD(CSOtherName, Value, CSASNAny)

CS_CHOICE(CSGeneralName)
CS_ALTERNATIVE(CSGeneralName, OtherName, CSOtherName)
CS_ALTERNATIVE(CSGeneralName, Rfc822Name, CSASNIA5String)
CS_ALTERNATIVE(CSGeneralName, DNSName, CSASNIA5String)
CS_ALTERNATIVE(CSGeneralName, X400Address, CSASNAny)
CS_ALTERNATIVE(CSGeneralName, DirectoryName, CSName)
CS_ALTERNATIVE(CSGeneralName, EdiPartyName, CSASNAny)
CS_ALTERNATIVE(CSGeneralName, UniformResourceIdentifier, CSASNIA5String)
CS_ALTERNATIVE(CSGeneralName, IPAddress, CSASNOctetString)
CS_ALTERNATIVE(CSGeneralName, RegisteredID, CSASNOID)

CS_LIST(CSGeneralNames, CSGeneralName)

CS_END_DECLARATIONS

#endif
