#ifndef RZCRYPTO_IO_H
#define RZCRYPTO_IO_H

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "outcome.h"

namespace rzcrypto {

using Tavo::Framework::ByteArray;
using Json = nlohmann::ordered_json;

/// InputName returns what messages and listings call the input `path`: "-" is standard input.
std::string InputName(const std::string& path);

/// ReadInput returns all bytes of the file `path`, or of standard input for "-". Throws Failure kReadOrWrite
/// with the system's reason.
ByteArray ReadInput(const std::string& path);

/// Print writes to standard output. Throws OutputFailure.
void Print(std::string_view text);
void Print(const ByteArray& bytes);
/// PrintJson writes the value with an indent of two blanks and a line end; octets that are not UTF-8 are replaced.
void PrintJson(const Json& value);
/// FlushOutput must be the last call of a program that printed. Throws OutputFailure.
void FlushOutput();

}  // namespace rzcrypto

#endif
