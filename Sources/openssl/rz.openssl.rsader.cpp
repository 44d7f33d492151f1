#include "rz.openssl.rsader.h"

#include <algorithm>

#include "tavo/bertlv.h"

namespace Tavo::Framework {

ByteArray Reversed(const unsigned char* bytes, std::size_t size) {
  ByteArray reversed(size);
  std::reverse_copy(bytes, bytes + size, reversed.begin());
  return reversed;
}

std::uint32_t IntegerFromLittleEndian(const ByteArray& number, DerInteger& integer) {
  BERTLVBuffer buffer;
  buffer.AddValue(ByteArray(1, 0x02), Reversed(number.data(), number.size()));
  const ByteArray& encoded = buffer;
  std::uint64_t size = encoded.size();
  return CSASNInteger_DERDecodeTLV(encoded.data(), &size, 0, Out(integer));
}

}  // namespace Tavo::Framework
