#ifndef TAVO_FRAMEWORK_CERTPROPERTIES_H
#define TAVO_FRAMEWORK_CERTPROPERTIES_H

#include "rz/cext.h"

namespace Tavo::Framework {

/// ICertificateProperties decides what a certificate may be used for on a smart card. The rules take the octets of one
/// DER certificate and look at five facts in it:
///
///   UPN   a subject alternative name of kind "OtherName" with type-id 1.3.6.1.4.1.311.20.2.3, whatever its value
///   DS    the digital-signature bit of the key usage
///   SCL   extended key usage 1.3.6.1.4.1.311.20.2.2, smart-card logon
///   CRA   extended key usage 1.3.6.1.4.1.311.20.2.1, certificate request agent
///   EFS   extended key usage 1.3.6.1.4.1.311.10.3.4, encrypting file system
///
/// They look at nothing else: not at the period of validity, the issuer, the signature or revocation. "OK" means fit by
/// its contents, not trusted.
///
/// No rule throws. A certificate that cannot be read, a null pointer and a length of 0 included, one with a broken
/// subject alternative name or extended key usage give false or 0 and the reason is logged at level 1; one without any
/// extended key usage gives false or 0 too. `unCertificateValueLen` is in bytes. Any number of threads may call them at
/// once.
class RZ_CRYPTO_API ICertificateProperties {
 public:
  /// rzIsCertOKForPKILogon returns whether the certificate fits smart-card logon: UPN and DS and SCL.
  static bool rzIsCertOKForPKILogon(const unsigned char* pusCertificateValue, unsigned int unCertificateValueLen);

  /// rzIsCertOKForSetAsDefault returns whether the certificate may be the user's default: (UPN and DS and SCL), or CRA,
  /// or EFS unless `bIgnoreEFS`.
  static bool rzIsCertOKForSetAsDefault(const unsigned char* pusCertificateValue, unsigned int unCertificateValueLen,
                                        bool bIgnoreEFS);

  /// rzGetCertPriorityForSetAsDefault returns the rank as a default, 0 to 7, the higher the better: 4 for (UPN and DS
  /// and SCL), plus 2 for CRA, plus 1 for EFS unless `bIgnoreEFS`.
  static int rzGetCertPriorityForSetAsDefault(const unsigned char* pusCertificateValue,
                                              unsigned int unCertificateValueLen, bool bIgnoreEFS);

  /// rzGetEKUFromCertificate returns whether the certificate has any extended key usage, and writes to `pbFound` (which
  /// may be null) whether `szOID` (dotted; null is never found) is among them. Only extended key usages are read, so a
  /// broken subject alternative name does not matter here.
  static bool rzGetEKUFromCertificate(const unsigned char* pusCertificateValue, unsigned int unCertificateValueLen,
                                      const char* szOID, bool* pbFound);
};

}  // namespace Tavo::Framework

#endif
