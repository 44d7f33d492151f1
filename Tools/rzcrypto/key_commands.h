#ifndef RZCRYPTO_KEY_COMMANDS_H
#define RZCRYPTO_KEY_COMMANDS_H

#include "commands.h"

namespace rzcrypto {

/// The verbs of rzcrypto key; one file for each.
void AddKeyGenerate(CLI::App& key, Outcome& outcome);
void AddKeyShow(CLI::App& key, Outcome& outcome);

}  // namespace rzcrypto

#endif
