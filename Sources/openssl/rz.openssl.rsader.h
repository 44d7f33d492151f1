#ifndef RZ_OPENSSL_RSADER_H
#define RZ_OPENSSL_RSADER_H

#include <cstdint>

#include "tavo/der_owned.h"
#include "tavo/framework/bytes.h"

/// What RSA keys have in common when they are written and read with the DER library.
namespace Tavo::Framework {

using DerInteger = DerOwned<CSASNInteger_Delete>;

/// Reversed returns the `size` bytes at `bytes` last one first.
ByteArray Reversed(const unsigned char* bytes, std::size_t size);

/// IntegerFromLittleEndian makes an INTEGER whose contents are `number` reversed, as they are: no zero byte is put in
/// front. Returns the result code of the DER library.
std::uint32_t IntegerFromLittleEndian(const ByteArray& number, DerInteger& integer);

/// SetOwned calls a setter of the DER library, which takes `value` when it succeeds and leaves it with its owner when
/// it fails. Returns the result code.
template <class T, class C, class RecordOwner, class ValueOwner>
std::uint32_t SetOwned(std::uint32_t (*set)(T*, C*, C**), const RecordOwner& record, ValueOwner& value) {
  const std::uint32_t code = set(record.get(), value.get(), nullptr);
  if (code == 0) value.release();  // NOLINT(bugprone-unused-return-value): the record has it
  return code;
}

/// EncodeDer assigns the whole encoding of `object` to `out` and returns the result code. No copy of it is left in
/// memory that is not wiped.
template <class T>
std::uint32_t EncodeDer(const T* object, std::uint32_t (*length)(const T*, std::uint64_t*),
                        std::uint32_t (*encode)(const T*, std::uint8_t**, std::uint64_t*, std::uint8_t, std::uint8_t,
                                                std::uint8_t),
                        ByteArray& out) {
  std::uint64_t size = 0;
  if (const std::uint32_t code = length(object, &size)) return code;
  out.resize(size);
  std::uint8_t* to = out.data();
  return encode(object, &to, &size, 1, 1, 1);
}

}  // namespace Tavo::Framework

#endif
