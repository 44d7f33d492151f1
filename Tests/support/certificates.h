#ifndef RZ_TESTS_CERTIFICATES_H
#define RZ_TESTS_CERTIFICATES_H

#include <openssl/evp.h>

#include <string>
#include <utility>
#include <vector>

#include "tavo/framework/bytes.h"

/// What a test certificate is to have. The texts are those of openssl's configuration files, see x509v3_config(5).
struct CertificateRecipe {
  std::string keyUsage;          // "critical,digitalSignature"; empty: no extension
  std::string extendedKeyUsage;  // "clientAuth,1.3.6.1.4.1.311.20.2.2"
  std::string altName;           // "otherName:1.3.6.1.4.1.311.20.2.3;UTF8:ada@example.org,email:ada@example.org"
  /// Further extensions, name and value as in a configuration file, such as {"subjectKeyIdentifier", "hash"}.
  std::vector<std::pair<const char*, const char*>> texts;
  /// And those with their identifier and the octets of the value, in hex.
  std::vector<std::pair<std::string, std::string>> extensions;
  std::string key = "EC:P-256";  // as for CertificateKey
  std::string subject = "/C=DE/O=Example/CN=Ada Lehmann";
  std::string serial = "1001";  // hex, "-" in front of a negative one
  std::string notBefore = "20240101000000Z";
  std::string notAfter = "20491231235959Z";
  long version = 2;  // as encoded; 0 leaves the field out
};

/// CertificateKey returns the key of a kind, made once: "RSA:2048", "RSA-PSS:2048", "EC:P-256", "ED25519", "X25519".
EVP_PKEY* CertificateKey(const std::string& kind);

/// MakeCertificate returns the DER encoding, made and self-signed by libcrypto. Aborts the program when libcrypto
/// refuses the recipe.
Tavo::Framework::ByteArray MakeCertificate(const CertificateRecipe& recipe);

/// DerHex returns the element with this identifier octet and these contents, for extensions that libcrypto would not
/// make: DerHex(0x30, DerHex(0x06, "550403")).
std::string DerHex(unsigned char tag, const std::string& contentsHex);

/// A recipe that fits smart-card logon.
CertificateRecipe LogonRecipe();

#endif
