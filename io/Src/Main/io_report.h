// The output of the library: messages to the client's error routine, and the trace to
// standard output.
//
// A failing function reports its message here and returns the code, in one
// statement: `return report.error(IO_BAD_FORMAT, "read_datatag: …", …);`
#pragma once

#include "io/Src/Main/io_codes.h"
#include "io/Src/Main/io_env.h"

#include <cstdarg>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#if defined(__GNUC__)
#define IO_PRINTF(text_at, first_at) __attribute__((format(printf, text_at, first_at)))
#else
#define IO_PRINTF(text_at, first_at)
#endif

/// Receives a message, ended by LF and NUL, and its length without the NUL.
/// What it returns is not used.
using io_error_routine = int (*)(const char *text, std::int32_t length);

/// Where the messages of one set of files go.
class io_reporter
{
public:
    /// `env` outlives the reporter.
    explicit io_reporter(io_env &env) : env_(&env) {}

    /// Null means the default routine: "IO: %s" to standard error.
    void set_routine(io_error_routine routine) { routine_ = routine; }

    /// Sends messages to `sink` instead of the routine; an empty sink restores the routine.
    void set_sink(std::function<void(std::string_view)> sink) { sink_ = std::move(sink); }

    /// Reports the message and returns `code`.
    [[nodiscard]] int error(int code, const char *format, ...) const IO_PRINTF(3, 4);

    /// Reports a message if the function continues, or already has a code.
    void notice(const char *format, ...) const IO_PRINTF(2, 3);

    /// As error(), with ": " and the text of errno added, before a final LF.
    [[nodiscard]] int zotsystemErr(int code, const char *format, ...) const IO_PRINTF(3, 4);

    /// "%s: malloc of %I64d bytes failed"; returns 28 or the given code. The size is 0 if it
    /// is not known.
    [[nodiscard]] int no_memory(const char *function, std::int64_t bytes,
                                int code = IO_NO_MEMORY) const;

    /// Prints "TRACE> …" if `ZOT_IO_TRACE` was set at the first call.
    void trace(const char *format, ...) const IO_PRINTF(2, 3);
    /// Whether trace() prints, so that the caller can skip work that only the trace needs.
    bool tracing() const;

private:
    void format_and_deliver(const char *reason, const char *format, va_list arguments) const
        IO_PRINTF(3, 0);
    void deliver(std::string_view text) const; ///< NUL-terminated
    void put_trace(std::string text) const;

    io_env *env_;
    io_error_routine routine_ = nullptr;
    std::function<void(std::string_view)> sink_;
    mutable enum { unknown, off, on } trace_ = unknown;
};

/// 4 if errno says that the disk is full, otherwise 11.
[[nodiscard]] int io_write_code();
