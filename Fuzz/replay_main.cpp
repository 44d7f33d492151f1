// Runs a fuzz target over every file of the folders and files given, without libFuzzer. Fails when there is none.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

void Replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  // An exact-size heap copy, so that a sanitizer sees one octet too far.
  const std::vector<uint8_t> exact(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

}  // namespace

int main(int argc, char** argv) {
  size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      Replay(argv[i]);
      ++count;
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      Replay(entry.path());
      ++count;
    }
  }
  std::printf("%zu inputs\n", count);
  return count > 0 ? 0 : 1;
}
