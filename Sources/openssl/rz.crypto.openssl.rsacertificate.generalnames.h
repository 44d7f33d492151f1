#ifndef RZ_CRYPTO_OPENSSL_RSACERTIFICATE_GENERALNAMES_H
#define RZ_CRYPTO_OPENSSL_RSACERTIFICATE_GENERALNAMES_H

#include "../common/rz.crypto.der.h"
#include "tavo/framework/names.h"

namespace Tavo::Framework::Certificate {

/// ReadGeneralNames returns the names of an encoded GeneralNames in their order, without the directory names. One that
/// cannot be read fails them all. The caller deletes the names.
GeneralNameList ReadGeneralNames(const DerSteps& check, const std::uint8_t* data, std::uint64_t size);

}  // namespace Tavo::Framework::Certificate

#endif
