#include "tavo/framework/exception.h"

#include <charconv>
#include <utility>

namespace Tavo::Framework {

CCryptoException::CCryptoException(SecureString file, unsigned long line, SecureString message, CryptoExceptionId id,
                                   IException* inner)
    : CException(std::move(file), line, std::move(message), id, inner) {}

CCryptoException::CCryptoException(CCryptoException& other) = default;
CCryptoException::CCryptoException(const CCryptoException& other) = default;
CCryptoException::~CCryptoException() = default;

SecureString CCryptoException::StringFromId() {
  static constexpr const char* kNames[] = {
      "(CRYPTO_BAD_PARAM)",         "(CRYPTO_NOT_IMPLEMENTED)",   "(CRYPTO_NOT_SUPPORTED)",
      "(CRYPTO_UNKNOWN_ERROR)",     "(CRYPTO_INTERNAL_ERROR)",    "(CRYPTO_NOT_P12)",
      "(CRYPTO_NO_SUCH_ALGORITHM)", "(CRYPTO_NO_SUCH_PADDING)",   "(CRYPTO_INVALID_KEY)",
      "(CRYPTO_ILLEGAL_STATE)",     "(CRYPTO_INVALID_KEY_SIZE)",  "(CRYPTO_UNSUPPORTED_FIPS_MODE)",
      "(CRYPTO_BAD_AUTH)",          "(CRYPTO_INVALID_DATA_SIZE)",
  };
  static_assert(std::size(kNames) == CRYPTO_INVALID_DATA_SIZE - CRYPTO_BAD_PARAM + 1);
  const unsigned long id = getID();
  char digits[24];
  SecureString text = "ID:";
  text.append(digits, std::to_chars(digits, digits + sizeof digits, id).ptr);
  text += ' ';
  const bool known = id >= CRYPTO_BAD_PARAM && id <= CRYPTO_INVALID_DATA_SIZE;
  text += known ? kNames[id - CRYPTO_BAD_PARAM] : "(Unknown Exception Id)";
  return text;
}

}  // namespace Tavo::Framework
