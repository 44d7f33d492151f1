#ifndef RZCRYPTO_IO_H
#define RZCRYPTO_IO_H

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "outcome.h"

namespace rzcrypto {

using Tavo::Framework::ByteArray;
using Json = nlohmann::ordered_json;

/// InputName returns what messages and listings call the input `path`: "-" is standard input.
std::string InputName(const std::string& path);

/// Input reads the file `path`, or standard input for "-", from its beginning to its end; or an open descriptor from
/// where it stands, which it leaves open. Throws Failure kReadOrWrite with the system's reason.
class Input {
 public:
  explicit Input(const std::string& path);
  explicit Input(int descriptor) : m_descriptor(descriptor) {}
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  ~Input();
  /// Read fills at most `size` bytes at `to` and returns how many; 0 at the end.
  size_t Read(unsigned char* to, size_t size) const;

 private:
  int m_descriptor;
  bool m_ours = false;  // whether it was opened here
};

/// ReadInput returns all bytes of the file `path`, or of standard input for "-". Throws Failure kReadOrWrite
/// with the system's reason.
ByteArray ReadInput(const std::string& path);
/// ReadInput returns all that is left of the input. Throws Failure kBadInput when that is more than `most` bytes.
ByteArray ReadInput(const Input& input, size_t most);

/// RequireFree throws Failure kReadOrWrite when WriteFile would refuse the path because of what is there, or because
/// there is no such folder: the answer comes before long work.
void RequireFree(const std::string& path, bool force);
using Write = std::function<void(std::string_view)>;
using Produce = std::function<void(const Write&)>;

/// WriteFile writes a new file with mode 0600, or to standard output for "-". With `force` it replaces the file that is
/// there in one step, and writes into what is no regular file (a pipe, a device). A file that could not be written
/// whole is removed. Throws Failure kReadOrWrite with the system's reason, and for an existing path without `force`.
/// `produce` is for what need not be in memory at once: it calls its argument for each part; what it throws goes on.
void WriteFile(const std::string& path, bool force, const Produce& produce);
void WriteFile(const std::string& path, std::string_view bytes, bool force);
void WriteFile(const std::string& path, const ByteArray& bytes, bool force);

/// Print writes to standard output. Throws OutputFailure.
void Print(std::string_view text);
void Print(const ByteArray& bytes);
/// PrintJson writes the value with an indent of two blanks and a line end; octets that are not UTF-8 are replaced.
void PrintJson(const Json& value);
/// FlushOutput must be the last call of a program that printed. Throws OutputFailure.
void FlushOutput();

}  // namespace rzcrypto

#endif
