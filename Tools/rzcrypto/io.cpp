#include "io.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

class Descriptor {
 public:
  explicit Descriptor(const std::string& path) {
    const bool standard = path == "-";
    m_descriptor = standard ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (m_descriptor < 0) throw Failure{Exit::kReadOrWrite, std::strerror(errno)};
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (m_descriptor != STDIN_FILENO) close(m_descriptor);
  }
  size_t Read(unsigned char* to, size_t size) const {
    for (;;) {
      const ssize_t count = read(m_descriptor, to, size);
      if (count >= 0) return static_cast<size_t>(count);
      if (errno != EINTR) throw Failure{Exit::kReadOrWrite, std::strerror(errno)};
    }
  }

 private:
  int m_descriptor;
};

}  // namespace

std::string InputName(const std::string& path) { return path == "-" ? "standard input" : path; }

ByteArray ReadInput(const std::string& path) {
  const Descriptor input(path);
  ByteArray all;
  ByteArray chunk(size_t{1} << 16);
  while (const size_t count = input.Read(chunk.data(), chunk.size())) AppendBytes(all, chunk.data(), count);
  return all;
}

void Print(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) throw OutputFailure{std::strerror(errno)};
}

void Print(const ByteArray& bytes) {
  if (!bytes.empty()) Print({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void PrintJson(const Json& value) { Print(value.dump(2, ' ', false, Json::error_handler_t::replace) + '\n'); }

void FlushOutput() {
  if (std::fflush(stdout) != 0) throw OutputFailure{std::strerror(errno)};
}

}  // namespace rzcrypto
