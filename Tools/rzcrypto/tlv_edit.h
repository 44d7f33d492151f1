#ifndef RZCRYPTO_TLV_EDIT_H
#define RZCRYPTO_TLV_EDIT_H

#include <vector>

#include "tavo/framework/bytes.h"
#include "tlv_tree.h"

namespace rzcrypto::tlv {

using Tavo::Framework::ByteArray;

/// Edit puts `bytes` in the place of those from `from` to `to`, which lie in the value of `owner` (kNone: the top) and
/// in no edit beside this one.
struct Edit {
  size_t owner;
  size_t from;
  size_t to;
  ByteArray bytes;
};

/// The edits that give an object another value, remove it, and append an object with the tag and value to `parent`,
/// which is kNone for the top.
Edit SetValue(const Tree& tree, size_t index, const ByteArray& value);
Edit RemoveObject(const Tree& tree, size_t index);
Edit AppendObject(const Tree& tree, size_t parent, const ByteArray& tag, const ByteArray& value);

/// Apply returns the input with the edits made. Objects whose value has another length than before, because of an edit
/// in it, get their length octets anew, in the shortest form; every other byte stays as it is.
ByteArray Apply(const Tree& tree, std::vector<Edit> edits);

}  // namespace rzcrypto::tlv

#endif
