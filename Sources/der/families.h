// Definitions of the function families: typed templates, and the CS_DEFINE_ macros that give them their names.
#pragma once

#include "catalogue.h"
#include "engine.h"

namespace Tavo::Der {

// ---- every object ----

// Hands a result to a typed out pointer, which is null when there is none.
template <class T>
Code Deliver(Code code, void* object, T** out) {
  *out = static_cast<T*>(object);
  return code;
}

template <class T>
Code CreateObject(T** out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  *out = static_cast<T*>(Create(kTypeOf<T>));
  return *out == nullptr ? CSResult_OUT_OF_MEMORY : CSResult_OK;
}

template <class T>
Code DeleteObject(T** object) {
  if (object == nullptr || *object == nullptr) return CSResult_BAD_PARAMETER;
  Destroy(kTypeOf<T>, *object);
  *object = nullptr;
  return CSResult_OK;
}

template <class T>
Code CopyObject(const T* from, T** out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  void* copy = nullptr;
  const Code code = Copy(kTypeOf<T>, from, copy);
  return Deliver(code, copy, out);
}

template <class T>
Code CompareObjects(const T* a, const T* b, uint8_t* equal) {
  if (equal == nullptr) return CSResult_BAD_PARAMETER;
  *equal = Equal(kTypeOf<T>, a, b) ? 1 : 0;
  return CSResult_OK;
}

template <class T>
Code DecodeObject(const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint8_t identifier, T** out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  void* object = nullptr;
  const Code code = Decode(kTypeOf<T>, in, ioLength, mode, identifier, object);
  return Deliver(code, object, out);
}

// ANY and CHOICE, with the identifier from the caller unless it is still in the input.
template <class T>
Code DecodeOpenObject(const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint32_t number, uint32_t tagClass,
                      uint8_t constructed, T** out) {
  const Type& type = kTypeOf<T>;
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  *out = nullptr;
  if (in == nullptr || ioLength == nullptr) return CSResult_BAD_PARAMETER;
  if (mode != 0 && number > kHighestNumber) return type.wrongIdentifier;
  if (mode != 0 && tagClass > CSTagClass_PRIVATE) {
    return type.kind == Kind::Choice ? type.wrongIdentifier : static_cast<Code>(CSResult_BAD_PARAMETER);
  }
  return DecodeObject(in, ioLength, mode, IdentifierOf(number, tagClass, constructed), out);
}

template <class T>
Code FinishObject(const CSASNDecodeContext* context, T** out) {
  uint64_t length = CSASNUtil_GetDecodeContextLength(context);
  return DecodeObject(CSASNUtil_GetDecodeContextData(context), &length, 0, 0, out);
}

inline void Give(uint64_t* out, uint64_t value) {
  if (out != nullptr) *out = value;
}

template <class T>
Code EncodedLengths(const T* object, uint64_t* tagOctets, uint64_t* lengthOctets, uint64_t* contentOctets) {
  Sizes sizes{};
  CS_TRY(SizeOf(kTypeOf<T>, object, false, sizes));
  Give(tagOctets, sizes.tag);
  Give(lengthOctets, sizes.length);
  Give(contentOctets, sizes.contents);
  return CSResult_OK;
}

template <class T>
Code EncodedLength(const T* object, uint64_t* total) {
  if (total == nullptr) return CSResult_BAD_PARAMETER;
  Sizes sizes{};
  CS_TRY(SizeOf(kTypeOf<T>, object, false, sizes));
  *total = sizes.tag + sizes.length + sizes.contents;
  return CSResult_OK;
}

// ---- records ----

constexpr bool SameText(const char* a, const char* b) {
  while (*a != 0 && *a == *b) ++a, ++b;
  return *a == *b;
}

void HeaderAndCatalogueDisagree();

// The place of a component in its record, or of an alternative in its choice. A line of a header that does not agree
// with the catalogue does not compile.
template <class T, class C>
consteval uint32_t IndexOf(const char* name, bool optional) {
  const Type& type = kTypeOf<T>;
  uint32_t i = 0;
  while (!SameText(type.fields[i].name, name)) ++i;
  if (type.fields[i].type != &kTypeOf<C> || type.fields[i].optional != optional) HeaderAndCatalogueDisagree();
  return i;
}

template <class T>
void*& Slot(T* record, uint32_t index) {
  return reinterpret_cast<void**>(record)[index];
}
template <class T>
void* Slot(const T* record, uint32_t index) {
  return reinterpret_cast<void* const*>(record)[index];
}

template <class T, class C>
Code GetComponent(const T* record, uint32_t index, C** out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  *out = nullptr;
  if (record == nullptr) return CSResult_BAD_PARAMETER;
  *out = static_cast<C*>(Slot(record, index));
  return *out == nullptr ? CSResult_NOT_PRESENT : CSResult_OK;
}

template <class T, class C>
Code SetComponent(T* record, uint32_t index, C* value, C** old) {
  if (old != nullptr) *old = nullptr;
  if (record == nullptr) return CSResult_BAD_PARAMETER;
  void*& slot = Slot(record, index);
  if (slot == value) return CSResult_OK;
  if (old != nullptr) {
    *old = static_cast<C*>(slot);
  } else {
    Destroy(kTypeOf<C>, slot);
  }
  slot = value;
  return CSResult_OK;
}

template <class T>
Code IsPresent(const T* record, uint32_t index, uint8_t* present) {
  if (record == nullptr || present == nullptr) return CSResult_BAD_PARAMETER;
  *present = Slot(record, index) != nullptr ? 1 : 0;
  return CSResult_OK;
}

template <class T>
Code GetBoolean(const T* record, uint32_t index, uint8_t* value) {
  if (record == nullptr || value == nullptr) return CSResult_BAD_PARAMETER;
  const auto* boolean = static_cast<const Boolean*>(Slot(record, index));
  *value = boolean == nullptr ? 0 : boolean->value;
  return boolean == nullptr ? CSResult_NOT_PRESENT : CSResult_OK;
}

template <class T>
Code SetBoolean(T* record, uint32_t index, const uint8_t* value) {
  if (record == nullptr) return CSResult_BAD_PARAMETER;
  void*& slot = Slot(record, index);
  if (value == nullptr) {
    Destroy(kTypeOf<Boolean>, slot);
    slot = nullptr;
    return CSResult_OK;
  }
  if (slot == nullptr) slot = Create(kTypeOf<Boolean>);
  if (slot == nullptr) return CSResult_OUT_OF_MEMORY;
  static_cast<Boolean*>(slot)->value = *value;
  return CSResult_OK;
}

inline Code RecordToAny(const Type& type, const void* record, CSASNAny** out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  *out = nullptr;
  if (record == nullptr) return CSResult_BAD_PARAMETER;
  Sizes sizes{};
  CS_TRY(SizeOf(type, record, true, sizes));
  auto* any = NewWithRoom<CSASNAny>(sizes.contents);
  if (any == nullptr) return CSResult_OUT_OF_MEMORY;
  WriteContents(type, record, any->octets.data + sizes.contents);
  any->identifier = type.identifier;
  *out = any;
  return CSResult_OK;
}

// ---- offsets ----

struct PlaceOut {
  uint64_t *tagOffset, *lengthOffset, *contentsOffset, *tagOctets, *lengthOctets, *contentOctets, *endOffset;
};

inline Code LocateAt(const Type& type, const uint8_t* encoded, uint64_t length, uint32_t mode, uint64_t index,
                     const PlaceOut& out) {
  Place place{};
  CS_TRY(Locate(type, encoded, length, mode, index, place));
  Give(out.tagOffset, place.tagOffset);
  Give(out.lengthOffset, place.lengthOffset);
  Give(out.contentsOffset, place.contentsOffset);
  Give(out.tagOctets, place.tagOctets);
  Give(out.lengthOctets, place.lengthOctets);
  Give(out.contentOctets, place.contentOctets);
  Give(out.endOffset, place.endOffset);
  return CSResult_OK;
}

// ---- lists ----

template <class L>
List* AsList(L* list) {
  return reinterpret_cast<List*>(list);
}
template <class L>
const List* AsList(const L* list) {
  return reinterpret_cast<const List*>(list);
}

inline Code AddItem(List* list, void* item) {
  if (list == nullptr || item == nullptr) return CSResult_BAD_PARAMETER;
  void** place = AppendPlace(*list);
  if (place == nullptr) return CSResult_OUT_OF_MEMORY;
  *place = item;
  return CSResult_OK;
}

template <class L, class I>
Code GetItem(const L* list, uint64_t index, I** item) {
  if (item == nullptr) return CSResult_BAD_PARAMETER;
  *item = nullptr;
  if (list == nullptr) return CSResult_BAD_PARAMETER;
  if (index >= AsList(list)->count) return CSResult_INDEX_OUT_OF_RANGE;
  *item = static_cast<I*>(AsList(list)->items[index]);
  return CSResult_OK;
}

template <class L>
Code CountItems(const L* list, uint64_t* count) {
  if (list == nullptr || count == nullptr) return CSResult_BAD_PARAMETER;
  *count = AsList(list)->count;
  return CSResult_OK;
}

template <class L, class I>
Code FindItem(const L* list, const I* item, uint64_t* index) {
  if (list == nullptr || item == nullptr || index == nullptr) return CSResult_BAD_PARAMETER;
  for (uint64_t i = 0; i < AsList(list)->count; ++i) {
    if (!Equal(kTypeOf<I>, AsList(list)->items[i], item)) continue;
    *index = i;
    return CSResult_OK;
  }
  return CSResult_NOT_PRESENT;
}

template <class L, class I>
Code RemoveItemAt(L* list, uint64_t index, I** old) {
  if (old != nullptr) *old = nullptr;
  if (list == nullptr) return CSResult_BAD_PARAMETER;
  if (index >= AsList(list)->count) return CSResult_INDEX_OUT_OF_RANGE;
  void* item = RemovePlace(*AsList(list), index);
  if (old != nullptr) {
    *old = static_cast<I*>(item);
  } else {
    Destroy(kTypeOf<I>, item);
  }
  return CSResult_OK;
}

template <class L, class I>
Code RemoveItem(L* list, const I* item) {
  uint64_t index = 0;
  CS_TRY(FindItem(list, item, &index));
  return RemoveItemAt<L, I>(list, index, nullptr);
}

// ---- choices ----

template <class C>
Choice* AsChoice(C* choice) {
  return reinterpret_cast<Choice*>(choice);
}
template <class C>
const Choice* AsChoice(const C* choice) {
  return reinterpret_cast<const Choice*>(choice);
}

template <class C>
Code WhatIsChosen(const C* choice, uint32_t* number) {
  if (choice == nullptr || number == nullptr) return CSResult_BAD_PARAMETER;
  *number = static_cast<uint32_t>(AsChoice(choice)->chosen);
  return CSResult_OK;
}

inline Code DeleteChosen(const Type& type, Choice* choice) {
  if (choice == nullptr) return CSResult_BAD_PARAMETER;
  if (choice->chosen != 0) Destroy(*type.fields[choice->chosen - 1].type, choice->object);
  *choice = {};
  return CSResult_OK;
}

template <class C, class O>
Code GetAlternative(const C* choice, uint32_t index, O** out) {
  if (out == nullptr) return CSResult_BAD_PARAMETER;
  *out = nullptr;
  if (choice == nullptr) return CSResult_BAD_PARAMETER;
  if (AsChoice(choice)->chosen != index + 1) return CSResult_NOT_PRESENT;
  *out = static_cast<O*>(AsChoice(choice)->object);
  return CSResult_OK;
}

// The object already held stays; only its alternative may change.
template <class C, class O>
Code SetAlternative(C* choice, uint32_t index, O* value) {
  if (choice == nullptr || value == nullptr) return CSResult_BAD_PARAMETER;
  if (AsChoice(choice)->object != value) DeleteChosen(kTypeOf<C>, AsChoice(choice));
  *AsChoice(choice) = {index + 1, value};
  return CSResult_OK;
}

}  // namespace Tavo::Der

#define CS_DEFINE_OBJECT(T)                                                                                            \
  uint32_t T##_Create(T** out) { return Tavo::Der::CreateObject(out); }                                                \
  uint32_t T##_Delete(T** object) { return Tavo::Der::DeleteObject(object); }                                          \
  uint32_t T##_Copy(const T* from, T** out) { return Tavo::Der::CopyObject(from, out); }                               \
  uint32_t T##_Equals(const T* a, const T* b, uint8_t* equal) { return Tavo::Der::CompareObjects(a, b, equal); }       \
  uint32_t T##_DERDecodeFinish(const CSASNDecodeContext* context, T** out) {                                           \
    return Tavo::Der::FinishObject(context, out);                                                                      \
  }                                                                                                                    \
  uint32_t T##_DEREncodeTLV(const T* object, uint8_t** buffer, uint64_t* ioLength, uint8_t writeTag,                   \
                            uint8_t writeLength, uint8_t writeContents) {                                              \
    return Tavo::Der::Encode(Tavo::Der::kTypeOf<T>, object, buffer, ioLength, {writeTag, writeLength, writeContents}); \
  }                                                                                                                    \
  uint32_t T##_DEREncodedLength(const T* object, uint64_t* total) { return Tavo::Der::EncodedLength(object, total); }  \
  uint32_t T##_DEREncodedLengthTLV(const T* object, uint64_t* tagOctets, uint64_t* lengthOctets,                       \
                                   uint64_t* contentOctets) {                                                          \
    return Tavo::Der::EncodedLengths(object, tagOctets, lengthOctets, contentOctets);                                  \
  }

#define CS_DEFINE_DECODE(T)                                                                    \
  uint32_t T##_DERDecodeTLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode, T** out) {   \
    return Tavo::Der::DecodeObject(in, ioLength, mode, Tavo::Der::kTypeOf<T>.identifier, out); \
  }

#define CS_DEFINE_OPEN_DECODE(T)                                                                                      \
  uint32_t T##_DERDecodeTLV(const uint8_t* in, uint64_t* ioLength, uint32_t mode, uint32_t number, uint32_t tagClass, \
                            uint8_t constructed, T** out) {                                                           \
    return Tavo::Der::DecodeOpenObject(in, ioLength, mode, number, tagClass, constructed, out);                       \
  }

#define CS_DEFINE_RECORD(T)                                            \
  uint32_t T##_DERToAny(const T* record, CSASNAny** out) {             \
    return Tavo::Der::RecordToAny(Tavo::Der::kTypeOf<T>, record, out); \
  }

#define CS_DEFINE_FIELD(T, F, C, optional)                                                      \
  uint32_t T##_Get##F(const T* record, C** out) {                                               \
    return Tavo::Der::GetComponent(record, Tavo::Der::IndexOf<T, C>(#F, optional), out);        \
  }                                                                                             \
  uint32_t T##_Set##F(T* record, C* value, C** old) {                                           \
    return Tavo::Der::SetComponent(record, Tavo::Der::IndexOf<T, C>(#F, optional), value, old); \
  }                                                                                             \
  CS_DEFINE_OFFSET(T, F, C, optional)

#define CS_DEFINE_PRESENCE(T, F, C)                                                   \
  uint32_t T##_##F##IsPresent(const T* record, uint8_t* present) {                    \
    return Tavo::Der::IsPresent(record, Tavo::Der::IndexOf<T, C>(#F, true), present); \
  }

#define CS_DEFINE_BOOLEAN_FIELD(T, F)                                                                 \
  uint32_t T##_Get##F(const T* record, uint8_t* value) {                                              \
    return Tavo::Der::GetBoolean(record, Tavo::Der::IndexOf<T, Tavo::Der::Boolean>(#F, true), value); \
  }                                                                                                   \
  uint32_t T##_Set##F(T* record, const uint8_t* value) {                                              \
    return Tavo::Der::SetBoolean(record, Tavo::Der::IndexOf<T, Tavo::Der::Boolean>(#F, true), value); \
  }                                                                                                   \
  CS_DEFINE_PRESENCE(T, F, Tavo::Der::Boolean)                                                        \
  CS_DEFINE_OFFSET(T, F, Tavo::Der::Boolean, true)

#define CS_DEFINE_OFFSET(T, F, C, optional)                                                                           \
  uint32_t T##_DEROffsetOf##F##TLV(                                                                                   \
      const uint8_t* encoded, uint64_t length, uint64_t* tagOffset, uint64_t* lengthOffset, uint64_t* contentsOffset, \
      uint64_t* tagOctets, uint64_t* lengthOctets, uint64_t* contentOctets, uint64_t* endOffset, uint32_t mode) {     \
    return Tavo::Der::LocateAt(                                                                                       \
        Tavo::Der::kTypeOf<T>, encoded, length, mode, Tavo::Der::IndexOf<T, C>(#F, optional),                         \
        {tagOffset, lengthOffset, contentsOffset, tagOctets, lengthOctets, contentOctets, endOffset});                \
  }

#define CS_DEFINE_LIST(L, I)                                                                                        \
  uint32_t L##_AddItem(L* list, I* item) { return Tavo::Der::AddItem(Tavo::Der::AsList(list), item); }              \
  uint32_t L##_AddItemAt(L*, uint64_t, I*) { return CSResult_BAD_FORMAT; }                                          \
  uint32_t L##_GetItemAt(const L* list, uint64_t index, I** item) { return Tavo::Der::GetItem(list, index, item); } \
  uint32_t L##_GetItemCount(const L* list, uint64_t* count) { return Tavo::Der::CountItems(list, count); }          \
  uint32_t L##_IndexOfItem(const L* list, const I* item, uint64_t* index) {                                         \
    return Tavo::Der::FindItem(list, item, index);                                                                  \
  }                                                                                                                 \
  uint32_t L##_RemoveItemAt(L* list, uint64_t index, I** old) { return Tavo::Der::RemoveItemAt(list, index, old); } \
  uint32_t L##_RemoveItem(L* list, const I* item) { return Tavo::Der::RemoveItem(list, item); }                     \
  uint32_t L##_DEROffsetOfNthTLV(const uint8_t* encoded, uint64_t length, uint64_t index, uint64_t* tagOffset,      \
                                 uint64_t* lengthOffset, uint64_t* contentsOffset, uint64_t* tagOctets,             \
                                 uint64_t* lengthOctets, uint64_t* contentOctets, uint64_t* endOffset,              \
                                 uint32_t mode) {                                                                   \
    return Tavo::Der::LocateAt(                                                                                     \
        Tavo::Der::kTypeOf<L>, encoded, length, mode, index,                                                        \
        {tagOffset, lengthOffset, contentsOffset, tagOctets, lengthOctets, contentOctets, endOffset});              \
  }

#define CS_DEFINE_CHOICE(C)                                                                                        \
  uint32_t C##_WhatIsChosen(const C* choice, uint32_t* number) { return Tavo::Der::WhatIsChosen(choice, number); } \
  uint32_t C##_DeleteChosenItem(C* choice) {                                                                       \
    return Tavo::Der::DeleteChosen(Tavo::Der::kTypeOf<C>, Tavo::Der::AsChoice(choice));                            \
  }

#define CS_DEFINE_ALTERNATIVE(C, A, O)                                                    \
  uint32_t C##_Get##A(const C* choice, O** out) {                                         \
    return Tavo::Der::GetAlternative(choice, Tavo::Der::IndexOf<C, O>(#A, false), out);   \
  }                                                                                       \
  uint32_t C##_Set##A(C* choice, O* value) {                                              \
    return Tavo::Der::SetAlternative(choice, Tavo::Der::IndexOf<C, O>(#A, false), value); \
  }
