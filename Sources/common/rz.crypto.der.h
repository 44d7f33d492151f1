#ifndef RZ_CRYPTO_DER_H
#define RZ_CRYPTO_DER_H

#include "rz.crypto.trace.h"
#include "tavo/der_owned.h"

namespace Tavo::Framework {

/// DerSteps turns the result codes of the DER library into exceptions, for one operation.
class DerSteps {
 public:
  /// How a failing step is logged: "<operation> : <step> (err = <code>)" or "<operation>: <step>() failed".
  enum LogForm { kCode, kConstructing };

  DerSteps(const Module& module, const char* operation, CryptoExceptionId id = CRYPTO_INTERNAL_ERROR)
      : m_module(module), m_operation(operation), m_id(id) {}
  DerSteps(const Module& module, const char* operation, LogForm form)
      : m_module(module), m_operation(operation), m_form(form) {}

  /// A code other than 0 is logged with the operation and thrown as "<step>() failed".
  void operator()(const char* step, std::uint32_t code, unsigned long line = __builtin_LINE()) const {
    if (code != 0) Fail(step, code, line);
  }

 private:
  [[noreturn]] void Fail(const char* step, std::uint32_t code, unsigned long line) const;

  const Module& m_module;
  const char* m_operation;
  CryptoExceptionId m_id = CRYPTO_INTERNAL_ERROR;
  LogForm m_form = kCode;
};

/// DottedText returns the object identifier as dotted text, with `step` as the name of the conversion.
SecureString DottedText(const DerSteps& check, const char* step, const CSASNOID* oid);

}  // namespace Tavo::Framework

#endif
