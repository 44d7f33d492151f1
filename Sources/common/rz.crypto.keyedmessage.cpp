#include "rz.crypto.keyedmessage.h"

namespace Tavo::Framework {

namespace {

/// Room for the padding of any block cipher here, so that padding a message does not move it.
constexpr std::size_t kPaddingRoom = 16;

}  // namespace

void KeyedMessage::RequireNew(const void* argument, unsigned long nullLine, const char* nullMessage,
                              unsigned long line) const {
  if (argument == nullptr) throw Refusal(nullLine, nullMessage, CRYPTO_BAD_PARAM);
  if (m_bInitialized) throw Refusal(line, m_texts.alreadyInitialized, CRYPTO_ILLEGAL_STATE);
}

void KeyedMessage::Begin(IKey* key) {
  m_pKey = key;
  m_bInitialized = true;
}

void KeyedMessage::Append(const ByteArray& in) {
  if (m_data.capacity() == 0 && !in.empty()) m_data.reserve(in.size() + kPaddingRoom);
  AppendBytes(m_data, in);
}

ByteArray KeyedMessage::Take() noexcept {
  m_bInitialized = false;
  m_pKey = nullptr;
  return std::exchange(m_data, ByteArray());
}

}  // namespace Tavo::Framework
