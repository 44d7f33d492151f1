#include <charconv>
#include <utility>

#include "rz/cext.h"

namespace Tavo::Framework {

CException::CException(SecureString file, unsigned long line, SecureString message, unsigned long id, IException* inner)
    : m_nLine(line), m_sFile(std::move(file)), m_nID(id), m_sMessage(std::move(message)) {
  m_pInner.reset(inner);
}

CException::CException(CException& other) : CException(static_cast<const CException&>(other)) {}

CException::CException(const CException& other) = default;

CException::~CException() = default;

const char* CException::what() const noexcept { return m_sMessage.c_str(); }

const char* CException::what() { return m_sMessage.c_str(); }

namespace {

void AppendNumber(SecureString& to, unsigned long number) {
  char digits[24];
  to.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

}  // namespace

SecureString CException::toString() {
  SecureString text = m_sFile;
  text += '(';
  AppendNumber(text, m_nLine);
  text += "): ";
  text += m_sMessage;
  text += " (ID:";
  AppendNumber(text, m_nID);
  text += ')';
  if (m_pInner) {
    text += " <- ";
    text += m_pInner->toString();
  }
  return text;
}

}  // namespace Tavo::Framework
