/// ASN.1 primitive types: INTEGER, OBJECT IDENTIFIER, OCTET STRING, IA5String, BIT STRING, BOOLEAN and ANY (X.690, 8).
///
/// Conventions are told in core.h, the functions of the CS_... lines in family.h.
#ifndef TAVO_DER_PRIMITIVE_H
#define TAVO_DER_PRIMITIVE_H

#include "tavo/der/family.h"

/// CSASNInteger: content octets exactly as received or produced, big-endian two's complement. Contents that are empty
/// or not minimal are accepted and kept; empty ones stand for 0. Wrong identifier: 419.
typedef struct CSASNInteger CSASNInteger;
/// CSASNOID: numeric arcs of 32 bits. The first content octet always holds the first two arcs; larger arcs wrap
/// silently and non-minimal ones are accepted, so that different encodings may read as the same OID. Wrong identifier:
/// 416.
typedef struct CSASNOID CSASNOID;
/// CSASNOctetString: content octets. Wrong identifier: 413.
typedef struct CSASNOctetString CSASNOctetString;
/// CSASNIA5String is an OCTET STRING object with text conversions; the characters are not checked.
typedef CSASNOctetString CSASNIA5String;
/// CSASNBitString: octets and a bit count; bit 0 is the most significant bit of octet 0. The unused-bits octet of the
/// input is not checked; the bit count never falls below 0. Wrong identifier: 414.
typedef struct CSASNBitString CSASNBitString;
/// CSASNAny: any element, as its identifier and its contents without identifier and length.
typedef struct CSASNAny CSASNAny;

/* ASN.1 names for what is one of the above. */
typedef CSASNBitString CSKeyUsage;
typedef CSASNOID CSKeyPurposeId;
typedef CSASNBitString CSUniqueIdentifier;
typedef CSASNOctetString CSPrivateKey;

CS_BEGIN_DECLARATIONS

/* ---- INTEGER ---- */
CS_TYPE(CSASNInteger)

/// CSASNInteger_FromUnsigned32 returns a new INTEGER with the minimal contents of `value`.
RZ_CRYPTO_API uint32_t CSASNInteger_FromUnsigned32(uint32_t value, CSASNInteger** out);
/// CSASNInteger_FromSigned32 returns a new INTEGER with the minimal contents of `value`.
RZ_CRYPTO_API uint32_t CSASNInteger_FromSigned32(int32_t value, CSASNInteger** out);
/// CSASNInteger_ToUnsigned32 reads the contents as an unsigned number: leading zero octets are skipped, the sign bit is
/// an ordinary bit. 6 for more than 32 bits. Empty contents give 0 and leave `*value` alone: initialise it.
RZ_CRYPTO_API uint32_t CSASNInteger_ToUnsigned32(const CSASNInteger* integer, uint32_t* value);
/// CSASNInteger_ToSigned32 reads the contents as two's complement; of more than 4 octets the last four count. Empty
/// contents give 0 and leave `*value` alone: initialise it.
RZ_CRYPTO_API uint32_t CSASNInteger_ToSigned32(const CSASNInteger* integer, int32_t* value);

/// CSASNInteger_DERDecodeSigned32TLV decodes without an object, as CSASNInteger_ToSigned32 reads.
RZ_CRYPTO_API uint32_t CSASNInteger_DERDecodeSigned32TLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode,
                                                         int32_t* value);
/// CSASNInteger_DERDecodeUnsigned32TLV decodes without an object, as CSASNInteger_ToUnsigned32 reads.
RZ_CRYPTO_API uint32_t CSASNInteger_DERDecodeUnsigned32TLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode,
                                                           uint32_t* value);
/// CSASNInteger_DERDecodeUnsigned8TLV is the same for 8 bits.
RZ_CRYPTO_API uint32_t CSASNInteger_DERDecodeUnsigned8TLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode,
                                                          uint8_t* value);
/// CSASNInteger_DERDecodeFinishUnsigned32 decodes a complete context as CSASNInteger_DERDecodeUnsigned32TLV does.
RZ_CRYPTO_API uint32_t CSASNInteger_DERDecodeFinishUnsigned32(const CSASNDecodeContext* context, uint32_t* value);
/// CSASNInteger_DERDecodeFinishUnsigned8 is the same for 8 bits.
RZ_CRYPTO_API uint32_t CSASNInteger_DERDecodeFinishUnsigned8(const CSASNDecodeContext* context, uint8_t* value);

/// CSASNInteger_DEREncodeSigned32TLV encodes a number without an object.
RZ_CRYPTO_API uint32_t CSASNInteger_DEREncodeSigned32TLV(int32_t value, uint8_t** buffer, uint64_t* ioLength,
                                                         uint8_t writeTag, uint8_t writeLength, uint8_t writeContents);
/// CSASNInteger_DEREncodeUnsigned32TLV encodes a number without an object.
RZ_CRYPTO_API uint32_t CSASNInteger_DEREncodeUnsigned32TLV(uint32_t value, uint8_t** buffer, uint64_t* ioLength,
                                                           uint8_t writeTag, uint8_t writeLength,
                                                           uint8_t writeContents);
/// CSASNInteger_DEREncodedLengthSigned32 gives the size that CSASNInteger_DEREncodeSigned32TLV writes.
RZ_CRYPTO_API uint32_t CSASNInteger_DEREncodedLengthSigned32(int32_t value, uint64_t* total);
/// CSASNInteger_DEREncodedLengthSigned32TLV gives the same in its three parts.
RZ_CRYPTO_API uint32_t CSASNInteger_DEREncodedLengthSigned32TLV(int32_t value, uint64_t* tagOctets,
                                                                uint64_t* lengthOctets, uint64_t* contentOctets);
/// CSASNInteger_DEREncodedLengthUnsigned32 gives the size that CSASNInteger_DEREncodeUnsigned32TLV writes.
RZ_CRYPTO_API uint32_t CSASNInteger_DEREncodedLengthUnsigned32(uint32_t value, uint64_t* total);
/// CSASNInteger_DEREncodedLengthUnsigned32TLV gives the same in its three parts.
RZ_CRYPTO_API uint32_t CSASNInteger_DEREncodedLengthUnsigned32TLV(uint32_t value, uint64_t* tagOctets,
                                                                  uint64_t* lengthOctets, uint64_t* contentOctets);

/// CSASNInteger_Compare writes -1, 0 or 1: the order of the signed values.
RZ_CRYPTO_API uint32_t CSASNInteger_Compare(const CSASNInteger* a, const CSASNInteger* b, int32_t* result);
/// CSASNInteger_ToHex writes the contents in hexadecimal with a NUL, leading zero octets skipped, "00" for zero. It
/// needs max(3, 2 * octets + 1) characters: a null `*text` is allocated (CSASNUtil_FreeString) and `*capacity` set; a
/// smaller `*capacity` gives 6 and the number needed in it.
RZ_CRYPTO_API uint32_t CSASNInteger_ToHex(const CSASNInteger* integer, char** text, uint64_t* capacity,
                                          uint8_t upperCase);
/// CSASNInteger_GetBytes lends the contents.
RZ_CRYPTO_API uint32_t CSASNInteger_GetBytes(const CSASNInteger* integer, const uint8_t** bytes, uint64_t* length);

/// CSASNInteger_FromString, _ToString, _Add and _Subtract are not provided: 2 at once, outputs untouched.
RZ_CRYPTO_API uint32_t CSASNInteger_FromString(const char* text, CSASNInteger** out);
RZ_CRYPTO_API uint32_t CSASNInteger_ToString(const CSASNInteger* integer, char** text);
RZ_CRYPTO_API uint32_t CSASNInteger_Add(const CSASNInteger* a, const CSASNInteger* b, CSASNInteger** out);
RZ_CRYPTO_API uint32_t CSASNInteger_Subtract(const CSASNInteger* a, const CSASNInteger* b, CSASNInteger** out);

/* ---- OBJECT IDENTIFIER ---- */
CS_TYPE(CSASNOID)

/// CSASNOID_FromString returns a new OID from dotted decimal text. Reading stops at the first character that is neither
/// a digit nor a '.' with a digit after it; the arcs read so far are kept. 400 for an arc above 2^32 - 1, and also
/// when memory ends while an arc is appended. The encoding has one octet for the first two arcs: with arcs that do not
/// fit it ("2.999"), another OID is encoded.
RZ_CRYPTO_API uint32_t CSASNOID_FromString(const char* text, CSASNOID** out);
/// CSASNOID_ToString returns new dotted decimal text; "" without arcs.
RZ_CRYPTO_API uint32_t CSASNOID_ToString(const CSASNOID* oid, char** text);
/// CSASNOID_ToWString returns new dotted decimal text in wide characters.
RZ_CRYPTO_API uint32_t CSASNOID_ToWString(const CSASNOID* oid, wchar_t** text);
/// CSASNOID_ToStringEx writes the text to a buffer of `capacity` characters; 6 when that is below GetStringLength.
RZ_CRYPTO_API uint32_t CSASNOID_ToStringEx(const CSASNOID* oid, char* buffer, uint64_t capacity);
/// CSASNOID_ToWStringEx is the same in wide characters.
RZ_CRYPTO_API uint32_t CSASNOID_ToWStringEx(const CSASNOID* oid, wchar_t* buffer, uint64_t capacity);
/// CSASNOID_GetStringLength gives the characters of the text with its NUL.
RZ_CRYPTO_API uint32_t CSASNOID_GetStringLength(const CSASNOID* oid, uint64_t* length);
/// CSASNOID_AddArc appends an arc.
RZ_CRYPTO_API uint32_t CSASNOID_AddArc(CSASNOID* oid, uint32_t arc);
/// CSASNOID_MatchesString writes 1 when `text` is the OID in dotted decimal, else 0; "" matches an OID without arcs.
RZ_CRYPTO_API uint32_t CSASNOID_MatchesString(const CSASNOID* oid, const char* text, uint8_t* match);

/* ---- OCTET STRING and IA5String ---- */
CS_TYPE(CSASNOctetString)

/// CSASNOctetString_FromBytes returns a new object with a copy of the octets.
RZ_CRYPTO_API uint32_t CSASNOctetString_FromBytes(const uint8_t* bytes, uint64_t length, CSASNOctetString** out);
/// CSASNOctetString_SetBytes replaces the octets by a copy; `bytes` may point into the object.
RZ_CRYPTO_API uint32_t CSASNOctetString_SetBytes(CSASNOctetString* octets, const uint8_t* bytes, uint64_t length);
/// CSASNOctetString_GetBytes lends the octets.
RZ_CRYPTO_API uint32_t CSASNOctetString_GetBytes(const CSASNOctetString* octets, const uint8_t** bytes,
                                                 uint64_t* length);
/// CSASNOctetString_DEREncodeWithTag is DEREncodeTLV with the given identifier. The number is not
/// checked: above 30 it disturbs the rest of the octet, and another identifier is written.
RZ_CRYPTO_API uint32_t CSASNOctetString_DEREncodeWithTag(const CSASNOctetString* octets, uint32_t number,
                                                         uint32_t tagClass, uint8_t constructed, uint8_t** buffer,
                                                         uint64_t* ioLength, uint8_t writeTag, uint8_t writeLength,
                                                         uint8_t writeContents);
/// CSASNOctetString_DERDecodeWithTag is DERDecodeTLV with the given identifier; another one gives 413.
RZ_CRYPTO_API uint32_t CSASNOctetString_DERDecodeWithTag(const uint8_t* in, uint64_t* ioLength, uint32_t mode,
                                                         uint32_t number, uint32_t tagClass, uint8_t constructed,
                                                         CSASNOctetString** out);

/// CSASNIA5String_FromBytes, _SetBytes, _GetBytes, _DEREncodeWithTag and _DERDecodeWithTag: those of CSASNOctetString.
RZ_CRYPTO_API uint32_t CSASNIA5String_FromBytes(const uint8_t* bytes, uint64_t length, CSASNIA5String** out);
RZ_CRYPTO_API uint32_t CSASNIA5String_SetBytes(CSASNIA5String* string, const uint8_t* bytes, uint64_t length);
RZ_CRYPTO_API uint32_t CSASNIA5String_GetBytes(const CSASNIA5String* string, const uint8_t** bytes, uint64_t* length);
RZ_CRYPTO_API uint32_t CSASNIA5String_DEREncodeWithTag(const CSASNIA5String* string, uint32_t number, uint32_t tagClass,
                                                       uint8_t constructed, uint8_t** buffer, uint64_t* ioLength,
                                                       uint8_t writeTag, uint8_t writeLength, uint8_t writeContents);
RZ_CRYPTO_API uint32_t CSASNIA5String_DERDecodeWithTag(const uint8_t* in, uint64_t* ioLength, uint32_t mode,
                                                       uint32_t number, uint32_t tagClass, uint8_t constructed,
                                                       CSASNIA5String** out);
/// CSASNIA5String_ToString returns new text: the octets and a NUL. Octets of value 0 are copied too: take the length
/// from GetBytes where the input is not trusted.
RZ_CRYPTO_API uint32_t CSASNIA5String_ToString(const CSASNIA5String* string, char** text);
/// CSASNIA5String_ToWString returns new text with one wide character, 0 to 255, for each octet.
RZ_CRYPTO_API uint32_t CSASNIA5String_ToWString(const CSASNIA5String* string, wchar_t** text);
/// CSASNIA5String_GetStringLength gives the octets plus one for the NUL.
RZ_CRYPTO_API uint32_t CSASNIA5String_GetStringLength(const CSASNIA5String* string, uint64_t* length);

/* ---- BIT STRING ---- */
CS_TYPE(CSASNBitString)

/// CSASNBitString_GetBit writes 0, or the bit's mask within its octet (80 hex for bit 0, 01 for bit 7): test for
/// non-zero. 7 for an index not below the bit count.
RZ_CRYPTO_API uint32_t CSASNBitString_GetBit(const CSASNBitString* bits, uint64_t index, uint8_t* value);
/// CSASNBitString_SetBit sets (`on` not 0) or clears a bit; the string grows to hold it, with zero bits.
RZ_CRYPTO_API uint32_t CSASNBitString_SetBit(CSASNBitString* bits, uint64_t index, uint8_t on);
/// CSASNBitString_GetAllBits lends the octets; `byteCount` counts octets.
RZ_CRYPTO_API uint32_t CSASNBitString_GetAllBits(const CSASNBitString* bits, const uint8_t** bytes,
                                                 uint64_t* byteCount);
/// CSASNBitString_SetAllBits replaces the string by `bitCount` bits copied from `bytes`, whole octets as they are.
RZ_CRYPTO_API uint32_t CSASNBitString_SetAllBits(CSASNBitString* bits, const uint8_t* bytes, uint64_t bitCount);
/// CSASNBitString_GetBitCount writes the number of bits.
RZ_CRYPTO_API uint32_t CSASNBitString_GetBitCount(const CSASNBitString* bits, uint64_t* bitCount);
/// CSASNBitString_FromBytes returns a new string of 8 * `byteCount` bits.
RZ_CRYPTO_API uint32_t CSASNBitString_FromBytes(const uint8_t* bytes, uint64_t byteCount, CSASNBitString** out);
/// CSASNBitString_FromOctetString returns a new string with the octets' bits.
RZ_CRYPTO_API uint32_t CSASNBitString_FromOctetString(const CSASNOctetString* octets, CSASNBitString** out);

/* ---- BOOLEAN: a plain byte, no object ---- */

/// CSASNBoolean_DERDecodeTLV writes 00 or FF. 409 for another identifier, 410 unless one octet, 411 for another value.
RZ_CRYPTO_API uint32_t CSASNBoolean_DERDecodeTLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint8_t* value);
/// CSASNBoolean_DERDecodeFinish decodes a complete context.
RZ_CRYPTO_API uint32_t CSASNBoolean_DERDecodeFinish(const CSASNDecodeContext* context, uint8_t* value);
/// CSASNBoolean_DEREncodeTLV writes FF for any non-zero value.
RZ_CRYPTO_API uint32_t CSASNBoolean_DEREncodeTLV(uint8_t value, uint8_t** buffer, uint64_t* ioLength, uint8_t writeTag,
                                                 uint8_t writeLength, uint8_t writeContents);
/// CSASNBoolean_DEREncodedLength gives the size of the encoding: 3.
RZ_CRYPTO_API uint32_t CSASNBoolean_DEREncodedLength(uint8_t value, uint64_t* total);
/// CSASNBoolean_DEREncodedLengthTLV gives its three parts: 1, 1, 1.
RZ_CRYPTO_API uint32_t CSASNBoolean_DEREncodedLengthTLV(uint8_t value, uint64_t* tagOctets, uint64_t* lengthOctets,
                                                        uint64_t* contentOctets);

/* ---- ANY ---- */

/// In modes 1 and above CSASNAny_DERDecodeTLV gives 400 for a number above 30 and 4 for a class above 3.
CS_OPEN_TYPE(CSASNAny)

/// CSASNAny_GetBytes lends the contents.
RZ_CRYPTO_API uint32_t CSASNAny_GetBytes(const CSASNAny* any, const uint8_t** bytes, uint64_t* length);
/// CSASNAny_SetBytes replaces the contents by a copy; `bytes` may point into the object.
RZ_CRYPTO_API uint32_t CSASNAny_SetBytes(CSASNAny* any, const uint8_t* bytes, uint64_t length);
/// CSASNAny_GetTag writes the identifier; `constructed` gets 0 or 0x20. Each pointer may be null.
RZ_CRYPTO_API uint32_t CSASNAny_GetTag(const CSASNAny* any, uint32_t* number, uint32_t* tagClass, uint8_t* constructed);
/// CSASNAny_SetTag replaces the identifier. 400 for a number above 30, 4 for a class above 3.
RZ_CRYPTO_API uint32_t CSASNAny_SetTag(CSASNAny* any, uint32_t number, uint32_t tagClass, uint8_t constructed);
/// CSASNAny_TagMatches writes 1 when the identifier is the given one, else 0.
RZ_CRYPTO_API uint32_t CSASNAny_TagMatches(const CSASNAny* any, uint32_t number, uint32_t tagClass, uint8_t constructed,
                                           uint8_t* match);

CS_END_DECLARATIONS

#endif
