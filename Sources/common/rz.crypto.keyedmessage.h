#ifndef RZ_CRYPTO_KEYEDMESSAGE_H
#define RZ_CRYPTO_KEYEDMESSAGE_H

#include <memory>
#include <span>

#include "rz.crypto.trace.h"
#include "rz.crypto.wipedbuffer.h"

namespace Tavo::Framework {

class IKey;

/// KeyedMessage is the machine behind MACs, ciphers and signatures: at rest, or initialized with a borrowed key and a
/// message that grows until the final call ends it. Its data are the module and the texts of its refusals; each caller
/// brings the line.
class KeyedMessage {
 public:
  struct Texts {
    Module module;
    const char* notInitialized;
    const char* alreadyInitialized;
  };

  explicit KeyedMessage(const Texts& texts) : m_texts(texts) {}

  /// RequireNew is what every Init checks: throws 4000 `nullMessage` when its argument is null, 4009 while a message is
  /// under way.
  void RequireNew(const void* argument, unsigned long nullLine, const char* nullMessage, unsigned long line) const;
  /// RequireInitialized throws 4009 at rest.
  void RequireInitialized(unsigned long line) const {
    if (!m_bInitialized) throw Refusal(line, m_texts.notInitialized, CRYPTO_ILLEGAL_STATE);
  }

  void Begin(IKey* key);
  void Append(const ByteArray& in) { m_data.Append(in); }
  /// End releases the message, wiped, and goes back to rest.
  void End() noexcept { static_cast<void>(Take()); }
  /// Take returns the message and goes back to rest.
  WipedBuffer Take() noexcept;

  /// WithTail runs `body`, which reads the message followed by `tail` and spares the copy of it. If `body` throws,
  /// `tail` is part of the message as if it had been appended before.
  template <class Body>
  void WithTail(const ByteArray& tail, Body&& body) {
    try {
      body();
    } catch (IException* exception) {
      std::unique_ptr<IException> owner(exception);  // until it goes on: there may be no memory for the tail
      Append(tail);
      throw owner.release();
    } catch (...) {
      Append(tail);
      throw;
    }
  }

  IKey* key() const { return m_pKey; }
  std::span<const unsigned char> data() const { return m_data.bytes(); }

 protected:
  IException* Refusal(unsigned long line, const char* message, CryptoExceptionId id) const {
    return m_texts.module.Error(line, message, id);
  }

 private:
  const Texts& m_texts;
  bool m_bInitialized = false;
  WipedBuffer m_data;
  IKey* m_pKey = nullptr;
};

}  // namespace Tavo::Framework

#endif
