// Decodes and encodes what valgrind's memcheck takes for uninitialised memory, so that it reports every branch and
// every address that depends on the contents, but for what the decoders Reveal. To be run under memcheck. Exits with 0
// when all results are right, nothing is reported of the library, and something is reported of each decoder that leaks.
//
// Built with the sources of the paddings themselves, RZ_CHECK_SECRETS on, at one optimisation level after the other.

#include <valgrind/memcheck.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "rz/log.h"
#include "support/naive_padding.h"
#include "tavo/owned.h"

using namespace Tavo::Framework;
using Naive::Decoded;
using Naive::Octets;

namespace {

constexpr size_t kKeyLength = 64;
const Octets kLabel = {'l', 'a', 'b', 'e', 'l'};

using Decoder = Decoded (*)(const Octets& secret);

constexpr const char* kPkcs1 = "PKCS1";
constexpr const char* kOaep = "OAEP";

struct Padder {
  explicit Padder(const char* type) : map(NewParameters()) {
    map->SetPkcs1Operation(1);
    map->SetOaepEncodingParam(ByteArray(kLabel.begin(), kLabel.end()));
    padding = Own(IPadding::Create(type, kKeyLength, map.get()));
  }
  Decoded Decode(const ByteArray& secret) const {
    ByteArray message;
    if (!padding->DecodeData(secret, message)) return std::nullopt;
    VALGRIND_MAKE_MEM_DEFINED(message.data(), message.size());
    return Octets(message.begin(), message.end());
  }
  Owned<ICryptoParserParameterMap> map;
  Owned<IPadding> padding;
};

ByteArray Secret(const Octets& octets) {
  ByteArray secret(octets.begin(), octets.end());
  VALGRIND_MAKE_MEM_UNDEFINED(secret.data(), secret.size());
  return secret;
}

template <const char* const& kType>
Decoded ByLibrary(const Octets& block) {
  return Padder(kType).Decode(Secret(block));
}

/// A secret message, encoded and decoded again.
template <const char* const& kType>
Decoded ThereAndBack(const Octets& message) {
  const Padder padder(kType);
  ByteArray block;
  padder.padding->EncodeData(Secret(message), block);
  return padder.Decode(block);
}

/// What a decoder that leaves at the first fault makes of a secret block.
template <class Leaking>
Decoded ByLeaking(Leaking leaking, Octets secret) {
  VALGRIND_MAKE_MEM_UNDEFINED(secret.data(), secret.size());
  Decoded decoded = leaking(secret);
  VALGRIND_MAKE_MEM_DEFINED(&decoded, sizeof decoded);
  if (decoded) VALGRIND_MAKE_MEM_DEFINED(decoded->data(), decoded->size());
  return decoded;
}

struct Case {
  Octets secret;
  Decoded message;
};

Octets Joined(std::initializer_list<Octets> parts) {
  Octets all;
  for (const auto& part : parts) std::copy(part.begin(), part.end(), std::back_inserter(all));
  return all;
}

Octets Fill(size_t count, unsigned char octet) { return Octets(count, octet); }

std::vector<Case> Pkcs1Cases() {
  const auto block = [](Octets header, size_t padding, size_t zeros) {
    Octets all = Joined({header, Fill(padding, 0xff), Fill(zeros, 0)});
    all.resize(kKeyLength, 0xaa);
    return all;
  };
  return {{block({0, 2}, 8, 1), Fill(53, 0xaa)}, {block({0, 2}, 60, 1), Fill(1, 0xaa)},
          {block({0, 2}, 8, 54), Fill(53, 0)},   {block({0, 2}, 7, 1), std::nullopt},
          {block({0, 2}, 61, 1), std::nullopt},  {block({0, 2}, 62, 0), std::nullopt},
          {block({0, 1}, 8, 1), std::nullopt},   {block({1, 2}, 8, 1), std::nullopt},
          {Fill(kKeyLength, 0), std::nullopt}};
}

std::vector<Case> OaepCases() {
  const Octets hash = Naive::Sha1(kLabel);
  const auto block = [](const Octets& labelHash, size_t zeros, Octets rest, unsigned char first = 0) {
    Octets db = Joined({labelHash, Fill(zeros, 0), rest});
    db.resize(kKeyLength - 21, 0xaa);
    return Naive::OaepBlock(first, Fill(20, 0x5a), db);
  };
  return {{block(hash, 10, {1}), Fill(12, 0xaa)},      {block(hash, 22, {1}), Octets()},
          {block(hash, 1, {1}), Fill(21, 0xaa)},       {block(hash, 23, {}), std::nullopt},
          {block(hash, 10, {2}), std::nullopt},        {block(hash, 10, {1}, 1), std::nullopt},
          {block(Fill(20, 0), 10, {1}), std::nullopt}, {Fill(kKeyLength, 0), std::nullopt}};
}

Decoded LeakingPkcs1(const Octets& block) {
  return ByLeaking([](const Octets& secret) { return Naive::Pkcs1(secret, kKeyLength); }, block);
}

Decoded LeakingOaep(const Octets& block) {
  return ByLeaking([](const Octets& secret) { return Naive::Oaep(secret, kKeyLength, kLabel); }, block);
}

/// Runs the cases and returns whether all results are right, and whether memcheck reports what it should.
bool Run(const char* name, Decoder decode, const std::vector<Case>& cases, bool leaks) {
  bool right = true;
  const unsigned long before = VALGRIND_COUNT_ERRORS;
  for (size_t i = 0; i < cases.size(); ++i) {
    if (decode(cases[i].secret) == cases[i].message) continue;
    std::printf("%s: case %zu: wrong result\n", name, i);
    right = false;
  }
  const unsigned long reports = VALGRIND_COUNT_ERRORS - before;
  std::printf("%-16s %2zu secrets, %3lu reports%s\n", name, cases.size(), reports, leaks ? ", as it should" : "");
  return right && (reports > 0) == leaks;
}

void Discard(void*, const char*, unsigned long, const char*) {}

}  // namespace

int main() {
  if (RUNNING_ON_VALGRIND == 0) {
    std::puts("not under valgrind: nothing would be found");
    return 2;
  }
  rzlogSetSink(Discard, nullptr);  // with every line formatted: none may have a secret in it
  rzlogSetLevels(~0UL);
  const Octets message = Fill(17, 0xaa);
  const std::vector<Case> there = {{message, message}};
  const bool good[] = {
      Run("PKCS1", ByLibrary<kPkcs1>, Pkcs1Cases(), false),
      Run("OAEP", ByLibrary<kOaep>, OaepCases(), false),
      Run("PKCS1 both ways", ThereAndBack<kPkcs1>, there, false),
      Run("OAEP both ways", ThereAndBack<kOaep>, there, false),
      Run("leaking PKCS1", LeakingPkcs1, Pkcs1Cases(), true),
      Run("leaking OAEP", LeakingOaep, OaepCases(), true),
  };
  return std::all_of(std::begin(good), std::end(good), [](bool one) { return one; }) ? 0 : 1;
}
