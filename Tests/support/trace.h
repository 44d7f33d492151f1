#ifndef RZ_TESTS_TRACE_H
#define RZ_TESTS_TRACE_H

#include <algorithm>
#include <string>
#include <vector>

#include "rz/log.h"

/// Trace collects every line that is logged while it lives, as "<level> <text>". One at a time.
class Trace {
 public:
  explicit Trace(unsigned long levels = ~0UL) {
    rzlogSetLevels(levels);
    rzlogSetSink(Collect, this);
  }
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;
  ~Trace() {
    rzlogSetSink(nullptr, nullptr);
    rzlogSetLevels(1UL << 1 | 1UL << 2);
  }
  const std::vector<std::string>& lines() const { return m_lines; }
  bool Has(const std::string& line) const { return std::find(m_lines.begin(), m_lines.end(), line) != m_lines.end(); }
  /// The lines with what follows "=0x" or "=0" of an address replaced, so that they can be compared.
  std::vector<std::string> WithoutAddresses() const {
    std::vector<std::string> out = m_lines;
    for (auto& line : out) {
      const size_t at = line.find("=0x");
      if (at == std::string::npos) continue;
      const size_t end = line.find_first_not_of("0123456789abcdef", at + 3);
      line.replace(at, (end == std::string::npos ? line.size() : end) - at, "=*");
    }
    return out;
  }

 private:
  static void Collect(void* context, const char* component, unsigned long level, const char* line) {
    static_cast<Trace*>(context)->m_lines.push_back(
        (std::string(component) == "CRYPTO" ? "" : std::string(component) + " ") + std::to_string(level) + " " + line);
  }
  std::vector<std::string> m_lines;
};

#endif
