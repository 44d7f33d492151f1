#include "rz/log.h"

#include <pthread.h>
#include <string.h>

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <mutex>
#include <new>

#include "rz.log.state.h"

unsigned long rzlogEnabledLevels = 0;

namespace {

constexpr unsigned long kDefaultLevels = 1UL << 1 | 1UL << 2;

std::mutex g_calls;  // held during every call of the sink, and while the sink is replaced
std::mutex g_state;  // held for the assignments below alone, so that a sink may set the levels
unsigned long g_levels = kDefaultLevels;
rzlogSink g_sink = nullptr;
void* g_context = nullptr;

thread_local bool t_insideSink = false;

/// A child of a fork has one thread: the locks that the others held would stay locked in it for ever.
void LockForFork() {
  g_calls.lock();
  g_state.lock();
}
void UnlockAfterFork() {
  g_state.unlock();
  g_calls.unlock();
}

void Deliver(const char* component, unsigned long level, const char* line) {
  if (t_insideSink) return;
  const std::lock_guard<std::mutex> lock(g_calls);
  if (g_sink == nullptr) return;
  t_insideSink = true;
  g_sink(g_context, component, level, line);
  t_insideSink = false;
}

/// Both callers hold g_state.
void Publish() { __atomic_store_n(&rzlogEnabledLevels, g_sink != nullptr ? g_levels : 0, __ATOMIC_RELAXED); }

/// A block of the heap that is wiped before it is given back: lines can hold values.
class WipingBlock {
 public:
  explicit WipingBlock(size_t size) : m_size(size), m_block(new (std::nothrow) char[size]) {}
  WipingBlock(const WipingBlock&) = delete;
  WipingBlock& operator=(const WipingBlock&) = delete;
  ~WipingBlock() {
    if (m_block) explicit_bzero(m_block.get(), m_size);
  }
  char* get() { return m_block.get(); }

 private:
  size_t m_size;
  std::unique_ptr<char[]> m_block;
};

__attribute__((noinline, format(printf, 3, 0))) void FormatAndDeliver(const char* component, unsigned long level,
                                                                      const char* format, va_list arguments) {
  char shortLine[512];
  va_list again;
  va_copy(again, arguments);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has started the list
  const int length = vsnprintf(shortLine, sizeof shortLine, format, arguments);
  if (length < 0 || static_cast<size_t>(length) < sizeof shortLine) {
    Deliver(component, level, length < 0 ? format : shortLine);
  } else {
    WipingBlock longLine(static_cast<size_t>(length) + 1);
    if (longLine.get() != nullptr) vsnprintf(longLine.get(), static_cast<size_t>(length) + 1, format, again);
    Deliver(component, level, longLine.get() != nullptr ? longLine.get() : shortLine);
  }
  va_end(again);
}

constexpr unsigned long kBytesPerLine = 16;

void DumpLine(const char* component, unsigned long level, const unsigned char* data, unsigned long offset,
              unsigned long count) {
  char hex[3 * kBytesPerLine + 1] = "";
  char text[kBytesPerLine + 1] = "";
  for (unsigned long i = 0; i < count; ++i) {
    const unsigned char byte = data[offset + i];
    snprintf(hex + 3 * i, 4, "%02x ", byte);
    text[i] = byte >= 0x20 && byte < 0x7f ? static_cast<char>(byte) : '.';
  }
  char line[128];
  snprintf(line, sizeof line, "%08lx  %-48s |%s|", offset, hex, text);
  Deliver(component, level, line);
}

}  // namespace

namespace rzlog {

void ReplaceSink(rzlogSink sink, void* context, void (*release)(void*), void* releaseArgument) {
  static void (*s_release)(void*) = nullptr;
  static void* s_releaseArgument = nullptr;
  static const int s_forkHandlers = pthread_atfork(LockForFork, UnlockAfterFork, UnlockAfterFork);
  static_cast<void>(s_forkHandlers);
  const std::lock_guard<std::mutex> calls(g_calls);
  const std::lock_guard<std::mutex> state(g_state);
  if (s_release != nullptr) s_release(s_releaseArgument);
  g_sink = sink;
  g_context = context;
  s_release = release;
  s_releaseArgument = releaseArgument;
  Publish();
}

}  // namespace rzlog

void rzlogLog(const char* component, unsigned long level, const char* format, ...) {
  if (rzlogIsEnabled(level) == 0) return;
  va_list arguments;
  va_start(arguments, format);
  FormatAndDeliver(component, level, format, arguments);
  va_end(arguments);
}

void rzlogLogBin(const char* component, unsigned long level, const unsigned char* data, unsigned long length,
                 const char* caption) {
  if (rzlogIsEnabled(level) == 0) return;
  rzlogLog(component, level, "%s (%lu bytes)", caption, length);
  for (unsigned long offset = 0; offset < length; offset += kBytesPerLine) {
    const unsigned long left = length - offset;
    DumpLine(component, level, data, offset, left < kBytesPerLine ? left : kBytesPerLine);
  }
}

void rzlogSetSink(rzlogSink sink, void* context) { rzlog::ReplaceSink(sink, context, nullptr, nullptr); }

void rzlogSetLevels(unsigned long mask) {
  const std::lock_guard<std::mutex> lock(g_state);
  g_levels = mask;
  Publish();
}
