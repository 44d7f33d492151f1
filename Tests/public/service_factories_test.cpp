// The factories of all services: what they check, in which order, and whom they serve.
#include <gtest/gtest.h>

#include "support/caught.h"
#include "tavo/crypto.h"

using namespace Tavo::Framework;

namespace {

/// A service, the lines of its refusals of no algorithm and of FIPS mode (0: any), and what it says of an algorithm
/// that it does not know, if there is one.
struct Factory {
  std::function<void(IAlgorithm*, ICryptoParserParameterMap*)> create;
  unsigned long noAlgorithm, fips;
  unsigned long id = 0, line = 0;
  const char* message = nullptr;
  std::vector<const char*> strangers = {};
};

template <class Service>
void New(IAlgorithm* algorithm, ICryptoParserParameterMap* map) {
  Own(Service::Create(algorithm, map));
}

const Factory kFactories[] = {
    {New<MessageDigest>, 0, 0},
    {New<Cipher>, 816, 822, 4006, 841, "Unknown algorithm", {"HMAC_SHA1", "CMAC", "SHA256"}},
    {New<Signature>, 870, 876},
    {New<MAC>, 945, 951, 4006, 970, "Unknown algorithm", {"SHA1", "AES", "RSA"}},
    {New<RandomGenerator>, 0, 0},
    {New<KeyGenerator>, 0, 0},
    {New<KeyPairGenerator>, 1150, 1156, 4000, 1176, "algorithm not supported on linux", {"DES", "SHA1"}},
    {New<KeyDerivation>, 0, 0, 4001, 0, "Not Implemented", {"800_56A_KDF"}},
    {New<KeyAgreement>, 0, 0, 4001, 0, "Not Implemented", {"ECDH_P256"}},
};

TEST(ServiceFactories, CheckTheirArgumentsInOrder) {
  const auto algorithm = NewAlgorithm("800_56A_KDF");  // unknown to those who ask
  const auto fips = NewParameters();
  fips->SetFIPSMode(true);
  for (const Factory& f : kFactories) {
    EXPECT_THROWS(4000, f.noAlgorithm, "pAlgorithm should not be NULL", f.create(nullptr, fips.get()));
    EXPECT_THROWS(4000, 0, "Bad Parameters", f.create(algorithm.get(), nullptr));
    EXPECT_THROWS(4011, f.fips, "FIPS Mode is not supported on linux", f.create(algorithm.get(), fips.get()));
    for (const char* name : f.strangers) {
      EXPECT_THROWS(f.id, f.line, f.message, f.create(NewAlgorithm(name).get(), NewParameters().get()));
    }
    if (f.strangers.empty()) f.create(algorithm.get(), NewParameters().get());  // takes any name
  }
  EXPECT_THROWS(4001, 0, "Not Implemented", IECDomainParameters::Create());
  EXPECT_THROWS(4000, 0, "Not supported on linux", ICertSystemStore::Load("MY"));
}

}  // namespace
