#include "rz.crypto.keyedmessage.h"

#include <utility>

namespace Tavo::Framework {

void KeyedMessage::RequireNew(const void* argument, unsigned long nullLine, const char* nullMessage,
                              unsigned long line) const {
  if (argument == nullptr) throw Refusal(nullLine, nullMessage, CRYPTO_BAD_PARAM);
  if (m_bInitialized) throw Refusal(line, m_texts.alreadyInitialized, CRYPTO_ILLEGAL_STATE);
}

void KeyedMessage::Begin(IKey* key) {
  m_pKey = key;
  m_bInitialized = true;
}

WipedBuffer KeyedMessage::Take() noexcept {
  m_bInitialized = false;
  m_pKey = nullptr;
  return std::exchange(m_data, WipedBuffer());
}

}  // namespace Tavo::Framework
