#ifndef RZCRYPTO_DIGEST_INFO_H
#define RZCRYPTO_DIGEST_INFO_H

#include <optional>
#include <string>

#include "tavo/framework/bytes.h"

namespace rzcrypto {

using Tavo::Framework::ByteArray;

/// DigestInfo returns the DER DigestInfo (RFC 8017, A.2.4) of a hash made by the digest `algorithm` ("SHA256"), its
/// parameters NULL: what a PKCS #1 v1.5 signature signs.
ByteArray DigestInfo(const std::string& algorithm, const ByteArray& hash);

/// DigestInfoAlgorithm returns the digest whose DigestInfo `encoded` is, or nothing.
std::optional<std::string> DigestInfoAlgorithm(const ByteArray& encoded);

}  // namespace rzcrypto

#endif
