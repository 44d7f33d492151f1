#include "waiting.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace rzcrypto {

Waiting::Waiting(std::string what) : m_what(std::move(what)) {
  if (isatty(STDERR_FILENO) == 1) m_thread = std::thread([this] { Count(); });
}

Waiting::~Waiting() {
  if (!m_thread.joinable()) return;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_end = true;
  }
  m_ended.notify_one();
  m_thread.join();
}

void Waiting::Count() {
  std::unique_lock<std::mutex> lock(m_mutex);
  int seconds = 0;
  while (!m_ended.wait_for(lock, std::chrono::seconds(1), [this] { return m_end; })) {
    std::fprintf(stderr, "\r%s ... %d s\033[K", m_what.c_str(), ++seconds);
  }
  if (seconds > 0) std::fputs("\r\033[K", stderr);
}

}  // namespace rzcrypto
