#ifndef RZCRYPTO_TLV_NAMES_H
#define RZCRYPTO_TLV_NAMES_H

#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "tlv_tree.h"

namespace rzcrypto::tlv {

/// Names tells what tags stand for. A tag can have a name of its own inside a certain tag; tlv_names.txt, which is
/// built in, shows and explains the form of the text.
class Names {
 public:
  /// The built-in names.
  Names();
  /// Add adds names, which take the place of what is there. Throws Failure kBadInput with the line at fault.
  void Add(std::string_view text);
  /// Find returns the name of a tag that stands in `parent` (empty: at the top); empty when there is none.
  std::string Find(Bytes parent, Bytes tag) const;

 private:
  std::map<std::pair<std::string, std::string>, std::string> m_names;  // by parent (empty: any) and tag, in hex
};

}  // namespace rzcrypto::tlv

#endif
