/// The DER library: ASN.1 types of certificates and keys as flat C functions (ITU-T X.690, RFC 5280, PKCS #1, PKCS #8).
///
/// core.h tells the conventions and the result codes, family.h the functions that every type has in common; the other
/// headers tell the types. For C (C99) and C++.
#ifndef TAVO_DER_H
#define TAVO_DER_H

#include "tavo/der/certificate.h"
#include "tavo/der/core.h"
#include "tavo/der/extension.h"
#include "tavo/der/key.h"
#include "tavo/der/name.h"
#include "tavo/der/primitive.h"
#include "tavo/der/time.h"

#endif
