#include "progress.h"

#include <unistd.h>

#include <cstdio>

namespace rzcrypto {

namespace {

constexpr auto kQuiet = std::chrono::seconds(1);
constexpr auto kInterval = std::chrono::milliseconds(200);

}  // namespace

Progress::Progress(bool enabled, const char* what)
    : m_enabled(enabled && isatty(STDERR_FILENO) == 1), m_what(what), m_next(Clock::now() + kQuiet) {}

Progress::~Progress() {
  if (m_shown) std::fputs("\r\033[K", stderr);
}

void Progress::Step() {
  ++m_count;
  if (!m_enabled || Clock::now() < m_next) return;
  m_next = Clock::now() + kInterval;
  m_shown = true;
  std::fprintf(stderr, "\r%zu %s ...\033[K", m_count, m_what);
}

}  // namespace rzcrypto
