#include "rz.crypto.der.h"

namespace Tavo::Framework {

void DerSteps::Fail(const char* step, std::uint32_t code, unsigned long line) const {
  if (m_form == kCode) {
    LogError("%s : %s (err = %u)", m_operation, step, code);
  } else {
    LogError("%s: %s() failed", m_operation, step);
  }
  const SecureString message = SecureString(step) + "() failed";
  throw m_module.Error(line, message.c_str(), m_id);
}

SecureString DottedText(const DerSteps& check, const char* step, const CSASNOID* oid) {
  std::uint64_t length = 0;  // with the terminating zero
  check(step, CSASNOID_GetStringLength(oid, &length));
  SecureString text(length, '\0');
  check(step, CSASNOID_ToStringEx(oid, text.data(), length));
  text.resize(length - 1);
  return text;
}

}  // namespace Tavo::Framework
