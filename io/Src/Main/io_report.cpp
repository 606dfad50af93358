#include "io/Src/Main/io_report.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
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

} // namespace

int io_reporter::error(int code, const char *format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = format_message(format, arguments);
    va_end(arguments);
    end_line(text);
    deliver(text.c_str(), text.size());
    return code;
}

int io_reporter::zotsystemErr(int code, const char *format, ...) const
{
    int number = errno;
    va_list arguments;
    va_start(arguments, format);
    std::string text = format_message(format, arguments);
    va_end(arguments);
    text += ": ";
    text += number != 0 ? std::strerror(number) : "unknown error";
    end_line(text);
    deliver(text.c_str(), text.size());
    return code;
}

int io_reporter::no_memory(const char *function, std::int64_t bytes, int code) const
{
    return error(code, "%s: malloc of %lld bytes failed", function, static_cast<long long>(bytes));
}

void io_reporter::deliver(const char *text, std::size_t length) const
{
    if (sink_) {
        sink_(std::string_view(text, length));
        return;
    }
    if (routine_ != nullptr) {
        routine_(text, static_cast<std::int32_t>(length));
    } else {
        env_->put_error(std::string("IO: ") + text);
    }
    if (env_->variable("ZOT_IO_DEBUG_ERRORS") != nullptr) {
        env_->break_into_debugger();
    }
    trace("%s", text);
}

bool io_reporter::tracing() const
{
    if (trace_ == unknown) {
        trace_ = env_->variable("ZOT_IO_TRACE") != nullptr ? on : off;
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
    std::string text = format_message(format, arguments);
    va_end(arguments);
    end_line(text);
    // A message of two lines must not smuggle in one without the prefix.
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
