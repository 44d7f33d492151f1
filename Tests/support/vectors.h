#ifndef RZ_TESTS_VECTORS_H
#define RZ_TESTS_VECTORS_H

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "hex.h"

/// RepeatedHex returns the bytes of hex words with blanks between; "<octet>*<count>" repeats an octet.
Tavo::Framework::ByteArray RepeatedHex(const std::string& text);

/// Vector files in Tests/data hold sections of `key = value` lines, a comment (#) above each with its origin:
///
///   # RFC 4493, section 4
///   [CMAC]
///   key = 2b7e1516 28aed2a6
///   message =
///
/// A key that a test does not read fails it (VectorTest), so that no expectation is lost by a typing error.
class Vector {
 public:
  Vector(std::string file, int line, std::string section)
      : m_file(std::move(file)), m_line(line), m_section(std::move(section)) {}

  const std::string& section() const { return m_section; }
  /// Where the section begins: "cmac.txt:12 [CMAC]".
  std::string where() const { return m_file + ":" + std::to_string(m_line) + " [" + m_section + "]"; }
  bool Has(const std::string& key) const { return m_values.count(key) != 0; }
  /// Text and Bytes (RepeatedHex) fail the test when the key is missing.
  std::string Text(const std::string& key) const;
  Tavo::Framework::ByteArray Bytes(const std::string& key) const;
  unsigned long Number(const std::string& key) const;
  /// The keys that nobody asked for yet.
  std::string Unread() const;

 private:
  friend std::vector<Vector> LoadVectors(const std::string& name);
  std::string m_file;
  int m_line;
  std::string m_section;
  std::map<std::string, std::string> m_values;
  mutable std::set<std::string> m_read;
};

/// LoadVectors reads Tests/data/`name`. Aborts the program when the file is missing, malformed or empty.
std::vector<Vector> LoadVectors(const std::string& name);

/// LoadParagraphs reads the lines of Tests/data/`name` that follow each other without an empty one between; comments
/// (#) are left out. LoadParagraph returns the lines below "[`heading`]". Both abort the program like LoadVectors.
std::vector<std::vector<std::string>> LoadParagraphs(const std::string& name);
std::vector<std::string> LoadParagraph(const std::string& name, const std::string& heading);

inline void PrintTo(const Vector& vector, std::ostream* out) { *out << vector.where(); }

/// The base of every suite over a vector file.
class VectorTest : public testing::TestWithParam<Vector> {
 protected:
  void TearDown() override { EXPECT_EQ(GetParam().Unread(), "") << GetParam().where() << ": keys that no test reads"; }
};

#endif
