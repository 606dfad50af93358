// Calling the handlers that callers have registered.
#pragma once

#include "velapilt/src/velHandle_p.h"

/// Tells the change handlers, in the order in which they were registered;
/// `oldValue` and `newValue` may be null. Throws bad_alloc.
void velCallChangeHandlers(velHandle *handle, const velNode *node, velChange code,
                           const char *newValue, const char *oldValue);
/// The same, at no cost where there is no handler.
inline void velReport(velHandle *handle, const velNode *node, velChange code, const char *newValue,
                      const char *oldValue)
{
    if (!handle->changeHandlers.empty()) {
        velCallChangeHandlers(handle, node, code, newValue, oldValue);
    }
}
/// Tells the replace handlers that a line under &replace is done. Throws bad_alloc.
void velReportReplace(velHandle *handle);
/// Registers the trace handler, which prints every change.
void velAddTraceHandler(velHandle *handle);
/// The interruption that a handler asked for, once; else null.
[[nodiscard]] const char *velTakeInterrupt(velHandle *handle);
