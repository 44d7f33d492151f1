#include "outcome.h"

#include <algorithm>
#include <cstdio>

#include "printable.h"

namespace rzcrypto {

using namespace Tavo::Framework;

Exit ExitFor(unsigned long id) {
  switch (id) {
    case CRYPTO_BAD_PARAM:
    case CRYPTO_INTERNAL_ERROR:
    case CRYPTO_INVALID_KEY:
    case CRYPTO_INVALID_KEY_SIZE:
    case CRYPTO_INVALID_DATA_SIZE:
      return Exit::kBadInput;
    case CRYPTO_NOT_IMPLEMENTED:
    case CRYPTO_NOT_SUPPORTED:
    case CRYPTO_NO_SUCH_ALGORITHM:
    case CRYPTO_NO_SUCH_PADDING:
    case CRYPTO_UNSUPPORTED_FIPS_MODE:
      return Exit::kNotSupported;
    default:
      return Exit::kInside;
  }
}

void Outcome::Add(Exit code) { m_code = std::max(m_code, code); }

void Outcome::Report(const std::string& subject, const Failure& failure) {
  Note(subject, failure.message);
  m_reason = failure.message;
  Add(failure.code);
}

void Outcome::Note(const std::string& subject, const std::string& message) {
  std::fprintf(stderr, "rzcrypto: %s: %s\n", Printable(subject).c_str(), Printable(message).c_str());
}

}  // namespace rzcrypto
