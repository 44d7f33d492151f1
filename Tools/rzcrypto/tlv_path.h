#ifndef RZCRYPTO_TLV_PATH_H
#define RZCRYPTO_TLV_PATH_H

#include <string>
#include <vector>

#include "tavo/framework/bytes.h"
#include "tlv_tree.h"

namespace rzcrypto::tlv {

/// Step is one part of a path: the objects with this tag among those beside each other.
struct Step {
  static constexpr size_t kAll = SIZE_MAX;
  Tavo::Framework::ByteArray tag;
  size_t index = 0;  // which of them, from 0; or kAll
};
using Path = std::vector<Step>;

/// ParsePath reads "7F4E/5F37": tags in hex, from the top to the object. "[n]" behind a tag chooses the n-th object
/// with this tag, counted from 0, which is the default; "[*]" chooses all of them. Throws Failure kUsage.
Path ParsePath(const std::string& text);

/// PathText returns a path as it is read.
std::string PathText(const Path& path);

/// OpensAlong lets Read descend wherever `path` passes, even into primitive objects.
OpensToo OpensAlong(const Path& path);

/// Find returns the indices of the objects that `path` leads to, in their order; for an empty path kNone, the top.
/// Throws Failure kNo when there is none, with what is there instead.
std::vector<size_t> Find(const Tree& tree, const Path& path);

}  // namespace rzcrypto::tlv

#endif
