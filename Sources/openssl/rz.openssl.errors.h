#ifndef RZ_OPENSSL_ERRORS_H
#define RZ_OPENSSL_ERRORS_H

#include <openssl/err.h>

namespace Tavo::Framework {

/// OpensslError is one entry of libcrypto's error queue. Code 0, with its own text, is legal: some functions fail
/// without an entry.
struct OpensslError {
  unsigned int code;
  char text[256];
};

/// OpensslErrors keeps the thread's error queue as it was found: what is queued while it lives is gone afterwards. It
/// stands before the call whose error is wanted:
///
///   const OpensslErrors errors;
///   if (RAND_bytes(out, count) != 1) {
///     const OpensslError error = errors.First();
///     LogError("... : RAND_bytes failed with error 0x%x (%s)", error.code, error.text);
///   }
class OpensslErrors {
 public:
  OpensslErrors() : m_bEmpty(ERR_set_mark() == 0) {}
  OpensslErrors(const OpensslErrors&) = delete;
  OpensslErrors& operator=(const OpensslErrors&) = delete;
  ~OpensslErrors() { ERR_pop_to_mark(); }

  /// First returns the first error since the construction, which is the innermost. The queue gives out only its very
  /// first and last entries: when the host has left entries in it, the last one is returned.
  OpensslError First() const {
    const unsigned long code = m_bEmpty ? ERR_peek_error() : ERR_peek_last_error();
    OpensslError error{static_cast<unsigned int>(code), {}};
    ERR_error_string_n(code, error.text, sizeof error.text);
    return error;
  }

 private:
  bool m_bEmpty;  // there was no entry, so none could be marked and popping takes them all
};

}  // namespace Tavo::Framework

#endif
