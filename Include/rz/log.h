#ifndef RZ_LOG_H
#define RZ_LOG_H

#include "rz/export.h"

/// The logging library of the suite, `librz.log`. Usable from C and C++.
///
/// A line has a component ("CRYPTO"), a level and a text. Levels are labels, not an order; a mask enables each by
/// itself. The cryptography library uses 0 for values, 1 for errors, 2 for warnings and steps, 8 for the entry of an
/// operation and 16 for its exit. Nothing is written anywhere until a process sets a sink.
///
/// Every function may be called from any thread at any time, and in the child of a fork. Calls of the sink are
/// serialised. A sink must not throw and must not set a sink; a line that it logs itself is dropped. Values reach the
/// trace at level 0 in plain text: do not enable it where secrets are handled.
#ifdef __cplusplus
extern "C" {
#endif

/// rzlogSink receives one line: `line` is the formatted text alone, zero-terminated, without a line end, valid during
/// the call only. `context` is what rzlogSetSink was given.
typedef void (*rzlogSink)(void* context, const char* component, unsigned long level, const char* line);

/// rzlogLog formats a line as printf does and hands it to the sink, if there is one and `level` is enabled; else it
/// returns at once and formats nothing.
RZ_LOG_API void rzlogLog(const char* component, unsigned long level, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// rzlogEnabledLevels is for rzlogIsEnabled alone: the mask while a sink is set, 0 while there is none.
extern RZ_LOG_API unsigned long rzlogEnabledLevels;

/// rzlogIsEnabled returns whether a line of `level` would reach a sink now (1) or not (0). One load and one test at the
/// place of the call: ask before you call rzlogLog where a disabled line has to cost nothing.
static inline int rzlogIsEnabled(unsigned long level) {
  return level < 64 && (__atomic_load_n(&rzlogEnabledLevels, __ATOMIC_RELAXED) >> level & 1) != 0;
}

/// rzlogLogBin hands the sink a hex dump of `length` bytes: a line with `caption` and the length, then one line for
/// each 16 bytes with the offset, the bytes in hex and their printable characters. `data` may be null when `length`
/// is 0.
RZ_LOG_API void rzlogLogBin(const char* component, unsigned long level, const unsigned char* data, unsigned long length,
                            const char* caption);

/// rzlogSetSink makes `sink` the process's only sink; null discards every line (the default). When it returns, the
/// sink that was set before is no longer running in another thread and is never called again, so its context may go.
RZ_LOG_API void rzlogSetSink(rzlogSink sink, void* context);

/// rzlogSetLevels enables level n for each bit n of `mask` (n from 0 to 63) and disables the others. The default
/// enables 1 (error) and 2 (warning).
RZ_LOG_API void rzlogSetLevels(unsigned long mask);

/// The ready sinks write one line for each text: time (UTC, ISO 8601, microseconds), process and thread number,
/// component, level by name, text. Control characters in a text are written as \xNN, so that no input can forge a line.

/// rzlogSetStandardErrorSink sets the sink that writes to file descriptor 2.
RZ_LOG_API void rzlogSetStandardErrorSink(void);

/// rzlogSetFileSink sets the sink that appends to the file `path`, made with mode 0600 when it does not exist. Returns
/// 0, or the errno of the failing open; then the sink that was set stays. The file is closed when another sink is set.
RZ_LOG_API int rzlogSetFileSink(const char* path);

/// rzlogSetSyslogSink sets the sink that sends lines to syslog under `identity`, of which it keeps a copy (null: the
/// program's name): level 1 as LOG_ERR, 2 as LOG_WARNING, all others as LOG_DEBUG; syslog adds the time.
RZ_LOG_API void rzlogSetSyslogSink(const char* identity);

#ifdef __cplusplus
}
#endif

#endif
