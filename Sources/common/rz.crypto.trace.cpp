#include "rz.crypto.trace.h"

namespace Tavo::Framework {

IException* Module::Error(unsigned long line, const char* message, CryptoExceptionId id, IException* inner) const {
  return new CCryptoException(path, line, message, id, inner);
}

IException* Module::Wrap(unsigned long line, const char* message, IException* inner) const {
  return Error(line, message, static_cast<CryptoExceptionId>(inner->getID()), inner);
}

void TraceReturns(const char* operation, IException* exception) {
  rzlogLog(kComponent, kExit, "%s Returns %s", operation, exception->what());
}

}  // namespace Tavo::Framework
