/// The DER library: result codes and the core that every ASN.1 type uses (ITU-T X.690).
///
/// Conventions of all headers under tavo/der:
/// - Functions return a result code, 0 for success, except the few whose result is told here; they never throw, never
///   log and keep no state between calls. One object belongs to one thread at a time.
/// - Lengths are unsigned 64-bit octet counts unless they say bits or characters. An "in/out length" holds the octets
///   available on entry and the octets consumed or written on success; a failure leaves it as it was.
/// - A required pointer that is null gives 4, CSResult_BAD_PARAMETER. A pointer that is an output is set to
///   null before anything else happens: what it held is never freed, and after a failure it is null. An octet count
///   that comes with lent octets is then 0; other numbers are written on success only, unless a function says more.
/// - "Returns new": the caller owns the object and releases it with its T_Delete. "Lends": valid until the owner
///   changes or is deleted. "Takes": the callee owns the object on success; on failure it is still the caller's.
/// - Memory comes from malloc. Texts are released with CSASNUtil_FreeString, encoder buffers with free. Contents of
///   objects are wiped before they are released; wiping an encoder's output is the caller's part.
/// - Identifiers are single octets: tag numbers 0 to 30. Encoders write the lengths of DER; decoders also accept the
///   indefinite and the non-minimal ones of BER, so a re-encoding is not always octet for octet what was decoded.
///   Contents are kept as they came: INTEGERs that are not minimal, unsorted SETs, the insides of an ANY are not made
///   DER, and a decoder that returns 0 does not say that its input is.
#ifndef TAVO_DER_CORE_H
#define TAVO_DER_CORE_H

#include <stdint.h>
#include <wchar.h>
#include "rz/export.h"

#ifdef __cplusplus
#define CS_BEGIN_DECLARATIONS extern "C" {
#define CS_END_DECLARATIONS }
#else
#define CS_BEGIN_DECLARATIONS
#define CS_END_DECLARATIONS
#endif

/// CSResult: every code that a function of the library returns.
enum CSResult {
  CSResult_OK = 0,                          ///< success
  CSResult_NOT_IMPLEMENTED = 2,             ///< this operation is not provided, whatever the arguments
  CSResult_OUT_OF_MEMORY = 3,               ///< an allocation failed; nothing was changed and nothing is left behind
  CSResult_BAD_PARAMETER = 4,               ///< a required pointer is null, or a class code is above 3
  CSResult_BUFFER_TOO_SMALL = 6,            ///< output capacity too small, or the input ends before what it announces
  CSResult_INDEX_OUT_OF_RANGE = 7,          ///< item or bit index not below the count
  CSResult_NOT_SUPPORTED = 9,               ///< multi-octet tag inside an indefinite element; time without this form
  CSResult_BAD_FORMAT = 400,                ///< multi-octet tag; bad OID text; a length that no input can hold
  CSResult_BAD_UTCTIME = 401,               ///< a UTCTime field is not decimal
  CSResult_BAD_GENERALIZEDTIME = 402,       ///< a GeneralizedTime field is not decimal
  CSResult_EXPECTED_UTCTIME = 403,          ///< identifier is not UTCTime (universal 23, primitive)
  CSResult_EXPECTED_GENERALIZEDTIME = 405,  ///< identifier is not GeneralizedTime (universal 24, primitive)
  CSResult_NOT_PRESENT = 406,               ///< component absent, alternative not chosen, or no equal item
  CSResult_EXPECTED_SET = 407,              ///< identifier is not SET (universal 17, constructed)
  CSResult_INCOMPLETE_DATA = 408,           ///< a decode context has not yet received a whole identifier and length
  CSResult_EXPECTED_BOOLEAN = 409,          ///< identifier is not BOOLEAN (universal 1, primitive)
  CSResult_BAD_BOOLEAN_LENGTH = 410,        ///< BOOLEAN contents are not exactly one octet
  CSResult_BAD_BOOLEAN_VALUE = 411,         ///< BOOLEAN octet is neither 00 nor FF
  CSResult_EXPECTED_SEQUENCE = 412,         ///< identifier is not SEQUENCE (universal 16, constructed)
  CSResult_EXPECTED_OCTET_STRING = 413,     ///< identifier is not OCTET STRING, or not the tag asked for
  CSResult_EXPECTED_BIT_STRING = 414,       ///< identifier is not BIT STRING (universal 3, primitive)
  CSResult_EXPECTED_OID = 416,              ///< identifier is not OBJECT IDENTIFIER (universal 6, primitive)
  CSResult_UNEXPECTED_ELEMENT = 417,        ///< a component's identifier is not the one required at its place
  CSResult_UNKNOWN_CHOICE = 418,            ///< no alternative of a CHOICE has this identifier
  CSResult_EXPECTED_INTEGER = 419,          ///< identifier is not INTEGER (universal 2, primitive)
  CSResult_MISSING_ELEMENT = 420            ///< a mandatory component is absent
};

/// Class codes of tag functions. The order is not that of the two class bits in the octet.
enum CSTagClass {
  CSTagClass_UNIVERSAL = 0,
  CSTagClass_CONTEXT_SPECIFIC = 1,
  CSTagClass_APPLICATION = 2,
  CSTagClass_PRIVATE = 3
};

/// CSASNDecodeContext gathers one element that arrives in pieces.
typedef struct CSASNDecodeContext CSASNDecodeContext;

CS_BEGIN_DECLARATIONS

/* ---- identifier octets (X.690, 8.1.2) ---- */

/// CSASNUtil_DEREncodedLengthOfTag returns the octets of an identifier: always 1.
RZ_CRYPTO_API uint32_t CSASNUtil_DEREncodedLengthOfTag(void);

/// CSASNUtil_DEREncodeTag writes one identifier octet to `out` and 1 to `ioLength`. `constructed` is any non-zero value
/// for constructed. The number is not checked: bits above the low five disturb the rest of the octet. 4 for a class
/// above 3, 6 when `*ioLength` is 0.
RZ_CRYPTO_API uint32_t CSASNUtil_DEREncodeTag(uint8_t* out, uint64_t* ioLength, uint32_t number, uint32_t tagClass,
                                              uint8_t constructed);

/// CSASNUtil_DERDecodeTag reads one identifier octet. The end marker 00 00 of a preceding indefinite element is
/// skipped, so 1 or 3 octets are consumed. `constructed` gets 0 or 0x20. 6 when the input ends first, 400 for a
/// multi-octet tag.
RZ_CRYPTO_API uint32_t CSASNUtil_DERDecodeTag(const uint8_t* in, uint64_t* ioLength, uint32_t* number,
                                              uint32_t* tagClass, uint8_t* constructed);

/// CSASNUtil_DERDecodeSpecificTagInternal reads the identifier at `*cursor` and requires it to be the given one. On
/// success the cursor moves past it, `*remaining` shrinks and `*consumed` (may be null) grows by the octets read.
/// Returns `mismatchCode` for another identifier, or the code of CSASNUtil_DERDecodeTag; then nothing moves.
RZ_CRYPTO_API uint32_t CSASNUtil_DERDecodeSpecificTagInternal(const uint8_t** cursor, uint64_t* remaining,
                                                              uint64_t* consumed, uint32_t number, uint32_t tagClass,
                                                              uint8_t constructed, uint32_t mismatchCode);

/* ---- length octets (X.690, 8.1.3) ---- */

/// CSASNUtil_LengthOfDEREncodedLength returns the number of length octets, 1 to 9, that DER needs for `value`.
RZ_CRYPTO_API uint32_t CSASNUtil_LengthOfDEREncodedLength(uint64_t value);

/// CSASNUtil_DEREncodeLength writes the length octets of `value` to `out`, which must have room for 9, and their number
/// to `written`.
RZ_CRYPTO_API uint32_t CSASNUtil_DEREncodeLength(uint8_t* out, uint64_t* written, uint64_t value);

/// CSASNUtil_DERDecodeLength reads length octets; `value` gets the octets of contents that follow, which need not be
/// there for a definite length. For the indefinite form the contents are walked up to the closing 00 00, in time linear
/// in the input and without recursion: `value` excludes the 00 00, and 1 octet is consumed. 6 when the input ends first
/// or the length does not fit 64 bits, 9 for a multi-octet tag inside an indefinite element.
RZ_CRYPTO_API uint32_t CSASNUtil_DERDecodeLength(const uint8_t* in, uint64_t* ioLength, uint64_t* value);

/// CSASNUtil_DERDecodeLengthInternal reads the length at `*cursor` and narrows the range to the contents: the cursor
/// moves to the first content octet, `*remaining` becomes the contents' length, `*consumed` (may be null) grows by the
/// length octets. 6 when the contents are not all there; codes of CSASNUtil_DERDecodeLength otherwise; then nothing
/// moves.
RZ_CRYPTO_API uint32_t CSASNUtil_DERDecodeLengthInternal(const uint8_t** cursor, uint64_t* remaining,
                                                         uint64_t* consumed, uint64_t* value);

/// CSASNUtil_DERDetermineEncodingLength gives the size of the element at `in`: identifier, length and content octets,
/// without the closing 00 00 of an indefinite one. The contents of a definite element need not be there. 6 when the
/// header (for the indefinite form: the element) is cut off, 400 when the size does not fit 64 bits; `*total` is then
/// 0.
RZ_CRYPTO_API uint32_t CSASNUtil_DERDetermineEncodingLength(const uint8_t* in, uint64_t available, uint64_t* total);

/* ---- buffers and arrays ---- */

/// CSASNUtil_PrepareBuffer gives an encoder its output. A null `*buffer` is allocated (`*capacity` becomes `needed`,
/// the caller frees it); otherwise 6 when `*capacity` is below `needed`. `allocated` (may be null) tells which.
RZ_CRYPTO_API uint32_t CSASNUtil_PrepareBuffer(uint8_t** buffer, uint64_t* capacity, uint64_t needed,
                                               uint8_t* allocated);

/// CSASNUtil_IncreaseCapacity grows an array of `count` elements of `elementSize` octets by five zeroed places; a null
/// `*array` gets its first five. 3 leaves array and capacity as they were. The fixed step is part of the interface; the
/// library's own lists grow by doubling.
RZ_CRYPTO_API uint32_t CSASNUtil_IncreaseCapacity(void** array, uint64_t count, uint64_t* capacity,
                                                  uint64_t elementSize);

/* ---- decoding in pieces ---- */

/// CSASNUtil_DERDecodeStart returns a new, empty context in `*context`.
RZ_CRYPTO_API uint32_t CSASNUtil_DERDecodeStart(CSASNDecodeContext** context);

/// CSASNUtil_DERDecodeAddData appends `count` octets. 408 until identifier and length are known. 0 afterwards, with
/// `*surplus` negative while octets are missing, 0 when the element is complete, positive for octets past its end,
/// which are not kept; it saturates at the limits of 32 bits. Complete elements are decoded with their
/// T_DERDecodeFinish. Other codes: those of CSASNUtil_DERDetermineEncodingLength, with surplus 0. Feeding takes time
/// linear in the octets, however they are cut.
RZ_CRYPTO_API uint32_t CSASNUtil_DERDecodeAddData(CSASNDecodeContext* context, const uint8_t* bytes, uint64_t count,
                                                  int32_t* surplus);

/// CSASNUtil_GetDecodeContextData lends the octets gathered so far; null for a null or empty context.
RZ_CRYPTO_API const uint8_t* CSASNUtil_GetDecodeContextData(const CSASNDecodeContext* context);

/// CSASNUtil_GetDecodeContextLength returns the number of octets gathered so far; 0 for a null context.
RZ_CRYPTO_API uint64_t CSASNUtil_GetDecodeContextLength(const CSASNDecodeContext* context);

/// CSASNUtil_DeleteDecodeContext wipes and frees a context and nulls the pointer.
RZ_CRYPTO_API uint32_t CSASNUtil_DeleteDecodeContext(CSASNDecodeContext** context);

/* ---- decimal texts; capacities and counts in characters ---- */

/// CSASNUtil_IntToStringLengthWithoutNull returns the characters of `value` in decimal, sign included.
RZ_CRYPTO_API uint32_t CSASNUtil_IntToStringLengthWithoutNull(int32_t value);

/// CSASNUtil_IntToStringLength returns the same with the terminating NUL.
RZ_CRYPTO_API uint32_t CSASNUtil_IntToStringLength(int32_t value);

/// CSASNUtil_IntToStringWithoutNull writes `value` in decimal without a NUL; `count` (may be null) gets the characters
/// written. 6 when they do not fit.
RZ_CRYPTO_API uint32_t CSASNUtil_IntToStringWithoutNull(int32_t value, char* out, uint64_t capacity, uint64_t* count);

/// CSASNUtil_IntToString writes `value` and a NUL; `count` includes the NUL.
RZ_CRYPTO_API uint32_t CSASNUtil_IntToString(int32_t value, char* out, uint64_t capacity, uint64_t* count);

/// CSASNUtil_IntToWString is CSASNUtil_IntToString in wide characters.
RZ_CRYPTO_API uint32_t CSASNUtil_IntToWString(int32_t value, wchar_t* out, uint64_t capacity, uint64_t* count);

/// CSASNUtil_SignedLongToExactlyNChars writes `value` in exactly `width` characters: sign ('-', or '+' for a value from
/// 0 up when `forcePlus` is not 0), zeros, digits; no NUL. 6 when it does not fit `width` or `capacity`.
RZ_CRYPTO_API uint32_t CSASNUtil_SignedLongToExactlyNChars(char* out, uint64_t capacity, uint8_t width, int32_t value,
                                                           uint8_t forcePlus);

/// CSASNUtil_ExactlyNCharsToSignedLong reads exactly `width` characters as decimal: blanks, one sign, digits up to the
/// end of the field. Cursor and remaining move on success. 6 when fewer characters remain, `badCode` for anything else.
/// The text is not written to. Width 0 reads 0.
RZ_CRYPTO_API uint32_t CSASNUtil_ExactlyNCharsToSignedLong(char** cursor, uint64_t* remaining, uint8_t width,
                                                           int32_t* value, uint32_t badCode);

/// CSASNUtil_FractionalSecondsToDouble reads digits with one decimal mark; a ',' at the cursor is overwritten with '.'.
/// Cursor and remaining move past what was read, in any locale; 15 significant digits count. No digit: 0, nothing
/// moves.
RZ_CRYPTO_API uint32_t CSASNUtil_FractionalSecondsToDouble(char** cursor, uint64_t* remaining, double* value);

/// CSASNUtil_FreeString wipes and frees a text of the library and nulls the pointer; 4 for a null text.
RZ_CRYPTO_API uint32_t CSASNUtil_FreeString(char** text);

/// CSASNUtil_FreeWString is CSASNUtil_FreeString for wide texts.
RZ_CRYPTO_API uint32_t CSASNUtil_FreeWString(wchar_t** text);

CS_END_DECLARATIONS

#endif
