#ifndef RZ_CRYPTO_TRACE_H
#define RZ_CRYPTO_TRACE_H

#include <cstdint>

#include "rz/log.h"
#include "tavo/framework/exception.h"

/// The trace and throw conventions of the whole library, in one place:
///
///   constexpr Module kModule{"Sources/openssl/rz.crypto.openssl.hmac"};
///
///   void COpensslHMAC::Update(const ByteArray& in) {
///     Traced("COpensslHMAC::Update", this, [&] {
///       if (!m_bInitialized) throw kModule.Error(285, "MAC is not initialized", CRYPTO_ILLEGAL_STATE);
///       AppendBytes(m_data, in);
///     });
///   }
namespace Tavo::Framework {

inline constexpr const char* kComponent = "CRYPTO";

/// Levels of trace lines. They are labels, not an order.
enum TraceLevel : unsigned long { kDetail = 0, kError = 1, kStep = 2, kEntry = 8, kExit = 16 };

/// Address returns what "%#x" prints for an object: the low 32 bits of its address.
inline unsigned int Address(const void* object) {
  return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(object));
}

/// LogLine writes a trace line of a level, with printf's format checking. Its arguments are evaluated only while the
/// level is enabled.
#define LogLine(level, ...)                                                                                        \
  (__builtin_expect(rzlogIsEnabled(level), 0) != 0 ? rzlogLog(::Tavo::Framework::kComponent, (level), __VA_ARGS__) \
                                                   : static_cast<void>(0))

#define LogDetail(...) LogLine(::Tavo::Framework::kDetail, __VA_ARGS__)
#define LogError(...) LogLine(::Tavo::Framework::kError, __VA_ARGS__)
#define LogStep(...) LogLine(::Tavo::Framework::kStep, __VA_ARGS__)

/// Module is the source file that exceptions name, without its suffix. A throw site is `throw kModule.Error(...)`.
struct Module {
  const char* path;

  /// Error makes the exception. `line` is the documented number of the throw site, or __LINE__ where none is
  /// documented; `inner` passes into its ownership.
  IException* Error(unsigned long line, const char* message, CryptoExceptionId id, IException* inner = nullptr) const;

  /// Wrap makes an exception of its own message that carries `inner` and its identifier.
  IException* Wrap(unsigned long line, const char* message, IException* inner) const;
};

/// TraceReturns writes the exit line of a failing operation.
void TraceReturns(const char* operation, IException* exception);

/// Guarded runs `body` and writes the exit line: the bare name, or "<operation> Returns <message>" for an IException*,
/// which goes on. For operations whose entry line is not one of the two usual ones.
template <class Body>
auto Guarded(const char* operation, Body&& body) -> decltype(body()) {
  struct ExitLine {
    const char* operation;
    bool failed = false;
    ~ExitLine() {
      if (!failed) LogLine(kExit, "%s", operation);
    }
  } exit{operation};
  try {
    return body();
  } catch (IException* exception) {
    exit.failed = true;
    TraceReturns(operation, exception);
    throw;
  } catch (...) {
    exit.failed = true;
    throw;
  }
}

/// Traced writes the entry line "<operation> : this=<address>", then does what Guarded does.
template <class Body>
auto Traced(const char* operation, const void* object, Body&& body) -> decltype(body()) {
  LogLine(kEntry, "%s : this=%#x", operation, Address(object));
  return Guarded(operation, body);
}

/// Traced without an object, for factories and static functions: the entry line is the bare name.
template <class Body>
auto Traced(const char* operation, Body&& body) -> decltype(body()) {
  LogLine(kEntry, "%s", operation);
  return Guarded(operation, body);
}

/// Rewrapping runs `body`; an IException* that leaves it becomes the inner exception of a new one with `message` and
/// the same identifier.
template <class Body>
auto Rewrapping(const Module& module, unsigned long line, const char* message, Body&& body) -> decltype(body()) {
  try {
    return body();
  } catch (IException* inner) {
    throw module.Wrap(line, message, inner);
  }
}

/// Replacing does the same with an identifier of its own.
template <class Body>
auto Replacing(const Module& module, unsigned long line, const char* message, CryptoExceptionId id, Body&& body)
    -> decltype(body()) {
  try {
    return body();
  } catch (IException* inner) {
    throw module.Error(line, message, id, inner);
  }
}

}  // namespace Tavo::Framework

#endif
