#ifndef RZCRYPTO_CERT_INPUT_H
#define RZCRYPTO_CERT_INPUT_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "outcome.h"

namespace rzcrypto {

using Tavo::Framework::ByteArray;

/// One certificate of the inputs, or the place where one should be.
struct CertificateItem {
  std::string name;                // for people: "cards/ada.pem", "bundle.pem#2", "standard input"
  std::string path;                // as given or found; "-" for standard input
  size_t number = 1;               // of the certificate in its file
  ByteArray bytes;                 // DER
  std::optional<Failure> failure;  // why there are no bytes
};

/// ForEachCertificate hands `visit` every certificate of the paths in their order: of a PEM file each certificate in it
/// (blocks of other kinds are passed over), of a folder each file in it that is not hidden, by name. One certificate is
/// held at a time, so a file or folder may have any number. While `progress` and for long runs a line on a terminal at
/// standard error counts them.
void ForEachCertificate(const std::vector<std::string>& paths, bool progress,
                        const std::function<void(const CertificateItem& item)>& visit);

/// Damage says in words why the octets, which the library refused as a certificate, are none ("cut short: ..."), or
/// nothing when they look like one from outside.
std::string Damage(const ByteArray& bytes);

}  // namespace rzcrypto

#endif
