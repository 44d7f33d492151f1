// rzcrypto der check: does an input decode as a type, and if not, where and why.

#include <algorithm>

#include "der_commands.h"
#include "der_rules.h"
#include "der_types.h"
#include "printable.h"
#include "tavo/der/core.h"

namespace rzcrypto::der {

namespace {

struct Verdict {
  std::uint32_t code;
  std::uint64_t consumed = 0;
  std::optional<Fault> notDer{};
  Blame blame{};
};

/// The element that breaks a rule, or the octet where the object's own encoding begins to differ: elements that the
/// type does not have are ignored by its decoder.
std::optional<Fault> WhyNotDer(const Type& type, Bytes element, const ByteArray& encoded) {
  if (auto fault = FindNotDer(type, element)) return fault;
  const auto differs = std::mismatch(element.begin(), element.end(), encoded.begin(), encoded.end()).first;
  if (differs == element.end() && element.size() == encoded.size()) return std::nullopt;
  return Fault{static_cast<size_t>(differs - element.begin()), "encoded again, " + type.name + " differs from here on"};
}

Verdict Judge(const Type& type, Bytes bytes) {
  const Decoded decoded = type.decode({bytes, 0, 0});
  if (decoded.code != CSResult_OK) return {decoded.code, 0, std::nullopt, FindBlame(type, bytes)};
  // The 00 00 of an indefinite length is not counted as consumed, but belongs to the element.
  const bool marker = bytes[1] == 0x80 && bytes.size() - decoded.consumed >= 2;
  const Bytes element = bytes.first(decoded.consumed + (marker ? 2 : 0));
  return {CSResult_OK, element.size(), WhyNotDer(type, element, decoded.encoded), {}};
}

std::string Line(const Type& type, const Verdict& verdict, size_t size) {
  if (verdict.code != CSResult_OK) {
    const std::string where = verdict.blame.path.empty() ? type.name : verdict.blame.path;
    return std::to_string(verdict.code) + " " + CodeName(verdict.code) + " at offset " +
           std::to_string(verdict.blame.offset) + ", " + where + ": " + CodeMeaning(verdict.code);
  }
  std::string line = "OK, " + type.name + ", " + Count(verdict.consumed, "byte");
  if (verdict.consumed != size) line += "; " + Count(size - verdict.consumed, "more byte") + " after it";
  if (verdict.notDer) {
    line += "; not DER at offset " + std::to_string(verdict.notDer->offset) + ", " + verdict.notDer->message;
  }
  return line;
}

Json Facts(const Type& type, const Verdict& verdict, size_t size) {
  Json facts = {{"type", type.name}, {"code", verdict.code}, {"name", CodeName(verdict.code)}};
  if (verdict.code != CSResult_OK) {
    facts["meaning"] = CodeMeaning(verdict.code);
    facts["offset"] = verdict.blame.offset;
    facts["component"] = verdict.blame.path;
  } else {
    facts["consumed"] = verdict.consumed;
    facts["trailing"] = size - verdict.consumed;
    facts["der"] = !verdict.notDer;
    if (verdict.notDer) facts["fault"] = {{"offset", verdict.notDer->offset}, {"message", verdict.notDer->message}};
  }
  return facts;
}

}  // namespace

void Check(const Options& options, Outcome& outcome) {
  const Type* named = options.type.empty() ? nullptr : FindType(options.type);
  Json list = Json::array();
  const auto check = [&](const std::string& name, const Block& block) {
    const Type* type = named != nullptr ? named : FindTypeOfPem(block.label);
    if (type == nullptr) throw Failure{Exit::kBadInput, "what it is does not follow from its label; say --as TYPE"};
    const Verdict verdict = Judge(*type, {block.bytes.data(), block.bytes.size()});
    const bool strictly = !verdict.notDer && verdict.consumed == block.bytes.size();
    if (verdict.code != CSResult_OK || (options.strict && !strictly)) outcome.Add(Exit::kNo);
    if (options.json) {
      Json facts = {{"input", name}};
      facts.update(Facts(*type, verdict, block.bytes.size()));
      list.push_back(std::move(facts));
    } else {
      Print(Printable(name) + ": " + Line(*type, verdict, block.bytes.size()) + "\n");
    }
  };
  const auto fail = [&](const std::string& name) { list.push_back({{"input", name}, {"error", outcome.reason()}}); };
  ForEachBlock(options, outcome, check, fail);
  if (options.json) PrintJson({{"checks", std::move(list)}});
}

}  // namespace rzcrypto::der
