// The types of the DER library: the lines of its headers, read once more as a table.

#include "der_types.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <type_traits>

#include "tavo/der/core.h"

namespace rzcrypto::der {

namespace {

std::vector<Type>& Types() {
  static std::vector<Type> types;
  return types;
}

constexpr std::uint32_t kClassOfBits[] = {CSTagClass_UNIVERSAL, CSTagClass_APPLICATION, CSTagClass_CONTEXT_SPECIFIC,
                                          CSTagClass_PRIVATE};

struct AddType {
  template <class T, class Decode>
  AddType(const char* name, Decode decode,
          std::uint32_t (*encode)(const T*, std::uint8_t**, std::uint64_t*, std::uint8_t, std::uint8_t, std::uint8_t),
          std::uint32_t (*drop)(T**)) {
    Types().push_back({name, [=](const Input& in) { return Run(in, decode, encode, drop); }, {}, {}, "", nullptr});
  }

 private:
  template <class T, class Decode, class Encode>
  static Decoded Run(const Input& in, Decode decode, Encode encode, std::uint32_t (*drop)(T**)) {
    T* object = nullptr;
    Decoded result{CSResult_OK, in.bytes.size(), {}};
    if constexpr (std::is_invocable_v<Decode, const std::uint8_t*, std::uint64_t*, std::uint32_t, T**>) {
      result.code = decode(in.bytes.data(), &result.consumed, in.mode, &object);
    } else {
      result.code = decode(in.bytes.data(), &result.consumed, in.mode, in.identifier & 0x1FU,
                           kClassOfBits[in.identifier >> 6], in.identifier & 0x20, &object);
    }
    if (result.code != CSResult_OK) return result;
    std::uint8_t* buffer = nullptr;
    std::uint64_t length = 0;
    if (encode(object, &buffer, &length, 1, 1, 1) == CSResult_OK) result.encoded.assign(buffer, buffer + length);
    if (buffer != nullptr) explicit_bzero(buffer, length);
    std::free(buffer);
    drop(&object);
    return result;
  }
};

// The two kinds of functions that find an element; the index stands between length and outputs.
using FindComponent = std::uint32_t (*)(const std::uint8_t*, std::uint64_t, std::uint64_t*, std::uint64_t*,
                                        std::uint64_t*, std::uint64_t*, std::uint64_t*, std::uint64_t*, std::uint64_t*,
                                        std::uint32_t);
using FindNth = std::uint32_t (*)(const std::uint8_t*, std::uint64_t, std::uint64_t, std::uint64_t*, std::uint64_t*,
                                  std::uint64_t*, std::uint64_t*, std::uint64_t*, std::uint64_t*, std::uint64_t*,
                                  std::uint32_t);

struct AddComponent {
  AddComponent(const char* name, const char* type, FindComponent find) {
    Types().back().components.push_back({name, type, [find](const Input& in, Element& e) {
                                           return find(in.bytes.data(), in.bytes.size(), &e.tagAt, nullptr,
                                                       &e.contentsAt, nullptr, nullptr, &e.contentsSize, &e.end,
                                                       in.mode);
                                         }});
  }
};

struct AddAlternative {
  AddAlternative(const char* name, const char* type) { Types().back().alternatives.push_back({name, type, nullptr}); }
};

struct AddItem {
  AddItem(const char* type, FindNth find) {
    Types().back().item = type;
    Types().back().findItem = [find](const Input& in, std::uint64_t index, Element& e) {
      return find(in.bytes.data(), in.bytes.size(), index, &e.tagAt, nullptr, &e.contentsAt, nullptr, nullptr,
                  &e.contentsSize, &e.end, in.mode);
    };
  }
};

}  // namespace

#define DER_TYPE(T) static const AddType add##T(#T, T##_DERDecodeTLV, T##_DEREncodeTLV, T##_Delete);
#define CS_TYPE(T) CS_DECLARE_TYPE(T) DER_TYPE(T)
#define CS_OPEN_TYPE(T) CS_DECLARE_OPEN_TYPE(T) DER_TYPE(T)
#define CS_RECORD(T) CS_DECLARE_RECORD(T) DER_TYPE(T)
#define CS_LIST(L, I) CS_DECLARE_LIST(L, I) DER_TYPE(L) static const AddItem add##L##Item(#I, L##_DEROffsetOfNthTLV);
#define CS_CHOICE(C) CS_DECLARE_CHOICE(C) DER_TYPE(C)
#define DER_FIELD(T, F, C) static const AddComponent add##T##F(#F, #C, T##_DEROffsetOf##F##TLV);
#define CS_FIELD(T, F, C) CS_DECLARE_FIELD(T, F, C) DER_FIELD(T, F, C)
#define CS_OPTIONAL_FIELD(T, F, C) CS_DECLARE_OPTIONAL_FIELD(T, F, C) DER_FIELD(T, F, C)
#define CS_BOOLEAN_FIELD(T, F) CS_DECLARE_BOOLEAN_FIELD(T, F) DER_FIELD(T, F, CSASNBoolean)
#define CS_ALTERNATIVE(C, A, O) CS_DECLARE_ALTERNATIVE(C, A, O) static const AddAlternative add##C##A(#A, #O);

#include "tavo/der.h"

namespace {

// BOOLEAN has no object in the library; here it gets one.
using Boolean = std::uint8_t;

std::uint32_t DecodeBoolean(const std::uint8_t* in, std::uint64_t* length, std::uint32_t mode, Boolean** out) {
  auto value = std::make_unique<Boolean>();
  const std::uint32_t code = CSASNBoolean_DERDecodeTLV(in, length, mode, value.get());
  if (code == CSResult_OK) *out = value.release();
  return code;
}

std::uint32_t EncodeBoolean(const Boolean* value, std::uint8_t** buffer, std::uint64_t* length, std::uint8_t tag,
                            std::uint8_t lengthToo, std::uint8_t contents) {
  return CSASNBoolean_DEREncodeTLV(*value, buffer, length, tag, lengthToo, contents);
}

std::uint32_t DeleteBoolean(Boolean** value) {
  delete *value;
  *value = nullptr;
  return CSResult_OK;
}

const AddType addBoolean("CSASNBoolean", DecodeBoolean, EncodeBoolean, DeleteBoolean);

bool SameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

struct Alias {
  std::string_view name, type;
};
// Other ASN.1 names of the same types.
constexpr Alias kAliases[] = {{"CSASNIA5String", "CSASNOctetString"},
                              {"CSKeyUsage", "CSASNBitString"},
                              {"CSUniqueIdentifier", "CSASNBitString"},
                              {"CSKeyPurposeId", "CSASNOID"},
                              {"CSPrivateKey", "CSASNOctetString"}};
constexpr Alias kLabels[] = {{"CERTIFICATE", "CSCertificate"},      {"TRUSTED CERTIFICATE", "CSCertificate"},
                             {"X509 CERTIFICATE", "CSCertificate"}, {"PUBLIC KEY", "CSSubjectPublicKeyInfo"},
                             {"RSA PUBLIC KEY", "CSRSAPublicKey"},  {"RSA PRIVATE KEY", "CSRSAPrivateKey"},
                             {"PRIVATE KEY", "CSPrivateKeyInfo"}};

struct CodeText {
  std::uint32_t code;
  const char* name;
  const char* meaning;
};
#define CODE(name, meaning) \
  { CSResult_##name, "CSResult_" #name, meaning }
constexpr CodeText kCodes[] = {
    CODE(OK, "decoded"),
    CODE(OUT_OF_MEMORY, "out of memory"),
    CODE(BAD_PARAMETER, "no input"),
    CODE(BUFFER_TOO_SMALL, "the input ends before what it announces"),
    CODE(NOT_SUPPORTED, "a tag of several octets inside an indefinite length is not supported"),
    CODE(BAD_FORMAT, "a tag of several octets, or a length that no input can hold"),
    CODE(BAD_UTCTIME, "a field of a UTCTime is not decimal"),
    CODE(BAD_GENERALIZEDTIME, "a field of a GeneralizedTime is not decimal"),
    CODE(EXPECTED_UTCTIME, "a UTCTime is expected here"),
    CODE(EXPECTED_GENERALIZEDTIME, "a GeneralizedTime is expected here"),
    CODE(EXPECTED_SET, "a SET is expected here"),
    CODE(EXPECTED_BOOLEAN, "a BOOLEAN is expected here"),
    CODE(BAD_BOOLEAN_LENGTH, "the contents of a BOOLEAN are one octet"),
    CODE(BAD_BOOLEAN_VALUE, "the octet of a BOOLEAN is 00 or FF"),
    CODE(EXPECTED_SEQUENCE, "a SEQUENCE is expected here"),
    CODE(EXPECTED_OCTET_STRING, "an OCTET STRING is expected here"),
    CODE(EXPECTED_BIT_STRING, "a BIT STRING is expected here"),
    CODE(EXPECTED_OID, "an OBJECT IDENTIFIER is expected here"),
    CODE(UNEXPECTED_ELEMENT, "another element stands where this one belongs"),
    CODE(UNKNOWN_CHOICE, "no alternative has this tag"),
    CODE(EXPECTED_INTEGER, "an INTEGER is expected here"),
    CODE(MISSING_ELEMENT, "the contents end before this component"),
};
#undef CODE

const CodeText* FindCode(std::uint32_t code) {
  const auto* found =
      std::find_if(std::begin(kCodes), std::end(kCodes), [code](const CodeText& text) { return text.code == code; });
  return found == std::end(kCodes) ? nullptr : found;
}

}  // namespace

const Type* FindType(std::string_view name) {
  for (const Alias& alias : kAliases) {
    if (SameName(name, alias.name) || SameName(name, alias.name.substr(2))) return FindType(alias.type);
  }
  for (const Type& type : Types()) {
    const std::string_view full = type.name;
    const size_t prefix = full.substr(0, 5) == "CSASN" ? 5 : 2;
    if (SameName(name, full) || SameName(name, full.substr(prefix))) return &type;
  }
  return nullptr;
}

const Type* FindTypeOfPem(std::string_view label) {
  for (const Alias& known : kLabels) {
    if (label == known.name) return FindType(known.type);
  }
  return nullptr;
}

std::string TypeNames() {
  std::string names;
  for (const Type& type : Types()) names += (names.empty() ? "" : ", ") + type.name;
  for (const Alias& alias : kAliases) names += ", " + std::string(alias.name);
  return names;
}

std::string CodeName(std::uint32_t code) {
  const CodeText* text = FindCode(code);
  return text == nullptr ? "unknown" : text->name;
}

std::string CodeMeaning(std::uint32_t code) {
  const CodeText* text = FindCode(code);
  return text == nullptr ? "" : text->meaning;
}

}  // namespace rzcrypto::der
