// rzcrypto algorithms: the registry, and which service takes each algorithm, found out by asking the services.

#include <memory>
#include <vector>

#include "commands.h"
#include "io.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

/// A service takes an algorithm when `ask` returns; it refuses by throwing.
struct Service {
  const char* name;
  void (*ask)(IAlgorithm* algorithm, ICryptoParserParameterMap* parameters);
};

constexpr Service kServices[] = {
    {"digest",
     [](IAlgorithm* a, ICryptoParserParameterMap* p) { Own(MessageDigest::Create(a, p))->GetDigestLength(); }},
    {"mac", [](IAlgorithm* a, ICryptoParserParameterMap* p) { Own(MAC::Create(a, p)); }},
    {"cipher", [](IAlgorithm* a, ICryptoParserParameterMap* p) { Own(Cipher::Create(a, p)); }},
    {"secret key", [](IAlgorithm* a, ICryptoParserParameterMap*) { Own(IKey::Create(a, "RAW", ByteArray(1))); }},
    {"key pair", [](IAlgorithm* a, ICryptoParserParameterMap* p) { Own(KeyPairGenerator::Create(a, p)); }},
};

std::vector<std::string> ServicesFor(const char* name) {
  std::vector<std::string> names;
  const auto algorithm = NewAlgorithm(name);
  const auto parameters = NewParameters();
  for (const Service& service : kServices) {
    try {
      Checked([&] { service.ask(algorithm.get(), parameters.get()); });
      names.emplace_back(service.name);
    } catch (const Error& error) {
      if (ExitFor(error.id()) == Exit::kInside) throw;
    }
  }
  return names;
}

std::string Joined(const std::vector<std::string>& names) {
  std::string text;
  for (const auto& name : names) text += (text.empty() ? "" : ", ") + name;
  return text.empty() ? "-" : text;
}

void PrintTable(const AlgorithmEntry* entries, size_t count) {
  char line[160];
  std::snprintf(line, sizeof line, "%-14s %-24s %-30s %s\n", "NAME", "OID", "FAMILY", "SERVICES");
  Print(line);
  for (size_t i = 0; i < count; ++i) {
    const auto& entry = entries[i];
    std::snprintf(line, sizeof line, "%-14s %-24s %-30s %s\n", entry.friendlyName, entry.fromOID ? entry.oid : "-",
                  entry.family, Joined(ServicesFor(entry.friendlyName)).c_str());
    Print(line);
  }
}

void PrintList(const AlgorithmEntry* entries, size_t count) {
  Json list = Json::array();
  for (size_t i = 0; i < count; ++i) {
    const auto& entry = entries[i];
    list.push_back({{"name", entry.friendlyName},
                    {"oid", entry.fromOID ? Json(entry.oid) : Json(nullptr)},
                    {"family", entry.family},
                    {"services", ServicesFor(entry.friendlyName)}});
  }
  PrintJson({{"algorithms", list}});
}

}  // namespace

void AddAlgorithms(CLI::App& app, Outcome& outcome) {
  auto* command =
      app.add_subcommand("algorithms", "List the algorithms by name, OID, family and the services that take them");
  auto json = std::make_shared<bool>(false);
  command->add_flag("--json", *json, "Print JSON");
  command->footer("Example: rzcrypto algorithms --json");
  command->callback([json, &outcome] {
    outcome.Attempt("algorithms", [&] {
      size_t count = 0;
      const AlgorithmEntry* entries = ListAlgorithms(count);
      *json ? PrintList(entries, count) : PrintTable(entries, count);
    });
  });
}

}  // namespace rzcrypto
