// The decode context: one element that arrives in pieces. What has been read of it once is not read again.
#include "engine.h"
#include "memory.h"

struct CSASNDecodeContext {
  uint8_t* data;
  uint64_t held;
  uint64_t expected;  // octets of the whole element, its closing 00 00 included; 0 while unknown
  uint64_t capacity;
  Tavo::Der::Walk walk;
};

using namespace Tavo::Der;

namespace {

// Octets past the element, negative for octets missing.
int32_t Surplus(uint64_t available, uint64_t expected) {
  const uint64_t past = available - expected;
  if (available >= expected) return past > uint64_t{INT32_MAX} ? INT32_MAX : static_cast<int32_t>(past);
  const uint64_t missing = expected - available;
  return missing > uint64_t{INT32_MAX} ? INT32_MIN : -static_cast<int32_t>(missing);
}

// Not realloc, which could leave a copy of a key behind. Nothing is sized by a length that is only announced.
Code Append(CSASNDecodeContext& context, const uint8_t* bytes, uint64_t count) {
  if (count > context.capacity - context.held) {
    const uint64_t needed = context.held + count;
    const uint64_t doubled = context.capacity * 2;
    const uint64_t capacity = needed > doubled ? needed : doubled;
    auto* data = static_cast<uint8_t*>(Allocate(capacity));
    if (data == nullptr) return CSResult_OUT_OF_MEMORY;
    CopyOctets(data, context.data, context.held);
    WipeAndRelease(context.data, context.held);
    context.data = data;
    context.capacity = capacity;
  }
  CopyOctets(context.data + context.held, bytes, count);
  context.held += count;
  return CSResult_OK;
}

// Records the size as soon as enough is there to tell; 408 until then.
Code DetermineExpected(CSASNDecodeContext& context, const uint8_t* bytes, uint64_t count) {
  uint64_t total = 0;
  bool indefinite = false;
  const Code code = Measure(bytes, count, context.walk, total, indefinite);
  if (code == CSResult_BUFFER_TOO_SMALL) return CSResult_INCOMPLETE_DATA;
  CS_TRY(code);
  context.expected = total + (indefinite ? 2 : 0);
  return CSResult_OK;
}

// The first octets: what the element does not need is never copied. A failure leaves the context empty.
Code Begin(CSASNDecodeContext& context, const uint8_t* bytes, uint64_t count) {
  const Code determined = DetermineExpected(context, bytes, count);
  Code appended = CSResult_OK;
  if (determined == CSResult_OK) appended = Append(context, bytes, count < context.expected ? count : context.expected);
  if (determined == CSResult_INCOMPLETE_DATA) appended = Append(context, bytes, count);
  if (context.held == 0) {
    context.walk = {};
    context.expected = 0;
  }
  return appended != CSResult_OK ? appended : determined;
}

void Truncate(CSASNDecodeContext& context, uint64_t length) {
  Wipe(context.data + length, context.held - length);
  context.held = length;
}

}  // namespace

uint32_t CSASNUtil_DERDecodeStart(CSASNDecodeContext** context) {
  if (context == nullptr) return CSResult_BAD_PARAMETER;
  *context = static_cast<CSASNDecodeContext*>(AllocateZeroed(sizeof(CSASNDecodeContext)));
  if (*context == nullptr) return CSResult_OUT_OF_MEMORY;
  (*context)->walk = {};
  return CSResult_OK;
}

uint32_t CSASNUtil_DERDecodeAddData(CSASNDecodeContext* context, const uint8_t* bytes, uint64_t count,
                                    int32_t* surplus) {
  if (context == nullptr || bytes == nullptr || surplus == nullptr) return CSResult_BAD_PARAMETER;
  *surplus = 0;
  if (count > PTRDIFF_MAX - context->held) return CSResult_OUT_OF_MEMORY;
  const uint64_t available = context->held + count;
  if (context->expected != 0) {
    const uint64_t missing = context->expected - context->held;
    CS_TRY(Append(*context, bytes, count < missing ? count : missing));
    *surplus = Surplus(available, context->expected);
    return CSResult_OK;
  }
  if (context->held == 0) {
    CS_TRY(Begin(*context, bytes, count));
  } else {
    CS_TRY(Append(*context, bytes, count));
    CS_TRY(DetermineExpected(*context, context->data, context->held));
    if (available > context->expected) Truncate(*context, context->expected);
  }
  *surplus = Surplus(available, context->expected);
  return CSResult_OK;
}

const uint8_t* CSASNUtil_GetDecodeContextData(const CSASNDecodeContext* context) {
  return context == nullptr || context->held == 0 ? nullptr : context->data;
}

uint64_t CSASNUtil_GetDecodeContextLength(const CSASNDecodeContext* context) {
  return context == nullptr ? 0 : context->held;
}

uint32_t CSASNUtil_DeleteDecodeContext(CSASNDecodeContext** context) {
  if (context == nullptr || *context == nullptr) return CSResult_BAD_PARAMETER;
  WipeAndRelease((*context)->data, (*context)->held);
  Release(*context);
  *context = nullptr;
  return CSResult_OK;
}
