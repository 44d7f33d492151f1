#ifndef RZCRYPTO_CERT_NAMES_H
#define RZCRYPTO_CERT_NAMES_H

#include <vector>

#include "cert_view.h"

namespace rzcrypto {

/// ReadAlternativeNames joins the general names of the certificate object with what only the encoding tells: the string
/// types of other-names, and the directory names.
std::vector<AlternativeName> ReadAlternativeNames(const Tavo::Framework::OwnedNames& names,
                                                  const CSTBSCertificate* tbs);

/// KindName returns the kind of a name as people say it: "user principal name", "e-mail", "DNS", ...
std::string KindName(const AlternativeName& name);

/// Shown returns the value for people: the text, an address in its notation, or "hex ... (text)" for other octets.
std::string Shown(const AlternativeName& name);

/// IsPrincipalName returns whether the name is a user principal name.
bool IsPrincipalName(const AlternativeName& name);

}  // namespace rzcrypto

#endif
