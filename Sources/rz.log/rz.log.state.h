#ifndef RZ_LOG_STATE_H
#define RZ_LOG_STATE_H

#include "rz/log.h"

namespace rzlog {

/// ReplaceSink sets the sink; `release` (may be null) is called with `releaseArgument` when the next one is set, after
/// the last call of this one.
void ReplaceSink(rzlogSink sink, void* context, void (*release)(void*), void* releaseArgument);

}  // namespace rzlog

#endif
