#include "spool.h"

#include <cerrno>
#include <cstring>

#include "outcome.h"

namespace rzcrypto {

namespace {

[[noreturn]] void Fail() { throw Failure{Exit::kReadOrWrite, std::string("temporary file: ") + std::strerror(errno)}; }

}  // namespace

Spool::Spool() : m_file(std::tmpfile()) {
  if (!m_file) Fail();
}

Spool::Place Spool::Add(const std::vector<std::string>& fields) {
  std::string record;  // each field with a zero octet behind it
  for (const auto& field : fields) record.append(field).push_back('\0');
  const Place place = m_end;
  const auto size = static_cast<std::uint32_t>(record.size());
  if (std::fwrite(&size, sizeof size, 1, m_file.get()) != 1 ||
      std::fwrite(record.data(), 1, record.size(), m_file.get()) != record.size()) {
    Fail();
  }
  m_end += static_cast<Place>(sizeof size + record.size());
  return place;
}

std::vector<std::string> Spool::Read(Place place) {
  std::uint32_t size = 0;
  if (std::fseek(m_file.get(), static_cast<long>(place), SEEK_SET) != 0 ||
      std::fread(&size, sizeof size, 1, m_file.get()) != 1) {
    Fail();
  }
  std::string record(size, '\0');
  if (std::fread(record.data(), 1, size, m_file.get()) != size) Fail();
  std::vector<std::string> fields;
  for (size_t at = 0; at < record.size(); at += fields.back().size() + 1) fields.emplace_back(record.c_str() + at);
  return fields;
}

}  // namespace rzcrypto
