// rzcrypto cert rank: all certificates by their priority as the default, with the reasons.

#include <algorithm>
#include <limits>

#include "cert_commands.h"
#include "cert_conditions.h"
#include "json_list.h"
#include "printable.h"
#include "spool.h"
#include "tavo/framework/certproperties.h"

namespace rzcrypto {

using namespace Tavo::Framework;

namespace {

constexpr int kLogon = 4;  // the parts of a priority
constexpr int kAgent = 2;
constexpr int kFileSystem = 1;

/// What decides the order of one certificate. The texts wait in the spool.
struct Row {
  std::int64_t expires;  // seconds since 1970
  Spool::Place place;
  int priority;
};

/// The texts of a row.
struct Texts {
  std::string file;
  std::string subject;
  std::string expires;
  std::string period;
  std::string why;
  std::string json;  // the entry without its rank, when JSON is wanted
};

bool Before(const Row& a, const Row& b) {
  return a.priority != b.priority ? a.priority > b.priority : a.expires > b.expires;
}

bool Tied(const Row& a, const Row& b) { return a.priority == b.priority; }

/// The ranking: rows in the order of the files, then sorted.
class Ranking {
 public:
  void Add(int priority, std::int64_t expires, const Texts& texts) {
    m_fileWidth = std::max(m_fileWidth, Width(texts.file));
    m_subjectWidth = std::max(m_subjectWidth, Width(texts.subject));
    m_rows.push_back({expires,
                      m_spool.Add({texts.file, texts.subject, texts.expires, texts.period, texts.why, texts.json}),
                      priority});
  }
  void Sort() { std::stable_sort(m_rows.begin(), m_rows.end(), Before); }

  size_t size() const { return m_rows.size(); }
  const Row& row(size_t index) const { return m_rows[index]; }
  Texts texts(size_t index) {
    auto fields = m_spool.Read(m_rows[index].place);
    return {fields[0], fields[1], fields[2], fields[3], fields[4], fields[5]};
  }
  bool HasDefault() const { return !m_rows.empty() && m_rows.front().priority > 0; }
  bool IsTied(size_t index) const {
    if (m_rows[index].priority == 0) return false;
    return (index > 0 && Tied(m_rows[index - 1], m_rows[index])) ||
           (index + 1 < size() && Tied(m_rows[index], m_rows[index + 1]));
  }
  /// How many certificates share the first one's priority.
  size_t CountFirst() const {
    return static_cast<size_t>(
        std::count_if(m_rows.begin(), m_rows.end(), [&](const Row& row) { return Tied(row, m_rows.front()); }));
  }
  size_t fileWidth() const { return m_fileWidth; }
  size_t subjectWidth() const { return m_subjectWidth; }

 private:
  Spool m_spool;
  std::vector<Row> m_rows;
  size_t m_fileWidth = 0;
  size_t m_subjectWidth = 0;
};

std::string Gained(int priority) {
  std::vector<std::string> parts;
  if ((priority & kLogon) != 0) parts.emplace_back("smart-card logon (4)");
  if ((priority & kAgent) != 0) parts.emplace_back("request agent (2)");
  if ((priority & kFileSystem) != 0) parts.emplace_back("file encryption (1)");
  std::string text;
  for (const auto& part : parts) text += (text.empty() ? "" : " + ") + part;
  return text;
}

/// Why the certificate has its priority, and what keeps it from more.
std::string Why(int priority, bool ignoreFileSystem, const CertificateView& view) {
  std::vector<std::string> reasons;
  if (priority != 0) reasons.push_back(Gained(priority));
  if ((priority & kLogon) == 0) {
    const Shortcomings found = FindShortcomings(view);
    if (!found.broken.empty()) reasons.push_back("no rank, its " + Joined(found.broken) + " cannot be read");
    if (!found.missing.empty()) reasons.push_back("for logon it lacks " + Joined(found.missing));
  }
  if (ignoreFileSystem && view.HasFileEncryption()) reasons.emplace_back("file encryption is ignored");
  std::string why;
  for (const auto& reason : reasons) why += (why.empty() ? "" : "; ") + reason;
  return why;
}

Json Entry(const CertificateItem& item, int priority, const Texts& texts, const CertificateView& view) {
  Json entry = FileJson(item);
  entry.update({{"subject", view.Subject(0)},
                {"priority", priority},
                {"logon", (priority & kLogon) != 0},
                {"requestAgent", (priority & kAgent) != 0},
                {"fileEncryption", (priority & kFileSystem) != 0},
                {"notAfter", texts.expires},
                {"period", texts.period},
                {"why", texts.why},
                {"pem", view.Pem()}});
  return entry;
}

void AddTo(Ranking& ranking, const CertOptions& options, const CertificateItem& item, const CertificateView& view) {
  const int priority = ICertificateProperties::rzGetCertPriorityForSetAsDefault(
      item.bytes.data(), static_cast<unsigned int>(item.bytes.size()), options.ignoreFileSystem);
  Texts texts{Printable(item.name),
              Printable(view.Subject(0)),
              "unreadable",
              PeriodName(view.State()),
              Why(priority, options.ignoreFileSystem, view),
              ""};
  std::int64_t expires = std::numeric_limits<std::int64_t>::min();  // last among equals
  if (texts.period != PeriodName(Period::kUnreadable)) {
    const Moment end = view.NotAfter();
    expires = end.seconds;
    texts.expires = end.text;
  }
  if (options.json) texts.json = Compact(Entry(item, priority, texts, view));
  ranking.Add(priority, expires, texts);
}

/// How the default was chosen.
std::string DefaultText(Ranking& ranking) {
  if (!ranking.HasDefault()) return "none, no certificate fits smart-card logon, request agent or file encryption";
  const size_t tied = ranking.CountFirst();
  std::string text = "priority " + std::to_string(ranking.row(0).priority);
  if (tied > 1) {
    const bool byExpiry = ranking.row(0).expires != ranking.row(1).expires;
    text += ", tied with " + Counted(tied - 1, "other") + ": " +
            (byExpiry ? "it expires last" : "of those that expire last it was given first");
  }
  const Texts first = ranking.texts(0);
  if (first.period != PeriodName(Period::kValid)) {
    text += "; it is " + first.period + ", which the rule does not look at";
  }
  return text;
}

void PrintTable(Ranking& ranking) {
  constexpr size_t kWidest = 60;
  const size_t fileWidth = std::min(kWidest, std::max<size_t>(ranking.fileWidth(), 4));
  const size_t subjectWidth = std::min(kWidest, std::max<size_t>(ranking.subjectWidth(), 7));
  if (ranking.size() > 0) {
    Print("RANK  PRIORITY  EXPIRES     " + Padded("FILE", fileWidth) + "  " + Padded("SUBJECT", subjectWidth) +
          "  WHY\n");
  }
  for (size_t i = 0; i < ranking.size(); ++i) {
    const Texts texts = ranking.texts(i);
    const std::string priority = std::to_string(ranking.row(i).priority) + (ranking.IsTied(i) ? " tied" : "");
    const std::string note = texts.period == PeriodName(Period::kValid) ? "" : "; " + texts.period;
    const std::string line = Padded(std::to_string(i + 1), 4) + "  " + Padded(priority, 8) + "  " +
                             Padded(texts.expires.substr(0, 10), 10) + "  " + Padded(texts.file, fileWidth) + "  " +
                             Padded(texts.subject, subjectWidth) + "  " + texts.why + note;
    Print((i == 0 && ranking.HasDefault() ? Paint(Colour::kBold, line) : line) + "\n");
  }
  const std::string name = ranking.HasDefault() ? Paint(Colour::kBold, ranking.texts(0).file) + ", " : "";
  Print((ranking.size() > 0 ? "\nDefault: " : "Default: ") + name + DefaultText(ranking) + "\n");
}

Json Ranked(Ranking& ranking, size_t index) {
  Json entry = {{"rank", index + 1}, {"default", index == 0 && ranking.HasDefault()}, {"tied", ranking.IsTied(index)}};
  entry.update(Json::parse(ranking.texts(index).json));
  return entry;
}

}  // namespace

void RankCertificates(const CertOptions& options, Outcome& outcome) {
  Ranking ranking;
  Spool refused;
  std::vector<Spool::Place> refusals;
  ReadCertificates(
      options, Printing::kAtTheEnd, outcome,
      [&](const CertificateItem& item, const CertificateView& view) { AddTo(ranking, options, item, view); },
      [&](const CertificateItem& item, const std::string& reason) {
        if (options.json) refusals.push_back(refused.Add({Compact(RefusalJson(item, reason))}));
      });
  ranking.Sort();
  if (!ranking.HasDefault()) outcome.Add(Exit::kNo);
  if (!options.json) {
    PrintTable(ranking);
    return;
  }
  JsonList list("certificates");
  for (size_t i = 0; i < ranking.size(); ++i) list.Add(Ranked(ranking, i));
  for (const auto place : refusals) list.Add(Json::parse(refused.Read(place).front()));
  Json chosen = nullptr;  // as the entry that has "default": true
  if (ranking.HasDefault()) {
    const Json first = Ranked(ranking, 0);
    chosen = {{"file", first["file"]}, {"number", first["number"]}};
  }
  list.Close({{"default", chosen}, {"choice", DefaultText(ranking)}});
}

}  // namespace rzcrypto
