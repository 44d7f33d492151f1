#include "tavo/framework/parameters.h"

#include <gtest/gtest.h>

#include "tavo/owned.h"

using namespace Tavo::Framework;

namespace {

/// One option of a map: absent first, then stored under its key, then replaced, then a stranger's type under the key.
template <class Map, class T, class Set, class Get>
void CheckOption(const char* key, Set set, Get get, const T& first, const T& second) {
  SCOPED_TRACE(key);
  const auto map = Own(Map::Create());
  T value = second;
  EXPECT_FALSE(((*map).*get)(value));
  EXPECT_EQ(value, second) << "left alone when absent";
  ((*map).*set)(first);
  EXPECT_TRUE(map->Get(SecureString(key)));
  EXPECT_TRUE(((*map).*get)(value));
  EXPECT_EQ(value, first);
  ((*map).*set)(second);
  EXPECT_TRUE(((*map).*get)(value));
  EXPECT_EQ(value, second) << "replaced, not appended";
  map->Add(SecureString(key), SecureStringList(7, "another type"));
  T other = first;
  if constexpr (!std::is_same_v<T, SecureStringList>) {
    EXPECT_FALSE(((*map).*get)(other));
    EXPECT_EQ(other, first);
  }
}

TEST(ParameterMap, StoresEachOptionUnderItsKey) {
  using M = ICryptoParserParameterMap;
  const SecureString a("first"), b("second, long enough for a block of its own");
  CheckOption<M, unsigned long>("CryptoParameterTimeout", &M::SetTimeout, &M::GetTimeout, 0, ~0UL);
  CheckOption<M>("CryptoParameterPadding", &M::SetPadding, &M::GetPadding, a, b);
  CheckOption<M>("CryptoParameterCipherMode", &M::SetCipherMode, &M::GetCipherMode, a, b);
  CheckOption<M>("CryptoParameterIV", &M::SetIv, &M::GetIv, ByteArray(), ByteArray(16, 1));
  CheckOption<M, unsigned char>("CryptoParameterHashAlgoPaddingMode", &M::SetHashAlgoX931, &M::GetHashAlgoX931, 0, 255);
  CheckOption<M>("CryptoParameterOAEPEncodingParamMode", &M::SetOaepEncodingParam, &M::GetOaepEncodingParam,
                 ByteArray(3, 3), ByteArray());
  CheckOption<M, unsigned char>("CryptoParameterPkcs1OperationMode", &M::SetPkcs1Operation, &M::GetPkcs1Operation, 0,
                                1);
  CheckOption<M>("CryptoParameterTypePersistence", &M::SetKeyPersistence, &M::GetKeyPersistence, a, b);
  CheckOption<M>("CryptoParameterKeyLabel", &M::SetKeyLabel, &M::GetKeyLabel, a, b);
  CheckOption<M>("CryptoParameterComponentIdentifier", &M::SetComponentIdentifier, &M::GetComponentIdentifier, a, b);
  CheckOption<M>("CryptoParameterComponentName", &M::SetComponentName, &M::GetComponentName, a, b);
}

TEST(Filter, StoresEachCriterionUnderItsKey) {
  using F = ICryptoParserFilter;
  const SecureString a("first"), b("second, long enough for a block of its own");
  CheckOption<F>("CryptoFilterOID", &F::AddOIDCriteria, &F::GetOIDCriteria, SecureStringList(3, a),
                 SecureStringList(2, b));
  CheckOption<F, bool>("CryptoFilterCritical", &F::SetCriticalCriterion, &F::GetCriticalCriterion, true, false);
  CheckOption<F, bool>("CryptoFilterContainsPrivateKey", &F::SetPrivateKeyCriterion, &F::GetPrivateKeyCriterion, false,
                       true);
  CheckOption<F>("CryptoFilterLabel", &F::SetLabel, &F::GetLabel, a, b);
  CheckOption<F>("CryptoFilterComponentIdentifier", &F::SetComponentIdentifier, &F::GetComponentIdentifier, a, b);
  CheckOption<F>("CryptoFilterComponentName", &F::SetComponentName, &F::GetComponentName, a, b);
}

TEST(ParameterMap, FipsModeIsThePresenceOfItsKey) {
  const auto map = NewParameters();
  EXPECT_FALSE(map->GetFIPSMode());
  map->SetFIPSMode(true);
  unsigned char stored = 0;
  EXPECT_TRUE(map->Get("CryptoParameterFIPSMode", stored));
  EXPECT_EQ(stored, 1);
  EXPECT_TRUE(map->GetFIPSMode());
  map->SetFIPSMode(false);
  EXPECT_FALSE(map->Get("CryptoParameterFIPSMode"));
  EXPECT_FALSE(map->GetFIPSMode());
  map->Add("CryptoParameterFIPSMode", static_cast<const unsigned char&>(0));
  EXPECT_TRUE(map->GetFIPSMode()) << "whatever the value";
}

TEST(DataMap, EraseClearAndUntypedValues) {
  DataMap map;
  map.Add("a", ByteArray(2, 2));
  map.Add("b", SecureString("text"));
  RZData any;
  EXPECT_TRUE(map.Get("a", any));
  EXPECT_EQ(any.byteArray(), ByteArray(2, 2));
  EXPECT_TRUE(any.string().empty()) << "another type reads as nothing";
  DataMap copy = map;
  map.erase("a");
  map.erase("not there");
  EXPECT_FALSE(map.Get("a"));
  EXPECT_TRUE(map.Get("b"));
  map.clear();
  EXPECT_FALSE(map.Get("b", any));
  EXPECT_TRUE(copy.Get("a")) << "a copy is its own";
}

}  // namespace
