/// X.509 certificates (RFC 5280, 4.1).
///
/// Conventions are told in core.h, the functions of the CS_... lines in family.h. What a getter followed by an encoder
/// gives is a re-encoding. Take signed octets from the input itself, by CSCertificate_DEROffsetOfTbsCertificateTLV.
#ifndef TAVO_DER_CERTIFICATE_H
#define TAVO_DER_CERTIFICATE_H

#include "tavo/der/extension.h"
#include "tavo/der/name.h"
#include "tavo/der/time.h"

/// CSSubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
typedef struct CSSubjectPublicKeyInfo CSSubjectPublicKeyInfo;
/// CSTBSCertificate ::= SEQUENCE { version [0] EXPLICIT INTEGER OPTIONAL, serialNumber INTEGER, ... }: the part that is
/// signed. An absent version means version 1. issuerUniqueID and subjectUniqueID are [1] and [2] IMPLICIT BIT STRING,
/// extensions [3] EXPLICIT: the inner identifier of another type gives that type's code (419, 412). Octets after the
/// extensions, in their wrapper or behind it, are ignored.
typedef struct CSTBSCertificate CSTBSCertificate;
/// CSCertificate ::= SEQUENCE { tbsCertificate TBSCertificate, signatureAlgorithm AlgorithmIdentifier, signature BIT
/// STRING }
typedef struct CSCertificate CSCertificate;

CS_BEGIN_DECLARATIONS

CS_RECORD(CSSubjectPublicKeyInfo)
CS_FIELD(CSSubjectPublicKeyInfo, Algorithm, CSAlgorithmIdentifier)
CS_FIELD(CSSubjectPublicKeyInfo, SubjectPublicKey, CSASNBitString)

CS_RECORD(CSTBSCertificate)
CS_OPTIONAL_FIELD(CSTBSCertificate, Version, CSASNInteger)
CS_FIELD(CSTBSCertificate, SerialNumber, CSASNInteger)
CS_FIELD(CSTBSCertificate, Signature, CSAlgorithmIdentifier)
CS_FIELD(CSTBSCertificate, Issuer, CSName)
CS_FIELD(CSTBSCertificate, Validity, CSValidity)
CS_FIELD(CSTBSCertificate, Subject, CSName)
CS_FIELD(CSTBSCertificate, SubjectPublicKeyInfo, CSSubjectPublicKeyInfo)
CS_OPTIONAL_FIELD(CSTBSCertificate, IssuerUniqueID, CSASNBitString)
CS_OPTIONAL_FIELD(CSTBSCertificate, SubjectUniqueID, CSASNBitString)
CS_OPTIONAL_FIELD(CSTBSCertificate, Extensions, CSExtensions)

CS_RECORD(CSCertificate)
CS_FIELD(CSCertificate, TbsCertificate, CSTBSCertificate)
CS_FIELD(CSCertificate, SignatureAlgorithm, CSAlgorithmIdentifier)
CS_FIELD(CSCertificate, Signature, CSASNBitString)

CS_END_DECLARATIONS

#endif
