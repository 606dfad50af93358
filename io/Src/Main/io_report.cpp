// Composes messages and trace lines, even without free memory.
#include "io/Src/Main/io_report.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace {

std::string format_message(const char *format, va_list arguments) IO_PRINTF(1, 0);

std::string format_message(const char *format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

void end_line(std::string &text)
{
    if (text.empty() || text.back() != '\n') {
        text += '\n';
    }
}

/// Replaces a message for which there was no memory.
constexpr std::string_view no_room_for_message = "out of memory\n";

} // namespace

int io_reporter::error(int code, const char *format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    format_and_deliver(nullptr, format, arguments);
    va_end(arguments);
    return code;
}

void io_reporter::notice(const char *format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    format_and_deliver(nullptr, format, arguments);
    va_end(arguments);
}

int io_reporter::zotsystemErr(int code, const char *format, ...) const
{
    const char *reason = errno != 0 ? std::strerror(errno) : "unknown error";
    va_list arguments;
    va_start(arguments, format);
    format_and_deliver(reason, format, arguments);
    va_end(arguments);
    return code;
}

void io_reporter::format_and_deliver(const char *reason, const char *format,
                                     va_list arguments) const
{
    try {
        std::string text = format_message(format, arguments);
        if (reason != nullptr) {
            text.resize(text.size() - (text.ends_with('\n') ? 1 : 0));
            text.append(": ").append(reason);
        }
        end_line(text);
        deliver(text);
    } catch (const std::bad_alloc &) {
        // The report that there is no memory must not need memory.
        deliver(no_room_for_message);
    }
}

int io_reporter::no_memory(const char *function, std::int64_t bytes, int code) const
{
    return error(code, "%s: malloc of %lld bytes failed", function, static_cast<long long>(bytes));
}

void io_reporter::deliver(std::string_view text) const
{
    if (sink_) {
        sink_(text);
        return;
    }
    if (routine_ != nullptr) {
        routine_(text.data(), static_cast<std::int32_t>(text.size()));
    } else {
        env_->put_error("IO: ");
        env_->put_error(text);
    }
    if (env_->variable(io_debug_errors_variable) != nullptr) {
        env_->break_into_debugger();
    }
    trace("%s", text.data());
}

bool io_reporter::tracing() const
{
    if (trace_ == unknown) {
        trace_ = env_->variable(io_trace_variable) != nullptr ? on : off;
    }
    return trace_ == on;
}

void io_reporter::trace(const char *format, ...) const
{
    if (!tracing()) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    try {
        put_trace(format_message(format, arguments));
    } catch (const std::bad_alloc &) {
        // One line is lost; the traced operation continues.
    }
    va_end(arguments);
}

void io_reporter::put_trace(std::string text) const
{
    end_line(text);
    // Each line of a message must have the prefix.
    std::string lines;
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = text.find('\n', start) + 1;
        lines.append("TRACE> ").append(text, start, end - start);
        start = end;
    }
    env_->put_trace(lines);
}

int io_write_code()
{
    return errno == ENOSPC || errno == EDQUOT ? IO_DISK_FULL : IO_WRITE_ERROR;
}
