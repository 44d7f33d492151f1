#ifndef TAVO_FRAMEWORK_EXCEPTION_H
#define TAVO_FRAMEWORK_EXCEPTION_H

#include "rz/cext.h"

namespace Tavo::Framework {

/// CryptoExceptionId numbers the failures of this library. Any other number is legal in an exception too.
enum CryptoExceptionId : unsigned long {
  CRYPTO_BAD_PARAM = 4000,              ///< an argument or option that cannot be right
  CRYPTO_NOT_IMPLEMENTED = 4001,        ///< refused by design on this platform
  CRYPTO_NOT_SUPPORTED = 4002,          ///< a mode, format or key type that this operation does not take
  CRYPTO_UNKNOWN_ERROR = 4003,          ///< libcrypto or the system failed
  CRYPTO_INTERNAL_ERROR = 4004,         ///< an encoding that does not decode, or a value that is not there
  CRYPTO_NOT_P12 = 4005,                ///< not used by this library
  CRYPTO_NO_SUCH_ALGORITHM = 4006,      ///< unknown algorithm, or one that this service does not have
  CRYPTO_NO_SUCH_PADDING = 4007,        ///< unknown padding
  CRYPTO_INVALID_KEY = 4008,            ///< not used by this library
  CRYPTO_ILLEGAL_STATE = 4009,          ///< called before Init, or Init twice
  CRYPTO_INVALID_KEY_SIZE = 4010,       ///< a key too short for the cipher
  CRYPTO_UNSUPPORTED_FIPS_MODE = 4011,  ///< FIPS mode asked for
  CRYPTO_BAD_AUTH = 4012,               ///< not used by this library
  CRYPTO_INVALID_DATA_SIZE = 4013       ///< data of a length that the operation does not take
};

/// CCryptoException is the exception of this library, thrown as `IException*`.
class RZ_CRYPTO_API CCryptoException : public CException {
 public:
  /// The constructor takes ownership of `inner`, which may be null. `file` is the module that throws.
  CCryptoException(SecureString file, unsigned long line, SecureString message, CryptoExceptionId id,
                   IException* inner);
  CCryptoException(CCryptoException& other);
  CCryptoException(const CCryptoException& other);
  CCryptoException& operator=(const CCryptoException&) = delete;
  ~CCryptoException() override;

  /// StringFromId returns the identifier as text: "ID:4006 (CRYPTO_NO_SUCH_ALGORITHM)", or "ID:n (Unknown Exception
  /// Id)" for a number outside the enumeration.
  virtual SecureString StringFromId();
};

}  // namespace Tavo::Framework

#endif
