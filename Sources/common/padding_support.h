#ifndef RZ_CRYPTO_PADDING_SUPPORT_H
#define RZ_CRYPTO_PADDING_SUPPORT_H

#include <optional>

#include "rz.crypto.trace.h"

/// What the paddings share.
namespace Tavo::Framework {

/// Replace gives `output` what `make` returns, a ByteArray or an optional one. When `make` throws or returns nothing,
/// `output` is left empty. `make` may still read `output`, as its input. Returns whether there is a result.
template <class Make>
bool Replace(ByteArray& output, Make&& make) {
  std::optional<ByteArray> result;
  struct Deliver {
    std::optional<ByteArray>& result;
    ByteArray& output;
    ~Deliver() {
      if (!result) result.emplace();
      output.swap(*result);
    }
  } deliver{result, output};
  result = make();
  return result.has_value();
}

/// EncodeLimit is a limit to the length of a message: k minus `overhead`. The refusal's trace line names k minus
/// `shown`.
struct EncodeLimit {
  unsigned long line;  // number of the throw site
  unsigned int overhead;
  unsigned int shown;
};

/// RequireRoom throws 4000 "Data to Encode Length is invalid" for a message that is too long for a block of `keyLength`
/// bytes, or a block that is too short for any message.
void RequireRoom(const Module& module, const char* operation, std::size_t messageLength, unsigned int keyLength,
                 EncodeLimit limit);

/// RandomOctets returns `count` random octets from a generator made for the purpose. When there are none it throws
/// "GenerateRandom failed" with `line` and the cause.
ByteArray RandomOctets(const Module& module, unsigned long line, std::size_t count);

}  // namespace Tavo::Framework

#endif
