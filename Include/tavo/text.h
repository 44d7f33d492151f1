#ifndef TAVO_TEXT_H
#define TAVO_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>

/// Optional, header-only: the character strings of ASN.1 as UTF-8, for callers who show names to people.
namespace Tavo::Framework {

/// AppendUtf8 appends the code point to `text` and returns true; false for a surrogate or a number above 10FFFF.
template <class String>
bool AppendUtf8(String& text, std::uint32_t point) {
  if (point > 0x10FFFF || (point >= 0xD800 && point < 0xE000)) return false;
  const auto put = [&](std::uint32_t octet) { text += static_cast<char>(static_cast<unsigned char>(octet)); };
  if (point < 0x80) {
    put(point);
    return true;
  }
  const int following = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
  put((0xFF00U >> (following + 1) & 0xFFU) | point >> 6 * following);
  for (int i = following - 1; i >= 0; --i) put(0x80U | (point >> 6 * i & 0x3FU));
  return true;
}

/// IsUtf8 returns whether the octets are well-formed UTF-8 (RFC 3629): no overlong form, no surrogate.
inline bool IsUtf8(const unsigned char* octets, std::size_t size) {
  static constexpr std::uint32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};  // by the number of following octets
  for (std::size_t i = 0; i < size;) {
    const std::uint32_t first = octets[i++];
    if (first < 0x80) continue;
    const std::size_t following = first >= 0xF8 || first < 0xC0 ? 4 : first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    if (following > 3 || following > size - i) return false;
    std::uint32_t point = first & (0x3FU >> following);
    for (std::size_t k = 0; k < following; ++k, ++i) {
      if ((octets[i] & 0xC0U) != 0x80) return false;
      point = point << 6 | (octets[i] & 0x3FU);
    }
    if (point < kSmallest[following] || point > 0x10FFFF || (point >= 0xD800 && point < 0xE000)) return false;
  }
  return true;
}

/// StringToUtf8 assigns the contents octets of a string of the universal type `tag` to `text` as UTF-8 and returns
/// true: UTF8String (12), NumericString (18), PrintableString (19), T61String (20, read as ISO 8859-1, which is what
/// certificates hold), IA5String (22), VisibleString (26), UniversalString (28) and BMPString (30). Returns false and
/// leaves `text` alone for another type and for octets that are no such string; characters outside ASCII are tolerated
/// nowhere but in the types that have them.
template <class String>
bool StringToUtf8(unsigned int tag, const unsigned char* octets, std::size_t size, String& text) {
  String converted;
  switch (tag) {
    case 12:
      if (!IsUtf8(octets, size)) return false;
      converted.assign(octets, octets + size);
      break;
    case 18:
    case 19:
    case 22:
    case 26:
      for (std::size_t i = 0; i < size; ++i) {
        if (octets[i] >= 0x80) return false;
        converted += static_cast<char>(octets[i]);
      }
      break;
    case 20:
      for (std::size_t i = 0; i < size; ++i) AppendUtf8(converted, octets[i]);
      break;
    case 28:
    case 30: {
      const std::size_t width = tag == 28 ? 4 : 2;
      if (size % width != 0) return false;
      for (std::size_t i = 0; i < size; i += width) {
        std::uint32_t point = 0;
        for (std::size_t k = 0; k < width; ++k) point = point << 8 | octets[i + k];
        if (!AppendUtf8(converted, point)) return false;
      }
      break;
    }
    default:
      return false;
  }
  text.swap(converted);
  return true;
}

}  // namespace Tavo::Framework

#endif
