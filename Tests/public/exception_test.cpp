#include "tavo/framework/exception.h"

#include <gtest/gtest.h>

#include <clocale>
#include <locale>

#include "support/caught.h"

using namespace Tavo::Framework;

namespace {

CCryptoException Example(unsigned long id, IException* inner = nullptr) {
  return CCryptoException("Sources/common/example", 42, "It failed", static_cast<CryptoExceptionId>(id), inner);
}

TEST(CryptoException, NamesEachIdentifier) {
  const std::pair<unsigned long, const char*> kTexts[] = {
      {3999, "ID:3999 (Unknown Exception Id)"},
      {4000, "ID:4000 (CRYPTO_BAD_PARAM)"},
      {4001, "ID:4001 (CRYPTO_NOT_IMPLEMENTED)"},
      {4002, "ID:4002 (CRYPTO_NOT_SUPPORTED)"},
      {4003, "ID:4003 (CRYPTO_UNKNOWN_ERROR)"},
      {4004, "ID:4004 (CRYPTO_INTERNAL_ERROR)"},
      {4005, "ID:4005 (CRYPTO_NOT_P12)"},
      {4006, "ID:4006 (CRYPTO_NO_SUCH_ALGORITHM)"},
      {4007, "ID:4007 (CRYPTO_NO_SUCH_PADDING)"},
      {4008, "ID:4008 (CRYPTO_INVALID_KEY)"},
      {4009, "ID:4009 (CRYPTO_ILLEGAL_STATE)"},
      {4010, "ID:4010 (CRYPTO_INVALID_KEY_SIZE)"},
      {4011, "ID:4011 (CRYPTO_UNSUPPORTED_FIPS_MODE)"},
      {4012, "ID:4012 (CRYPTO_BAD_AUTH)"},
      {4013, "ID:4013 (CRYPTO_INVALID_DATA_SIZE)"},
      {4014, "ID:4014 (Unknown Exception Id)"},
      {18446744073709551615UL, "ID:18446744073709551615 (Unknown Exception Id)"},
  };
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
  for (const auto& [id, text] : kTexts) EXPECT_STREQ(Example(id).StringFromId().c_str(), text);
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
