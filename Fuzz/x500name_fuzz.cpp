// A distinguished name: both texts, the attributes, and the text of each value.

#include <cstdint>
#include <cstdlib>

#include "tavo/owned.h"
#include "tavo/text.h"

using namespace Tavo::Framework;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ByteArray encoded;
  AssignBytes(encoded, data, size);
  try {
    const auto name = Own(IX500Name::Create(encoded));
    for (const unsigned long format : {0UL, 1UL}) {
      const SecureString text = name->GetName(format);
      if (!IsUtf8(reinterpret_cast<const unsigned char*>(text.data()), text.size())) std::abort();
      for (const char c : text) {
        if (static_cast<unsigned char>(c) < 0x20) std::abort();
      }
    }
    SecureStringList values;
    for (const auto& type : name->ListAttributes()) {
      if (!name->GetAttributeValue(type, values)) std::abort();
    }
  } catch (IException* exception) {
    const auto owner = Own(exception);
    if (exception->getID() != CRYPTO_INTERNAL_ERROR) std::abort();
  }
  return 0;
}
