#include <time.h>

#include <cstring>

#include "rz.crypto.openssl.rsacertificate.module.h"

namespace Tavo::Framework {

using namespace Certificate;

namespace {

constexpr const char* kTimeFormat = "%Y-%m-%d %H-%M-%S";

/// One of the two ends as seconds since 1970.
std::int64_t Seconds(const DerSteps& check, const char* step, std::uint32_t (*get)(const CSValidity*, CSTime**),
                     const CSValidity* validity) {
  CSTime* end = nullptr;
  time_t seconds = 0;
  check(step, get(validity, &end));
  check("CSTime_ToTm", CSTime_ToTime_t(end, &seconds));  // one wording for both conversions
  return seconds;
}

/// The local time that the text names, or nothing. A day that the month does not have is carried over.
std::optional<std::int64_t> ParseLocalTime(const SecureString& text) {
  struct tm broken {};
  const char* end = strptime(text.c_str(), kTimeFormat, &broken);
  if (end == nullptr || *end != '\0' || std::strlen(text.c_str()) != text.size()) return std::nullopt;
  broken.tm_isdst = -1;  // summer time or not is for mktime to find out
  broken.tm_wday = -1;   // mktime sets it when it succeeds; its result -1 is a moment too
  const time_t moment = mktime(&broken);
  if (broken.tm_wday == -1) return std::nullopt;
  return moment;
}

}  // namespace

bool COpensslRSACertificate::IsValidAt(const DerSteps& check, std::int64_t moment) const {
  CSValidity* validity = nullptr;
  check("CSTBSCertificate_GetValidity", CSTBSCertificate_GetValidity(m_pTBSCertificate, &validity));
  const auto notBefore = Seconds(check, "CSValidity_GetNotBefore", CSValidity_GetNotBefore, validity);
  const auto notAfter = Seconds(check, "CSValidity_GetNotAfter", CSValidity_GetNotAfter, validity);
  return notBefore < moment && moment < notAfter;
}

bool COpensslRSACertificate::CheckValidity() {
  static constexpr const char* kOperation = "COpensslRSACertificate::CheckValidity";
  return Traced(kOperation, this,
                [&] { return IsValidAt(DerSteps(kModule, kOperation, CRYPTO_BAD_PARAM), time(nullptr)); });
}

bool COpensslRSACertificate::CheckValidity(SecureString date) {
  static constexpr const char* kOperation = "COpensslRSACertificate::CheckValidity";
  return Traced(kOperation, this, [&] {
    const auto moment = ParseLocalTime(date);
    if (!moment) throw kModule.Error(__LINE__, "Invalide date", CRYPTO_BAD_PARAM);
    return IsValidAt(DerSteps(kModule, kOperation, CRYPTO_BAD_PARAM), *moment);
  });
}

SecureString COpensslRSACertificate::Time(const char* operation, const char* step,
                                          std::uint32_t (*get)(const CSValidity*, CSTime**)) const {
  return Reading(operation, this, [&](const DerSteps& check) {
    CSValidity* validity = nullptr;
    CSTime* end = nullptr;
    struct tm broken {};
    check("CSTBSCertificate_GetValidity", CSTBSCertificate_GetValidity(m_pTBSCertificate, &validity));
    check(step, get(validity, &end));
    check("CSTime_ToTm", CSTime_ToTm(end, &broken));
    char text[64];
    if (strftime(text, sizeof text, kTimeFormat, &broken) == 0) {
      throw kModule.Error(__LINE__, "strftime() failed", CRYPTO_INTERNAL_ERROR);
    }
    return SecureString(text);
  });
}

SecureString COpensslRSACertificate::GetNotBefore() {
  return Time("COpensslRSACertificate::GetNotBefore", "CSValidity_GetNotBefore", CSValidity_GetNotBefore);
}

SecureString COpensslRSACertificate::GetNotAfter() {
  return Time("COpensslRSACertificate::GetNotAfter", "CSValidity_GetNotAfter", CSValidity_GetNotAfter);
}

}  // namespace Tavo::Framework
