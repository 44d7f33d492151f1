// rzcrypto: every service of the library in a person's hands.

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "commands.h"
#include "io.h"
#include "rz/log.h"

namespace rzcrypto {
namespace {

/// A standard descriptor that is closed would be that of the next file to be opened, and what was meant for the one
/// would go to the other. It is taken by something that can be neither read nor written.
void HoldStandardDescriptors() {
  for (const int descriptor : {0, 1, 2}) {
    if (fcntl(descriptor, F_GETFD) < 0) static_cast<void>(open("/", O_PATH | O_CLOEXEC));
  }
}

using Command = void (*)(CLI::App& app, Outcome& outcome);

constexpr Command kCommands[] = {
    AddCert, AddDigest, AddMac,  AddEncrypt, AddDecrypt, AddVerify,     AddPadding,
    AddKey,  AddRandom, AddGuid, AddTlv,     AddDer,     AddAlgorithms,
};

constexpr const char* kFooter =
    "Exit codes: 0 yes or done, 1 no, 2 usage, 3 bad input, 4 cannot read or write, 5 not supported, 6 failed inside.\n"
    "With several inputs each is done, and the largest code wins. See rzcrypto(1).";

int Run(int argc, char** argv) {
  Outcome outcome;
  CLI::App app("rzcrypto: digests, keys, MACs, ciphers, certificates and encodings of the card middleware", "rzcrypto");
  app.set_version_flag("--version", "rzcrypto " RZCRYPTO_VERSION);
  app.add_flag_callback(
      "--trace",
      [] {
        rzlogSetLevels(~0UL);
        rzlogSetStandardErrorSink();
      },
      "Write every call of the library to standard error (values in plain text)");
  app.footer(kFooter);
  app.require_subcommand(1);
  app.fallthrough();
  for (const Command add : kCommands) add(app, outcome);
  try {
    app.parse(argc, argv);
    FlushOutput();
  } catch (const CLI::Success& asked) {  // --help, --version
    app.exit(asked);
    std::cout.flush();
    FlushOutput();
    if (!std::cout) throw OutputFailure{std::strerror(errno)};
  } catch (const CLI::ParseError& error) {
    const auto* word = std::find_if(argv + 1, argv + argc, [](const char* argument) { return argument[0] != '-'; });
    const bool unknown = app.get_subcommands().empty() && word != argv + argc;
    Outcome::Note(unknown ? *word : "usage", unknown ? "no such command" : error.what());
    std::fprintf(stderr, "See rzcrypto --help.\n");
    outcome.Add(Exit::kUsage);
  }
  return static_cast<int>(outcome.code());
}

}  // namespace
}  // namespace rzcrypto

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is reported as a failing write
  rzcrypto::HoldStandardDescriptors();
  try {
    return rzcrypto::Run(argc, argv);
  } catch (const rzcrypto::OutputFailure& failure) {
    std::fprintf(stderr, "rzcrypto: standard output: %s\n", failure.message.c_str());
    return static_cast<int>(rzcrypto::Exit::kReadOrWrite);
  } catch (const rzcrypto::Failure& failure) {
    std::fprintf(stderr, "rzcrypto: %s\n", failure.message.c_str());
    return static_cast<int>(failure.code);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "rzcrypto: %s\n", error.what());
    return static_cast<int>(rzcrypto::Exit::kInside);
  }
}
