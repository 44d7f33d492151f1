#ifndef RZCRYPTO_CERT_COMMANDS_H
#define RZCRYPTO_CERT_COMMANDS_H

#include <functional>
#include <string>
#include <vector>

#include "cert_input.h"
#include "cert_view.h"
#include "io.h"

namespace rzcrypto {

struct CertOptions {
  std::vector<std::string> files;
  bool json = false;
  bool ignoreFileSystem = false;
};

/// The verbs of `rzcrypto cert`.
void ShowCertificates(const CertOptions& options, Outcome& outcome);
void JudgeLogon(const CertOptions& options, Outcome& outcome);
void RankCertificates(const CertOptions& options, Outcome& outcome);

/// What became of the inputs.
struct CertTally {
  size_t certificates = 0;
  size_t unreadable = 0;
};

/// When a command prints: what is printed as it goes and a progress line cannot share a terminal.
enum class Printing { kAsItGoes, kAtTheEnd };

/// ReadCertificates hands `use` each certificate of the options' files that the library takes. The others are reported,
/// each on its own line, counted, and handed to `refuse` with the reason.
CertTally ReadCertificates(const CertOptions& options, Printing printing, Outcome& outcome,
                           const std::function<void(const CertificateItem&, const CertificateView&)>& use,
                           const std::function<void(const CertificateItem&, const std::string&)>& refuse);

/// FileJson begins the JSON object of a certificate: "file" and "number", its place in the file.
Json FileJson(const CertificateItem& item);
/// RefusalJson returns the object of an input that is no certificate: "file", "number" and "error".
Json RefusalJson(const CertificateItem& item, const std::string& reason);

/// Joined returns the texts with commas between.
std::string Joined(const std::vector<std::string>& texts);
/// PurposeNames returns the extended key usages by name where there is one, else dotted.
std::vector<std::string> PurposeNames(const std::vector<std::string>& oids);
/// Counted returns "1 certificate", "2 certificates".
std::string Counted(size_t count, const std::string& thing);

}  // namespace rzcrypto

#endif
