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
constexpr const char* kNames = "alternative names";
constexpr const char* kPurposes = "extended key usage";

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
  return {key, name, false, std::string("its ") + part + " cannot be read: " + problem,
          std::string("its ") + part + " could be read and had it"};
}

}  // namespace

std::array<Condition, 3> LogonConditions(const CertificateView& view) {
  return {Read(PrincipalName, view, "userPrincipalName", kPrincipalName, kNames), DigitalSignature(view),
          Read(LogonPurpose, view, "smartCardLogon", kLogonPurpose, kPurposes)};
}

Shortcomings FindShortcomings(const CertificateView& view) {
  Shortcomings found;
  const auto ask = [&](bool (CertificateView::*holds)() const, const char* name, const char* part) {
    try {
      if (!(view.*holds)()) found.missing.emplace_back(name);
    } catch (const Error&) {
      found.broken.emplace_back(part);
    }
  };
  ask(&CertificateView::HasPrincipalName, kPrincipalName, kNames);
  ask(&CertificateView::HasDigitalSignature, kDigitalSignature, "");
  ask(&CertificateView::HasLogonPurpose, kLogonPurpose, kPurposes);
  return found;
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
