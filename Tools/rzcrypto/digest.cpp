// rzcrypto digest: checksum lines that sha256sum and its siblings read back, and the check of such lines.

#include <memory>
#include <vector>

#include "checksum_line.h"
#include "commands.h"
#include "encoding.h"
#include "io.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

struct Options {
  std::vector<std::string> algorithms;
  std::vector<std::string> files;
  std::string check;
  bool tag = false;
  bool json = false;
};

std::string HexDigest(const std::string& algorithm, const ByteArray& data) {
  const auto digest = Own(MessageDigest::Create(NewAlgorithm(algorithm.c_str()).get(), NewParameters().get()));
  ByteArray hash;
  digest->Digest(data, hash);
  return Hex(hash);
}

/// Whether the digest service has the algorithm; the answer comes before any input is read.
void Require(const std::string& algorithm) {
  Own(MessageDigest::Create(NewAlgorithm(algorithm.c_str()).get(), NewParameters().get()))->GetDigestLength();
}

void PrintDigests(const Options& options, Outcome& outcome) {
  std::vector<std::string> usable;
  for (const auto& algorithm : options.algorithms) {
    if (outcome.Attempt(algorithm, [&] { Require(algorithm); })) usable.push_back(algorithm);
  }
  if (usable.empty() && !options.json) return;
  const bool tag = options.tag || options.algorithms.size() > 1;
  Json list = Json::array();
  for (const auto& file : options.files) {
    const bool done = outcome.Attempt(InputName(file), [&] {
      const ByteArray data = ReadInput(file);
      for (const auto& algorithm : usable) {
        const ChecksumLine line{algorithm, HexDigest(algorithm, data), file};
        if (options.json) {
          list.push_back({{"file", file}, {"algorithm", algorithm}, {"size", data.size()}, {"digest", line.digest}});
        } else {
          Print(tag ? TaggedLine(line) : PlainLine(line));
        }
      }
    });
    if (!done) list.push_back({{"file", file}, {"error", outcome.reason()}});
  }
  if (options.json) PrintJson({{"digests", list}});
}

struct Tally {
  size_t checked = 0;
  size_t failed = 0;
  size_t malformed = 0;
};

void CheckLine(const ChecksumLine& line, const Options& options, Tally& tally, Json& list, Outcome& outcome) {
  ++tally.checked;
  std::string result = "FAILED open or read";
  outcome.Attempt(InputName(line.file), [&] {
    const bool equal = HexDigest(line.algorithm, ReadInput(line.file)) == line.digest;
    if (!equal) {
      ++tally.failed;
      outcome.Add(Exit::kNo);
    }
    result = equal ? "OK" : "FAILED";
  });
  if (options.json) {
    list.push_back({{"file", line.file}, {"algorithm", line.algorithm}, {"result", result}});
  } else {
    Print(ShownName(line.file) + ": " + result + "\n");
  }
}

void CheckDigests(const Options& options, Outcome& outcome) {
  const std::string fixed = options.algorithms.size() == 1 ? options.algorithms.front() : "";
  Tally tally;
  Json list = Json::array();
  outcome.Attempt(InputName(options.check), [&] {
    const ByteArray text = ReadInput(options.check);
    for (const auto& entry : ParseChecksums(AsText(text), fixed)) {
      if (entry) {
        CheckLine(*entry, options, tally, list, outcome);
      } else {
        ++tally.malformed;
      }
    }
    if (tally.checked == 0) throw Failure{Exit::kBadInput, "no checksum line found"};
  });
  if (tally.malformed > 0 && tally.checked > 0) {
    Outcome::Note(InputName(options.check), std::to_string(tally.malformed) + " line(s) are no checksum lines");
  }
  if (tally.failed > 0) {
    Outcome::Note(InputName(options.check), std::to_string(tally.failed) + " of " + std::to_string(tally.checked) +
                                                " computed digests did NOT match");
  }
  if (options.json) PrintJson({{"checks", list}, {"malformed", tally.malformed}});
}

}  // namespace

void AddDigest(CLI::App& app, Outcome& outcome) {
  auto* command = app.add_subcommand("digest", "Hash files, or check the hashes of files");
  auto options = std::make_shared<Options>();
  command
      ->add_option("-a,--algorithm", options->algorithms,
                   "SHA1, SHA224, SHA256 (default), SHA384, SHA512 or MD5; repeatable")
      ->allow_extra_args(false);
  command->add_option("FILE", options->files, "Files; - or none is standard input");
  command->add_option("-c,--check", options->check, "Check the files named in the checksum lines of this file");
  command->add_flag("--tag", options->tag, "Lines that name the algorithm (always so with several algorithms)");
  command->add_flag("--json", options->json, "Print JSON");
  command->footer(
      "Examples:\n"
      "  rzcrypto digest -a SHA256 -a SHA512 *.der\n"
      "  rzcrypto digest firmware.bin | sha256sum -c\n"
      "  rzcrypto digest --check SHA256SUMS");
  command->callback([options, command, &outcome] {
    if (command->count("--check") > 0) {
      if (!options->files.empty()) throw CLI::ValidationError("--check", "takes no other files");
      CheckDigests(*options, outcome);
      return;
    }
    if (options->algorithms.empty()) options->algorithms = {"SHA256"};
    if (options->files.empty()) options->files = {"-"};
    PrintDigests(*options, outcome);
  });
}

}  // namespace rzcrypto
