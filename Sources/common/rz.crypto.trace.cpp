#include "rz.crypto.trace.h"

#include <memory>
#include <utility>

namespace Tavo::Framework {

IException* Module::Error(unsigned long line, const char* message, CryptoExceptionId id, IException* inner) const {
  std::unique_ptr<IException> owner(inner);  // until the exception has it: making one may run out of memory
  SecureString file(path);
  SecureString text(message);
  return new CCryptoException(std::move(file), line, std::move(text), id, owner.release());
}

IException* Module::Wrap(unsigned long line, const char* message, IException* inner) const {
  const auto id = static_cast<CryptoExceptionId>(inner->getID());
  return Error(line, message, id, inner);
}

void TraceReturns(const char* operation, IException* exception) {
  LogLine(kExit, "%s Returns %s", operation, exception->what());
}

}  // namespace Tavo::Framework
