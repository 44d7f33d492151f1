#ifndef TAVO_OWNED_H
#define TAVO_OWNED_H

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "tavo/crypto.h"

/// Optional, header-only: owners and by-value errors for callers who do not want to handle raw pointers.
///
///   const auto algorithm = NewAlgorithm("SHA256");          // lives as long as what is made of it
///   const auto parameters = NewParameters();
///   const auto digest = Own(MessageDigest::Create(algorithm.get(), parameters.get()));
///   Checked([&] { digest->Digest(data, out); });             // throws Error, by value
namespace Tavo::Framework {

template <class T>
using Owned = std::unique_ptr<T>;

/// Own takes ownership of what a factory returned.
template <class T>
Owned<T> Own(T* object) {
  return Owned<T>(object);
}

/// Error is an IException caught by value: what() is its message.
class Error : public std::runtime_error {
 public:
  explicit Error(Owned<IException> caught)
      : std::runtime_error(caught->getMessage().c_str()),
        m_nID(caught->getID()),
        m_nLine(caught->getLineNumber()),
        m_sFile(caught->getFilename().c_str()),
        m_sTrace(caught->toString().c_str()) {}
  unsigned long id() const { return m_nID; }
  unsigned long line() const { return m_nLine; }
  const std::string& file() const { return m_sFile; }
  /// trace returns the exception and all its causes as one text.
  const std::string& trace() const { return m_sTrace; }

 private:
  unsigned long m_nID;
  unsigned long m_nLine;
  std::string m_sFile;
  std::string m_sTrace;
};

/// Checked runs `body` and turns an IException* that leaves it into an Error.
template <class Body>
auto Checked(Body&& body) -> decltype(body()) {
  try {
    return std::forward<Body>(body)();
  } catch (IException* caught) {
    throw Error(Own(caught));
  }
}

/// NewAlgorithm returns the registered algorithm `name` with empty parameters.
inline Owned<IAlgorithm> NewAlgorithm(const char* name) {
  return Own(IAlgorithm::CreateFromFriendlyName(name, Own(IAlgorithmParameters::Create()).get()));
}

/// NewParameters returns an empty parameter map.
inline Owned<ICryptoParserParameterMap> NewParameters() { return Own(ICryptoParserParameterMap::Create()); }

/// OwnedNames is a list of general names that are deleted with it: `for (IGeneralName* name : OwnedNames(...))`.
class OwnedNames {
 public:
  OwnedNames() = default;
  explicit OwnedNames(GeneralNameList&& names) : m_names(std::move(names)) {}
  OwnedNames(const OwnedNames&) = delete;
  OwnedNames& operator=(const OwnedNames&) = delete;
  ~OwnedNames() {
    for (IGeneralName* name : m_names) Own(name).reset();
  }
  void Add(Owned<IGeneralName> name) {
    m_names.push_back(name.get());
    name.release();  // NOLINT(bugprone-unused-return-value): the list has it
  }
  /// Release hands the list to the caller, who then deletes its elements.
  GeneralNameList Release() {
    GeneralNameList names;
    names.swap(m_names);
    return names;
  }
  auto begin() const { return m_names.begin(); }
  auto end() const { return m_names.end(); }
  std::size_t size() const { return m_names.size(); }

 private:
  GeneralNameList m_names;
};

}  // namespace Tavo::Framework

#endif
