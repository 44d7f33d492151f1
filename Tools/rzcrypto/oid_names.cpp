#include "oid_names.h"

namespace rzcrypto {

namespace {

struct Entry {
  std::string_view oid;
  std::string_view name;
  unsigned int bits = 0;  // of a curve
};

constexpr Entry kEntries[] = {
    // Key purposes
    {"1.3.6.1.4.1.311.20.2.2", "smart-card logon"},
    {"1.3.6.1.4.1.311.20.2.1", "certificate request agent"},
    {"1.3.6.1.4.1.311.10.3.4", "encrypting file system"},
    {"1.3.6.1.4.1.311.10.3.4.1", "file recovery"},
    {"1.3.6.1.4.1.311.10.3.12", "document signing"},
    {"1.3.6.1.4.1.311.67.1.1", "disk encryption"},
    {"1.3.6.1.5.2.3.4", "PKINIT client authentication"},
    {"1.3.6.1.5.2.3.5", "PKINIT KDC"},
    {"1.3.6.1.5.5.7.3.1", "server authentication"},
    {"1.3.6.1.5.5.7.3.2", "client authentication"},
    {"1.3.6.1.5.5.7.3.3", "code signing"},
    {"1.3.6.1.5.5.7.3.4", "e-mail protection"},
    {"1.3.6.1.5.5.7.3.8", "time stamping"},
    {"1.3.6.1.5.5.7.3.9", "OCSP signing"},
    {"1.3.6.1.5.5.7.3.17", "IPsec IKE"},
    {"1.3.6.1.5.5.7.3.21", "SSH client"},
    {"2.5.29.37.0", "any purpose"},
    {"2.16.840.1.101.3.6.7", "PIV content signing"},
    {"2.16.840.1.101.3.6.8", "PIV card authentication"},
    // Types of other-names
    {"1.3.6.1.4.1.311.20.2.3", "user principal name"},
    {"1.3.6.1.4.1.311.25.1", "domain controller GUID"},
    {"1.3.6.1.5.2.2", "Kerberos principal"},
    {"1.3.6.1.5.5.7.8.5", "XMPP address"},
    {"1.3.6.1.5.5.7.8.7", "DNS SRV"},
    {"1.3.6.1.5.5.7.8.9", "internationalised e-mail"},
    {"2.16.840.1.101.3.6.6", "FASC-N"},
    // Public keys
    {"1.2.840.113549.1.1.1", "RSA"},
    {"1.2.840.113549.1.1.7", "RSA (OAEP)"},
    {"1.2.840.113549.1.1.10", "RSA (PSS)"},
    {"1.2.840.10040.4.1", "DSA"},
    {"1.2.840.10045.2.1", "EC"},
    {"1.3.101.110", "X25519", 253},
    {"1.3.101.111", "X448", 448},
    {"1.3.101.112", "Ed25519", 253},
    {"1.3.101.113", "Ed448", 456},
    {"1.2.840.10045.3.1.1", "P-192", 192},
    {"1.3.132.0.33", "P-224", 224},
    {"1.2.840.10045.3.1.7", "P-256", 256},
    {"1.3.132.0.34", "P-384", 384},
    {"1.3.132.0.35", "P-521", 521},
    {"1.3.132.0.10", "secp256k1", 256},
    {"1.3.36.3.3.2.8.1.1.7", "brainpoolP256r1", 256},
    {"1.3.36.3.3.2.8.1.1.11", "brainpoolP384r1", 384},
    {"1.3.36.3.3.2.8.1.1.13", "brainpoolP512r1", 512},
    // Attributes of names
    {"2.5.4.3", "commonName"},
    {"2.5.4.4", "surname"},
    {"2.5.4.5", "serialNumber"},
    {"2.5.4.6", "countryName"},
    {"2.5.4.7", "localityName"},
    {"2.5.4.8", "stateOrProvinceName"},
    {"2.5.4.9", "streetAddress"},
    {"2.5.4.10", "organizationName"},
    {"2.5.4.11", "organizationalUnitName"},
    {"2.5.4.12", "title"},
    {"2.5.4.13", "description"},
    {"2.5.4.17", "postalCode"},
    {"2.5.4.42", "givenName"},
    {"2.5.4.43", "initials"},
    {"2.5.4.44", "generationQualifier"},
    {"2.5.4.46", "dnQualifier"},
    {"2.5.4.65", "pseudonym"},
    {"2.5.4.97", "organizationIdentifier"},
    {"0.9.2342.19200300.100.1.1", "userId"},
    {"0.9.2342.19200300.100.1.25", "domainComponent"},
    {"1.2.840.113549.1.9.1", "emailAddress"},
    // Extensions
    {"2.5.29.9", "subjectDirectoryAttributes"},
    {"2.5.29.14", "subjectKeyIdentifier"},
    {"2.5.29.15", "keyUsage"},
    {"2.5.29.17", "subjectAltName"},
    {"2.5.29.18", "issuerAltName"},
    {"2.5.29.19", "basicConstraints"},
    {"2.5.29.30", "nameConstraints"},
    {"2.5.29.31", "cRLDistributionPoints"},
    {"2.5.29.32", "certificatePolicies"},
    {"2.5.29.32.0", "anyPolicy"},
    {"2.5.29.33", "policyMappings"},
    {"2.5.29.35", "authorityKeyIdentifier"},
    {"2.5.29.36", "policyConstraints"},
    {"2.5.29.37", "extKeyUsage"},
    {"2.5.29.46", "freshestCRL"},
    {"2.5.29.54", "inhibitAnyPolicy"},
    {"1.3.6.1.5.5.7.1.1", "authorityInfoAccess"},
    {"1.3.6.1.5.5.7.1.3", "qcStatements"},
    {"1.3.6.1.5.5.7.48.1", "OCSP"},
    {"1.3.6.1.5.5.7.48.2", "caIssuers"},
    {"1.3.6.1.5.5.7.2.1", "certification practice statement"},
    {"1.3.6.1.4.1.311.20.2", "certificate template name"},
    {"1.3.6.1.4.1.311.21.7", "certificate template"},
    {"1.3.6.1.4.1.311.21.10", "application policies"},
    // Signatures and digests
    {"1.2.840.113549.1.1.5", "RSA with SHA-1"},
    {"1.2.840.113549.1.1.11", "RSA with SHA-256"},
    {"1.2.840.113549.1.1.12", "RSA with SHA-384"},
    {"1.2.840.113549.1.1.13", "RSA with SHA-512"},
    {"1.2.840.113549.1.1.8", "MGF1"},
    {"1.2.840.10045.4.3.2", "ECDSA with SHA-256"},
    {"1.2.840.10045.4.3.3", "ECDSA with SHA-384"},
    {"1.2.840.10045.4.3.4", "ECDSA with SHA-512"},
    {"1.3.14.3.2.26", "SHA-1"},
    {"2.16.840.1.101.3.4.2.1", "SHA-256"},
    {"2.16.840.1.101.3.4.2.2", "SHA-384"},
    {"2.16.840.1.101.3.4.2.3", "SHA-512"},
    // Messages
    {"1.2.840.113549.1.7.1", "data"},
    {"1.2.840.113549.1.7.2", "signedData"},
    {"1.2.840.113549.1.7.3", "envelopedData"},
    {"1.2.840.113549.1.9.3", "contentType"},
    {"1.2.840.113549.1.9.4", "messageDigest"},
    {"1.2.840.113549.1.9.5", "signingTime"},
    {"1.2.840.113549.1.9.20", "friendlyName"},
    {"1.2.840.113549.1.9.21", "localKeyId"},
};

const Entry* Find(std::string_view oid) {
  for (const Entry& entry : kEntries) {
    if (entry.oid == oid) return &entry;
  }
  return nullptr;
}

}  // namespace

std::string_view OidName(std::string_view oid) {
  const Entry* entry = Find(oid);
  return entry != nullptr ? entry->name : std::string_view();
}

unsigned int CurveBits(std::string_view oid) {
  const Entry* entry = Find(oid);
  return entry != nullptr ? entry->bits : 0;
}

}  // namespace rzcrypto
