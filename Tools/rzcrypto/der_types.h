#ifndef RZCRYPTO_DER_TYPES_H
#define RZCRYPTO_DER_TYPES_H

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tavo/framework/bytes.h"

namespace rzcrypto::der {

using Bytes = std::span<const std::uint8_t>;

/// Element is where one element lies in a buffer, in bytes from its start.
struct Element {
  std::uint64_t tagAt = 0;
  std::uint64_t contentsAt = 0;
  std::uint64_t contentsSize = 0;
  std::uint64_t end = 0;
};

/// Input is what a decoder is given: mode 0 with the identifier in front, mode 2 the contents alone, of an element with
/// the identifier `identifier`.
struct Input {
  Bytes bytes;
  std::uint32_t mode;
  std::uint8_t identifier;
};

struct Type;

/// Component is a component of a record, or an alternative of a choice, which has no `find`.
struct Component {
  std::string name;
  std::string type;
  std::function<std::uint32_t(const Input&, Element&)> find;
};

/// Decoded is what a decoder made of an input.
struct Decoded {
  std::uint32_t code;
  std::uint64_t consumed = 0;
  Tavo::Framework::ByteArray encoded;  // the same object encoded again, in DER
};

/// Type is a type of the DER library, as its public headers list it.
struct Type {
  std::string name;
  std::function<Decoded(const Input&)> decode;
  std::vector<Component> components;    // of a record
  std::vector<Component> alternatives;  // of a choice
  std::string item;                     // of a list: the type of its items
  std::function<std::uint32_t(const Input&, std::uint64_t index, Element&)> findItem;
};

/// FindType returns the type with the name, in either case and with or without "CS" and "CSASN" in front; null when
/// there is none. FindTypeOfPem does the same for what a PEM label stands for.
const Type* FindType(std::string_view name);
const Type* FindTypeOfPem(std::string_view label);

/// TypeNames returns all names with commas between.
std::string TypeNames();

/// CodeName returns the constant's name of a result code, CodeMeaning what it says about the input.
std::string CodeName(std::uint32_t code);
std::string CodeMeaning(std::uint32_t code);

/// Blame is where and why a decoder gave up: `offset` in bytes from the start of the input, `path` the components from
/// the outermost to the one at fault ("TbsCertificate.Validity"), empty for the element itself.
struct Blame {
  std::uint32_t code;
  std::uint64_t offset;
  std::string path;
};

/// FindBlame finds out why `type` does not decode the input, which it does not.
Blame FindBlame(const Type& type, Bytes input);

}  // namespace rzcrypto::der

#endif
