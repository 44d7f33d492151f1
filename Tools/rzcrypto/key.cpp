// rzcrypto key: the noun; its verbs have files of their own.

#include "key_commands.h"

namespace rzcrypto {

void AddKey(CLI::App& app, Outcome& outcome) {
  auto* key = app.add_subcommand("key", "Make keys, and look at them");
  key->require_subcommand(1);
  key->footer("Example: rzcrypto key generate -a RSA --bits 2048 -o key.pem");
  AddKeyGenerate(*key, outcome);
  AddKeyShow(*key, outcome);
}

}  // namespace rzcrypto
