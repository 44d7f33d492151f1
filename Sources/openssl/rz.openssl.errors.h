#ifndef RZ_OPENSSL_ERRORS_H
#define RZ_OPENSSL_ERRORS_H

#include <openssl/err.h>

namespace Tavo::Framework {

/// OpensslError is one entry of libcrypto's error queue. Code 0, with its own text, is legal: some functions fail
/// without an entry.
struct OpensslError {
  unsigned int code;
  char text[256];

  explicit OpensslError(unsigned long queued) : code(static_cast<unsigned int>(queued)) {
    ERR_error_string_n(queued, text, sizeof text);
  }
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
  OpensslError First() const { return OpensslError(m_bEmpty ? ERR_peek_error() : ERR_peek_last_error()); }

 private:
  bool m_bEmpty;  // there was no entry, so none could be marked and popping takes them all
};

/// OpensslFence does the same around calls that leave marks of their own behind, as libcrypto's key generation does.
/// They would stay on the host's last entry; here they end up on an entry of ours, which is removed with them.
class OpensslFence {
 public:
  OpensslFence() {
    ERR_set_mark();
    ERR_raise(ERR_LIB_USER, kReason);
    ERR_set_mark();
  }
  OpensslFence(const OpensslFence&) = delete;
  OpensslFence& operator=(const OpensslFence&) = delete;
  ~OpensslFence() {
    // Each round takes what is above the uppermost mark, and that mark; the last one takes our entry and the mark
    // below. Should libcrypto have pushed our entry out of its ring, all of the host's went before.
    for (bool reached = false;;) {
      const bool atFence = ERR_peek_last_error() == ERR_PACK(ERR_LIB_USER, 0, kReason);
      if ((reached && !atFence) || ERR_pop_to_mark() == 0) return;
      reached = reached || atFence;
    }
  }

  /// Last returns the last error since the construction; there must have been one.
  OpensslError Last() const { return OpensslError(ERR_peek_last_error()); }

 private:
  static constexpr int kReason = 0x6f3a17;  // which nobody else raises
};

}  // namespace Tavo::Framework

#endif
