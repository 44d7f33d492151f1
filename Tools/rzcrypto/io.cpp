#include "io.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include "encoding.h"

namespace rzcrypto {

using namespace Tavo::Framework;

Input::Input(const std::string& path) {
  m_ours = path != "-";
  m_descriptor = m_ours ? open(path.c_str(), O_RDONLY | O_CLOEXEC) : STDIN_FILENO;
  if (m_descriptor < 0) throw Failure{Exit::kReadOrWrite, std::strerror(errno)};
}

Input::~Input() {
  if (m_ours) close(m_descriptor);
}

size_t Input::Read(unsigned char* to, size_t size) const {
  for (;;) {
    const ssize_t count = read(m_descriptor, to, size);
    if (count >= 0) return static_cast<size_t>(count);
    if (errno != EINTR) throw Failure{Exit::kReadOrWrite, std::strerror(errno)};
  }
}

std::string InputName(const std::string& path) { return path == "-" ? "standard input" : path; }

ByteArray ReadInput(const Input& input, size_t most) {
  ByteArray all;
  ByteArray chunk(size_t{1} << 16);
  while (const size_t count = input.Read(chunk.data(), chunk.size())) {
    if (count > most - all.size()) throw Failure{Exit::kBadInput, "longer than " + std::to_string(most) + " bytes"};
    AppendBytes(all, chunk.data(), count);
  }
  return all;
}

ByteArray ReadInput(const std::string& path) { return ReadInput(Input(path), SIZE_MAX); }

void Print(std::string_view text) {
  if (text.empty()) return;  // its data may be null
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) throw OutputFailure{std::strerror(errno)};
}

void Print(const ByteArray& bytes) { Print(AsText(bytes)); }

void PrintJson(const Json& value) { Print(value.dump(2, ' ', false, Json::error_handler_t::replace) + '\n'); }

void FlushOutput() {
  if (std::fflush(stdout) != 0) throw OutputFailure{std::strerror(errno)};
}

namespace {

[[noreturn]] void FailToWrite() { throw Failure{Exit::kReadOrWrite, std::strerror(errno)}; }

/// A file that is being written. What has a `temporary` name is removed again unless Keep is called.
class OutputFile {
 public:
  OutputFile(int descriptor, std::string temporary) : m_descriptor(descriptor), m_temporary(std::move(temporary)) {
    if (m_descriptor < 0) FailToWrite();
  }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile() {
    if (m_descriptor >= 0) close(m_descriptor);
    if (!m_temporary.empty()) unlink(m_temporary.c_str());
  }
  void Write(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t count = write(m_descriptor, bytes.data(), bytes.size());
      if (count < 0 && errno != EINTR) FailToWrite();
      if (count > 0) bytes.remove_prefix(static_cast<size_t>(count));
    }
  }
  /// Close must follow the last Write: some file systems report a full disk only now.
  void Close() {
    if (close(std::exchange(m_descriptor, -1)) != 0) FailToWrite();
  }
  void Keep() { m_temporary.clear(); }

 private:
  int m_descriptor;
  std::string m_temporary;
};

constexpr mode_t kOwnerOnly = 0600;

bool IsSpecial(const std::string& path) {
  struct stat facts {};
  return stat(path.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode);
}

void Fill(OutputFile& file, const Produce& produce) {
  produce([&](std::string_view bytes) { file.Write(bytes); });
  file.Close();
}

void WriteNew(const std::string& path, const Produce& produce) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly);
  OutputFile file(descriptor, path);
  Fill(file, produce);
  file.Keep();
}

void WriteInto(const std::string& path, const Produce& produce) {
  OutputFile file(open(path.c_str(), O_WRONLY | O_CLOEXEC), "");
  Fill(file, produce);
}

/// Writes beside the old file and renames, so that there is never half a file nor one that others may read.
void Replace(const std::string& path, const Produce& produce) {
  std::string temporary = path + ".XXXXXX";
  const int descriptor = mkostemp(temporary.data(), O_CLOEXEC);
  OutputFile file(descriptor, descriptor < 0 ? "" : temporary);
  Fill(file, produce);
  if (rename(temporary.c_str(), path.c_str()) != 0) FailToWrite();
  file.Keep();
}

}  // namespace

void RequireFree(const std::string& path, bool force) {
  if (path == "-") return;
  struct stat facts {};
  if (lstat(path.c_str(), &facts) == 0) {
    if (!force) throw Failure{Exit::kReadOrWrite, "exists already; --force replaces it"};
    if (!S_ISREG(facts.st_mode)) return;
  }
  const size_t folder = path.rfind('/') + 1;  // 0 without one
  if (access(folder == 0 ? "." : path.substr(0, folder).c_str(), W_OK) != 0) FailToWrite();
}

void WriteFile(const std::string& path, bool force, const Produce& produce) {
  RequireFree(path, force);
  if (path == "-") {
    produce([](std::string_view bytes) { Print(bytes); });
  } else if (!force) {
    WriteNew(path, produce);
  } else if (IsSpecial(path)) {
    WriteInto(path, produce);
  } else {
    Replace(path, produce);
  }
}

void WriteFile(const std::string& path, std::string_view bytes, bool force) {
  WriteFile(path, force, [&](const Write& write) { write(bytes); });
}

void WriteFile(const std::string& path, const ByteArray& bytes, bool force) { WriteFile(path, AsText(bytes), force); }

}  // namespace rzcrypto
