#ifndef RZCRYPTO_SPOOL_H
#define RZCRYPTO_SPOOL_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace rzcrypto {

/// Spool keeps texts in a temporary file without a name and gives them back by their place, so that a sorted list may
/// be larger than the memory. Throws Failure kReadOrWrite.
class Spool {
 public:
  /// Where a text begins in the file.
  using Place = std::int64_t;

  Spool();
  /// Add keeps the fields, in which no zero octet stands.
  Place Add(const std::vector<std::string>& fields);
  std::vector<std::string> Read(Place place);

 private:
  struct Closer {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Closer> m_file;
  Place m_end = 0;
};

}  // namespace rzcrypto

#endif
