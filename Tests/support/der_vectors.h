#ifndef RZ_TESTS_DER_VECTORS_H
#define RZ_TESTS_DER_VECTORS_H

#include <algorithm>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/vectors.h"

/// Octets in a block of exactly their size, so that a sanitizer sees one too far.
struct ExactOctets {
  explicit ExactOctets(const Tavo::Framework::ByteArray& bytes) : size(bytes.size()), length(bytes.size()) {
    std::copy(bytes.begin(), bytes.end(), block.get());
  }
  const uint8_t* data() const { return block.get(); }
  uint64_t size;
  uint64_t length;  // to be passed to a decoder
  std::unique_ptr<uint8_t[]> block = std::make_unique<uint8_t[]>(size);
};

/// One line of Tests/data/der.txt; the file tells its form.
struct DerVector {
  std::string line, type;
  Tavo::Framework::ByteArray in, out;
  uint64_t consumed = 0;
  uint32_t code = 0;
};

inline void PrintTo(const DerVector& vector, std::ostream* out) { *out << vector.line; }

/// Throws for a file that is missing or a line that is not understood.
inline std::vector<DerVector> LoadDerVectors() {
  std::ifstream file("data/der.txt");
  if (!file) throw std::runtime_error("no der.txt");
  std::vector<DerVector> vectors;
  DerVector vector;
  while (std::getline(file, vector.line)) {
    std::string rest = vector.line;
    if (rest.empty() || rest[0] == '#') continue;
    // Cuts what follows `mark` off the rest.
    const auto after = [&](const std::string& mark, const std::string& otherwise) {
      const size_t at = rest.find(mark);
      const std::string found = at == std::string::npos ? otherwise : rest.substr(at + mark.size());
      rest.resize(std::min(at, rest.size()));
      return found;
    };
    const std::string out = after("->", "");
    vector.code = static_cast<uint32_t>(std::stoul(after("=", "0")));
    const std::string text = after(":", "");
    vector.type = rest;
    rest = text;
    const auto unread = FromHex(after("|", ""));
    vector.in = FromHex(rest);
    vector.consumed = vector.in.size();
    vector.in.insert(vector.in.end(), unread.begin(), unread.end());
    vector.out = out.empty() ? vector.in : FromHex(out);
    if (vector.in.empty()) throw std::runtime_error(vector.line);
    vectors.push_back(vector);
  }
  return vectors;
}

#endif
