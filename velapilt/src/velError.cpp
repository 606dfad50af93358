// The error text of a handle, and the trace.
#include "velapilt/src/velError_p.h"

#include "velapilt/src/velEnvironment_p.h"
#include "velapilt/src/velHandle_p.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

constexpr const char *outOfMemory = "velapilt: out of memory";

/// A caller that kept a freed message reads this text instead.
constexpr std::string_view freedMarker =
    "USE OF FREED MEMORY.  This string belongs to a velapilt handle which has been destroyed.";

void overwrite(char *text)
{
    if (text != nullptr) {
        std::memcpy(text, freedMarker.data(), std::min(std::strlen(text), freedMarker.size()));
    }
}

/// Makes `text` the error text of the handle, which owns it from then on.
const char *keepError(velHandle *handle, char *text)
{
    if (text == nullptr) {
        return outOfMemory;
    }
    velRetireError(handle);
    handle->errorText = text;
    if (velEnvDebugging()) {
        std::printf("%x: VEL ERROR: %s\n", velTraceName(handle), text);
    }
    return text;
}

/// The formatted text in new memory that the caller owns; null without memory.
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

} // namespace

unsigned velTraceName(const velHandle *handle)
{
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(handle));
}

void velRetireError(velHandle *handle)
{
    overwrite(handle->errorText);
    std::free(handle->retiredText);
    handle->retiredText = std::exchange(handle->errorText, nullptr);
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
