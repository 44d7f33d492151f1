#ifndef TAVO_FRAMEWORK_CERTIFICATE_H
#define TAVO_FRAMEWORK_CERTIFICATE_H

#include "tavo/framework/names.h"

namespace Tavo::Framework {

class ICryptoParserFilter;
class ICryptoParserParameterMap;
class IPublicKey;

/// ICertificate is a read-only view of one certificate. It says what is written there; it checks no signature, no chain
/// and no revocation, so nothing that it answers makes a certificate trusted.
class RZ_CRYPTO_API ICertificate {
 public:
  /// Create returns a new certificate from its encoding: `format` is "X509" and `encoded` a DER certificate (RFC 5280,
  /// 4.1), of which a copy is kept. Octets after the certificate are kept and not looked at. The object is an
  /// IX509Certificate. The caller deletes it.
  /// Throws 4002 "Unsupported format" for any other `format`; 4000 "X509 encoded buffer should not be empty"; 4004 with
  /// the name of the step ("d2i_X509() failed", "CSCertificate_DERDecode() failed", "CSKeyUsage_DERDecode() failed")
  /// for octets that are not a certificate or whose key usage is broken. Other extensions are read when asked for. Of a
  /// doubled extension the first counts; one whose identifier is not encoded in the one DER way is another extension.
  static ICertificate* Create(SecureString format, const ByteArray& encoded);

  virtual ~ICertificate() = default;
  /// Clone returns a new certificate, parsed again from the same octets. The caller deletes it.
  virtual ICertificate* Clone() const = 0;
  /// GetEncoded assigns the octets that were given to Create.
  virtual void GetEncoded(ByteArray& encoded) = 0;
  /// GetFormat returns "X509".
  virtual SecureString GetFormat() = 0;
  /// GetPublicKey lends the subject's RSA key; it lives as long as the certificate. The key's bits alone decide: the
  /// algorithm identifier beside them is not looked at. Throws "Error while creating Public Key" with the identifier of
  /// the cause (an inner exception) when they are no PKCS #1 RSAPublicKey, as for an elliptic-curve key.
  virtual IPublicKey* GetPublicKey() = 0;
  /// VerifySignature, VerifyTrust, GetSignature and Compare throw 4001 "Not Implemented".
  virtual bool VerifySignature(IPublicKey* key) = 0;
  virtual bool VerifyTrust(ICryptoParserParameterMap* parameters) = 0;
  virtual ByteArray GetSignature() = 0;
  virtual bool Compare(ICertificate* other) = 0;
};

/// IX509Certificate is what ICertificate::Create returns. A field that is absent or broken throws 4004 with the name of
/// the failing step, such as "CSTBSCertificate_GetVersion() failed". Strings and lists are the caller's.
class RZ_CRYPTO_API IX509Certificate : public ICertificate {
 public:
  /// GetTBSCertificate assigns the contents of the TBSCertificate, without its identifier and length octets. They are
  /// encoded anew, so they are not what was signed when the certificate is not DER: do not verify a signature over
  /// them.
  virtual void GetTBSCertificate(ByteArray& tbs) = 0;
  /// GetVersion returns the number as encoded: 1 for version 2, 2 for version 3. A version 1 certificate has no such
  /// field and throws 4004 "CSTBSCertificate_GetVersion() failed".
  virtual int GetVersion() = 0;
  /// GetSerialNumber returns the octets of the INTEGER: two's complement, most significant first, of any length.
  virtual ByteArray GetSerialNumber() = 0;
  /// GetHash throws 4001 "Not Implemented".
  virtual ByteArray GetHash() = 0;
  /// GetIssuerDN and GetSubjectDN return a new name that the caller deletes.
  virtual IX500Name* GetIssuerDN() = 0;
  /// GetNotAfter and GetNotBefore return the time in UTC as "%Y-%m-%d %H-%M-%S". Throws 4004 "CSTime_ToTm() failed" for
  /// a time with an offset or a fraction, which has no such form, and for a month outside 1 to 12.
  virtual SecureString GetNotAfter() = 0;
  virtual SecureString GetNotBefore() = 0;
  /// GetSubjectDN: see GetIssuerDN.
  virtual IX500Name* GetSubjectDN() = 0;
  /// GetIssuerUniqueID and GetSubjectUniqueID return the octets of the BIT STRING. Throw 4004 when there is none.
  virtual ByteArray GetIssuerUniqueID() = 0;
  virtual ByteArray GetSubjectUniqueID() = 0;
  /// ListExtensions and GetExtensionValue throw 4001 "Not Implemented".
  virtual SecureStringList ListExtensions(ICryptoParserFilter* filter) = 0;
  virtual bool GetExtensionValue(SecureString oid, ByteArray& value) = 0;
  /// GetKeyUsage returns the octets of the key usage BIT STRING (2.5.29.15), empty when there is no such extension. Bit
  /// 0 of RFC 5280, 4.2.1.3, is the most significant bit of the first octet.
  virtual ByteArray GetKeyUsage() = 0;
  /// GetExtendedKeyUsage returns the purposes (2.5.29.37) as dotted object identifiers in their order, repeated ones
  /// repeated; empty when there is no such extension. Throws 4004 "CSExtKeyUsageSyntax_DERDecode() failed" when the
  /// list or one purpose in it is not encoded in the one DER way, so that no other encoding can pass for a well-known
  /// purpose; an arc above 4,294,967,295 cannot be held and counts as such.
  virtual SecureStringList GetExtendedKeyUsage() = 0;
  /// GetSubjectAlternativeNames returns the names (2.5.29.17, else 2.5.29.7) in their order, directory names left out;
  /// empty when there is neither extension. The caller deletes each name. Throws 4004 with the name of the step when
  /// any one is broken, "CSGeneralNames_DERDecode() failed" also for an other-name whose type-id is not encoded in the
  /// one DER way.
  virtual GeneralNameList GetSubjectAlternativeNames() = 0;
  /// CheckValidity returns whether notBefore < now < notAfter. Throws 4000 "CSTime_ToTm() failed" for a time that
  /// cannot be read.
  virtual bool CheckValidity() = 0;
  /// CheckValidity returns whether notBefore < `date` < notAfter. `date` is local time, "%Y-%m-%d %H-%M-%S" as strptime
  /// reads it. Throws 4000 "Invalide date" for any other text.
  virtual bool CheckValidity(SecureString date) = 0;
  /// Is... return one bit of the key usage (RFC 5280, 4.2.1.3): false when the certificate has no such extension or its
  /// BIT STRING ends before. The count of unused bits is not looked at. They throw nothing.
  virtual bool IsDigitalSignature() = 0;  // bit 0
  virtual bool IsNonRepudiation() = 0;    // bit 1, also called contentCommitment
  virtual bool IsKeyEncipherment() = 0;   // bit 2
  virtual bool IsDataEncipherment() = 0;  // bit 3
  virtual bool IsKeyAgreement() = 0;      // bit 4
  virtual bool IsKeyCertSign() = 0;       // bit 5
  virtual bool IsCRLSign() = 0;           // bit 6
  virtual bool IsEncipherOnly() = 0;      // bit 7
  virtual bool IsDecipherOnly() = 0;      // bit 8
};

}  // namespace Tavo::Framework

#endif
