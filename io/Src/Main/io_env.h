// Everything that the library needs from the system: files, waiting, the environment, the
// trace. It is one interface, so that a test can use a file system in memory, or make any
// call fail.
//
// The real system is io_real_env(); the others are in io/testing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

/// The environment variables that the library reads; docs/environment.md
/// explains them.
inline constexpr char io_format_variable[] = "ZOT_FORMAT";
inline constexpr char io_trace_variable[] = "ZOT_IO_TRACE";
inline constexpr char io_debug_errors_variable[] = "ZOT_IO_DEBUG_ERRORS";

/// An open file, addressed by position. Closed at destruction if not before.
/// A failing call sets errno.
class io_file
{
public:
    virtual ~io_file() = default;

    /// Reads up to `bytes`; fewer only at the end of the file. −1 on failure.
    virtual std::int64_t read_at(std::int64_t position, void *to, std::size_t bytes) = 0;

    /// Writes all bytes, or fails; after a failure, any part of them may have been written.
    virtual bool write_at(std::int64_t position, const void *from, std::size_t bytes) = 0;

    /// −1 on failure.
    virtual std::int64_t size() = 0;
    /// Cuts the file to, or extends it to, `size` bytes; false on failure.
    virtual bool truncate(std::int64_t size) = 0;
    /// False if what was written may be lost; the file is closed anyway.
    virtual bool close() = 0;
};

/// How a file is opened.
enum class io_open {
    read,       ///< an existing file, to read
    update,     ///< an existing file, to read and write
    create_new, ///< a file that must not exist yet
    truncate,   ///< made, or emptied
};

/// The functions of the system that the library uses.
class io_env
{
public:
    virtual ~io_env() = default;

    /// Null with errno on failure. Only regular files are opened.
    virtual std::unique_ptr<io_file> open(const char *name, io_open how) = 0;
    /// Deletes a file; false with errno on failure.
    virtual bool remove(const char *name) = 0;
    /// Waits.
    virtual void sleep(int milliseconds) = 0;

    /// Null if the variable is not set.
    virtual const char *variable(const char *name) = 0;

    /// One line of the trace, LF included.
    virtual void put_trace(std::string_view line) = 0;

    /// What the default error routine prints.
    virtual void put_error(std::string_view line) = 0;
    /// Stops in a debugger, if one is attached.
    virtual void break_into_debugger() = 0;
};

/// The real system. It exists as long as the program.
io_env &io_real_env();
