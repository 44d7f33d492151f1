#ifndef RZ_CRYPTO_ASNER_NAMEWRITER_H
#define RZ_CRYPTO_ASNER_NAMEWRITER_H

#include "../common/rz.crypto.der.h"
#include "tavo/der.h"

namespace Tavo::Framework {

/// AppendAttribute appends "<type>=<value>" as RFC 4514, 2.3 and 2.4, write it; see IX500Name::GetName.
void AppendAttribute(const DerSteps& check, const CSASNOID* type, const CSASNAny* value, SecureString& text);

/// Contents returns the contents octets of the element.
SecureString Contents(const DerSteps& check, const CSASNAny* value);

}  // namespace Tavo::Framework

#endif
