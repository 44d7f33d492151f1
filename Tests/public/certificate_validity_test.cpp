#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <sstream>

#include "support/caught.h"
#include "support/opened_certificate.h"

using namespace Tavo::Framework;

namespace {

/// Local time is that of `zone` while this lives.
class Zone {
 public:
  explicit Zone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }
  Zone(const Zone&) = delete;
  Zone& operator=(const Zone&) = delete;
  ~Zone() {
    unsetenv("TZ");
    tzset();
  }
};

Owned<IX509Certificate> Valid(const std::string& from, const std::string& until) {
  CertificateRecipe recipe;
  recipe.notBefore = from;
  recipe.notAfter = until;
  return OpenCertificate(MakeCertificate(recipe));
}

/// A certificate with this encoding of notAfter.
Owned<IX509Certificate> WithEnd(const std::string& hex) {
  return OpenChanged({}, [&](CSTBSCertificate* tbs) {
    const ByteArray octets = FromHex(hex);
    DerOwned<CSTime_Delete> end;
    CSValidity* validity = nullptr;
    std::uint64_t length = octets.size();
    EXPECT_EQ(CSTBSCertificate_GetValidity(tbs, &validity), 0U);
    EXPECT_EQ(CSTime_DERDecodeTLV(octets.data(), &length, 0, 0, 0, 0, Out(end)), 0U);
    EXPECT_EQ(CSValidity_SetNotAfter(validity, end.release(), nullptr), 0U);
  });
}

std::string TimeHex(unsigned char tag, const std::string& text) { return DerHex(tag, ToHex(FromText(text))); }

class CertificateValidity : public VectorTest {
 protected:
  /// The dates of a key, with | between.
  static std::vector<SecureString> Dates(const std::string& key) {
    std::vector<SecureString> dates;
    std::istringstream text(GetParam().Has(key) ? GetParam().Text(key) : "");
    for (std::string date; std::getline(text, date, '|');) dates.emplace_back(date.c_str());
    return dates;
  }
};

TEST_P(CertificateValidity, OfDates) {
  const Zone zone(GetParam().section().c_str());
  const auto certificate = Valid(GetParam().Text("from"), GetParam().Text("until"));
  for (const auto& date : Dates("inside")) EXPECT_TRUE(certificate->CheckValidity(date)) << date;
  for (const auto& date : Dates("outside")) EXPECT_FALSE(certificate->CheckValidity(date)) << date;
  for (const auto& date : Dates("refused")) EXPECT_THROWS(4000, 0, "Invalide date", certificate->CheckValidity(date));
  if (GetParam().Has("not before")) {
    EXPECT_EQ(certificate->GetNotBefore().c_str(), GetParam().Text("not before"));
  }
  if (GetParam().Has("not after")) {
    EXPECT_EQ(certificate->GetNotAfter().c_str(), GetParam().Text("not after"));
  }
}

INSTANTIATE_TEST_SUITE_P(ByHand, CertificateValidity, testing::ValuesIn(LoadVectors("validity.txt")));

TEST(CertificateValidityOf, ADateWithAZeroOctet) {
  const SecureString zero("2024-03-02 00-00-00\0", 20);
  EXPECT_THROWS(4000, 0, "Invalide date", Valid("20240301000000Z", "20240303000000Z")->CheckValidity(zero));
}

TEST(CertificateValidityOf, Now) {
  EXPECT_TRUE(Valid("20240101000000Z", "20991231235959Z")->CheckValidity());
  EXPECT_FALSE(Valid("20180101000000Z", "20201231235959Z")->CheckValidity());
  EXPECT_FALSE(Valid("20980101000000Z", "20991231235959Z")->CheckValidity());
}

/// Times that have no calendar form here can be compared all the same.
TEST(CertificateValidityOf, OffsetsAndFractions) {
  const Zone zone("UTC");
  for (const auto& end : {TimeHex(0x17, "240701120000+0100"), TimeHex(0x18, "20240701120000.5Z")}) {
    const auto certificate = WithEnd(end);
    EXPECT_THROWS(4004, 0, "CSTime_ToTm() failed", certificate->GetNotAfter());
    EXPECT_TRUE(certificate->CheckValidity("2024-07-01 11-00-00"));
    EXPECT_FALSE(certificate->CheckValidity("2024-07-01 13-00-00"));
  }
  const auto added = WithEnd(TimeHex(0x17, "240701120000+0100"));
  EXPECT_TRUE(added->CheckValidity("2024-07-01 12-59-59")) << "the offset is added";
  const auto noMonth = WithEnd(TimeHex(0x17, "241301120000Z"));
  EXPECT_THROWS(4000, 0, "CSTime_ToTm() failed", noMonth->CheckValidity());
  EXPECT_THROWS(4000, 0, "CSTime_ToTm() failed", noMonth->CheckValidity("2024-07-01 13-00-00"));
  EXPECT_THROWS(4004, 0, "CSTime_ToTm() failed", noMonth->GetNotAfter());
}

}  // namespace
