#ifndef TAVO_FRAMEWORK_NAMES_H
#define TAVO_FRAMEWORK_NAMES_H

#include <list>

#include "rz/cext.h"

namespace Tavo::Framework {

/// IGeneralName is one entry of a subject alternative name (GeneralName of RFC 5280, 4.2.1.6), read-only. Its kind says
/// what it is:
///
///   kind                          value                                        oid
///   "OtherName"                   contents octets of the value inside its [0]  type-id, dotted
///   "rfc822Name"                  text
///   "dNSName"                     text
///   "x400Address"                 contents octets of the first element
///   "ediPartyName"                contents octets of the first element
///   "uniformResourceIdentifier"   text
///   "IpAddress"                   octets, 4 or 16 in a good certificate, unchecked
///   "registeredID"                dotted object identifier as text
///
/// A text is the octets as they stand in the certificate: unchecked, possibly with zero octets inside.
class RZ_CRYPTO_API IGeneralName {
 public:
  /// Create returns a new name of the text, or of the octets, kind and object identifier given. Nothing is checked. The
  /// caller deletes it.
  static IGeneralName* Create(const SecureString& text, const SecureString& kind);
  static IGeneralName* Create(const ByteArray& encoded, const SecureString& kind, const SecureString& oid);

  virtual ~IGeneralName() = default;
  /// GetNameType returns the kind.
  virtual SecureString GetNameType() = 0;
  /// GetFormat returns "STRING" for a name made of a text, "RAW" for one made of octets.
  virtual SecureString GetFormat() = 0;
  /// GetEncoded assigns the octets of the value, those of the text for a text.
  virtual void GetEncoded(ByteArray& encoded) = 0;
  /// GetString returns the text; empty for a name made of octets.
  virtual SecureString GetString() = 0;
  /// GetOID returns the dotted type-id of an "OtherName", else an empty string.
  virtual SecureString GetOID() = 0;
};

/// A list of names. Whoever holds the list owns its elements and deletes each.
using GeneralNameList = std::list<IGeneralName*, secallocator<IGeneralName*>>;

/// IX500Name is a distinguished name (Name of RFC 5280, 4.1.2.4), read-only.
class RZ_CRYPTO_API IX500Name {
 public:
  /// Create returns a new name from its DER encoding; octets after the encoding are kept and not looked at. The caller
  /// deletes it. Throws 4004 "CSName_DERDecode() failed" when `encoded` is empty or is not a Name.
  static IX500Name* Create(const ByteArray& encoded);

  virtual ~IX500Name() = default;
  /// GetEncoded assigns the octets that were given to Create.
  virtual void GetEncoded(ByteArray& encoded) = 0;
  /// GetName returns the name as text in UTF-8. `format` 0 is RFC 4514: the last relative name first, "CN=Ada
  /// Example,O=Example,C=DE"; 1 is the same text in encoded order, "C=DE,O=Example,CN=Ada Example". A relative name of
  /// several attributes joins them with "+". Attribute types that RFC 4519 or the PKCS #9 and X.520 registrations give
  /// a short name have it; other types are dotted and their value is "#" and the hex digits of its encoding, as is a
  /// value that is not a well-formed string. The characters , + " \ < > ; # and a blank at either end of a value are
  /// escaped by a backslash, octets below 0x20 by a backslash and two hex digits.
  /// Throws 4000 "Unknown name format" for any other `format`.
  virtual SecureString GetName(unsigned long format) = 0;
  /// ListAttributes returns the dotted types of all attributes in encoded order, repeated ones repeated.
  virtual SecureStringList ListAttributes() = 0;
  /// GetAttributeValue appends the contents octets of the value of each attribute of type `oid` (dotted) to `values`,
  /// in encoded order and without any conversion of character sets, and returns whether there was one.
  virtual bool GetAttributeValue(SecureString oid, SecureStringList& values) = 0;
};

}  // namespace Tavo::Framework

#endif
