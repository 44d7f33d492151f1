// The exported functions of every type. The public headers list types and components one per line; here each line
// declares its functions and defines them. None has logic of its own: they call the templates below with a descriptor.
#include "catalogue.h"
#include "engine.h"

#define CS_TYPE(T) CS_DECLARE_TYPE(T) CS_DEFINE_OBJECT(T) CS_DEFINE_DECODE(T)
#define CS_OPEN_TYPE(T) CS_DECLARE_OPEN_TYPE(T) CS_DEFINE_OBJECT(T) CS_DEFINE_OPEN_DECODE(T)
#define CS_RECORD(T) CS_DECLARE_RECORD(T) CS_DEFINE_OBJECT(T) CS_DEFINE_DECODE(T) CS_DEFINE_RECORD(T)
#define CS_FIELD(T, F, C) CS_DECLARE_FIELD(T, F, C) CS_DEFINE_FIELD(T, F, C, false)
#define CS_OPTIONAL_FIELD(T, F, C) \
  CS_DECLARE_OPTIONAL_FIELD(T, F, C) CS_DEFINE_FIELD(T, F, C, true) CS_DEFINE_PRESENCE(T, F, C)
#define CS_BOOLEAN_FIELD(T, F) CS_DECLARE_BOOLEAN_FIELD(T, F) CS_DEFINE_BOOLEAN_FIELD(T, F)
#define CS_LIST(L, I) CS_DECLARE_LIST(L, I) CS_DEFINE_OBJECT(L) CS_DEFINE_DECODE(L) CS_DEFINE_LIST(L, I)
#define CS_CHOICE(C) CS_DECLARE_CHOICE(C) CS_DEFINE_OBJECT(C) CS_DEFINE_OPEN_DECODE(C) CS_DEFINE_CHOICE(C)
#define CS_ALTERNATIVE(C, A, O) CS_DECLARE_ALTERNATIVE(C, A, O) CS_DEFINE_ALTERNATIVE(C, A, O)

#include "families.h"

#include "tavo/der.h"
