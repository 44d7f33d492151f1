#ifndef RZCRYPTO_CHECKSUM_LINE_H
#define RZCRYPTO_CHECKSUM_LINE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rzcrypto {

/// One line of a checksum file, as GNU coreutils and the BSDs write it.
struct ChecksumLine {
  std::string algorithm;
  std::string digest;  // lower-case hex
  std::string file;
};

/// PlainLine returns "<digest>  <file>", TaggedLine "<algorithm> (<file>) = <digest>", each with its line end. A name
/// with a backslash or a line end is escaped and the line marked with a leading backslash, as coreutils do.
std::string PlainLine(const ChecksumLine& line);
std::string TaggedLine(const ChecksumLine& line);

/// ShownName returns the name as the two show it: escaped and marked when it has to be.
std::string ShownName(const std::string& file);

/// ParseChecksums reads both kinds of lines; an entry without value stands for a line that is neither. Empty lines and
/// comments (#) are left out. A plain line's algorithm is `algorithm`, or follows from the digest's length when that is
/// empty.
std::vector<std::optional<ChecksumLine>> ParseChecksums(std::string_view text, const std::string& algorithm);

}  // namespace rzcrypto

#endif
