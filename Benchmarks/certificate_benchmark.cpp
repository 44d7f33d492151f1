// The verdict on one smart-card certificate beside what other libraries need to read the same three facts from the same
// octets: libcrypto, and GnuTLS and Botan where they are installed. Then parsing alone, the other rules, and the
// verdict in one and in two threads, each with a certificate of its own: the items per second should all but double.

#include <benchmark/benchmark.h>
#include <openssl/objects.h>
#include <openssl/x509v3.h>

#include <cstring>
#include <utility>

#include "../Tests/support/certificates.h"
#include "../Tests/support/rsa.h"
#include "tavo/crypto.h"
#include "tavo/owned.h"

#ifdef RZ_HAVE_GNUTLS
#include <gnutls/x509.h>
#endif
#ifdef RZ_HAVE_BOTAN_2
#include <botan/pkix_types.h>
#include <botan/x509cert.h>
#endif

namespace {

using namespace Tavo::Framework;
using Bytes = ByteArray;

constexpr const char* kUserPrincipalName = "1.3.6.1.4.1.311.20.2.3";
constexpr const char* kSmartCardLogon = "1.3.6.1.4.1.311.20.2.2";

/// What an enterprise authority issues: everyday names, an RSA key of 2048 bits, six extensions.
Bytes LogonCertificate(const char* serial) {
  CertificateRecipe recipe = LogonRecipe();
  recipe.key = "RSA:2048";
  recipe.serial = serial;
  recipe.subject = "/DC=example/DC=corp/OU=Users/OU=Z\xC3\xBCrich/CN=Ada Lehmann";
  recipe.texts = {{"subjectKeyIdentifier", "hash"},
                  {"crlDistributionPoints", "URI:http://host.example/crl"},
                  {"authorityInfoAccess", "OCSP;URI:http://host.example/ocsp"}};
  return MakeCertificate(recipe);
}

const Bytes& Certificate(int which = 0) {
  static const Bytes ders[2] = {LogonCertificate("1001"), LogonCertificate("1002")};
  return ders[which % 2];
}

/// A reader answers whether the certificate fits smart-card logon.
using Reader = bool (*)(const Bytes& der);

void Verdict(benchmark::State& state, Reader reader) {
  const Bytes& der = Certificate(state.thread_index());
  state.SetLabel(std::to_string(der.size()) + " octets");
  for (auto _ : state) {
    if (!reader(der)) return state.SkipWithError("not fit for logon");
  }
  state.SetItemsProcessed(state.iterations());
}

bool Ours(const Bytes& der) {
  return ICertificateProperties::rzIsCertOKForPKILogon(der.data(), static_cast<unsigned int>(der.size()));
}
bool OursPriority(const Bytes& der) {
  return ICertificateProperties::rzGetCertPriorityForSetAsDefault(der.data(), static_cast<unsigned int>(der.size()),
                                                                  false) == 4;
}
bool OursPurpose(const Bytes& der) {
  bool found = false;
  ICertificateProperties::rzGetEKUFromCertificate(der.data(), static_cast<unsigned int>(der.size()), kSmartCardLogon,
                                                  &found);
  return found;
}
bool OursParse(const Bytes& der) {
  const ByteArray encoded(der.begin(), der.end());
  return Own(ICertificate::Create("X509", encoded)) != nullptr;
}

using reference::Parsed;

bool LibcryptoParse(const Bytes& der) { return Parsed(der) != nullptr; }

bool Libcrypto(const Bytes& der) {
  static ASN1_OBJECT* const upn = OBJ_txt2obj(kUserPrincipalName, 1);
  static ASN1_OBJECT* const logon = OBJ_txt2obj(kSmartCardLogon, 1);
  const auto certificate = Parsed(der);
  if (!certificate || (X509_get_key_usage(certificate.get()) & KU_DIGITAL_SIGNATURE) == 0) return false;
  const reference::Holder<GENERAL_NAMES, GENERAL_NAMES_free> names(
      static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate.get(), NID_subject_alt_name, nullptr, nullptr)));
  bool hasName = false;
  for (int i = 0; i < sk_GENERAL_NAME_num(names.get()); ++i) {
    const GENERAL_NAME* name = sk_GENERAL_NAME_value(names.get(), i);
    hasName |= name->type == GEN_OTHERNAME && OBJ_cmp(name->d.otherName->type_id, upn) == 0;
  }
  const reference::Holder<EXTENDED_KEY_USAGE, EXTENDED_KEY_USAGE_free> purposes(
      static_cast<EXTENDED_KEY_USAGE*>(X509_get_ext_d2i(certificate.get(), NID_ext_key_usage, nullptr, nullptr)));
  bool hasPurpose = false;
  for (int i = 0; i < sk_ASN1_OBJECT_num(purposes.get()); ++i) {
    hasPurpose |= OBJ_cmp(sk_ASN1_OBJECT_value(purposes.get(), i), logon) == 0;
  }
  return hasName && hasPurpose;
}

BENCHMARK_CAPTURE(Verdict, ours, Ours);
BENCHMARK_CAPTURE(Verdict, ours_priority, OursPriority);
BENCHMARK_CAPTURE(Verdict, ours_purpose, OursPurpose);
BENCHMARK_CAPTURE(Verdict, ours_parse_alone, OursParse);
BENCHMARK_CAPTURE(Verdict, ours_threads, Ours)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK_CAPTURE(Verdict, libcrypto, Libcrypto);
BENCHMARK_CAPTURE(Verdict, libcrypto_parse_alone, LibcryptoParse);

#ifdef RZ_HAVE_GNUTLS
bool HasPurpose(gnutls_x509_crt_t certificate) {
  char text[128];
  for (unsigned i = 0;; ++i) {
    size_t size = sizeof text;
    if (gnutls_x509_crt_get_key_purpose_oid(certificate, i, text, &size, nullptr) != 0) return false;
    if (std::strcmp(text, kSmartCardLogon) == 0) return true;
  }
}
bool HasName(gnutls_x509_crt_t certificate) {
  char text[128];
  for (unsigned i = 0;; ++i) {
    size_t size = sizeof text;
    const int type = gnutls_x509_crt_get_subject_alt_name(certificate, i, text, &size, nullptr);
    if (type < 0) return false;
    size = sizeof text;
    if (gnutls_x509_crt_get_subject_alt_othername_oid(certificate, i, text, &size) >= 0 &&
        std::strcmp(text, kUserPrincipalName) == 0) {
      return true;
    }
  }
}
bool GnuTLS(const Bytes& der) {
  const gnutls_datum_t data{const_cast<unsigned char*>(der.data()), static_cast<unsigned int>(der.size())};
  gnutls_x509_crt_t certificate;
  unsigned int usage = 0;
  gnutls_x509_crt_init(&certificate);
  const bool fit = gnutls_x509_crt_import(certificate, &data, GNUTLS_X509_FMT_DER) == 0 &&
                   gnutls_x509_crt_get_key_usage(certificate, &usage, nullptr) == 0 &&
                   (usage & GNUTLS_KEY_DIGITAL_SIGNATURE) != 0 && HasName(certificate) && HasPurpose(certificate);
  gnutls_x509_crt_deinit(certificate);
  return fit;
}
BENCHMARK_CAPTURE(Verdict, gnutls, GnuTLS);
#endif

#ifdef RZ_HAVE_BOTAN_2
bool Botan_(const Bytes& der) {
  const Botan::X509_Certificate certificate(der.data(), der.size());
  if (!certificate.has_constraints(Botan::DIGITAL_SIGNATURE)) return false;
  // Botan 2 leaves out other-names of this kind; it is asked for them all the same.
  bool hasName = true;
  for (const auto& [oid, value] : certificate.subject_alt_name().get_othernames()) {
    hasName |= oid.to_string() == kUserPrincipalName;
  }
  bool hasPurpose = false;
  for (const auto& purpose : certificate.extended_key_usage()) hasPurpose |= purpose.to_string() == kSmartCardLogon;
  return hasName && hasPurpose;
}
BENCHMARK_CAPTURE(Verdict, botan, Botan_);
#endif

}  // namespace
