// Blocks that are random, truncated and mutated through each decoder, beside decoders written octet by octet.
//
// Input: an octet that chooses (bits 0-1 the padding, bits 2-3 what k is beside the block's length, bit 4 an OAEP block
// made around the octets, bit 5 its first octet), one with the length of the label, the label, the octets.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "../Tests/support/naive_padding.h"
#include "tavo/owned.h"

using namespace Tavo::Framework;
using Naive::Decoded;
using Naive::Octets;

namespace {

constexpr unsigned char kHashId = 0x33;

struct Input {
  unsigned int padding;
  long lengthDifference;  // k less the length of the block
  bool wrap;
  unsigned char first;
  Octets label;
  Octets octets;
};

Input Read(const uint8_t* data, size_t size) {
  static constexpr long kDifferences[] = {0, 0, 1, -1};
  const unsigned int choice = data[0];
  const size_t labelEnd = 2 + std::min<size_t>(data[1], size - 2);
  return {choice & 3U,
          kDifferences[choice >> 2 & 3],
          (choice >> 4 & 1) != 0,
          static_cast<unsigned char>(choice >> 5 & 1),
          Octets(data + 2, data + labelEnd),
          Octets(data + labelEnd, data + size)};
}

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

/// OAEP throws for a wrong length; the other decoders never throw, nor does it otherwise.
Decoded Decode(IPadding& padding, const Octets& block, bool mayThrow) {
  ByteArray message(3, 7);
  try {
    const bool accepted = padding.DecodeData(ByteArray(block.begin(), block.end()), message);
    if (accepted) return Octets(message.begin(), message.end());
  } catch (IException* exception) {
    Require(mayThrow && Own(exception)->getID() == CRYPTO_BAD_PARAM, "DecodeData threw");
  }
  Require(message.empty(), "a refused block left something");
  return std::nullopt;
}

/// What EncodeData makes of `message` in blocks of k bytes comes back, when it is not one of the documented exceptions.
void ThereAndBack(IPadding& padding, const Octets& message, size_t k, size_t overhead, size_t shortest) {
  ByteArray block;
  try {
    padding.EncodeData(ByteArray(message.begin(), message.end()), block);
  } catch (IException* exception) {
    Require(Own(exception)->getID() == CRYPTO_BAD_PARAM && message.size() + overhead > k, "EncodeData threw");
    return;
  }
  Require(block.size() == k, "a block has not k bytes");
  if (message.size() < shortest || message.size() + overhead > k) return;
  Require(Decode(padding, Octets(block.begin(), block.end()), false) == message, "a message did not come back");
}

struct Scheme {
  const char* type;
  Decoded (*naive)(const Octets& block, size_t k, const Octets& label);
  size_t overhead;  // of the longest message that comes back
  size_t shortest;  // message that comes back
};

constexpr Scheme kSchemes[] = {
    {"PKCS1", [](const Octets& block, size_t k, const Octets&) { return Naive::Pkcs1(block, k); }, 11, 1},
    {"OAEP", Naive::Oaep, 43, 0},
    {"X_931", [](const Octets& block, size_t k, const Octets&) { return Naive::X931(block, k); }, 14, 0},
};

/// A block of OAEP with the octets as DB, so that more than the hash of the label is tried.
Octets Wrapped(const Input& input) {
  Octets db = Naive::Sha1(input.label);
  db.insert(db.end(), input.octets.begin(), input.octets.end());
  return Naive::OaepBlock(input.first, Octets(20, 0x5a), db);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const Input input = Read(data, size);
  const Scheme& scheme = kSchemes[input.padding % std::size(kSchemes)];
  const Octets block = input.wrap ? Wrapped(input) : input.octets;
  const auto k = static_cast<size_t>(std::max<long>(0, static_cast<long>(block.size()) + input.lengthDifference));
  const auto map = NewParameters();
  map->SetPkcs1Operation(1);
  map->SetHashAlgoX931(kHashId);
  map->SetOaepEncodingParam(ByteArray(input.label.begin(), input.label.end()));
  const auto padding = Own(IPadding::Create(scheme.type, static_cast<unsigned int>(k), map.get()));
  Require(Decode(*padding, block, k != block.size()) == scheme.naive(block, k, input.label), "the decoders differ");
  const auto larger = static_cast<size_t>(k + 10 + input.label.size());
  const auto roomy = Own(IPadding::Create(scheme.type, static_cast<unsigned int>(larger), map.get()));
  ThereAndBack(*roomy, input.octets, larger, scheme.overhead, scheme.shortest);
  return 0;
}
