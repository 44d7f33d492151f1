// Hashes a file: c++ -std=c++17 hash.cpp $(pkg-config --cflags --libs rzcrypto) && ./a.out FILE
#include <cstdio>

#include "tavo/owned.h"

using namespace Tavo::Framework;

int main(int argc, char** argv) try {
  std::FILE* file = argc > 1 ? std::fopen(argv[1], "rb") : stdin;
  if (file == nullptr) return std::perror(argv[1]), 1;
  ByteArray data;
  unsigned char chunk[4096];
  while (const size_t count = std::fread(chunk, 1, sizeof chunk, file)) AppendBytes(data, chunk, count);
  if (std::ferror(file) != 0) return std::perror(argc > 1 ? argv[1] : "standard input"), 1;
  return Checked([&] {
    const auto algorithm = NewAlgorithm("SHA256");
    const auto parameters = NewParameters();
    const auto digest = Own(MessageDigest::Create(algorithm.get(), parameters.get()));
    ByteArray hash;
    digest->Digest(data, hash);
    for (const unsigned char byte : hash) std::printf("%02x", byte);
    std::printf("\n");
    return 0;
  });
} catch (const Error& error) {
  std::fprintf(stderr, "%s\n", error.trace().c_str());
  return 1;
}
