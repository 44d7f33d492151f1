#ifndef RZCRYPTO_JSON_LIST_H
#define RZCRYPTO_JSON_LIST_H

#include "io.h"

namespace rzcrypto {

/// Compact returns the JSON text of the value on one line; octets that are not UTF-8 are replaced.
std::string Compact(const Json& value);

/// JsonList prints an object whose first member is an array, one element at a time, so that a list of any length needs
/// the memory of one element: { "<name>": [ ... ], "<member>": ... }. Throws OutputFailure.
class JsonList {
 public:
  explicit JsonList(const char* name);
  void Add(const Json& element);
  /// Close ends the array and prints the members of the object `rest` behind it.
  void Close(const Json& rest);

 private:
  bool m_empty = true;
};

}  // namespace rzcrypto

#endif
