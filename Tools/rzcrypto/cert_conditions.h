#ifndef RZCRYPTO_CERT_CONDITIONS_H
#define RZCRYPTO_CERT_CONDITIONS_H

#include <array>

#include "cert_view.h"

namespace rzcrypto {

/// One of the three things that smart-card logon wants, with what the certificate has.
struct Condition {
  const char* key;   // in JSON
  const char* name;  // for people
  bool holds;
  std::string evidence;  // what was found, whether or not it is what is wanted
  std::string remedy;    // what the certificate would need: "it had ..."
};

/// LogonConditions returns the principal name, the digital-signature usage and the logon purpose of a certificate. What
/// cannot be read does not hold.
std::array<Condition, 3> LogonConditions(const CertificateView& view);

/// What keeps a certificate from its ranks: the conditions that do not hold, and the parts that cannot be read, without
/// the cost of the evidence.
struct Shortcomings {
  std::vector<std::string> missing;
  std::vector<std::string> broken;
};
Shortcomings FindShortcomings(const CertificateView& view);

/// PeriodNote returns "expired ..." or "not valid before ..." for a certificate outside its period, else an empty text.
std::string PeriodNote(const CertificateView& view);

}  // namespace rzcrypto

#endif
