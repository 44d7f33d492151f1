#ifndef RZCRYPTO_PRINTABLE_H
#define RZCRYPTO_PRINTABLE_H

#include <string>
#include <string_view>

namespace rzcrypto {

/// Printable returns the text as it may be shown on a terminal: control characters, octets that are no UTF-8 and the
/// invisible characters that change the direction of writing are replaced by \xNN for each octet, so that no name in a
/// certificate can forge a line or hide itself.
std::string Printable(std::string_view text);

/// Width returns the number of characters of a printable text, Padded the text with blanks up to that many.
size_t Width(std::string_view text);
std::string Padded(std::string text, size_t width);

/// Paint puts the text in a colour of the terminal. Colour is used when standard output is a terminal and NO_COLOR is
/// not set.
enum class Colour { kGreen, kRed, kYellow, kBold };
std::string Paint(Colour colour, const std::string& text);

}  // namespace rzcrypto

#endif
