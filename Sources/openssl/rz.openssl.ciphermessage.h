#ifndef RZ_OPENSSL_CIPHERMESSAGE_H
#define RZ_OPENSSL_CIPHERMESSAGE_H

#include "../common/rz.crypto.keyedmessage.h"
#include "tavo/framework/cipher.h"

namespace Tavo::Framework {

/// CipherMessage is the machine behind the ciphers: a keyed message with the operation that Init was given.
class CipherMessage : public KeyedMessage {
 public:
  using KeyedMessage::KeyedMessage;

  /// RequireKnown throws 4000 unless `operation` is one of CipherOperation.
  void RequireKnown(int operation, unsigned long line) const {
    if (operation < ENCRYPT_MODE || operation > UNWRAP_MODE) {
      throw Refusal(line, "Unknown operation", CRYPTO_BAD_PARAM);
    }
  }

  void Begin(int operation, IKey* key) {
    KeyedMessage::Begin(key);
    m_nOpMode = operation;
  }

  /// RequireData is what every DoFinal checks: 4009 at rest, 4000 unless the operation encrypts or decrypts.
  void RequireData(unsigned long line, unsigned long operationLine) const {
    RequireInitialized(line);
    if (m_nOpMode != ENCRYPT_MODE && m_nOpMode != DECRYPT_MODE) throw Invalid(operationLine);
  }

  struct RefusalLines {
    unsigned long notInitialized;
    unsigned long otherOperation;
    unsigned long notImplemented;
  };

  /// RefuseKey is all that Wrap and Unwrap do: it throws.
  [[noreturn]] void RefuseKey(int operation, RefusalLines lines) const {
    RequireInitialized(lines.notInitialized);
    if (m_nOpMode != operation) throw Invalid(lines.otherOperation);
    throw Refusal(lines.notImplemented, "Not Implemented", CRYPTO_NOT_IMPLEMENTED);
  }

  int operation() const { return m_nOpMode; }

 private:
  IException* Invalid(unsigned long line) const { return Refusal(line, "Invalid operation", CRYPTO_BAD_PARAM); }

  int m_nOpMode = ENCRYPT_MODE;
};

}  // namespace Tavo::Framework

#endif
