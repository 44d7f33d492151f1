#ifndef RZCRYPTO_KEY_SOURCE_H
#define RZCRYPTO_KEY_SOURCE_H

#include "key_file.h"

namespace rzcrypto {

/// What the --key of every command takes, for its help.
inline constexpr const char* kKeySourceHelp =
    "file:PATH, env:NAME or fd:N (hex:DIGITS works, too, and shows the key to everybody); anything else is a PATH";

/// KeySourceName returns what messages call the source: never the key itself.
std::string KeySourceName(const std::string& source);

/// ReadKeySource reads the key that a --key option names. Its bytes are told apart by content as those of every input
/// are; of a PEM file with several blocks the first one counts. Writes a warning to standard error for hex:. Throws
/// Failure kReadOrWrite when the source cannot be read, kBadInput for what is no key, kNotSupported for an encrypted
/// one.
KeyFile ReadKeySource(const std::string& source);

/// ReadSecretKey does the same and throws Failure kBadInput for an RSA key.
KeyFile ReadSecretKey(const std::string& source);

}  // namespace rzcrypto

#endif
