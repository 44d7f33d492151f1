#ifndef RZ_TESTS_TRACE_H
#define RZ_TESTS_TRACE_H

#include <algorithm>
#include <regex>
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
  /// Whether a line begins so.
  bool Begins(const std::string& start) const {
    return std::any_of(m_lines.begin(), m_lines.end(), [&](const auto& line) { return line.rfind(start, 0) == 0; });
  }
  /// The lines, or those with `part` in them, "=*" in the place of an address.
  std::vector<std::string> WithoutAddresses(const std::string& part = "") const {
    std::vector<std::string> out;
    for (const auto& line : m_lines) {
      if (line.find(part) != std::string::npos)
        out.push_back(std::regex_replace(line, std::regex("=0x[0-9a-f]+"), "=*"));
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
