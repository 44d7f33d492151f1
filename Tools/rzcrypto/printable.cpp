#include "printable.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "tavo/text.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

/// The number of octets of the UTF-8 character that begins here; 1 where none does.
size_t CharacterLength(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
  return length <= text.size() ? length : 1;
}

bool IsShown(std::string_view character) {
  const auto* octets = reinterpret_cast<const unsigned char*>(character.data());
  if (!IsUtf8(octets, character.size())) return false;
  if (character.size() == 1) return octets[0] >= 0x20 && octets[0] != 0x7F;
  if (character.size() == 2) return octets[0] != 0xC2 || octets[1] >= 0xA0;  // U+0080 to U+009F are controls
  const std::uint32_t point = (octets[0] & 0x0FU) << 12 | (octets[1] & 0x3FU) << 6 | (octets[2] & 0x3FU);
  const bool direction = (point >= 0x200B && point <= 0x200F) || (point >= 0x2028 && point <= 0x202E) ||
                         (point >= 0x2066 && point <= 0x2069);
  return character.size() != 3 || !direction;
}

bool UseColour() {
  static const bool use = isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
  return use;
}

}  // namespace

std::string Printable(std::string_view text) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    size_t length = CharacterLength(text);
    const bool asIs = IsShown(text.substr(0, length));
    if (!asIs && !IsUtf8(reinterpret_cast<const unsigned char*>(text.data()), length)) length = 1;
    for (const char c : text.substr(0, length)) {
      if (asIs) {
        shown += c;
      } else {
        shown += "\\x";
        shown += kDigits[static_cast<unsigned char>(c) >> 4];
        shown += kDigits[static_cast<unsigned char>(c) & 15];
      }
    }
    text.remove_prefix(length);
  }
  return shown;
}

size_t Width(std::string_view text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string Padded(std::string text, size_t width) {
  const size_t held = Width(text);
  if (held < width) text.append(width - held, ' ');
  return text;
}

std::string Paint(Colour colour, const std::string& text) {
  if (!UseColour()) return text;
  static constexpr const char* kCodes[] = {"32", "31", "33", "1"};
  return std::string("\033[") + kCodes[static_cast<int>(colour)] + "m" + text + "\033[0m";
}

}  // namespace rzcrypto
