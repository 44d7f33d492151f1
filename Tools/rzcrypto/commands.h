#ifndef RZCRYPTO_COMMANDS_H
#define RZCRYPTO_COMMANDS_H

#include <CLI/CLI.hpp>

#include "outcome.h"

/// A command adds its subcommand with options, help and example to `app`; the subcommand's callback does the work and
/// reports into `outcome`. One file for each command; the list is in main.cpp.
namespace rzcrypto {

void AddAlgorithms(CLI::App& app, Outcome& outcome);
void AddCert(CLI::App& app, Outcome& outcome);
void AddDecrypt(CLI::App& app, Outcome& outcome);
void AddDer(CLI::App& app, Outcome& outcome);
void AddDigest(CLI::App& app, Outcome& outcome);
void AddEncrypt(CLI::App& app, Outcome& outcome);
void AddGuid(CLI::App& app, Outcome& outcome);
void AddKey(CLI::App& app, Outcome& outcome);
void AddMac(CLI::App& app, Outcome& outcome);
void AddPadding(CLI::App& app, Outcome& outcome);
void AddRandom(CLI::App& app, Outcome& outcome);
void AddTlv(CLI::App& app, Outcome& outcome);
void AddVerify(CLI::App& app, Outcome& outcome);

}  // namespace rzcrypto

#endif
