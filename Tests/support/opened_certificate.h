#ifndef RZ_TESTS_OPENED_CERTIFICATE_H
#define RZ_TESTS_OPENED_CERTIFICATE_H

#include <gtest/gtest.h>

#include "support/certificates.h"
#include "support/vectors.h"
#include "tavo/der_owned.h"
#include "tavo/owned.h"

inline Tavo::Framework::Owned<Tavo::Framework::IX509Certificate> OpenCertificate(
    const Tavo::Framework::ByteArray& encoded) {
  using namespace Tavo::Framework;
  return Own(dynamic_cast<IX509Certificate*>(ICertificate::Create("X509", encoded)));
}

/// The certificate re-encoded after `change` had its way with the decoded TBSCertificate; the signature no longer fits.
template <class Change>
auto OpenChanged(const CertificateRecipe& recipe, Change&& change) {
  using namespace Tavo::Framework;
  const ByteArray encoded = MakeCertificate(recipe);
  DerOwned<CSCertificate_Delete> certificate;
  CSTBSCertificate* tbs = nullptr;
  std::uint64_t length = encoded.size();
  EXPECT_EQ(CSCertificate_DERDecodeTLV(encoded.data(), &length, 0, Out(certificate)), 0U);
  EXPECT_EQ(CSCertificate_GetTbsCertificate(certificate.get(), &tbs), 0U);
  change(tbs);
  DerBuffer buffer;
  EXPECT_EQ(CSCertificate_DEREncodeTLV(certificate.get(), Out(buffer), &length, 1, 1, 1), 0U);
  return OpenCertificate(ByteArray(buffer.get(), buffer.get() + length));
}

#endif
