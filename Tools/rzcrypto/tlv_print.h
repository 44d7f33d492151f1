#ifndef RZCRYPTO_TLV_PRINT_H
#define RZCRYPTO_TLV_PRINT_H

#include <vector>

#include "io.h"
#include "tlv_names.h"
#include "tlv_tree.h"

namespace rzcrypto::tlv {

/// PrintTree prints a line for each object: offset, tag and length, both in the column of its depth, name, and for an
/// object that was not opened the value in hex and text; a value of more than 16 bytes follows on lines of its own, or,
/// with `brief`, is cut there.
void PrintTree(const Tree& tree, const Names& names, bool brief);

/// TreeJson returns the objects, each with what is inside it, the padding and the fault, if there are.
Json TreeJson(const Tree& tree, const Names& names);

/// ObjectsJson returns the objects with these indices; unlike above, "value" stands in those that were opened too.
Json ObjectsJson(const Tree& tree, const Names& names, const std::vector<size_t>& indices);

}  // namespace rzcrypto::tlv

#endif
