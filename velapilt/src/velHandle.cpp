#include "velapilt/src/velHandle_p.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr const char *outOfMemory = "velapilt: out of memory";

/// A message that a caller kept reads this instead of stale text.
constexpr std::string_view freedMarker =
    "USE OF FREED MEMORY.  This string belongs to a velapilt handle which has been destroyed.";

void overwrite(char *text)
{
    if (text != nullptr) {
        std::memcpy(text, freedMarker.data(), std::min(std::strlen(text), freedMarker.size()));
    }
}

/// Overwrites the error text now and frees it with the next, so that a pointer
/// kept for one message too long reads the marker.
void retireError(velHandle *handle)
{
    overwrite(handle->errorText);
    std::free(handle->retiredText);
    handle->retiredText = std::exchange(handle->errorText, nullptr);
}

/// Takes over `text` as the handle's error text.
const char *keepError(velHandle *handle, char *text)
{
    if (text == nullptr) {
        return outOfMemory;
    }
    retireError(handle);
    handle->errorText = text;
    if (velDebugging()) {
        std::printf("%x: VEL ERROR: %s\n", velTraceName(handle), text);
    }
    return text;
}

/// The formatted text in memory of its own, null without memory.
char *format(const char *pattern, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, pattern, arguments);
    char *text = nullptr;
    if (length >= 0) {
        const auto size = static_cast<std::size_t>(length) + 1;
        text = static_cast<char *>(std::malloc(size));
        if (text != nullptr) {
            std::vsnprintf(text, size, pattern, again);
        }
    }
    va_end(again);
    return text;
}

std::string traceText(const velHandle *handle)
{
    char text[16] = "";
    std::snprintf(text, sizeof text, "%x", velTraceName(handle));
    return text;
}

/// Takes everything out of the handle but the caller's data: path stack, tree,
/// path table, handlers, pending line, flag stack and error text, in this order.
void emptyHandle(velHandle *handle)
{
    handle->stack.clear();
    handle->root = nullptr; // the nodes' memory goes with the handle
    handle->subtreeValidCount = 0;
    handle->table.clear();
    handle->changeHandlers.clear();
    handle->action.reset();
    handle->replaceHandlers.clear();
    handle->pendingLine.clear();
    handle->hasPendingLine = false;
    handle->flagStack.clear();
    handle->depth = 0;
    retireError(handle);
}

/// Calls the release that belongs to the present user data, once.
void releaseUserData(velHandle *handle)
{
    void *data = std::exchange(handle->userData, nullptr);
    if (const auto release = std::exchange(handle->releaseUserData, nullptr)) {
        release(data);
    }
}

} // namespace

bool velDebugging()
{
    return std::getenv("ZOT_VELAPI_DEBUG") != nullptr;
}

unsigned velTraceName(const velHandle *handle)
{
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(handle));
}

velHandle *velCreateHandle()
try {
    auto *handle = new velHandle; // its tables allocate too
    if (velDebugging()) {
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
    const std::string name = traceText(handle); // the trace names it when it is gone
    emptyHandle(handle);
    // The release may still ask the handle, which is an empty one now, and so
    // make errors.
    releaseUserData(handle);
    std::free(handle->errorText);
    std::free(handle->retiredText);
    delete handle;
    if (velDebugging()) {
        std::printf("%s: *** destroyed ***\n", name.c_str());
    }
    return 0;
}

const char *velSetError(velHandle *handle, const char *pattern, ...)
{
    if (std::strchr(pattern, '%') == nullptr) {
        return keepError(handle, ::strdup(pattern));
    }
    va_list arguments;
    va_start(arguments, pattern);
    char *text = format(pattern, arguments);
    va_end(arguments);
    return keepError(handle, text);
}

const char *velRecordError(velHandle *handle, const std::string &message)
{
    return velSetError(handle, "%s", message.c_str());
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

// --- Memory -------------------------------------------------------------------

void velRelease(velHandle *handle, void *block, std::size_t bytes) noexcept
{
    if (handle->reporting == 0) {
        handle->arena.release(block, bytes);
        return;
    }
    try {
        handle->graveyard.emplace_back(block, bytes);
    } catch (const std::bad_alloc &) {
        return; // freed with the handle
    }
}

velOperation::~velOperation()
{
    if (--handle_->operations > 0) {
        return;
    }
    for (const auto &[block, bytes] : handle_->graveyard) {
        handle_->arena.release(block, bytes);
    }
    handle_->graveyard.clear();
    handle_->interrupted = nullptr; // an operation that failed otherwise did not take it
}
