// Hashes a file: c++ -std=c++17 hash.cpp $(pkg-config --cflags --libs rzcrypto) && ./a.out FILE
#include <cstdio>
#include <fstream>
#include <iterator>

#include "tavo/owned.h"

using namespace Tavo::Framework;

int main(int argc, char** argv) try {
  std::ifstream file(argc > 1 ? argv[1] : "/dev/stdin", std::ios::binary);
  const std::string data{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  return Checked([&] {
    const auto parameters = NewParameters();
    const auto digest = Own(MessageDigest::Create(NewAlgorithm("SHA256").get(), parameters.get()));
    ByteArray hash;
    digest->Digest(ByteArray(data.begin(), data.end()), hash);
    for (const unsigned char byte : hash) std::printf("%02x", byte);
    std::printf("\n");
    return 0;
  });
} catch (const Error& error) {
  std::fprintf(stderr, "%s\n", error.trace().c_str());
  return 1;
}
