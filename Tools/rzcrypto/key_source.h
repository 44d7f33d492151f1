#ifndef RZCRYPTO_KEY_SOURCE_H
#define RZCRYPTO_KEY_SOURCE_H

#include "key_file.h"

namespace rzcrypto {

/// What the --key of every command takes, for its help.
inline constexpr const char* kKeySourceHelp =
    "file:PATH, raw:PATH (a secret key, byte for byte), env:NAME or fd:N (hex:DIGITS works, too, and shows the key to "
    "everybody); anything else is a PATH. Of a PEM file the first key that serves is taken";

/// KeySourceName returns what messages call the source: never the key itself.
std::string KeySourceName(const std::string& source);

/// KeySourcePath returns the path that the source is read from, empty for one that is no file.
std::string KeySourcePath(const std::string& source);

/// What a key is for. A private key serves where a public one is needed.
enum class KeyUse { kSecret, kPublic, kPrivate };

/// ReadKeySource reads the key that a --key option names. Its bytes are told apart by content as those of every input
/// are, but raw: takes them as they are, and so does every source for a secret key that is too short to be another one;
/// of a PEM file the first block that serves counts. Writes a warning to standard error for hex:. Throws Failure kUsage
/// for a source that is not written as it should be, kReadOrWrite when it cannot be read; what is wrong with the first
/// block when none serves: kBadInput for what is no key or a key for another use, kNotSupported for an encrypted one.
KeyFile ReadKeySource(const std::string& source, KeyUse use);

/// WarnOfSurplus writes a warning to standard error when only the first `used` of the `size` bytes of the key, or
/// whatever `what` is called, are taken.
void WarnOfSurplus(const char* what, size_t size, size_t used);

}  // namespace rzcrypto

#endif
