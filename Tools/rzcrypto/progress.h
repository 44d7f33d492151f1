#ifndef RZCRYPTO_PROGRESS_H
#define RZCRYPTO_PROGRESS_H

#include <chrono>
#include <cstddef>

namespace rzcrypto {

/// Progress counts things on one line of the terminal at standard error, from the first second on, and wipes the line
/// when it ends. It writes nothing when standard error is no terminal.
class Progress {
 public:
  Progress(bool enabled, const char* what);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();
  void Step();

 private:
  using Clock = std::chrono::steady_clock;

  bool m_enabled;
  bool m_shown = false;
  const char* m_what;
  size_t m_count = 0;
  Clock::time_point m_next;
};

}  // namespace rzcrypto

#endif
