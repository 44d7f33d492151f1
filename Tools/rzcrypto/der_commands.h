#ifndef RZCRYPTO_DER_COMMANDS_H
#define RZCRYPTO_DER_COMMANDS_H

#include <functional>
#include <string>
#include <vector>

#include "encoding.h"
#include "io.h"
#include "outcome.h"

/// The verbs of `rzcrypto der`.
namespace rzcrypto::der {

struct Options {
  std::vector<std::string> files = {"-"};
  bool binary = false;  // the input is not to be taken for PEM or hex
  bool json = false;
  // show and extract
  size_t maxDepth = 100;
  size_t maxElements = 1000000;
  size_t maxValue = 32;
  bool flat = false;
  bool paths = false;
  // check
  std::string type;
  bool strict = false;
  // extract
  std::vector<size_t> path;  // or, when it is empty:
  size_t offset = 0;
  bool contents = false;
  bool hex = false;
};

void Show(const Options& options, Outcome& outcome);
void Check(const Options& options, Outcome& outcome);
void Extract(const Options& options, Outcome& outcome);

/// ForEachBlock reads the options' files and hands `use` every piece of them with its name: "x.pem#2" for the second
/// PEM block. What `use` throws is reported, `fail` is told, and the next one is done.
void ForEachBlock(
    const Options& options, Outcome& outcome,
    const std::function<void(const std::string& name, const Block& block)>& use,
    const std::function<void(const std::string& name)>& fail = [](const std::string&) {});

/// Count returns "1 byte", "2 bytes".
std::string Count(size_t count, const std::string& thing);

}  // namespace rzcrypto::der

#endif
