// Objects: creating, copying, comparing, destroying. The depth of recursion is that of the type, not of the input.
#include "engine.h"
#include "memory.h"

namespace Tavo::Der {
namespace {

void** Components(void* record) { return static_cast<void**>(record); }
void* const* Components(const void* record) { return static_cast<void* const*>(record); }
const Type& ItemType(const Type& list) { return *list.fields[0].type; }
const Type& ChosenType(const Type& type, const Choice& choice) { return *type.fields[choice.chosen - 1].type; }

bool EqualRecords(const Type& type, const void* a, const void* b) {
  for (uint32_t i = 0; i < type.count; ++i) {
    if (!Equal(*type.fields[i].type, Components(a)[i], Components(b)[i])) return false;
  }
  return true;
}

bool EqualLists(const Type& type, const List& a, const List& b) {
  if (a.count != b.count) return false;
  for (uint64_t i = 0; i < a.count; ++i) {
    if (!Equal(ItemType(type), a.items[i], b.items[i])) return false;
  }
  return true;
}

bool EqualChoices(const Type& type, const Choice& a, const Choice& b) {
  return a.chosen == b.chosen && (a.chosen == 0 || Equal(ChosenType(type, a), a.object, b.object));
}

// The parts of `from` into an empty `to`; what has been copied when one fails is reachable from `to`.
Code CopyParts(const Type& type, const void* from, void* to) {
  switch (type.kind) {
    case Kind::Record:
      for (uint32_t i = 0; i < type.count; ++i) {
        CS_TRY(Copy(*type.fields[i].type, Components(from)[i], Components(to)[i]));
      }
      break;
    case Kind::List: {
      const List& list = *static_cast<const List*>(from);
      for (uint64_t i = 0; i < list.count; ++i) {
        void** place = AppendPlace(*static_cast<List*>(to));
        if (place == nullptr) return CSResult_OUT_OF_MEMORY;
        CS_TRY(Copy(ItemType(type), list.items[i], *place));
      }
      break;
    }
    default: {
      const Choice& choice = *static_cast<const Choice*>(from);
      if (choice.chosen == 0) break;
      static_cast<Choice*>(to)->chosen = choice.chosen;
      return Copy(ChosenType(type, choice), choice.object, static_cast<Choice*>(to)->object);
    }
  }
  return CSResult_OK;
}

}  // namespace

void* Create(const Type& type) { return AllocateZeroed(type.size); }

void Destroy(const Type& type, void* object) {
  if (object == nullptr) return;
  switch (type.kind) {
    case Kind::Leaf:
      return type.leaf->destroy(object);
    case Kind::Record:
      for (uint32_t i = 0; i < type.count; ++i) Destroy(*type.fields[i].type, Components(object)[i]);
      break;
    case Kind::List: {
      const List& list = *static_cast<List*>(object);
      for (uint64_t i = 0; i < list.count; ++i) Destroy(ItemType(type), list.items[i]);
      Release(list.items);
      break;
    }
    case Kind::Choice: {
      const Choice& choice = *static_cast<Choice*>(object);
      if (choice.chosen != 0) Destroy(ChosenType(type, choice), choice.object);
      break;
    }
  }
  Release(object);
}

Code Copy(const Type& type, const void* from, void*& to) {
  to = nullptr;
  if (from == nullptr) return CSResult_OK;
  if (type.kind == Kind::Leaf) return type.leaf->copy(from, to);
  void* copy = Create(type);
  if (copy == nullptr) return CSResult_OUT_OF_MEMORY;
  if (const Code code = CopyParts(type, from, copy); code != 0) {
    Destroy(type, copy);
    return code;
  }
  to = copy;
  return CSResult_OK;
}

bool Equal(const Type& type, const void* a, const void* b) {
  if (a == b) return true;
  if (a == nullptr || b == nullptr) return false;
  switch (type.kind) {
    case Kind::Leaf:
      return type.leaf->equal(a, b);
    case Kind::Record:
      return EqualRecords(type, a, b);
    case Kind::List:
      return EqualLists(type, *static_cast<const List*>(a), *static_cast<const List*>(b));
    case Kind::Choice:
      return EqualChoices(type, *static_cast<const Choice*>(a), *static_cast<const Choice*>(b));
  }
  return false;
}

void** AppendPlace(List& list) {
  if (list.count == list.capacity) {
    const uint64_t capacity = list.capacity < 2 ? list.capacity + 1 : list.capacity * 2;
    if (capacity > PTRDIFF_MAX / sizeof(void*)) return nullptr;
    auto** items = static_cast<void**>(Allocate(capacity * sizeof(void*)));
    if (items == nullptr) return nullptr;
    CopyOctets(items, list.items, list.count * sizeof(void*));
    Release(list.items);
    list.items = items;
    list.capacity = capacity;
  }
  list.items[list.count] = nullptr;
  return &list.items[list.count++];
}

void* RemovePlace(List& list, uint64_t index) {
  void* item = list.items[index];
  const uint64_t later = --list.count - index;
  if (later != 0) memmove(&list.items[index], &list.items[index + 1], later * sizeof(void*));
  return item;
}

}  // namespace Tavo::Der
