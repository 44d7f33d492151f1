#ifndef RZ_TESTS_SERVICES_H
#define RZ_TESTS_SERVICES_H

#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/provider.h>

#include <cstdlib>
#include <random>

#include "support/vectors.h"
#include "tavo/owned.h"

/// A service with what it borrows.
template <class Service>
struct Made {
  explicit Made(const char* name, const char* padding = nullptr, const char* mode = nullptr)
      : algorithm(Tavo::Framework::NewAlgorithm(name)), map(Tavo::Framework::NewParameters()) {
    if (padding != nullptr) map->SetPadding(padding);
    if (mode != nullptr) map->SetCipherMode(mode);
    Renew();
  }
  void Renew() { service = Tavo::Framework::Own(Service::Create(algorithm.get(), map.get())); }
  Service* operator->() const { return service.get(); }

  Tavo::Framework::Owned<Tavo::Framework::IAlgorithm> algorithm;
  Tavo::Framework::Owned<Tavo::Framework::ICryptoParserParameterMap> map;
  Tavo::Framework::Owned<Service> service;
};

inline Tavo::Framework::ByteArray Part(const Tavo::Framework::ByteArray& bytes, size_t from, size_t to) {
  return {bytes.begin() + static_cast<long>(from), bytes.begin() + static_cast<long>(to)};
}

/// What a cipher makes of `in`; an output that is not empty before.
inline Tavo::Framework::ByteArray Crypt(const Made<Tavo::Framework::Cipher>& cipher, int operation,
                                        Tavo::Framework::IKey& key, const Tavo::Framework::ByteArray& in) {
  Tavo::Framework::ByteArray out(3, 0xaa);
  cipher->Init(operation, &key);
  cipher->DoFinal(in, out);
  return out;
}

/// Octets that look random and are the same in each run.
inline Tavo::Framework::ByteArray Octets(std::mt19937& random, size_t size) {
  Tavo::Framework::ByteArray out(size);
  for (auto& octet : out) octet = static_cast<unsigned char>(random());
  return out;
}

/// Gives a message to a service in every way, `start` before each: at once into an array that is too long, octet by
/// octet into an empty one, in two pieces, and from the array that takes the answer.
template <class Service, class Start>
void EveryPath(Service& service, void (Service::*end)(Tavo::Framework::ByteArray&),
               void (Service::*endWith)(const Tavo::Framework::ByteArray&, Tavo::Framework::ByteArray&), Start start,
               const Tavo::Framework::ByteArray& message, const std::string& expected) {
  Tavo::Framework::ByteArray long_(100, 0xaa), empty, pieces, same = message;
  start();
  (service.*endWith)(message, long_);
  EXPECT_EQ(ToHex(long_), expected);
  start();
  for (const unsigned char octet : message) service.Update({octet});
  (service.*end)(empty);
  EXPECT_EQ(ToHex(empty), expected);
  start();
  service.Update(Part(message, 0, message.size() / 3));
  (service.*endWith)(Part(message, message.size() / 3, message.size()), pieces);
  EXPECT_EQ(ToHex(pieces), expected);
  start();
  (service.*endWith)(same, same);
  EXPECT_EQ(ToHex(same), expected);
}

/// Expects that libcrypto's error queue has the host's own entry with the host's marks, and no other, when `body` is
/// done.
template <class Body>
void LeavesTheHostsErrors(Body&& body) {
  for (const bool hasEntry : {false, true}) {
    ERR_clear_error();
    if (hasEntry) {
      ERR_raise(ERR_LIB_USER, 42);
      ERR_set_mark();
      ERR_set_mark();
    }
    body();
    EXPECT_EQ(ERR_GET_REASON(ERR_peek_error()), hasEntry ? 42 : 0);
    EXPECT_EQ(ERR_peek_error(), ERR_peek_last_error());
    int marks = 0;
    while (ERR_pop_to_mark() == 1) ++marks;
    EXPECT_EQ(marks, hasEntry ? 2 : 0);
  }
}

/// Expects that `right` holds in a process whose libcrypto has no algorithms but the legacy ones.
template <class Right>
void HoldsWithoutAlgorithms(Right right) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        static const OSSL_PROVIDER* const legacy = OSSL_PROVIDER_load(nullptr, "legacy");  // no leak: it stays
        if (legacy == nullptr) std::exit(2);
        ERR_clear_error();
        std::exit(right() && ERR_peek_error() == 0 ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

#endif
