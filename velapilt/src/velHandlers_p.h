// Calling the handlers that callers have registered.
#pragma once

#include "velapilt/src/velHandle_p.h"

/// Calls the change handlers, in the order in which they were registered. `oldValue` and
/// `newValue` may be null. Throws bad_alloc.
void velCallChangeHandlers(velHandle *handle, const velNode *node, velChange code,
                           const char *newValue, const char *oldValue);
/// The same; costs nothing if there is no handler.
inline void velReport(velHandle *handle, const velNode *node, velChange code, const char *newValue,
                      const char *oldValue)
{
    if (!handle->changeHandlers.empty()) {
        velCallChangeHandlers(handle, node, code, newValue, oldValue);
    }
}
/// Calls the replace handlers after a line under &replace. Throws bad_alloc.
void velReportReplace(velHandle *handle);
/// Registers the trace handler, which prints every change.
void velAddTraceHandler(velHandle *handle);
/// The interruption that a handler has requested, once; otherwise null.
[[nodiscard]] const char *velTakeInterrupt(velHandle *handle);
