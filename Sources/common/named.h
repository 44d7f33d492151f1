#ifndef RZ_CRYPTO_NAMED_H
#define RZ_CRYPTO_NAMED_H

#include <cstddef>
#include <cstring>
#include <string_view>

namespace Tavo::Framework {

/// Is returns whether `text` is one of the literals `names`. Names of algorithms, modes and paddings are compared at
/// every call of a service; the length of a literal is known, so the compiler writes the comparison out.
template <std::size_t... kSizes>
bool Is(std::string_view text, const char (&... names)[kSizes]) {
  return ((text.size() == kSizes - 1 && std::memcmp(text.data(), names, kSizes - 1) == 0) || ...);
}

}  // namespace Tavo::Framework

#endif
