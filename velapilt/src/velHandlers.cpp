// Registers, calls and interrupts the handlers of changes, replacements and
// actions.
#include "velapilt/src/velHandlers_p.h"

#include "velapilt/src/velError_p.h"
#include "velapilt/src/velOperation_p.h"
#include "velapilt/src/velResolve_p.h"
#include "velapilt/src/velSpace.h"

#include <cstdio>
#include <new>
#include <string>

namespace {

const char *orNul(const char *text)
{
    return text == nullptr ? "(nul)" : text;
}

int traceChange(const char *path, std::int32_t code, const char *newValue, const char *oldValue,
                void *userData)
{
    const unsigned name = velTraceName(static_cast<velHandle *>(userData));
    switch (code) {
    case velValueChanged:
        std::printf("%x: %s: %s <- %s\n", name, path, orNul(newValue), orNul(oldValue));
        break;
    case velObjectCreated:
        std::printf("%x: %s: object created\n", name, path);
        break;
    case velObjectDeleted:
        std::printf("%x: %s: object deleted\n", name, path);
        break;
    default:
        std::printf("*** Unknown change code %d\n", code);
    }
    return 1;
}

/// While an object of this class exists, freed memory stays readable.
class Reporting
{
public:
    explicit Reporting(velHandle *handle) : handle_(handle) { ++handle_->reporting; }
    ~Reporting() { --handle_->reporting; }
    Reporting(const Reporting &) = delete;
    Reporting &operator=(const Reporting &) = delete;

private:
    velHandle *handle_;
};

} // namespace

void velAddTraceHandler(velHandle *handle)
{
    static_cast<void>(addChangeHandler(handle, traceChange, handle));
}

const char *addChangeHandler(velHandle *handle, velChangeHandler handler, void *userData)
try {
    handle->changeHandlers.push_back({handler, userData});
    return nullptr;
} catch (const std::bad_alloc &) {
    return "unable to allocate memory for change handler list";
}

const char *addReplaceHandler(velHandle *handle, velReplaceHandler handler, void *userData)
try {
    handle->replaceHandlers.push_back({handler, userData});
    return nullptr;
} catch (const std::bad_alloc &) {
    return "unable to allocate memory for replace handler list";
}

const char *addActionHandler(velHandle *handle, velActionHandler handler, void *userData)
{
    if (handle->action == nullptr) {
        handle->action.reset(new (std::nothrow) velHandle::ActionEntry);
    }
    if (handle->action == nullptr) {
        return "unable to allocate memory for action handler list";
    }
    *handle->action = {handler, userData};
    return nullptr;
}

void velCallChangeHandlers(velHandle *handle, const velNode *node, velChange code,
                           const char *newValue, const char *oldValue)
{
    const Reporting reporting(handle);
    const std::string path = velPathOf(handle, node);
    // By index and by copy: a handler may register other handlers, which are
    // called for later changes.
    const std::size_t count = handle->changeHandlers.size();
    for (std::size_t i = 0; i < count; ++i) {
        const velHandle::ChangeEntry entry = handle->changeHandlers[i];
        entry.handler(path.c_str(), code, newValue, oldValue, entry.userData);
    }
}

void velReportReplace(velHandle *handle)
{
    if (handle->replaceHandlers.empty()) {
        return;
    }
    const Reporting reporting(handle);
    const std::string path = getCurrentPath(handle);
    const std::size_t count = handle->replaceHandlers.size();
    for (std::size_t i = 0; i < count; ++i) {
        const velHandle::ReplaceEntry entry = handle->replaceHandlers[i];
        entry.handler(path.c_str(), entry.userData);
    }
}

const char *velRunActionLine(velHandle *handle, const char *line)
try {
    const char *start = line;
    while (*start == '>') {
        ++start;
    }
    while (velIsSpace(*start)) {
        ++start;
    }
    const char *end = start;
    while (*end != '\0' && !velIsSpace(*end)) {
        ++end;
    }
    const std::string action(start, end);
    if (*end == '\0') {
        return invokeAction(handle, action.c_str(), nullptr);
    }
    while (velIsSpace(*end)) {
        ++end;
    }
    const std::string rest(end); // a copy, because the handler may free the line
    const char *const arguments[] = {rest.c_str(), nullptr};
    return invokeAction(handle, action.c_str(), arguments);
} catch (const std::bad_alloc &) {
    return "velRunActionLine: Memory allocation error";
}

const char *invokeAction(velHandle *handle, const char *action, const char *const *arguments)
{
    if (handle->action == nullptr || handle->action->handler == nullptr) {
        return "no handler was found for action line";
    }
    const velOperation operation(handle);
    const Reporting reporting(handle);
    const velHandle::ActionEntry entry = *handle->action;
    const int done = entry.handler(handle, action, arguments, entry.userData);
    return done == 0 ? "action invocation returned with error status" : velTakeInterrupt(handle);
}

void velInterrupt(velHandle *handle, const char *message)
{
    handle->interrupted = message;
}

const char *velTakeInterrupt(velHandle *handle)
{
    return std::exchange(handle->interrupted, nullptr);
}
