#ifndef RZCRYPTO_TLV_VERBS_H
#define RZCRYPTO_TLV_VERBS_H

#include <string>
#include <vector>

namespace rzcrypto::tlv {

/// Options of all verbs, as they stand on the command line; each verb takes some of them.
struct Options {
  std::string path;
  std::string value;  // hex, or @ and the name of a file
  std::string file = "-";
  std::vector<std::string> into;
  std::string names;
  bool padded = false;
  bool binary = false;
  bool brief = false;
  bool hex = false;
  bool json = false;
};

/// The verbs read options.file and print. They throw Failure: kNo when the path leads to nothing, kBadInput when the
/// input, or what it would become, is no BER-TLV, with the offset.
void Show(const Options& options);
void Get(const Options& options);
void Set(const Options& options);
void Append(const Options& options);
void Remove(const Options& options);

/// What is wrong with an argument; empty when nothing is. A new path ends in the tag to append.
std::string CheckPath(const std::string& text);
std::string CheckNewPath(const std::string& text);
std::string CheckTag(const std::string& text);
std::string CheckValue(const std::string& text);

}  // namespace rzcrypto::tlv

#endif
