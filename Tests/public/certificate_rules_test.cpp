#include <gtest/gtest.h>

#include <atomic>
#include <sstream>
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

class CertificateRulesOf : public VectorTest {};

TEST_P(CertificateRulesOf, WhatACertificateHolds) {
  const auto text = [](const char* key) { return GetParam().Has(key) ? GetParam().Text(key) : ""; };
  CertificateRecipe recipe;
  recipe.keyUsage = text("key usage");
  recipe.extendedKeyUsage = text("purposes");
  recipe.altName = text("names");
  std::istringstream extensions(text("extensions"));
  for (std::string oid, hex; std::getline(extensions >> std::ws, oid, ':') >> hex;)
    recipe.extensions.emplace_back(oid, hex);
  const ByteArray certificate = MakeCertificate(recipe);
  const int priority = static_cast<int>(GetParam().Number("priority"));
  const Trace trace(1UL << 1);
  EXPECT_EQ(Logon(certificate), priority >= 4);
  EXPECT_EQ(Priority(certificate, false), priority);
  EXPECT_EQ(Default(certificate, false), priority > 0);
  EXPECT_TRUE(text("trace").empty() || trace.Has(text("trace")));
  bool found = false;
  const bool read = Rules::rzGetEKUFromCertificate(certificate.data(), Size(certificate), kAgent, &found);
  if (GetParam().Has("agent")) {
    EXPECT_EQ(!read ? "unread" : found ? "found" : "missing", text("agent"));
  }
}

INSTANTIATE_TEST_SUITE_P(ByHand, CertificateRulesOf, testing::ValuesIn(LoadVectors("certificate_rules.txt")));

TEST(CertificateRules, WhatIsNoCertificateIsLoggedOnceAndAnsweredNo) {
  const unsigned char garbage[] = {0x30, 0x03, 0x02, 0x01, 0x05};
  bool found = true;
  const Trace trace(1UL << 1 | 1UL << 2);
  EXPECT_FALSE(Rules::rzIsCertOKForPKILogon(garbage, sizeof garbage));
  EXPECT_EQ(Rules::rzGetCertPriorityForSetAsDefault(nullptr, 5, false), 0);
  EXPECT_FALSE(Rules::rzIsCertOKForSetAsDefault(garbage, 0, false));
  EXPECT_FALSE(Rules::rzGetEKUFromCertificate(nullptr, 0, nullptr, &found));
  EXPECT_FALSE(found);
  EXPECT_EQ(trace.WithoutAddresses("ICertificateProperties"),
            LoadParagraph("traces.txt", "rules of what is no certificate"));
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
