#include <fcntl.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>

#include "rz.log.state.h"
#include "tavo/framework/bytes.h"

namespace {

using Tavo::Framework::SecureString;

const char* LevelName(unsigned long level) {
  switch (level) {
    case 0:
      return "DETAIL";
    case 1:
      return "ERROR";
    case 2:
      return "WARNING";
    case 8:
      return "ENTER";
    case 16:
      return "EXIT";
    default:
      return nullptr;
  }
}

SecureString Printable(const char* text) {
  SecureString out;
  out.reserve(strlen(text) + 16);
  for (; *text != '\0'; ++text) {
    const auto byte = static_cast<unsigned char>(*text);
    if (byte >= 0x20 && byte != 0x7f) {
      out += *text;
    } else {
      char escaped[5];
      snprintf(escaped, sizeof escaped, "\\x%02x", byte);
      out += escaped;
    }
  }
  return out;
}

SecureString Record(const char* component, unsigned long level, const char* line) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm utc{};
  gmtime_r(&now.tv_sec, &utc);
  char time[40];
  strftime(time, sizeof time, "%Y-%m-%dT%H:%M:%S", &utc);
  char head[160];
  char number[24];
  const char* name = LevelName(level);
  if (name == nullptr) {
    snprintf(number, sizeof number, "%lu", level);
    name = number;
  }
  snprintf(head, sizeof head, "%s.%06ldZ %ld/%ld ", time, now.tv_nsec / 1000, static_cast<long>(getpid()),
           static_cast<long>(syscall(SYS_gettid)));
  return head + Printable(component) + ' ' + name + ' ' + Printable(line) + '\n';
}

/// One write for one record, so that the records of several processes do not mix; a sink has nobody to report to.
void WriteRecord(int descriptor, const SecureString& record) {
  size_t done = 0;
  while (done < record.size()) {
    const ssize_t written = write(descriptor, record.data() + done, record.size() - done);
    if (written < 0 && errno != EINTR) return;
    if (written > 0) done += static_cast<size_t>(written);
  }
}

void DescriptorSink(void* context, const char* component, unsigned long level, const char* line) {
  WriteRecord(*static_cast<const int*>(context), Record(component, level, line));
}

void CloseDescriptor(void* context) {
  const std::unique_ptr<int> descriptor(static_cast<int*>(context));
  close(*descriptor);
}

void SyslogSink(void*, const char* component, unsigned long level, const char* line) {
  const int priority = level == 1 ? LOG_ERR : level == 2 ? LOG_WARNING : LOG_DEBUG;
  const char* name = LevelName(level);
  syslog(priority, "[%ld] %s %s %s", static_cast<long>(syscall(SYS_gettid)), Printable(component).c_str(),
         name != nullptr ? name : "-", Printable(line).c_str());
}

void CloseSyslog(void* identity) {
  closelog();
  const std::unique_ptr<std::string> owner(static_cast<std::string*>(identity));
}

}  // namespace

void rzlogSetStandardErrorSink(void) {
  static int s_descriptor = STDERR_FILENO;
  rzlog::ReplaceSink(DescriptorSink, &s_descriptor, nullptr, nullptr);
}

int rzlogSetFileSink(const char* path) {
  const int descriptor = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (descriptor < 0) return errno;
  int* context = std::make_unique<int>(descriptor).release();
  rzlog::ReplaceSink(DescriptorSink, context, CloseDescriptor, context);
  return 0;
}

void rzlogSetSyslogSink(const char* identity) {
  // openlog keeps the pointer, so the copy lives until the next sink is set.
  auto copy = std::make_unique<std::string>(identity != nullptr ? identity : "");
  rzlog::ReplaceSink(nullptr, nullptr, nullptr,
                     nullptr);  // releases an older identity before openlog takes the new one
  openlog(copy->empty() ? nullptr : copy->c_str(), LOG_PID, LOG_USER);
  rzlog::ReplaceSink(SyslogSink, nullptr, CloseSyslog, copy.release());
}
