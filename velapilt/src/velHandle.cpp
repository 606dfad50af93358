// Creates and deletes handles, and keeps what callers store in them.
#include "velapilt/src/velHandle_p.h"

#include "velapilt/src/velEnvironment_p.h"
#include "velapilt/src/velError_p.h"
#include "velapilt/src/velHandlers_p.h"
#include "velapilt/src/velPathStack_p.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>

namespace {

std::string traceText(const velHandle *handle)
{
    char text[16] = "";
    std::snprintf(text, sizeof text, "%x", velTraceName(handle));
    return text;
}

/// Empties the handle except for the caller's data, in this order: path stack,
/// tree, path table, handlers, pending line, flag stack, error text.
void emptyHandle(velHandle *handle)
{
    handle->stack.clear();
    handle->root = nullptr; // the nodes' memory is freed with the handle
    handle->subtreeValidCount = 0;
    handle->table.clear();
    handle->changeHandlers.clear();
    handle->action.reset();
    handle->replaceHandlers.clear();
    handle->pendingLine.clear();
    handle->hasPendingLine = false;
    handle->flagStack.clear();
    handle->depth = 0;
    velRetireError(handle);
}

/// Calls the release function of the current user data, once.
void releaseUserData(velHandle *handle)
{
    void *data = std::exchange(handle->userData, nullptr);
    if (const auto release = std::exchange(handle->releaseUserData, nullptr)) {
        release(data);
    }
}

} // namespace

velHandle *velCreateHandle()
try {
    auto *handle = new velHandle; // its tables allocate too
    if (velEnvDebugging()) {
        std::printf("%x: *** created ***\n", velTraceName(handle));
        velAddTraceHandler(handle);
    }
    return handle;
} catch (const std::bad_alloc &) {
    return nullptr;
}

int velDestroyHandle(velHandle *handle)
{
    if (handle == nullptr) {
        return 0;
    }
    const std::string name = traceText(handle); // for the trace, after the handle is deleted
    emptyHandle(handle);
    // The release function may still use the handle, which is empty now. Such
    // calls can set errors.
    releaseUserData(handle);
    std::free(handle->errorText);
    std::free(handle->retiredText);
    delete handle;
    if (velEnvDebugging()) {
        std::printf("%s: *** destroyed ***\n", name.c_str());
    }
    return 0;
}

const char *getVELStateH(velHandle *handle, std::int32_t *depth)
{
    if (depth == nullptr) {
        return "getVELStateH: Invalid arguments";
    }
    *depth = handle->depth;
    return nullptr;
}

std::int32_t velDeepestBlock(const velHandle *handle)
{
    return handle->deepest;
}

void setVELStateH(velHandle *handle, std::int32_t depth)
{
    const std::int32_t wanted = std::max(depth, 0);
    while (handle->depth > wanted) {
        --handle->depth;
        velPop(handle);
    }
}

std::int32_t getValidationLevel(const velHandle *handle)
{
    return handle->validationLevel;
}

void setValidationLevel(velHandle *handle, std::int32_t level)
{
    handle->validationLevel = level;
}

void *velUserData(const velHandle *handle)
{
    return handle->userData;
}

void velSetUserData(velHandle *handle, void *data, void (*release)(void *data))
{
    if (handle->userData != data) {
        releaseUserData(handle);
    }
    handle->userData = data;
    handle->releaseUserData = release;
}
