#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "support/certificates.h"
#include "support/trace.h"
#include "support/vectors.h"
#include "tavo/crypto.h"

using namespace Tavo::Framework;
using Rules = ICertificateProperties;

namespace {

constexpr const char* kUpn = "otherName:1.3.6.1.4.1.311.20.2.3;UTF8:ada@example.org";
constexpr const char* kLogon = "1.3.6.1.4.1.311.20.2.2";
constexpr const char* kAgent = "1.3.6.1.4.1.311.20.2.1";
constexpr const char* kFileSystem = "1.3.6.1.4.1.311.10.3.4";

unsigned int Size(const ByteArray& bytes) { return static_cast<unsigned int>(bytes.size()); }
bool Logon(const ByteArray& c) { return Rules::rzIsCertOKForPKILogon(c.data(), Size(c)); }
bool Default(const ByteArray& c, bool ignore) { return Rules::rzIsCertOKForSetAsDefault(c.data(), Size(c), ignore); }
int Priority(const ByteArray& c, bool ignore) {
  return Rules::rzGetCertPriorityForSetAsDefault(c.data(), Size(c), ignore);
}

/// The priority of what the certificate has: 4 for logon, 2 for the request agent, 1 for the file system, written out
/// line by line; the second one ignores the file system.
constexpr int kPriorities[][2] = {{0, 0}, {1, 0}, {2, 2}, {3, 2}, {4, 4}, {5, 4}, {6, 6}, {7, 6}};

struct Variant {
  const char* what;
  const char* value;  // as in an openssl configuration
  bool counts;
};

TEST(CertificateRules, TheWholeMatrix) {
  const Variant names[] = {
      {"none", "", false},
      {"principal name", kUpn, true},
      {"principal name among others", "email:a@b.c,DNS:a,otherName:1.3.6.1.4.1.311.20.2.3;UTF8:a,IP:1.2.3.4", true},
      {"principal name that is no text", "otherName:1.3.6.1.4.1.311.20.2.3;INTEGER:5", true},
      {"another other-name", "otherName:1.3.6.1.4.1.311.20.2.2;UTF8:ada@example.org", false},
      {"a registered identifier", "RID:1.3.6.1.4.1.311.20.2.3", false},
      {"e-mail", "email:ada@example.org", false},
  };
  const Variant usages[] = {{"none", "", false},
                            {"digital signature", "digitalSignature", true},
                            {"among others", "critical,digitalSignature,keyEncipherment,decipherOnly", true},
                            {"others", "nonRepudiation,keyEncipherment", false}};
  for (const Variant& name : names) {
    for (const Variant& usage : usages) {
      for (int purposes = 0; purposes < 16; ++purposes) {
        CertificateRecipe recipe;
        recipe.altName = name.value;
        recipe.keyUsage = usage.value;
        std::string list;
        const char* oids[] = {"clientAuth", kLogon, kAgent, kFileSystem};
        for (int i = 0; i < 4; ++i) {
          if ((purposes >> i & 1) != 0) list += (list.empty() ? "" : ",") + std::string(oids[i]);
        }
        recipe.extendedKeyUsage = list;
        SCOPED_TRACE(std::string(name.what) + " / " + usage.what + " / " + list);
        const ByteArray certificate = MakeCertificate(recipe);
        const bool logon = name.counts && usage.counts && (purposes & 2) != 0;
        const auto& [all, ignoring] = kPriorities[(logon ? 4 : 0) + (purposes & 4) / 2 + (purposes & 8) / 8];
        EXPECT_EQ(Logon(certificate), logon);
        EXPECT_EQ(Priority(certificate, false), all);
        EXPECT_EQ(Priority(certificate, true), ignoring);
        EXPECT_EQ(Default(certificate, false), all > 0);
        EXPECT_EQ(Default(certificate, true), ignoring > 0);
        bool found = true;
        EXPECT_EQ(Rules::rzGetEKUFromCertificate(certificate.data(), Size(certificate), kAgent, &found), purposes != 0);
        EXPECT_EQ(found, (purposes & 4) != 0);
      }
    }
  }
}

TEST(CertificateRules, TheListIsReadToItsEndAndAnyPurposeIsNone) {
  CertificateRecipe recipe = LogonRecipe();
  recipe.extendedKeyUsage = "clientAuth,clientAuth,emailProtection,1.2.3,1.3.6.1.4.1.311.20.2.1,1.3.6.1.4.1.311.20.2.2";
  EXPECT_EQ(Priority(MakeCertificate(recipe), false), 6);
  recipe.extendedKeyUsage = "anyExtendedKeyUsage";
  EXPECT_EQ(Priority(MakeCertificate(recipe), false), 0);
}

/// Certificates with one broken part: nothing but the purposes is read for rzGetEKUFromCertificate.
TEST(CertificateRules, ABrokenPartAnswersNo) {
  CertificateRecipe names;
  names.keyUsage = "digitalSignature";
  names.extendedKeyUsage = std::string(kAgent) + "," + kLogon;
  names.extensions = {{"2.5.29.17", "3005 a003 0101ff"}};
  const ByteArray brokenNames = MakeCertificate(names);
  bool found = false;
  {
    const Trace trace(1UL << 1);
    EXPECT_EQ(Priority(brokenNames, false), 0) << "although it is a request agent";
    EXPECT_TRUE(
        trace.Has("1 ICertificateProperties::rzGetCertPriorityForSetAsDefault : getting subject alternative names "
                  "failed: CSGeneralNames_DERDecode() failed"));
  }
  EXPECT_FALSE(Default(brokenNames, false));
  EXPECT_TRUE(Rules::rzGetEKUFromCertificate(brokenNames.data(), Size(brokenNames), kAgent, &found));
  EXPECT_TRUE(found);

  CertificateRecipe purposes = LogonRecipe();
  purposes.extendedKeyUsage = "";
  purposes.extensions = {{"2.5.29.37", "3003 060355"}};
  const ByteArray brokenPurposes = MakeCertificate(purposes);
  const Trace trace(1UL << 1);
  EXPECT_FALSE(Logon(brokenPurposes));
  EXPECT_TRUE(
      trace.Has("1 ICertificateProperties::rzIsCertOKForPKILogon : getting extented key usage failed: "
                "CSExtKeyUsageSyntax_DERDecode() failed"));
  EXPECT_FALSE(Rules::rzGetEKUFromCertificate(brokenPurposes.data(), Size(brokenPurposes), kAgent, &found));
  EXPECT_FALSE(found);
}

/// The rules with one purpose and one other-name whose identifiers have these octets.
bool LogonWith(const std::string& purpose, const std::string& nameType) {
  CertificateRecipe recipe;
  recipe.keyUsage = "digitalSignature";
  recipe.extensions = {{"2.5.29.37", DerHex(0x30, DerHex(0x06, purpose))},
                       {"2.5.29.17", DerHex(0x30, DerHex(0xa0, DerHex(0x06, nameType) + DerHex(0xa0, "0c0161")))}};
  return Logon(MakeCertificate(recipe));
}

/// Encodings of an object identifier that read as the one wanted must not pass for it.
TEST(CertificateRules, AliasesOfAnIdentifierDoNotCount) {
  const std::string prefix = "2b0601040182371402";
  EXPECT_TRUE(LogonWith(prefix + "02", prefix + "03")) << "by hand, in DER";
  // A zero in front of the last arc, an arc of more than 32 bits, an arc that is not finished.
  const std::pair<const char*, const char*> aliases[] = {{"80", ""}, {"90808080", ""}, {"", "80"}};
  for (const auto& [before, after] : aliases) {
    EXPECT_FALSE(LogonWith(prefix + before + "02" + after, prefix + "03")) << before << " " << after;
    EXPECT_FALSE(LogonWith(prefix + "02", prefix + before + "03" + after)) << before << " " << after;
  }
}

/// Nor must the identifier of an extension, whichever way around: 2^32 more reads the same in 32 bits.
TEST(CertificateRules, AnExtensionWhoseIdentifierWrapsIsAnotherOne) {
  const auto extension = [](const char* last, const std::string& value) {
    return std::pair("2.5.29." + std::string(last), value);
  };
  const std::string usage = "03020780";
  const std::string purposes = DerHex(0x30, DerHex(0x06, "2b060104018237140202"));
  const std::string names = DerHex(0x30, DerHex(0xa0, DerHex(0x06, "2b060104018237140203") + DerHex(0xa0, "0c0161")));
  const auto logon = [&](const char* usageId, const char* purposesId, const char* namesId) {
    CertificateRecipe recipe;
    recipe.extensions = {extension("4294967311", "0500"), extension(usageId, usage), extension(purposesId, purposes),
                         extension(namesId, names)};
    return Logon(MakeCertificate(recipe));
  };
  EXPECT_TRUE(logon("15", "37", "17")) << "the one in front hides no key usage";
  EXPECT_FALSE(logon("4294967311", "37", "17"));
  EXPECT_FALSE(logon("15", "4294967333", "17"));
  EXPECT_FALSE(logon("15", "37", "4294967313"));
}

TEST(CertificateRules, WhatIsNoCertificateIsLoggedOnceAndAnsweredNo) {
  const unsigned char garbage[] = {0x30, 0x03, 0x02, 0x01, 0x05};
  bool found = true;
  const Trace trace(1UL << 1 | 1UL << 2);
  EXPECT_FALSE(Rules::rzIsCertOKForPKILogon(garbage, sizeof garbage));
  EXPECT_EQ(Rules::rzGetCertPriorityForSetAsDefault(nullptr, 5, false), 0);
  EXPECT_FALSE(Rules::rzIsCertOKForSetAsDefault(garbage, 0, false));
  EXPECT_FALSE(Rules::rzGetEKUFromCertificate(nullptr, 0, nullptr, &found));
  EXPECT_FALSE(found);
  const auto rule = [](const char* level, const char* name, const std::string& text) {
    return std::string(level) + " ICertificateProperties::" + name + " : " + text;
  };
  const std::string failed = "ICertificate::Create(CERT_FORMAT_X509) failed: ";
  EXPECT_EQ(trace.WithoutAddresses("ICertificateProperties"),
            (std::vector<std::string>{
                rule("1", "rzIsCertOKForPKILogon", failed + "d2i_X509() failed"),
                rule("2", "rzGetCertPriorityForSetAsDefault", "pusCertificateValue=NULL!"),
                rule("1", "rzGetCertPriorityForSetAsDefault", failed + "X509 encoded buffer should not be empty"),
                rule("2", "rzIsCertOKForSetAsDefault", "unCertificateValueLen=0!"),
                rule("1", "rzIsCertOKForSetAsDefault", failed + "X509 encoded buffer should not be empty"),
                rule("2", "rzGetEKUFromCertificate", "pusCertificateValue=NULL!"),
                rule("2", "rzGetEKUFromCertificate", "unCertificateValueLen=0!"),
                rule("2", "rzGetEKUFromCertificate", "szOID=NULL!"),
                rule("1", "rzGetEKUFromCertificate", failed + "X509 encoded buffer should not be empty"),
            }));
}

TEST(CertificateRules, PurposesAreComparedWholeAndNullIsNeverFound) {
  const ByteArray certificate = MakeCertificate(LogonRecipe());
  const auto found = [&](const char* oid) {
    bool flag = true;
    EXPECT_TRUE(Rules::rzGetEKUFromCertificate(certificate.data(), Size(certificate), oid, &flag));
    return flag;
  };
  EXPECT_TRUE(found(kLogon));
  EXPECT_FALSE(found("1.3.6.1.4.1.311.20.2"));
  EXPECT_FALSE(found("1.3.6.1.4.1.311.20.2.22"));
  EXPECT_FALSE(found(""));
  EXPECT_FALSE(found(nullptr));
  EXPECT_TRUE(Rules::rzGetEKUFromCertificate(certificate.data(), Size(certificate), kLogon, nullptr));
}

TEST(CertificateRules, TheResultIsTraced) {
  const ByteArray certificate = MakeCertificate(LogonRecipe());
  const Trace trace(1UL << 8 | 1UL << 16);
  Logon(certificate);
  Priority(certificate, false);
  EXPECT_EQ(trace.lines().front(), "8 ICertificateProperties::rzIsCertOKForPKILogon");
  EXPECT_TRUE(trace.Has("16 ICertificateProperties::rzIsCertOKForPKILogon : ret=(1)"));
  EXPECT_EQ(trace.lines().back(), "16 ICertificateProperties::rzGetCertPriorityForSetAsDefault : ret=(4)");
}

TEST(CertificateRules, ManyThreadsJudgeAtOnce) {
  const ByteArray good = MakeCertificate(LogonRecipe());
  const ByteArray bad(good.begin(), good.end() - 1);
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < 50; ++n) wrong += (Logon(good) ? 0 : 1) + (Logon(bad) ? 1 : 0);
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
