#ifndef RZ_CEXT_H
#define RZ_CEXT_H

#include <exception>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <variant>

#include "rz/export.h"
#include "tavo/framework/bytes.h"

/// The common library of the suite, `librz.cext`: the exception base and the typed key/value store.
namespace Tavo::Framework {

/// IException is what every failure of the suite is thrown as: a pointer, `IException*`, to a heap object. Whoever
/// catches it owns it and deletes it, unless he attaches it to a new exception as the inner one.
class RZ_CEXT_API IException : public std::exception {
 public:
  ~IException() override = default;
  /// what returns the message, valid as long as the exception lives.
  const char* what() const noexcept override = 0;
  /// getLineNumber returns the number of the place that threw, which is part of the interface where one is documented.
  virtual unsigned long getLineNumber() = 0;
  /// getFilename returns the module that threw, such as "Sources/openssl/rz.crypto.openssl.digest".
  virtual SecureString getFilename() = 0;
  /// getInnerException returns the cause, or null. It stays the property of this exception.
  virtual IException* getInnerException() = 0;
  virtual SecureString getMessage() = 0;
  virtual const char* what() = 0;
  /// toString returns "file(line): message (ID:n)", followed by " <- " and the same of each cause.
  virtual SecureString toString() = 0;
  /// getID returns the identifier; each library of the suite has its own range.
  virtual unsigned long getID() = 0;
};

/// CException is the one implementation, base of each library's own exception class.
class RZ_CEXT_API CException : public IException {
 public:
  /// The constructor takes ownership of `inner`, which may be null. A copy shares the inner exception.
  CException(SecureString file, unsigned long line, SecureString message, unsigned long id, IException* inner);
  CException(CException& other);
  CException(const CException& other);
  CException& operator=(const CException&) = delete;
  ~CException() override;

  const char* what() const noexcept override;
  unsigned long getLineNumber() override { return m_nLine; }
  SecureString getFilename() override { return m_sFile; }
  IException* getInnerException() override { return m_pInner.get(); }
  SecureString getMessage() override { return m_sMessage; }
  const char* what() override;
  SecureString toString() override;
  unsigned long getID() override { return m_nID; }

 private:
  unsigned long m_nLine;
  SecureString m_sFile;
  unsigned long m_nID;
  SecureString m_sMessage;
  std::shared_ptr<IException> m_pInner;
};

/// RZData is one value of a DataMap: nothing, bytes, a string, a list of strings, an unsigned char or an unsigned long.
class RZ_CEXT_API RZData {
 public:
  RZData() = default;
  explicit RZData(const ByteArray& value);
  explicit RZData(const SecureString& value) : m_value(value) {}
  explicit RZData(const SecureStringList& value) : m_value(value) {}
  explicit RZData(unsigned char value) : m_value(value) {}
  explicit RZData(unsigned long value) : m_value(value) {}

  /// byteArray and string return a copy of the value, empty when it is of another type.
  ByteArray byteArray() const;
  SecureString string() const;

  /// Is returns the value when it is a T, else null. The pointer lives until the value changes.
  template <class T>
  const T* Is() const {
    return std::get_if<T>(&m_value);
  }

 private:
  std::variant<std::monostate, ByteArray, SecureString, SecureStringList, unsigned char, unsigned long> m_value;
};

/// DataMap is an ordered map from a string to an RZData. It locks nothing.
class RZ_CEXT_API DataMap {
 public:
  DataMap();
  DataMap(const DataMap&) = default;
  DataMap& operator=(const DataMap&) = default;
  virtual ~DataMap();
  /// EnterProtectedSection and LeaveProtectedSection are hooks around compound access; empty here.
  virtual void EnterProtectedSection() const;
  virtual void LeaveProtectedSection() const;

  /// Add stores the value under `key` and replaces what was there.
  void Add(const SecureString& key, const RZData& value);
  void Add(const SecureString& key, const ByteArray& value);
  void Add(const SecureString& key, const SecureString& value);
  void Add(const SecureString& key, const SecureStringList& value);
  void Add(const SecureString& key, const unsigned char& value);
  void Add(const SecureString& key, const unsigned long& value);

  /// Get assigns the value and returns true; returns false and leaves `value` alone when the key is absent or holds a
  /// value of another type. The first form takes a value of any type.
  bool Get(const SecureString& key, RZData& value) const;
  bool Get(const SecureString& key, ByteArray& value) const;
  bool Get(const SecureString& key, SecureString& value) const;
  bool Get(const SecureString& key, SecureStringList& value) const;
  bool Get(const SecureString& key, unsigned char& value) const;
  bool Get(const SecureString& key, unsigned long& value) const;
  /// Get returns whether the key is present, whatever its value.
  bool Get(const SecureString& key) const;

  /// erase removes the key, if it is there. clear removes all keys.
  void erase(const SecureString& key);
  void clear();

  /// Find returns the value under `key`, or null. It makes no string of the key. The pointer lives until the map
  /// changes.
  const RZData* Find(std::string_view key) const;

 private:
  /// Nobody sees the order, and keys often begin alike: their lengths decide most often.
  struct Less {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const {
      return a.size() != b.size() ? a.size() < b.size() : a < b;
    }
  };
  std::map<SecureString, RZData, Less, secallocator<std::pair<const SecureString, RZData>>> m_values;
};

class RZ_CEXT_API DataMap2 : public DataMap {
 public:
  DataMap2();
  DataMap2(const DataMap2&) = default;
  DataMap2& operator=(const DataMap2&) = default;
  ~DataMap2() override;
};

}  // namespace Tavo::Framework

#endif
