#include "rz.crypto.trace.h"
#include "tavo/framework/key.h"

namespace Tavo::Framework {

CSoftSharedSecret::CSoftSharedSecret(const ByteArray& secret) {
  Traced("CSoftSharedSecret::CSoftSharedSecret", this, [&] { AssignBytes(m_baSecret, secret); });
}

CSoftSharedSecret::~CSoftSharedSecret() {
  Traced("CSoftSharedSecret::~CSoftSharedSecret", this, [] {});
}

}  // namespace Tavo::Framework
