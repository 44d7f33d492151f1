// Where the certificates of a `cert` command come from: files, PEM bundles, folders, standard input.

#include "cert_input.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <utility>

#include "encoding.h"
#include "io.h"
#include "progress.h"
#include "tavo/der.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

constexpr size_t kChunk = size_t{1} << 16;
constexpr size_t kLargest = size_t{1} << 24;  // of one certificate, in whatever encoding
constexpr std::string_view kBegin = "-----BEGIN ";
constexpr std::string_view kEnd = "-----END ";
constexpr unsigned char kSequence = 0x30;
constexpr size_t kNowhere = std::string_view::npos;

bool IsCertificateLabel(const std::string& label) {
  return label == "CERTIFICATE" || label == "X509 CERTIFICATE" || label == "TRUSTED CERTIFICATE";
}

/// CertificateFile reads one file certificate by certificate.
class CertificateFile {
 public:
  explicit CertificateFile(const std::string& path) : m_input(path) {}

  /// Next returns the octets of the next certificate, or nothing at the end. Throws Failure for a block that is none;
  /// the next call goes on behind it.
  std::optional<ByteArray> Next() {
    for (;;) {
      if (!m_behind.empty()) return First(std::exchange(m_behind, ByteArray()), true);
      std::optional<Block> block = NextBlock();
      if (!block) return std::nullopt;
      if (block->label.empty()) return First(std::move(block->bytes), true);
      if (IsCertificateLabel(block->label)) return First(std::move(block->bytes), false);
      m_otherLabel = block->label;
    }
  }

  /// The label of a block that was passed over, or an empty text.
  const std::string& otherLabel() const { return m_otherLabel; }

 private:
  /// The first certificate alone. Where others may follow, octets behind it that begin as one wait; what else stands
  /// there (the padding of a card's file, the trust settings of openssl) is no part of it.
  ByteArray First(ByteArray bytes, bool othersMayFollow) {
    std::uint64_t whole = 0;
    if (CSASNUtil_DERDetermineEncodingLength(bytes.data(), bytes.size(), &whole) != CSResult_OK ||
        whole >= bytes.size() || bytes.front() != kSequence) {
      return bytes;
    }
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(whole);
    if (othersMayFollow && *end == kSequence) m_behind.assign(end, bytes.end());
    bytes.resize(whole);
    return bytes;
  }

  std::optional<Block> NextBlock() {
    if (m_done) return std::nullopt;
    const size_t begin = Find(kBegin, 0);
    if (begin == kNowhere) {
      m_done = true;
      if (m_pem) return std::nullopt;
      return std::move(Decode(m_text).blocks.front());
    }
    m_pem = true;
    m_at += begin;
    const size_t end = Find(kEnd, kBegin.size());
    const size_t next = Text().substr(0, end).find(kBegin, kBegin.size());  // there when this block has no end
    const size_t newline = next != kNowhere ? next : Find("\n", end);       // may read on: first this, then the size
    const size_t lineEnd = std::min(newline, Text().size());
    ByteArray text;
    AssignBytes(text, m_text.data() + m_at, lineEnd);
    m_at += lineEnd;
    return std::move(Decode(text).blocks.front());
  }

  /// The place of `what` at or behind `from`, reading on as needed; kNowhere when the file ends before.
  size_t Find(std::string_view what, size_t from) {
    for (;;) {
      const size_t at = Text().find(what, from);
      if (at != kNowhere) return at;
      if (m_pem && what == kBegin && Text().size() > what.size()) m_at = m_text.size() - what.size();
      if (!Fill()) return kNowhere;
    }
  }

  bool Fill() {
    static ByteArray chunk(kChunk);
    m_done = true;  // unless the rest succeeds
    if (Text().size() > kLargest) throw Failure{Exit::kBadInput, "more than 16 MiB without a certificate"};
    const size_t count = m_input.Read(chunk.data(), chunk.size());
    m_done = false;
    m_text.erase(m_text.begin(), m_text.begin() + static_cast<std::ptrdiff_t>(m_at));
    m_at = 0;
    AppendBytes(m_text, chunk.data(), count);
    return count > 0;
  }

  std::string_view Text() const { return {reinterpret_cast<const char*>(m_text.data()) + m_at, m_text.size() - m_at}; }

  Input m_input;
  ByteArray m_text;  // what was read; a bundle may hold a private key too
  size_t m_at = 0;   // where the unused part of it begins
  bool m_pem = false;
  bool m_done = false;
  ByteArray m_behind;  // what follows the last certificate and begins as one
  std::string m_otherLabel;
};

/// Walk hands out the certificates of the paths.
class Walk {
 public:
  Walk(bool progress, const std::function<void(const CertificateItem& item)>& visit)
      : m_progress(progress, "certificates"), m_visit(visit) {}

  void Path(const std::string& path) {
    struct stat status {};
    if (path != "-" && stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
      Folder(path);
    } else {
      File(path);
    }
  }

 private:
  void Folder(const std::string& path) {
    std::vector<std::string> files;
    std::error_code error;
    for (std::filesystem::directory_iterator it(path, error), end; !error && it != end; it.increment(error)) {
      if (it->path().filename().native().front() == '.' || !it->is_regular_file(error)) continue;  // a pipe would wait
      files.push_back(it->path().native());
    }
    if (error) {
      Fail(path, {Exit::kReadOrWrite, error.message()});
    } else if (files.empty()) {
      Fail(path, {Exit::kBadInput, "no file in this folder"});
    }
    std::sort(files.begin(), files.end());
    for (const auto& file : files) File(file);
  }

  /// A file's certificates, numbered from 1 when there are several.
  void File(const std::string& path) {
    try {
      CertificateFile file(path);
      std::optional<CertificateItem> item = NextItem(file);
      if (!item) {
        throw Failure{Exit::kBadInput, "no certificate in it, but " + file.otherLabel()};
      }
      for (size_t number = 1; item; ++number) {
        auto next = NextItem(file);
        item->name = InputName(path) + (next || number > 1 ? "#" + std::to_string(number) : "");
        item->path = path;
        item->number = number;
        Visit(*item);
        item = std::move(next);
      }
    } catch (const Failure& failure) {
      Fail(path, failure);
    }
  }

  static std::optional<CertificateItem> NextItem(CertificateFile& file) {
    try {
      auto bytes = file.Next();
      if (!bytes) return std::nullopt;
      return CertificateItem{"", "", 1, std::move(*bytes), std::nullopt};
    } catch (const Failure& failure) {
      return CertificateItem{"", "", 1, {}, failure};
    }
  }

  void Fail(const std::string& path, const Failure& failure) { Visit({InputName(path), path, 1, {}, failure}); }

  void Visit(const CertificateItem& item) {
    m_progress.Step();
    m_visit(item);
  }

  Progress m_progress;
  const std::function<void(const CertificateItem& item)>& m_visit;
};

}  // namespace

void ForEachCertificate(const std::vector<std::string>& paths, bool progress,
                        const std::function<void(const CertificateItem& item)>& visit) {
  Walk walk(progress, visit);
  for (const auto& path : paths) walk.Path(path);
}

std::string Damage(const ByteArray& bytes) {
  if (bytes.empty()) return "empty";
  std::uint64_t whole = 0;
  const bool sequence = bytes.front() == kSequence;
  if (!sequence || CSASNUtil_DERDetermineEncodingLength(bytes.data(), bytes.size(), &whole) != CSResult_OK) {
    return "neither DER nor PEM nor hex of a certificate";
  }
  if (whole <= bytes.size()) return "";
  return "cut short: " + std::to_string(bytes.size()) + " of " + std::to_string(whole) + " bytes";
}

}  // namespace rzcrypto
