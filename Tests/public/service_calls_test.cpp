// Ciphers, MACs, signatures and digests call by call: states, options and keys, and what is refused. service_calls.txt
// tells.
#include <set>
#include <sstream>

#include "support/caught.h"
#include "support/doubles.h"
#include "support/rsa.h"
#include "support/services.h"
#include "tavo/framework/cipher.h"
#include "tavo/framework/digest.h"
#include "tavo/framework/mac.h"
#include "tavo/framework/signature.h"

using namespace Tavo::Framework;

namespace {

TestKey key("AES", ByteArray(24, 7));
TestCertificate certificate(&key);
ByteArray data, out;

IPublicKey& PublicKey() { return *reference::SmallPair().publicKey; }
IKey& PrivateKey() { return *reference::SmallPair().privateKey; }
IPublicKey& ZeroModulus() {
  static const auto key = Own(IRSAPublicKey::Create(NewAlgorithm("RSA").get(), ByteArray(1), ByteArray(1, 3)));
  return *key;
}

template <class Service>
using Calls = std::map<std::string, std::function<void(Service&)>>;

const Calls<Cipher> kCipher = {
    {"Init without key", [](auto& c) { c.Init(4, static_cast<IKey*>(nullptr)); }},
    {"Init without certificate", [](auto& c) { c.Init(4, static_cast<ICertificate*>(nullptr)); }},
    {"Init operation -1", [](auto& c) { c.Init(-1, &key); }},
    {"Init operation 4", [](auto& c) { c.Init(4, &key); }},
    {"Init certificate operation -1", [](auto& c) { c.Init(-1, &certificate); }},
    {"Init certificate operation 4", [](auto& c) { c.Init(4, &certificate); }},
    {"Init encrypt", [](auto& c) { c.Init(ENCRYPT_MODE, &key); }},
    {"Init decrypt", [](auto& c) { c.Init(DECRYPT_MODE, &key); }},
    {"Init wrap", [](auto& c) { c.Init(WRAP_MODE, &key); }},
    {"Init unwrap", [](auto& c) { c.Init(UNWRAP_MODE, &key); }},
    {"Init encrypt with public key", [](auto& c) { c.Init(ENCRYPT_MODE, &PublicKey()); }},
    {"Init encrypt with private key", [](auto& c) { c.Init(ENCRYPT_MODE, &PrivateKey()); }},
    {"Init encrypt with zero modulus", [](auto& c) { c.Init(ENCRYPT_MODE, &ZeroModulus()); }},
    {"Init decrypt with private key", [](auto& c) { c.Init(DECRYPT_MODE, &PrivateKey()); }},
    {"Init decrypt with public key", [](auto& c) { c.Init(DECRYPT_MODE, &PublicKey()); }},
    {"Update", [](auto& c) { c.Update(data); }},
    {"DoFinal with data", [](auto& c) { c.DoFinal(data, out); }},
    {"DoFinal", [](auto& c) { c.DoFinal(out); }},
    {"Unwrap", [](auto& c) { c.Unwrap(data, c.GetAlgorithm()); }},
    {"Wrap", [](auto& c) { c.Wrap(&key, out); }},
};
const Calls<MAC> kMac = {
    {"Init without key", [](auto& m) { m.Init(nullptr); }},
    {"Init", [](auto& m) { m.Init(&key); }},
    {"Update", [](auto& m) { m.Update(data); }},
    {"Mac with data", [](auto& m) { m.Mac(data, out); }},
    {"Mac", [](auto& m) { m.Mac(out); }},
};
const Calls<Signature> kSignature = {
    {"Init without private key", [](auto& s) { s.Init(static_cast<IPrivateKey*>(nullptr)); }},
    {"Init without public key", [](auto& s) { s.Init(static_cast<IPublicKey*>(nullptr)); }},
    {"Init private key", [](auto& s) { s.Init(dynamic_cast<IPrivateKey*>(&PrivateKey())); }},
    {"Init public key", [](auto& s) { s.Init(&PublicKey()); }},
    {"Init foreign key", [](auto& s) { s.Init(&key); }},
    {"Init zero modulus", [](auto& s) { s.Init(&ZeroModulus()); }},
    {"Update", [](auto& s) { s.Update(data); }},
    {"Verify with data", [](auto& s) { s.Verify(data, data); }},
    {"Verify", [](auto& s) { s.Verify(data); }},
    {"Sign with data", [](auto& s) { s.Sign(data, out); }},
    {"Sign", [](auto& s) { s.Sign(out); }},
};

const Calls<MessageDigest> kDigest = {
    {"Length", [](auto& d) { d.GetDigestLength(); }},
    {"Digest", [](auto& d) { d.Digest(out); }},
    {"Digest with data", [](auto& d) { d.Digest(data, out); }},
};

/// Sets an option, the key or the data. Returns false for a line that does not.
bool Set(ICryptoParserParameterMap& map, const std::string& line) {
  const size_t blank = std::min(line.find(' '), line.size());
  const std::string what = line.substr(0, blank), value = line.substr(std::min(blank + 1, line.size()));
  if (what == "padding") {
    map.SetPadding(value.c_str());
  } else if (what == "mode") {
    map.SetCipherMode(value.c_str());
  } else if (what == "iv") {
    map.SetIv(RepeatedHex(value));
  } else if (what == "label") {
    map.SetOaepEncodingParam(RepeatedHex(value));
  } else if (what == "data") {
    data = RepeatedHex(value);
  } else if (what == "key") {
    std::string algorithm, format, octets;
    std::getline(std::istringstream(value) >> algorithm >> format, octets);
    key.algorithm = algorithm == "-" ? nullptr : NewAlgorithm(algorithm.c_str());
    key.format = format.c_str();
    key.bytes = RepeatedHex(octets);
  } else {
    return false;
  }
  return true;
}

template <class Service>
void Follow(const std::string& algorithm, const Calls<Service>& calls, const std::string& file,
            const std::vector<std::string>& script) {
  Made<Service> service(algorithm.c_str());
  if constexpr (std::is_same_v<Service, Cipher> || std::is_same_v<Service, Signature>) {
    EXPECT_EQ(service->GetAlgorithm(), service.algorithm.get()) << "borrowed";
  }
  Set(*service.map, "key AES RAW 07*24");
  Set(*service.map, "data 010101");
  for (const std::string& line : script) {
    SCOPED_TRACE(algorithm + ": " + line);
    if (line == "new") service.Renew();
    if (line == "new" || Set(*service.map, line)) continue;
    const size_t end = std::min({line.find(" -> "), line.find(" = "), line.size()});
    out.assign(2, 9);
    const Caught caught = Catch([&] { calls.at(line.substr(0, end))(*service.service); });
    std::ostringstream seen;
    if (caught.thrown) {
      EXPECT_EQ(caught.file, file);
      EXPECT_EQ(out, ByteArray(2, 9)) << "an output is written on success only";
      seen << " -> " << caught.id << " " << caught.line << " " << caught.message;
      if (!caught.causes.empty()) seen << " < " << caught.causes;
      if (line.find(" @") != std::string::npos) seen << " @" << caught.causeLine;
    } else if (end != line.size()) {
      seen << " = " << ToHex(out);
    }
    EXPECT_EQ(seen.str(), line.substr(end));
  }
}

class ServiceCalls : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(ServiceCalls, Answer) {
  std::string heading = GetParam().front(), service, file;
  const size_t bracket = heading.find(']');
  std::istringstream(heading.substr(bracket + 1)) >> service >> file;
  std::istringstream names(heading.substr(1, bracket - 1));
  const std::vector<std::string> script(GetParam().begin() + 1, GetParam().end());
  const std::set<std::string> services = {"Cipher", "MAC", "Signature", "MessageDigest"};
  ASSERT_TRUE(services.count(service) == 1 && bracket > 1 && !script.empty()) << heading;
  for (std::string name; names >> name;) {
    if (service == "Cipher") Follow(name, kCipher, file, script);
    if (service == "MAC") Follow(name, kMac, file, script);
    if (service == "Signature") Follow(name, kSignature, file, script);
    if (service == "MessageDigest") Follow(name, kDigest, file, script);
  }
}

INSTANTIATE_TEST_SUITE_P(Documented, ServiceCalls, testing::ValuesIn(LoadParagraphs("service_calls.txt")));

}  // namespace
