#ifndef RZCRYPTO_OUTCOME_H
#define RZCRYPTO_OUTCOME_H

#include <string>

#include "tavo/owned.h"

namespace rzcrypto {

/// The exit codes of every command.
enum class Exit {
  kYes = 0,           // yes, or done
  kNo = 1,            // does not verify, does not qualify
  kUsage = 2,         // the command line makes no sense
  kBadInput = 3,      // an input is not what it should be
  kReadOrWrite = 4,   // an input cannot be read, an output not written
  kNotSupported = 5,  // the library does not have it
  kInside = 6         // something failed that should not
};

/// Failure is what a command throws, by value, when it cannot go on with one of its inputs. `subject` names another
/// input or output than the one that is being done.
struct Failure {
  Exit code;
  std::string message;
  std::string subject = "";
};

/// OutputFailure ends the whole command: standard output takes no more.
struct OutputFailure {
  std::string message;
};

/// ExitFor returns the exit code for a failure of the library by its identifier.
Exit ExitFor(unsigned long id);

/// WithCause runs `body`; an exception of the library becomes a Failure with the message and code of its innermost
/// cause, for operations whose own message says only that they failed.
template <class Body>
auto WithCause(Body&& body) -> decltype(body()) {
  try {
    return body();
  } catch (Tavo::Framework::IException* exception) {
    const auto owner = Tavo::Framework::Own(exception);
    auto* cause = exception;
    while (cause->getInnerException() != nullptr) cause = cause->getInnerException();
    throw Failure{ExitFor(cause->getID()), cause->getMessage().c_str()};
  }
}

/// Outcome gathers what happened to the inputs of one call. The code of the worst, the largest number, becomes the
/// exit code; an input that fails does not keep the others from being done.
class Outcome {
 public:
  void Add(Exit code);
  /// Report writes "rzcrypto: <subject>: <message>" to standard error and adds the code.
  void Report(const std::string& subject, const Failure& failure);
  /// Note writes "rzcrypto: <subject>: <message>" and adds nothing. Names may come from anywhere: what is not printable
  /// is written as \xNN.
  static void Note(const std::string& subject, const std::string& message);
  Exit code() const { return m_code; }
  /// Reason returns the message of the last report.
  const std::string& reason() const { return m_reason; }

  /// Attempt runs `body` for the input or output called `subject`, reports whatever it throws, and returns whether it
  /// threw nothing.
  template <class Body>
  bool Attempt(const std::string& subject, Body&& body) {
    try {
      Tavo::Framework::Checked(std::forward<Body>(body));
      return true;
    } catch (const Failure& failure) {
      Report(failure.subject.empty() ? subject : failure.subject, failure);
    } catch (const Tavo::Framework::Error& error) {
      Report(subject, {ExitFor(error.id()), error.what()});
    } catch (const std::bad_alloc&) {
      Report(subject, {Exit::kInside, "out of memory"});
    } catch (const std::length_error&) {
      Report(subject, {Exit::kInside, "too large"});
    }
    return false;
  }

 private:
  Exit m_code = Exit::kYes;
  std::string m_reason;
};

}  // namespace rzcrypto

#endif
