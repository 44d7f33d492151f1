#include "engine.h"
#include "memory.h"

using namespace Tavo::Der;

namespace {

// ReadContents and DERDecodeLength say 6 for a length beyond 64 bits, as for any input that is not there.
Code AsTruncation(Code code) {
  return code == CSResult_BAD_FORMAT ? static_cast<Code>(CSResult_BUFFER_TOO_SMALL) : code;
}

}  // namespace

uint32_t CSASNUtil_DEREncodedLengthOfTag(void) { return 1; }

uint32_t CSASNUtil_DEREncodeTag(uint8_t* out, uint64_t* ioLength, uint32_t number, uint32_t tagClass,
                                uint8_t constructed) {
  if (out == nullptr || ioLength == nullptr || tagClass > CSTagClass_PRIVATE) return CSResult_BAD_PARAMETER;
  if (*ioLength == 0) return CSResult_BUFFER_TOO_SMALL;
  *out = IdentifierOf(number, tagClass, constructed);
  *ioLength = 1;
  return CSResult_OK;
}

uint32_t CSASNUtil_DERDecodeTag(const uint8_t* in, uint64_t* ioLength, uint32_t* number, uint32_t* tagClass,
                                uint8_t* constructed) {
  if (in == nullptr || ioLength == nullptr || number == nullptr || tagClass == nullptr || constructed == nullptr) {
    return CSResult_BAD_PARAMETER;
  }
  Input rest{in, *ioLength};
  uint8_t identifier = 0;
  CS_TRY(ReadIdentifier(rest, identifier));
  *number = NumberOf(identifier);
  *tagClass = ClassOf(identifier);
  *constructed = identifier & kConstructed;
  *ioLength -= rest.remaining;
  return CSResult_OK;
}

uint32_t CSASNUtil_DERDecodeSpecificTagInternal(const uint8_t** cursor, uint64_t* remaining, uint64_t* consumed,
                                                uint32_t number, uint32_t tagClass, uint8_t constructed,
                                                uint32_t mismatchCode) {
  if (cursor == nullptr || *cursor == nullptr || remaining == nullptr) return CSResult_BAD_PARAMETER;
  Input rest{*cursor, *remaining};
  uint8_t identifier = 0;
  CS_TRY(ReadIdentifier(rest, identifier));
  const bool same = NumberOf(identifier) == number && ClassOf(identifier) == tagClass &&
                    ((identifier & kConstructed) != 0) == (constructed != 0);
  if (!same) return mismatchCode;
  if (consumed != nullptr) *consumed += *remaining - rest.remaining;
  *cursor = rest.position;
  *remaining = rest.remaining;
  return CSResult_OK;
}

uint32_t CSASNUtil_LengthOfDEREncodedLength(uint64_t value) { return static_cast<uint32_t>(LengthOctets(value)); }

uint32_t CSASNUtil_DEREncodeLength(uint8_t* out, uint64_t* written, uint64_t value) {
  if (out == nullptr || written == nullptr) return CSResult_BAD_PARAMETER;
  *written = LengthOctets(value);
  WriteLength(value, out + *written);
  return CSResult_OK;
}

uint32_t CSASNUtil_DERDecodeLength(const uint8_t* in, uint64_t* ioLength, uint64_t* value) {
  if (in == nullptr || ioLength == nullptr || value == nullptr) return CSResult_BAD_PARAMETER;
  Walk walk;
  Length length{};
  CS_TRY(AsTruncation(ReadLength(in, *ioLength, walk, length)));
  *value = length.value;
  *ioLength = length.octets;
  return CSResult_OK;
}

uint32_t CSASNUtil_DERDecodeLengthInternal(const uint8_t** cursor, uint64_t* remaining, uint64_t* consumed,
                                           uint64_t* value) {
  if (cursor == nullptr || *cursor == nullptr || remaining == nullptr || value == nullptr) {
    return CSResult_BAD_PARAMETER;
  }
  Input rest{*cursor, *remaining};
  Input contents{};
  CS_TRY(ReadContents(rest, contents));
  if (consumed != nullptr) *consumed += static_cast<uint64_t>(contents.position - *cursor);
  *cursor = contents.position;
  *remaining = *value = contents.remaining;
  return CSResult_OK;
}

uint32_t CSASNUtil_DERDetermineEncodingLength(const uint8_t* in, uint64_t available, uint64_t* total) {
  if (total == nullptr) return CSResult_BAD_PARAMETER;
  *total = 0;
  if (in == nullptr) return CSResult_BAD_PARAMETER;
  Walk walk;
  bool indefinite = false;
  return Measure(in, available, walk, *total, indefinite);
}

uint32_t CSASNUtil_PrepareBuffer(uint8_t** buffer, uint64_t* capacity, uint64_t needed, uint8_t* allocated) {
  if (buffer == nullptr || capacity == nullptr) return CSResult_BAD_PARAMETER;
  if (allocated != nullptr) *allocated = 0;
  if (*buffer != nullptr) return *capacity < needed ? CSResult_BUFFER_TOO_SMALL : CSResult_OK;
  *buffer = static_cast<uint8_t*>(Allocate(needed));
  if (*buffer == nullptr) return CSResult_OUT_OF_MEMORY;
  *capacity = needed;
  if (allocated != nullptr) *allocated = 1;
  return CSResult_OK;
}

uint32_t CSASNUtil_IncreaseCapacity(void** array, uint64_t count, uint64_t* capacity, uint64_t elementSize) {
  constexpr uint64_t kStep = 5;
  if (array == nullptr || capacity == nullptr) return CSResult_BAD_PARAMETER;
  const uint64_t former = *array == nullptr ? 0 : *capacity;
  if (count > former && *array != nullptr) return CSResult_BAD_PARAMETER;
  if (former > UINT64_MAX - kStep) return CSResult_OUT_OF_MEMORY;
  if (elementSize != 0 && former + kStep > PTRDIFF_MAX / elementSize) return CSResult_OUT_OF_MEMORY;
  void* grown = AllocateZeroed((former + kStep) * elementSize);
  if (grown == nullptr) return CSResult_OUT_OF_MEMORY;
  if (*array != nullptr) {
    CopyOctets(grown, *array, count * elementSize);
    Release(*array);
  }
  *array = grown;
  *capacity = former + kStep;
  return CSResult_OK;
}

uint32_t CSASNUtil_FreeString(char** text) {
  if (text == nullptr || *text == nullptr) return CSResult_BAD_PARAMETER;
  WipeAndRelease(*text, strlen(*text));
  *text = nullptr;
  return CSResult_OK;
}

uint32_t CSASNUtil_FreeWString(wchar_t** text) {
  if (text == nullptr || *text == nullptr) return CSResult_BAD_PARAMETER;
  WipeAndRelease(*text, wcslen(*text) * sizeof(wchar_t));
  *text = nullptr;
  return CSResult_OK;
}
