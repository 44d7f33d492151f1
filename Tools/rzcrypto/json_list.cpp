#include "json_list.h"

namespace rzcrypto {

namespace {

constexpr int kIndent = 2;

/// The JSON text of the value, as it stands `depth` levels deep.
std::string Nested(const Json& value, int depth) {
  std::string text;
  for (const char c : value.dump(kIndent, ' ', false, Json::error_handler_t::replace)) {
    text += c;
    if (c == '\n') text.append(static_cast<size_t>(kIndent) * static_cast<size_t>(depth), ' ');
  }
  return text;
}

}  // namespace

std::string Compact(const Json& value) { return value.dump(-1, ' ', false, Json::error_handler_t::replace); }

JsonList::JsonList(const char* name) { Print("{\n  " + Json(name).dump() + ": ["); }

void JsonList::Add(const Json& element) {
  Print((m_empty ? "\n    " : ",\n    ") + Nested(element, 2));
  m_empty = false;
}

void JsonList::Close(const Json& rest) {
  Print(m_empty ? "]" : "\n  ]");
  for (const auto& [name, value] : rest.items()) Print(",\n  " + Json(name).dump() + ": " + Nested(value, 1));
  Print("\n}\n");
}

}  // namespace rzcrypto
