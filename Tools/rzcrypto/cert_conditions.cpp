#include "cert_conditions.h"

#include "cert_commands.h"
#include "cert_names.h"
#include "printable.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

constexpr const char* kPrincipalName = "user principal name";
constexpr const char* kDigitalSignature = "digital signature";
constexpr const char* kLogonPurpose = "smart-card logon";

Condition PrincipalName(const CertificateView& view) {
  Condition condition{"userPrincipalName", kPrincipalName, false, "no alternative names",
                      "it had a user principal name (other-name 1.3.6.1.4.1.311.20.2.3) among its alternative names"};
  std::vector<std::string> wanted;
  std::vector<std::string> others;
  for (const auto& name : view.AlternativeNames()) {
    if (IsPrincipalName(name)) {
      wanted.push_back(Shown(name));
    } else {
      others.push_back(KindName(name) + " " + Shown(name));
    }
  }
  condition.holds = !wanted.empty();
  if (condition.holds) {
    condition.evidence = Joined(wanted);
  } else if (!others.empty()) {
    condition.evidence = "none, only " + Joined(others);
  }
  return condition;
}

Condition DigitalSignature(const CertificateView& view) {
  const auto usages = view.KeyUsage();
  return {"digitalSignature", kDigitalSignature, view.HasDigitalSignature(),
          usages.empty() ? "no key usage" : "key usage: " + Joined(usages), "its key usage had digitalSignature"};
}

Condition LogonPurpose(const CertificateView& view) {
  const auto purposes = view.Purposes();
  return {"smartCardLogon", kLogonPurpose, view.HasLogonPurpose(),
          purposes.empty() ? "no extended key usage" : "extended key usage: " + Joined(PurposeNames(purposes)),
          "its extended key usage had smart-card logon (1.3.6.1.4.1.311.20.2.2)"};
}

/// Whether the question can be answered and the answer is yes.
bool Holds(bool (CertificateView::*ask)() const, const CertificateView& view) {
  try {
    return (view.*ask)();
  } catch (const Error&) {
    return false;
  }
}

/// The condition, or what keeps it from being read.
Condition Read(Condition (*read)(const CertificateView& view), const CertificateView& view, const char* key,
               const char* name, const char* part) {
  std::string problem;
  try {
    return read(view);
  } catch (const Error& error) {
    problem = error.what();
  } catch (const Failure& failure) {
    problem = failure.message;
  }
  return {key, name, false, std::string(part) + " broken: " + problem, std::string(part) + " were not broken"};
}

}  // namespace

std::array<Condition, 3> LogonConditions(const CertificateView& view) {
  return {Read(PrincipalName, view, "userPrincipalName", kPrincipalName, "its alternative names"),
          DigitalSignature(view), Read(LogonPurpose, view, "smartCardLogon", kLogonPurpose, "its extended key usage")};
}

std::vector<std::string> MissingForLogon(const CertificateView& view) {
  std::vector<std::string> missing;
  if (!Holds(&CertificateView::HasPrincipalName, view)) missing.emplace_back(kPrincipalName);
  if (!Holds(&CertificateView::HasDigitalSignature, view)) missing.emplace_back(kDigitalSignature);
  if (!Holds(&CertificateView::HasLogonPurpose, view)) missing.emplace_back(kLogonPurpose);
  return missing;
}

std::string PeriodNote(const CertificateView& view) {
  switch (view.State()) {
    case Period::kExpired:
      return "expired on " + view.NotAfter().text;
    case Period::kNotYetValid:
      return "not valid before " + view.NotBefore().text;
    case Period::kUnreadable:
      return "its period of validity cannot be read";
    case Period::kValid:
      break;
  }
  return "";
}

}  // namespace rzcrypto
