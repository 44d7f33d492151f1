// rzcrypto cert logon: the three conditions of smart-card logon, each with its evidence, and the library's verdict.

#include <algorithm>

#include "cert_commands.h"
#include "cert_conditions.h"
#include "cert_names.h"
#include "json_list.h"
#include "printable.h"
#include "tavo/framework/certproperties.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

constexpr const char* kClientAuthentication = "1.3.6.1.5.5.7.3.2";

struct Judgement {
  bool qualifies;
  std::array<Condition, 3> conditions;
  std::vector<std::string> notes;  // what the rule does not look at, and what would help
};

/// Whether an extended key usage that can be read has the purpose.
bool HasPurpose(const CertificateView& view, const char* oid) {
  try {
    const auto purposes = view.Purposes();
    return std::find(purposes.begin(), purposes.end(), oid) != purposes.end();
  } catch (const Error&) {
    return false;
  }
}

bool HasPrincipalNameWithoutText(const CertificateView& view) {
  const auto names = view.AlternativeNames();
  return std::any_of(names.begin(), names.end(), [](const AlternativeName& name) {
    return IsPrincipalName(name) && (name.text.empty() || name.stringType.empty());
  });
}

std::string WouldQualify(const std::array<Condition, 3>& conditions) {
  std::string remedies;
  for (const Condition& condition : conditions) {
    if (!condition.holds) remedies += (remedies.empty() ? "" : ", and if ") + condition.remedy;
  }
  return "would qualify if " + remedies;
}

std::vector<std::string> Notes(const CertificateView& view, const Judgement& judgement) {
  const auto& [name, signature, purpose] = judgement.conditions;
  std::vector<std::string> notes;
  if (!judgement.qualifies) notes.push_back(WouldQualify(judgement.conditions));
  if (!purpose.holds && HasPurpose(view, kClientAuthentication)) {
    notes.emplace_back("client authentication does not take the place of smart-card logon");
  }
  if (name.holds && HasPrincipalNameWithoutText(view)) {
    notes.emplace_back("a user principal name is there, but its value is no text; the rule does not look at the value");
  }
  const std::string period = PeriodNote(view);
  if (!period.empty()) notes.push_back(period + "; the rule does not look at the period of validity");
  return notes;
}

Judgement Judge(const CertificateItem& item, const CertificateView& view) {
  Judgement judgement{
      ICertificateProperties::rzIsCertOKForPKILogon(item.bytes.data(), static_cast<unsigned int>(item.bytes.size())),
      LogonConditions(view),
      {}};
  judgement.notes = Notes(view, judgement);
  return judgement;
}

void PrintJudgement(const CertificateItem& item, const CertificateView& view, const Judgement& judgement) {
  Print(Paint(Colour::kBold, Printable(item.name)) + "\n  " + Printable(view.Subject(0)) + "\n");
  for (const Condition& condition : judgement.conditions) {
    Print("  " + (condition.holds ? Paint(Colour::kGreen, "yes") + "  " : Paint(Colour::kRed, "NO") + "   ") +
          Padded(condition.name, 21) + condition.evidence + "\n");
  }
  Print(judgement.qualifies ? "  " + Paint(Colour::kGreen, "QUALIFIES") + " for smart-card logon\n"
                            : "  " + Paint(Colour::kRed, "DOES NOT QUALIFY") + " for smart-card logon\n");
  for (const auto& note : judgement.notes) Print("  note: " + note + "\n");
  Print("\n");
}

Json ToJson(const CertificateItem& item, const CertificateView& view, const Judgement& judgement) {
  Json conditions = Json::object();
  for (const Condition& condition : judgement.conditions) {
    conditions[condition.key] = {{"holds", condition.holds}, {"evidence", condition.evidence}};
  }
  Json entry = FileJson(item);
  entry.update({{"subject", view.Subject(0)},
                {"qualifies", judgement.qualifies},
                {"conditions", conditions},
                {"period", PeriodName(view.State())},
                {"notes", judgement.notes},
                {"pem", view.Pem()}});
  return entry;
}

}  // namespace

void JudgeLogon(const CertOptions& options, Outcome& outcome) {
  std::optional<JsonList> list;
  if (options.json) list.emplace("certificates");
  size_t qualified = 0;
  const auto judge = [&](const CertificateItem& item, const CertificateView& view) {
    const Judgement judgement = Judge(item, view);
    qualified += judgement.qualifies ? 1 : 0;
    if (!judgement.qualifies) outcome.Add(Exit::kNo);
    if (list) {
      list->Add(ToJson(item, view, judgement));
    } else {
      PrintJudgement(item, view, judgement);
    }
  };
  const CertTally tally = ReadCertificates(options, Printing::kAsItGoes, outcome, judge,
                                           [&](const CertificateItem& item, const std::string& reason) {
                                             if (list) list->Add(RefusalJson(item, reason));
                                           });
  if (list) {
    list->Close({{"summary",
                  {{"certificates", tally.certificates}, {"qualified", qualified}, {"unreadable", tally.unreadable}}}});
    return;
  }
  Print(Counted(tally.certificates, "certificate") + ": " + std::to_string(qualified) + " qualified, " +
        std::to_string(tally.certificates - qualified) + " not" +
        (tally.unreadable == 0 ? "" : "; " + Counted(tally.unreadable, "input") + " could not be read") + "\n");
}

}  // namespace rzcrypto
