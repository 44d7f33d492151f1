/// The function families of the DER library: what each type's one line in a header stands for.
///
/// Every type T comes with the same functions, named T_<Operation>. The headers list types and components one per line;
/// the lines expand to the plain C declarations below. `CS_OPTIONAL_FIELD(CSAlgorithmIdentifier, Parameters,
/// CSASNAny)`, for example, declares CSAlgorithmIdentifier_GetParameters, CSAlgorithmIdentifier_SetParameters,
/// CSAlgorithmIdentifier_ParametersIsPresent and CSAlgorithmIdentifier_DEROffsetOfParametersTLV.
///
/// Shared arguments:
/// - `in, ioLength, mode`: input and its in/out length. Mode 0: identifier, length and contents follow. Mode 1: the
///   identifier has been read. Above 1: identifier and length have been read, all `*ioLength` octets are the contents.
/// - `number, tagClass, constructed`: an identifier; class codes are those of CSTagClass.
/// - `buffer, ioLength, writeTag, writeLength, writeContents`: output. A null `*buffer` is allocated with the
///   exact size and belongs to the caller (free); otherwise `*ioLength` is its capacity, 6 when that is too small. On
///   success `*ioLength` is the octets written. Each flag chooses whether its part is written.
/// - `tagOctets, lengthOctets, contentOctets`: sizes in octets; each pointer may be null.
/// - `tagOffset, lengthOffset, contentsOffset, ..., endOffset`: where an element's identifier, length and contents
///   begin, counted from the start of the buffer, the octets of each, and the offset just past the element (for the
///   indefinite form past its closing 00 00, which `contentOctets` excludes); each pointer may be null.
#ifndef TAVO_DER_FAMILY_H
#define TAVO_DER_FAMILY_H

#include "tavo/der/core.h"

/// A source that defines one of the CS_... lines itself before it includes the headers gets its own expansion of every
/// line: tables of all types, for instance. The library's own definitions are made that way.

/// CS_DECLARE_OBJECT: the operations that every type has.
///
/// T_Create returns a new, empty object; 3 when out of memory.
/// T_Delete deletes an object with everything it owns and nulls the pointer; 4 when it is null already.
/// T_Copy returns a new deep copy; a null `from` gives a null copy and 0.
/// T_Equals writes 1 when both are the same pointer or equal in every component, else 0; null equals only null.
/// T_DERDecodeFinish decodes a complete decode context as T_DERDecodeTLV in mode 0 does.
/// T_DEREncodeTLV writes the encoding; 420 when a mandatory component is null or a CHOICE empty, 4 for a null object
/// (but CSASNInteger_DEREncodeTLV: 0, and the length octet 00 alone).
/// T_DEREncodedLength gives the size of the whole encoding, T_DEREncodedLengthTLV that of its three parts; components
/// that are null count nothing. For a null object both return 0, with the parts 1, 1, 0; for a null INTEGER
/// they are 0, 1, 0.
#define CS_DECLARE_OBJECT(T)                                                                                       \
  RZ_CRYPTO_API uint32_t T##_Create(T** out);                                                                      \
  RZ_CRYPTO_API uint32_t T##_Delete(T** object);                                                                   \
  RZ_CRYPTO_API uint32_t T##_Copy(const T* from, T** out);                                                         \
  RZ_CRYPTO_API uint32_t T##_Equals(const T* a, const T* b, uint8_t* equal);                                       \
  RZ_CRYPTO_API uint32_t T##_DERDecodeFinish(const CSASNDecodeContext* context, T** out);                          \
  RZ_CRYPTO_API uint32_t T##_DEREncodeTLV(const T* object, uint8_t** buffer, uint64_t* ioLength, uint8_t writeTag, \
                                          uint8_t writeLength, uint8_t writeContents);                             \
  RZ_CRYPTO_API uint32_t T##_DEREncodedLength(const T* object, uint64_t* total);                                   \
  RZ_CRYPTO_API uint32_t T##_DEREncodedLengthTLV(const T* object, uint64_t* tagOctets, uint64_t* lengthOctets,     \
                                                 uint64_t* contentOctets);

/// CS_DECLARE_TYPE: a type with an identifier of its own.
///
/// T_DERDecodeTLV returns a new object. Another identifier gives the type's own code (412 for a SEQUENCE, 407 for a
/// SET, ...), a component in the wrong place 417, a missing one 420, 6 when the input ends first. Octets after a
/// SEQUENCE's last component, inside its contents, are ignored.
#define CS_DECLARE_TYPE(T) \
  CS_DECLARE_OBJECT(T)     \
  RZ_CRYPTO_API uint32_t T##_DERDecodeTLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode, T** out);

/// CS_DECLARE_OPEN_TYPE: ANY and CHOICE, whose identifier says what they hold.
///
/// T_DERDecodeTLV returns a new object. In mode 0 it reads the identifier and ignores the three arguments; in the other
/// modes they are the identifier that the caller has read. A CHOICE without an alternative of that identifier gives
/// 418.
#define CS_DECLARE_OPEN_TYPE(T)                                                                                  \
  CS_DECLARE_OBJECT(T)                                                                                           \
  RZ_CRYPTO_API uint32_t T##_DERDecodeTLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint32_t number, \
                                          uint32_t tagClass, uint8_t constructed, T** out);

/// CS_DECLARE_RECORD: a SEQUENCE of named components. CS_DECLARE_FIELD or CS_DECLARE_OPTIONAL_FIELD follows for each.
///
/// T_DERToAny returns a new ANY with identifier universal 16, constructed, and the record's contents: a re-encoding,
/// which is not what was signed if the input was not DER.
#define CS_DECLARE_RECORD(T) \
  CS_DECLARE_TYPE(T)         \
  RZ_CRYPTO_API uint32_t T##_DERToAny(const T* record, CSASNAny** out);

/// CS_DECLARE_FIELD: component F of record T, an object of type C.
///
/// T_Get<F> lends the component; 406 when there is none.
/// T_Set<F> takes `value`, null for none. The former component is handed back in `old` if that is not null, else
/// deleted. Setting the component already held changes nothing and hands back null. An object may belong to one owner
/// only. T_DEROffsetOf<F>TLV finds the component in an encoded record without decoding it; `mode` as for decoders. An
/// EXPLICIT component is found with its outer tag. 406 when it is optional and absent, else the codes of decoding.
#define CS_DECLARE_FIELD(T, F, C)                                  \
  RZ_CRYPTO_API uint32_t T##_Get##F(const T* record, C** out);     \
  RZ_CRYPTO_API uint32_t T##_Set##F(T* record, C* value, C** old); \
  CS_DECLARE_FIELD_OFFSET(T, F)

/// CS_DECLARE_OPTIONAL_FIELD: the same for an OPTIONAL component. T_<F>IsPresent writes 1 when it is there, else 0.
#define CS_DECLARE_OPTIONAL_FIELD(T, F, C) \
  CS_DECLARE_FIELD(T, F, C)                \
  RZ_CRYPTO_API uint32_t T##_##F##IsPresent(const T* record, uint8_t* present);

/// CS_DECLARE_BOOLEAN_FIELD: an OPTIONAL component that is a plain byte.
///
/// T_Get<F> writes the value; 406 and 0 when it is absent. T_Set<F> copies `*value`; a null `value` makes it absent. It
/// is encoded whenever present, whatever its value. The byte is kept as given: for T_Equals a 1 is not the FF that
/// decoding gives for true, so set 0 or FF.
#define CS_DECLARE_BOOLEAN_FIELD(T, F)                                          \
  RZ_CRYPTO_API uint32_t T##_Get##F(const T* record, uint8_t* value);           \
  RZ_CRYPTO_API uint32_t T##_Set##F(T* record, const uint8_t* value);           \
  RZ_CRYPTO_API uint32_t T##_##F##IsPresent(const T* record, uint8_t* present); \
  CS_DECLARE_FIELD_OFFSET(T, F)

#define CS_DECLARE_FIELD_OFFSET(T, F)                                                                                 \
  RZ_CRYPTO_API uint32_t T##_DEROffsetOf##F##TLV(                                                                     \
      const uint8_t* encoded, uint64_t length, uint64_t* tagOffset, uint64_t* lengthOffset, uint64_t* contentsOffset, \
      uint64_t* tagOctets, uint64_t* lengthOctets, uint64_t* contentOctets, uint64_t* endOffset, uint32_t mode);

/// CS_DECLARE_LIST: a SEQUENCE OF or SET OF items of type I. The order is kept, also of a SET OF.
///
/// L_AddItem takes `item` and appends it.
/// L_AddItemAt is not provided: 400.
/// L_GetItemAt lends an item; 7 for an index not below the count.
/// L_GetItemCount writes the number of items.
/// L_IndexOfItem writes the index of the first item equal to `item`; 406 when there is none.
/// L_RemoveItemAt removes an item: handed back in `old` if that is not null, else deleted. 7 for a bad index.
/// L_RemoveItem deletes the first item equal to `item`, 406 when there is none; if `item` is the list's own, it is
/// gone. L_DEROffsetOfNthTLV finds item `index` in an encoded list without decoding it; 7 when there are fewer.
#define CS_DECLARE_LIST(L, I)                                                                                         \
  CS_DECLARE_TYPE(L)                                                                                                  \
  RZ_CRYPTO_API uint32_t L##_AddItem(L* list, I* item);                                                               \
  RZ_CRYPTO_API uint32_t L##_AddItemAt(L* list, uint64_t index, I* item);                                             \
  RZ_CRYPTO_API uint32_t L##_GetItemAt(const L* list, uint64_t index, I** item);                                      \
  RZ_CRYPTO_API uint32_t L##_GetItemCount(const L* list, uint64_t* count);                                            \
  RZ_CRYPTO_API uint32_t L##_IndexOfItem(const L* list, const I* item, uint64_t* index);                              \
  RZ_CRYPTO_API uint32_t L##_RemoveItemAt(L* list, uint64_t index, I** old);                                          \
  RZ_CRYPTO_API uint32_t L##_RemoveItem(L* list, const I* item);                                                      \
  RZ_CRYPTO_API uint32_t L##_DEROffsetOfNthTLV(const uint8_t* encoded, uint64_t length, uint64_t index,               \
                                               uint64_t* tagOffset, uint64_t* lengthOffset, uint64_t* contentsOffset, \
                                               uint64_t* tagOctets, uint64_t* lengthOctets, uint64_t* contentOctets,  \
                                               uint64_t* endOffset, uint32_t mode);

/// CS_DECLARE_CHOICE: one object out of several alternatives. CS_DECLARE_ALTERNATIVE follows for each.
///
/// C_WhatIsChosen writes the alternative's number, counted from 1 in the order of their lines; 0 when nothing is
/// chosen. C_DeleteChosenItem deletes the object and leaves nothing chosen.
#define CS_DECLARE_CHOICE(C)                                                  \
  CS_DECLARE_OPEN_TYPE(C)                                                     \
  RZ_CRYPTO_API uint32_t C##_WhatIsChosen(const C* choice, uint32_t* number); \
  RZ_CRYPTO_API uint32_t C##_DeleteChosenItem(C* choice);

/// CS_DECLARE_ALTERNATIVE: alternative A of CHOICE C, an object of type O.
///
/// C_Get<A> lends the object; 406 when another alternative, or none, is chosen.
/// C_Set<A> takes `value` in place of whatever was chosen, which is deleted; 4 for null.
#define CS_DECLARE_ALTERNATIVE(C, A, O)                        \
  RZ_CRYPTO_API uint32_t C##_Get##A(const C* choice, O** out); \
  RZ_CRYPTO_API uint32_t C##_Set##A(C* choice, O* value);

/* The lines of the headers. */
#ifndef CS_TYPE
#define CS_TYPE(T) CS_DECLARE_TYPE(T)
#endif
#ifndef CS_OPEN_TYPE
#define CS_OPEN_TYPE(T) CS_DECLARE_OPEN_TYPE(T)
#endif
#ifndef CS_RECORD
#define CS_RECORD(T) CS_DECLARE_RECORD(T)
#endif
#ifndef CS_FIELD
#define CS_FIELD(T, F, C) CS_DECLARE_FIELD(T, F, C)
#endif
#ifndef CS_OPTIONAL_FIELD
#define CS_OPTIONAL_FIELD(T, F, C) CS_DECLARE_OPTIONAL_FIELD(T, F, C)
#endif
#ifndef CS_BOOLEAN_FIELD
#define CS_BOOLEAN_FIELD(T, F) CS_DECLARE_BOOLEAN_FIELD(T, F)
#endif
#ifndef CS_LIST
#define CS_LIST(L, I) CS_DECLARE_LIST(L, I)
#endif
#ifndef CS_CHOICE
#define CS_CHOICE(C) CS_DECLARE_CHOICE(C)
#endif
#ifndef CS_ALTERNATIVE
#define CS_ALTERNATIVE(C, A, O) CS_DECLARE_ALTERNATIVE(C, A, O)
#endif

#endif
