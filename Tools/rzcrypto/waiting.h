#ifndef RZCRYPTO_WAITING_H
#define RZCRYPTO_WAITING_H

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace rzcrypto {

/// Waiting shows on the terminal, from the first second on, that something goes on that cannot say how far it is:
/// "generating an RSA key of 4096 bits ... 12 s". It counts in a thread of its own and wipes its line when it ends. It
/// writes nothing when standard error is no terminal.
class Waiting {
 public:
  explicit Waiting(std::string what);
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;
  ~Waiting();

 private:
  void Count();

  std::string m_what;
  std::mutex m_mutex;
  std::condition_variable m_ended;
  bool m_end = false;
  std::thread m_thread;
};

}  // namespace rzcrypto

#endif
