#include "tavo/framework/exception.h"

#include <gtest/gtest.h>

#include <clocale>
#include <locale>

#include "support/caught.h"
#include "support/vectors.h"

using namespace Tavo::Framework;

namespace {

CCryptoException Example(unsigned long id, IException* inner = nullptr) {
  return CCryptoException("Sources/common/example", 42, "It failed", static_cast<CryptoExceptionId>(id), inner);
}

TEST(CryptoException, NamesEachIdentifier) {
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
  for (const auto& line : LoadParagraph("exceptions.txt", "identifiers")) {
    EXPECT_EQ(Example(std::stoul(line.substr(3))).StringFromId().c_str(), line);
  }
  std::locale::global(before);
}

TEST(CryptoException, CarriesItsFieldsAndItsCauses) {
  auto* inner = new CCryptoException("Sources/inner", 7, "The cause", CRYPTO_INTERNAL_ERROR, nullptr);
  CCryptoException outer = Example(4006, inner);
  EXPECT_EQ(outer.getLineNumber(), 42UL);
  EXPECT_STREQ(outer.getFilename().c_str(), "Sources/common/example");
  EXPECT_EQ(outer.getInnerException(), inner);
  EXPECT_STREQ(outer.what(), "It failed");
  EXPECT_STREQ(static_cast<const std::exception&>(outer).what(), "It failed");
  EXPECT_STREQ(outer.toString().c_str(),
               "Sources/common/example(42): It failed (ID:4006) <- Sources/inner(7): The cause (ID:4004)");
  // Copies share the cause; it goes with the last of them.
  auto copy = std::make_unique<CCryptoException>(outer);
  EXPECT_EQ(copy->getInnerException(), inner);
  copy.reset();
  EXPECT_STREQ(outer.getInnerException()->what(), "The cause");
}

TEST(CryptoException, IsCaughtAcrossTheLibraryAsWhatItIs) {
  try {
    IAlgorithm::CreateFromOID("1.2.3", nullptr);
    FAIL() << "nothing thrown";
  } catch (IException* exception) {
    const auto owner = Own(exception);
    auto* crypto = dynamic_cast<CCryptoException*>(exception);
    ASSERT_NE(crypto, nullptr);
    EXPECT_STREQ(crypto->StringFromId().c_str(), "ID:4006 (CRYPTO_NO_SUCH_ALGORITHM)");
  }
}

TEST(Owned, CheckedTurnsThePointerIntoAValue) {
  try {
    Checked([] { return ICertSystemStore::Load("MY"); });
    FAIL() << "nothing thrown";
  } catch (const Error& error) {
    EXPECT_EQ(error.id(), 4000UL);
    EXPECT_STREQ(error.what(), "Not supported on linux");
    EXPECT_EQ(error.file(), "Sources/rz.crypto.linux.API");
    EXPECT_NE(error.trace().find("(ID:4000)"), std::string::npos);
  }
}

}  // namespace
