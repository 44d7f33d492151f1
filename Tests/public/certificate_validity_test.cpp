#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

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

TEST(CertificateValidity, BothEndsAreOutside) {
  const Zone zone("UTC");
  const auto certificate = Valid("20240101000000Z", "20240701120000Z");
  const std::pair<const char*, bool> dates[] = {{"2023-12-31 23-59-59", false}, {"2024-01-01 00-00-00", false},
                                                {"2024-01-01 00-00-01", true},  {"2024-07-01 11-59-59", true},
                                                {"2024-07-01 12-00-00", false}, {"2024-07-01 12-00-01", false},
                                                {"1969-12-31 23-59-59", false}};  // whose time_t is -1
  for (const auto& [date, valid] : dates) EXPECT_EQ(certificate->CheckValidity(date), valid) << date;
}

TEST(CertificateValidity, TheDateIsLocalTimeInSummerAndWinter) {
  const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  const auto summer = Valid("20240701000000Z", "20240702000000Z");  // 02:00 local time
  EXPECT_FALSE(summer->CheckValidity("2024-07-01 02-00-00"));
  EXPECT_TRUE(summer->CheckValidity("2024-07-01 02-00-01"));
  const auto winter = Valid("20240101000000Z", "20240102000000Z");  // 01:00 local time
  EXPECT_FALSE(winter->CheckValidity("2024-01-01 01-00-00"));
  EXPECT_TRUE(winter->CheckValidity("2024-01-01 01-00-01"));
}

TEST(CertificateValidity, DatesAsTheyMayBeWritten) {
  const Zone zone("UTC");
  const auto certificate = Valid("20240301000000Z", "20240303000000Z");
  EXPECT_TRUE(certificate->CheckValidity("2024-3-1 0-0-1")) << "single digits";
  EXPECT_TRUE(certificate->CheckValidity("  2024-02-31   12-00-00")) << "31 February is 2 March";
  const SecureString zero("2024-03-02 00-00-00\0", 20);
  for (const SecureString& bad :
       {SecureString("2024-03-02 10:00:00"), SecureString("2024-03-02 10-00-00zzz"), SecureString("2024-03-02 10-00"),
        SecureString("2024-13-02 10-00-00"), SecureString(""), SecureString("now"), zero}) {
    EXPECT_THROWS(4000, 0, "Invalide date", certificate->CheckValidity(bad));
  }
}

TEST(CertificateValidity, Now) {
  EXPECT_TRUE(Valid("20240101000000Z", "20991231235959Z")->CheckValidity());
  EXPECT_FALSE(Valid("20180101000000Z", "20201231235959Z")->CheckValidity());
  EXPECT_FALSE(Valid("20980101000000Z", "20991231235959Z")->CheckValidity());
}

TEST(CertificateValidity, TimesAsText) {
  EXPECT_EQ(Valid("19500101000000Z", "20500101000000Z")->GetNotBefore(), "1950-01-01 00-00-00");
  EXPECT_EQ(Valid("20490101000000Z", "20500101000000Z")->GetNotAfter(), "2050-01-01 00-00-00");
  EXPECT_EQ(Valid("20490101000000Z", "99991231235959Z")->GetNotAfter(), "9999-12-31 23-59-59");
}

/// Times that have no calendar form here can be compared all the same.
TEST(CertificateValidity, OffsetsAndFractions) {
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
