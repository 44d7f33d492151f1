// rzcrypto cert show: everything in a certificate that a card administrator looks for.

#include <time.h>

#include "cert_commands.h"
#include "cert_names.h"
#include "encoding.h"
#include "json_list.h"
#include "oid_names.h"
#include "printable.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

/// One property: its lines in the listing and its value in JSON.
struct Property {
  std::vector<std::string> lines;
  Json value;
};

struct PropertyKind {
  const char* label;
  const char* member;
  Property (*read)(const CertificateView& view);
};

Property SerialNumber(const CertificateView& view) {
  const std::string hex = view.Serial();
  const size_t sign = hex.front() == '-' ? 1 : 0;
  return {{hex.substr(0, sign) + "0x" + hex.substr(sign)}, hex};
}

Property Line(const std::string& text) { return {{Printable(text)}, text}; }

Property Both(const std::string& name, const std::string& encodedOrder) {
  Property property{{Printable(name), "as encoded: " + Printable(encodedOrder)},
                    {{"rfc4514", name}, {"encodedOrder", encodedOrder}}};
  return property;
}

std::int64_t DaysUntil(const Moment& moment) {
  constexpr std::int64_t kDay = 86400;  // seconds
  const std::int64_t seconds = moment.seconds - time(nullptr);
  return seconds >= 0 ? seconds / kDay : -((-seconds + kDay - 1) / kDay);
}

Property Beginning(const CertificateView& view) {
  const Moment moment = view.NotBefore();
  const bool future = view.State() == Period::kNotYetValid;
  return {{moment.text + (future ? ", " + Paint(Colour::kRed, "not yet valid") : "")}, moment.text};
}

Property Ending(const CertificateView& view) {
  const Moment moment = view.NotAfter();
  const std::int64_t days = DaysUntil(moment);
  const std::string note =
      days < 0 ? Paint(Colour::kRed, "expired") + " " + Counted(static_cast<size_t>(-days), "day") + " ago"
               : Counted(static_cast<size_t>(days), "day") + " left";
  return {{moment.text + ", " + note}, {{"time", moment.text}, {"daysLeft", days}}};
}

Property Key(const CertificateView& view) {
  const KeyFacts key = view.Key();
  std::string text = key.algorithm;
  Json value = {{"algorithm", key.algorithm}, {"oid", key.oid}};
  if (key.bits != 0) {
    text += ", " + std::to_string(key.bits) + " bits";
    value["bits"] = key.bits;
  }
  if (key.exponent == 0 && key.algorithm.rfind("RSA", 0) == 0) text += ", exponent of more than 32 bits";
  if (key.exponent != 0) {
    text += ", exponent " + std::to_string(key.exponent);
    value["exponent"] = key.exponent;
  }
  return {{text}, value};
}

Property KeyUsage(const CertificateView& view) {
  const auto names = view.KeyUsage();
  return {{names.empty() ? "none" : Joined(names)}, names};
}

Property ExtendedKeyUsage(const CertificateView& view) {
  Property property{{}, Json::array()};
  for (const auto& oid : view.Purposes()) {
    const std::string name(OidName(oid));
    std::string line = name.empty() ? oid : name;
    if (!name.empty()) line.append(" (").append(oid).append(")");
    property.lines.push_back(std::move(line));
    property.value.push_back({{"oid", oid}, {"name", name.empty() ? Json(nullptr) : Json(name)}});
  }
  if (property.lines.empty()) property.lines = {"none"};
  return property;
}

Property AlternativeNames(const CertificateView& view) {
  Property property{{}, Json::array()};
  for (const auto& name : view.AlternativeNames()) {
    std::string line = KindName(name) + ": " + Shown(name);
    if (!name.oid.empty()) line += " (" + name.oid + (name.stringType.empty() ? "" : ", " + name.stringType) + ")";
    property.lines.push_back(line);
    Json value = {{"kind", name.kind}, {"name", KindName(name)}};
    if (!name.oid.empty()) value["oid"] = name.oid;
    if (!name.stringType.empty()) value["stringType"] = name.stringType;
    value["text"] = name.text.empty() ? Json(nullptr) : Json(name.text);
    value["hex"] = Hex(name.octets);
    property.value.push_back(value);
  }
  if (property.lines.empty()) property.lines = {"none"};
  return property;
}

constexpr PropertyKind kProperties[] = {
    {"Subject", "subject", [](const CertificateView& view) { return Both(view.Subject(0), view.Subject(1)); }},
    {"Issuer", "issuer", [](const CertificateView& view) { return Both(view.Issuer(0), view.Issuer(1)); }},
    {"Serial number", "serialNumber", SerialNumber},
    {"Version", "version",
     [](const CertificateView& view) -> Property {
       return {{std::to_string(view.Version())}, view.Version()};
     }},
    {"Valid from", "notBefore", Beginning},
    {"Valid until", "notAfter", Ending},
    {"Today", "period",
     [](const CertificateView& view) -> Property {
       return {{PeriodName(view.State())}, PeriodName(view.State())};
     }},
    {"Key", "key", Key},
    {"Key usage", "keyUsage", KeyUsage},
    {"Extended key usage", "extendedKeyUsage", ExtendedKeyUsage},
    {"Alternative names", "alternativeNames", AlternativeNames},
    {"SHA-1 fingerprint", "sha1", [](const CertificateView& view) { return Line(view.Fingerprint("SHA1")); }},
    {"SHA-256 fingerprint", "sha256", [](const CertificateView& view) { return Line(view.Fingerprint("SHA256")); }},
};

/// The property, or what is wrong with it; the rest of the certificate is shown all the same.
Property ReadProperty(const PropertyKind& kind, const CertificateView& view, Outcome& outcome) {
  std::string problem;
  try {
    return kind.read(view);
  } catch (const Error& error) {
    problem = error.what();
  } catch (const Failure& failure) {
    problem = failure.message;
  }
  outcome.Add(Exit::kBadInput);
  return {{Paint(Colour::kRed, "broken") + ": " + problem}, {{"error", problem}}};
}

void PrintProperty(const char* label, const Property& property) {
  for (const auto& line : property.lines) {
    Print(Padded(std::string("  ") + label, 24) + line + "\n");
    label = "";
  }
}

}  // namespace

void ShowCertificates(const CertOptions& options, Outcome& outcome) {
  std::optional<JsonList> list;
  if (options.json) list.emplace("certificates");
  bool first = true;
  const auto show = [&](const CertificateItem& item, const CertificateView& view) {
    Json entry = FileJson(item);
    if (!list) Print((first ? "" : "\n") + Paint(Colour::kBold, Printable(item.name)) + "\n");
    first = false;
    for (const PropertyKind& kind : kProperties) {
      Property property = ReadProperty(kind, view, outcome);
      if (list) {
        entry[kind.member] = std::move(property.value);
      } else {
        PrintProperty(kind.label, property);
      }
    }
    if (!list) return;
    entry["pem"] = view.Pem();
    list->Add(entry);
  };
  ReadCertificates(options, Printing::kAsItGoes, outcome, show,
                   [&](const CertificateItem& item, const std::string& reason) {
                     if (list) list->Add(RefusalJson(item, reason));
                   });
  if (list) list->Close(Json::object());
}

}  // namespace rzcrypto
