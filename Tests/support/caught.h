#ifndef RZ_TESTS_CAUGHT_H
#define RZ_TESTS_CAUGHT_H

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "rz/cext.h"
#include "tavo/owned.h"

/// What a failing operation threw, all causes included.
struct Caught {
  bool thrown = false;
  unsigned long id = 0;
  unsigned long line = 0;
  std::string file;
  std::string message;
  std::string causes;           // "id message" of each inner exception, outermost first, joined by " < "
  unsigned long causeLine = 0;  // of the outermost of them
};

inline std::ostream& operator<<(std::ostream& out, const Caught& caught) {
  if (!caught.thrown) return out << "nothing thrown";
  out << caught.id << " \"" << caught.message << "\" " << caught.file << ":" << caught.line;
  return caught.causes.empty() ? out : out << " < " << caught.causes;
}

/// Catch runs `body` and returns what it threw.
template <class Body>
Caught Catch(Body&& body) {
  Caught caught;
  try {
    body();
  } catch (Tavo::Framework::IException* exception) {
    const auto owner = Tavo::Framework::Own(exception);
    caught = {true,
              exception->getID(),
              exception->getLineNumber(),
              exception->getFilename().c_str(),
              exception->getMessage().c_str(),
              "",
              0};
    for (auto* inner = exception->getInnerException(); inner != nullptr; inner = inner->getInnerException()) {
      if (caught.causes.empty()) caught.causeLine = inner->getLineNumber();
      if (!caught.causes.empty()) caught.causes += " < ";
      caught.causes += std::to_string(inner->getID()) + " " + inner->getMessage().c_str();
    }
  }
  return caught;
}

/// EXPECT_THROWS(4009, 285, "MAC is not initialized", mac->Update(data)): identifier, line (0: any) and message.
#define EXPECT_THROWS(expectedId, expectedLine, expectedMessage, ...)                                       \
  do {                                                                                                      \
    const Caught caught_ = Catch([&] { static_cast<void>(__VA_ARGS__); });                                  \
    const unsigned long line_ = (expectedLine);                                                             \
    EXPECT_TRUE(caught_.thrown&& caught_.id == static_cast<unsigned long>(expectedId) &&                    \
                (line_ == 0 || caught_.line == line_) && caught_.message == (expectedMessage))              \
        << #__VA_ARGS__ << "\n  expected " << (expectedId) << " \"" << (expectedMessage) << "\" :" << line_ \
        << "\n  got " << caught_;                                                                           \
  } while (false)

#endif
