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
  OpensslFence() : m_bEmpty(ERR_set_mark() == 0) {
    if (m_bEmpty) return;
    ERR_raise(ERR_LIB_USER, kReason);
    ERR_set_mark();
  }
  OpensslFence(const OpensslFence&) = delete;
  OpensslFence& operator=(const OpensslFence&) = delete;
  ~OpensslFence() {
    // Each round takes what is above the uppermost mark, and that mark; the last one takes our entry and the mark
    // below, or what is left. Should libcrypto have pushed our entry out of its ring, all of the host's went before.
    for (bool reached = false;;) {
      const bool atFence = AtFence();
      if ((reached && !atFence) || ERR_pop_to_mark() == 0) return;
      reached = reached || atFence;
    }
  }

  /// First returns what that of OpensslErrors does, and code 0 when no error was queued since the construction.
  OpensslError First() const {
    if (m_bEmpty) return OpensslError(ERR_peek_error());
    return OpensslError(AtFence() ? 0 : ERR_peek_last_error());
  }

 private:
  static constexpr int kReason = 0x6f3a17;  // which nobody else raises
  static bool AtFence() { return ERR_peek_last_error() == ERR_PACK(ERR_LIB_USER, 0, kReason); }

  bool m_bEmpty;  // there was no entry, so none of the host's has to be kept
};

}  // namespace Tavo::Framework

#endif
