// What the engine knows about a type: its descriptor. catalogue.h lists them all.
#pragma once

#include "input.h"

namespace Tavo::Der {

enum class Kind : uint8_t { Leaf, Record, List, Choice };
enum class Tagging : uint8_t { Plain, Implicit, Explicit };

// The operations of a primitive type; objects are of the type's own making.
struct Leaf {
  Code (*read)(uint8_t identifier, Input contents, void*& object);  // allocates; leaves nothing behind on failure
  Code (*size)(const void* object, uint64_t& octets);               // of the contents
  uint8_t* (*write)(const void* object, uint8_t* end);              // the contents so that they end there; their start
  Code (*copy)(const void* from, void*& to);
  bool (*equal)(const void* a, const void* b);
  void (*destroy)(void* object);  // wipes
};

struct Type;

// A component of a record, the item of a list, an alternative of a choice.
struct Field {
  const char* name;
  const Type* type;
  Tagging tagging;
  uint8_t identifier;  // the outermost one
  uint8_t mask;        // the bits of it that count; 0: the type decides
  bool optional;
};

struct Type {
  const char* name;
  Kind kind;
  uint8_t identifier;
  uint8_t mask;          // the bits of the identifier that count; 0: the object says which (ANY and CHOICE)
  Code wrongIdentifier;  // the answer to another one
  const Field* fields;   // components; the item; alternatives
  uint32_t count;        // of the fields
  uint32_t size;         // of an empty object, in octets
  const Leaf* leaf;
};

// Objects. A record is an array of component pointers, null where absent, and a leaf is what its operations make of it.
struct List {
  void** items;
  uint64_t count;
  uint64_t capacity;
};
struct Choice {
  uint64_t chosen;  // the alternative's number from 1, 0 for none
  void* object;
};

}  // namespace Tavo::Der
