// rzcrypto tlv: BER-TLV objects shown as a tree, read and changed by path.

#include <memory>

#include "commands.h"
#include "io.h"
#include "tlv_verbs.h"

namespace rzcrypto {

namespace {

constexpr const char* kPath = "TAG/TAG... in hex, from the top; TAG[n] is the n-th such one, from 0; TAG[*] each";
constexpr const char* kNewPath = "TAG/TAG... in hex, from the top; the last TAG is the new one";
constexpr const char* kValue = "Hex, or @ and the name of a file (binary, hex or PEM)";

struct Verb {
  Verb(CLI::App& tlv, const char* name, const char* description, void (*run)(const tlv::Options&), Outcome& outcome)
      : command(tlv.add_subcommand(name, description)), options(std::make_shared<tlv::Options>()) {
    command->callback(
        [run, options = options, &outcome] { outcome.Attempt(InputName(options->file), [&] { run(*options); }); });
  }

  void AddPath(const char* description, std::string (*check)(const std::string&)) {
    command->add_option("PATH", options->path, description)->required()->check(check);
  }
  void AddValue() { command->add_option("VALUE", options->value, kValue)->required()->check(tlv::CheckValue); }
  void AddInput() {
    command->add_option("FILE", options->file, "Binary, hex with any white space, or PEM; - or none is standard input");
    command->add_flag("--binary", options->binary, "The input is binary, even if it looks like hex or PEM");
    command->add_flag("--padded", options->padded, "All 00 or all FF at the end is padding, as in a card's files");
    command->add_flag("--json", options->json, "Print JSON");
  }
  void AddHex() { command->add_flag("--hex", options->hex, "Print hex, not binary; always so on a terminal"); }

  CLI::App* command;
  std::shared_ptr<tlv::Options> options;
};

void AddShow(CLI::App& tlv, Outcome& outcome) {
  Verb verb(tlv, "show", "Print the objects as a tree: offset, tag, length, name, value in hex and text", tlv::Show,
            outcome);
  verb.AddInput();
  verb.command
      ->add_option("--into", verb.options->into, "Read the value of this primitive tag as objects too; repeatable")
      ->allow_extra_args(false)
      ->check(tlv::CheckTag);
  verb.command->add_option("--names", verb.options->names, "File with more names: on each line a tag and its name");
  verb.command->add_flag("--brief", verb.options->brief, "Print no more than 16 bytes of a value");
  verb.command->footer(
      "Examples:\n"
      "  rzcrypto tlv show certificate.pem\n"
      "  echo '7F4E 04 5F29 01 00' | rzcrypto tlv show --json\n"
      "  rzcrypto tlv show --into 53 --into 70 piv-auth.bin\n"
      "PIV data objects are primitive, tag 53, yet hold objects; inside them nothing is read further without --into.");
}

void AddGet(CLI::App& tlv, Outcome& outcome) {
  Verb verb(tlv, "get", "Print the value of an object; with [*] of each, in hex, one on a line", tlv::Get, outcome);
  verb.AddPath(kPath, tlv::CheckPath);
  verb.AddInput();
  verb.AddHex();
  verb.command->footer("Example: rzcrypto tlv get 53/70 piv-auth.bin > certificate.der");
}

void AddSet(CLI::App& tlv, Outcome& outcome) {
  Verb verb(tlv, "set", "Print the input with another value for an object that is there", tlv::Set, outcome);
  verb.AddPath(kPath, tlv::CheckPath);
  verb.AddValue();
  verb.AddInput();
  verb.AddHex();
  verb.command->footer(
      "Examples:\n"
      "  rzcrypto tlv set 7F21/7F4E/5F20 4445303031 cvc.bin > changed.bin\n"
      "  rzcrypto tlv set 53/70 @certificate.pem piv-auth.bin > changed.bin");
}

void AddAppend(CLI::App& tlv, Outcome& outcome) {
  Verb verb(tlv, "append", "Print the input with a new object, the last one in its place", tlv::Append, outcome);
  verb.AddPath(kNewPath, tlv::CheckNewPath);
  verb.AddValue();
  verb.AddInput();
  verb.AddHex();
  verb.command->footer("Example: rzcrypto tlv append 6F/A5/5F2D 656E fci.bin > changed.bin");
}

void AddRemove(CLI::App& tlv, Outcome& outcome) {
  Verb verb(tlv, "remove", "Print the input without an object", tlv::Remove, outcome);
  verb.AddPath(kPath, tlv::CheckPath);
  verb.AddInput();
  verb.AddHex();
  verb.command->footer(
      "Examples:\n"
      "  rzcrypto tlv remove '7F4E/5F37[1]' cvc.bin > changed.bin\n"
      "  rzcrypto tlv remove '70[*]' --hex records.hex");
}

}  // namespace

void AddTlv(CLI::App& app, Outcome& outcome) {
  auto* tlv = app.add_subcommand("tlv", "Show, read and change BER-TLV objects, such as a card's files");
  tlv->require_subcommand(1);
  tlv->footer(
      "Offsets and lengths are decimal, tags and values hex. set, append and remove print the whole input; all bytes "
      "of\n"
      "the other objects stay as they are, and only the lengths of the objects around the place are written anew.\n"
      "Exit code 1: no such object. 3: the input is no BER-TLV; the message has the offset of the object at fault.\n"
      "Example: rzcrypto tlv show FILE");
  AddShow(*tlv, outcome);
  AddGet(*tlv, outcome);
  AddSet(*tlv, outcome);
  AddAppend(*tlv, outcome);
  AddRemove(*tlv, outcome);
}

}  // namespace rzcrypto
