/// Certificate extensions (RFC 5280, 4.2). A key usage is a BIT STRING (CSKeyUsage), a key purpose an OID
/// (CSKeyPurposeId).
///
/// Conventions are told in core.h, the functions of the CS_... lines in family.h.
#ifndef TAVO_DER_EXTENSION_H
#define TAVO_DER_EXTENSION_H

#include "tavo/der/primitive.h"

/// CSExtension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }
typedef struct CSExtension CSExtension;
/// CSExtensions ::= SEQUENCE OF Extension
typedef struct CSExtensions CSExtensions;
/// CSExtKeyUsageSyntax ::= SEQUENCE OF KeyPurposeId
typedef struct CSExtKeyUsageSyntax CSExtKeyUsageSyntax;

CS_BEGIN_DECLARATIONS

CS_RECORD(CSExtension)
CS_FIELD(CSExtension, ExtID, CSASNOID)
CS_BOOLEAN_FIELD(CSExtension, Critical)
CS_FIELD(CSExtension, ExtnValue, CSASNOctetString)

CS_LIST(CSExtensions, CSExtension)
CS_LIST(CSExtKeyUsageSyntax, CSASNOID)

CS_END_DECLARATIONS

#endif
