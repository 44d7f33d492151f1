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
    {"key generator", [](IAlgorithm* a, ICryptoParserParameterMap* p) { Own(KeyGenerator::Create(a, p)); }},
    {"random", [](IAlgorithm* a, ICryptoParserParameterMap* p) { Own(RandomGenerator::Create(a, p)); }},
    {"signature", [](IAlgorithm* a, ICryptoParserParameterMap* p) { Own(Signature::Create(a, p)); }},
};

bool Takes(const Service& service, const char* name) {
  const auto algorithm = NewAlgorithm(name);
  const auto parameters = NewParameters();
  try {
    Checked([&] { service.ask(algorithm.get(), parameters.get()); });
    return true;
  } catch (const Error& error) {
    if (ExitFor(error.id()) == Exit::kInside) throw;
    return false;
  }
}

using Names = std::vector<std::string>;

/// The registry with the answers of the services.
struct Listing {
  struct Row {
    const AlgorithmEntry* entry;
    Names services;
  };
  std::vector<Row> rows;
  Names ofAny;  // the services that take every algorithm: naming them in each row would say nothing
};

Listing AskAll() {
  size_t count = 0;
  const AlgorithmEntry* entries = ListAlgorithms(count);
  Listing listing;
  for (size_t i = 0; i < count; ++i) listing.rows.push_back({&entries[i], {}});
  for (const Service& service : kServices) {
    std::vector<Listing::Row*> takers;
    for (auto& row : listing.rows) {
      if (Takes(service, row.entry->friendlyName)) takers.push_back(&row);
    }
    if (takers.size() == count) {
      listing.ofAny.emplace_back(service.name);
    } else {
      for (auto* row : takers) row->services.emplace_back(service.name);
    }
  }
  return listing;
}

std::string Joined(const Names& names) {
  std::string text;
  for (const auto& name : names) text += (text.empty() ? "" : ", ") + name;
  return text.empty() ? "-" : text;
}

void PrintTable(const Listing& listing) {
  char line[160];
  std::snprintf(line, sizeof line, "%-14s %-24s %-30s %s\n", "NAME", "OID", "FAMILY", "SERVICES");
  Print(line);
  for (const auto& [entry, services] : listing.rows) {
    std::snprintf(line, sizeof line, "%-14s %-24s %-30s %s\n", entry->friendlyName, entry->fromOID ? entry->oid : "-",
                  entry->family, Joined(services).c_str());
    Print(line);
  }
  Print("\nServices that take every algorithm: " + Joined(listing.ofAny) + "\n");
}

void PrintList(const Listing& listing) {
  Json list = Json::array();
  for (const auto& [entry, services] : listing.rows) {
    list.push_back({{"name", entry->friendlyName},
                    {"oid", entry->fromOID ? Json(entry->oid) : Json(nullptr)},
                    {"family", entry->family},
                    {"services", services}});
  }
  PrintJson({{"algorithms", list}, {"servicesOfEvery", listing.ofAny}});
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
      const Listing listing = AskAll();
      *json ? PrintList(listing) : PrintTable(listing);
    });
  });
}

}  // namespace rzcrypto
