#ifndef RZCRYPTO_DER_RULES_H
#define RZCRYPTO_DER_RULES_H

#include <optional>

#include "der_tree.h"
#include "der_types.h"

namespace rzcrypto::der {

/// FindNotDer returns the first element of the input, an object of the type, that is BER but not DER (ITU-T X.690, 10
/// and 11), and the rule that it breaks; nothing when there is none. Universal tags are held against the rules of their
/// types, other tags against those of the form alone. What OCTET and BIT STRINGs hold is not looked at.
std::optional<Fault> FindNotDer(const Type& type, Bytes input);

}  // namespace rzcrypto::der

#endif
