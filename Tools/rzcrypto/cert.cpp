// rzcrypto cert: what stands in certificates, whether they fit smart-card logon, and which one ranks first.

#include <unistd.h>

#include <memory>

#include "cert_commands.h"
#include "commands.h"
#include "oid_names.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

std::string Refusal(const CertificateItem& item, const Error& error) {
  const std::string damage = Damage(item.bytes);
  return "not a certificate: " + (damage.empty() ? std::string(error.what()) : damage);
}

using Verb = void (*)(const CertOptions& options, Outcome& outcome);

CLI::App* AddVerb(CLI::App* cert, const char* name, const char* description, const char* footer, Verb verb,
                  std::shared_ptr<CertOptions> options, Outcome& outcome) {
  auto* command = cert->add_subcommand(name, description);
  command->add_option("FILE", options->files,
                      "Certificates in DER, PEM (all in the file) or hex; a folder stands for all files in it; - or "
                      "none is standard input");
  command->add_flag("--json", options->json, "Print JSON, with each certificate in PEM");
  command->footer(footer);
  command->callback([options, verb, &outcome] {
    if (options->files.empty()) options->files = {"-"};
    verb(*options, outcome);
  });
  return command;
}

}  // namespace

CertTally ReadCertificates(const CertOptions& options, Printing printing, Outcome& outcome,
                           const std::function<void(const CertificateItem&, const CertificateView&)>& use,
                           const std::function<void(const CertificateItem&, const std::string&)>& refuse) {
  CertTally tally;
  const auto fail = [&](const CertificateItem& item, const Failure& failure) {
    ++tally.unreadable;
    FlushOutput();  // so that the message stands where the certificate would
    outcome.Report(item.name, failure);
    refuse(item, failure.message);
  };
  const bool terminalIsFree = printing == Printing::kAtTheEnd || isatty(STDOUT_FILENO) == 0;
  ForEachCertificate(options.files, terminalIsFree, [&](const CertificateItem& item) {
    if (item.failure) return fail(item, *item.failure);
    std::optional<CertificateView> view;
    try {
      view.emplace(item.bytes);
    } catch (const Error& error) {
      return fail(item, {Exit::kBadInput, Refusal(item, error)});
    }
    ++tally.certificates;
    outcome.Attempt(item.name, [&] { use(item, *view); });
  });
  return tally;
}

Json FileJson(const CertificateItem& item) { return {{"file", item.path}, {"number", item.number}}; }

Json RefusalJson(const CertificateItem& item, const std::string& reason) {
  Json entry = FileJson(item);
  entry["error"] = reason;
  return entry;
}

std::string Joined(const std::vector<std::string>& texts) {
  std::string joined;
  for (const auto& text : texts) joined += (joined.empty() ? "" : ", ") + text;
  return joined;
}

std::vector<std::string> PurposeNames(const std::vector<std::string>& oids) {
  std::vector<std::string> names;
  names.reserve(oids.size());
  for (const auto& oid : oids) names.emplace_back(OidName(oid).empty() ? oid : OidName(oid));
  return names;
}

std::string Counted(size_t count, const std::string& thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

void AddCert(CLI::App& app, Outcome& outcome) {
  auto* cert = app.add_subcommand("cert", "Show certificates, judge them for smart-card logon, rank them");
  cert->require_subcommand(1);
  cert->footer("Example: rzcrypto cert logon cards/");
  const auto options = std::make_shared<CertOptions>();
  AddVerb(cert, "show", "Show what stands in certificates",
          "Example: rzcrypto cert show card.pem\nExit code 0, or 3 when an input is no certificate.", ShowCertificates,
          options, outcome);
  AddVerb(
      cert, "logon", "Say for each certificate whether it fits smart-card logon, and why not",
      "The rule wants a user principal name (other-name 1.3.6.1.4.1.311.20.2.3), the digital-signature key usage\n"
      "and the extended key usage smart-card logon (1.3.6.1.4.1.311.20.2.2). It checks neither validity nor trust.\n"
      "Example: rzcrypto cert logon cards/\n"
      "Exit code 0 if all qualify, 1 if one does not, 3 when an input is no certificate.",
      JudgeLogon, options, outcome);
  AddVerb(
      cert, "rank", "Rank certificates as the default, best first",
      "Priority: 4 for one that fits smart-card logon, plus 2 for a certificate request agent, plus 1 for the\n"
      "encrypting file system. Of equal priorities the one that expires last comes first, then the one given first.\n"
      "Example: rzcrypto cert rank --ignore-efs cards/\n"
      "Exit code 0, 1 if none can be the default, 3 when an input is no certificate.",
      RankCertificates, options, outcome)
      ->add_flag("--ignore-efs", options->ignoreFileSystem, "Give the encrypting file system no weight");
}

}  // namespace rzcrypto
