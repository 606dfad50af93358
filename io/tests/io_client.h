// A client for tests: each request is one call, each result a text.
#pragma once

#include "io/Src/Main/io_session.h"
#include "io/testing/io_memory_env.h"

#include <string>
#include <string_view>
#include <vector>

/// Takes all messages that error routines of io_client objects received.
std::string take_messages();
int collect_message(const char *text, std::int32_t length);

/// A header with these texts; WHEN is −1, every one.
io_header_storage named_header(std::string_view what, std::string_view where,
                               std::string_view type = "");

class io_client
{
public:
    explicit io_client(io_env &env) : session_(env) {}

    io_session &session() { return session_; }

    /// Sends a request that needs at most a file name.
    int request(io_request number, const char *filename = nullptr);
    int request(io_request number, IO_header header, IO_data &data);

    int write_integers(const char *what, const char *where, std::int32_t when,
                       const std::vector<std::int32_t> &values, const char *format = nullptr,
                       io_request number = IO_WRITE_PRIMARY_DS);
    int write_doubles(const char *what, const char *where, std::int32_t when,
                      const std::vector<double> &values, const char *format = nullptr);
    int write_strings(const char *what, const char *where, std::int32_t when,
                      const std::vector<std::string> &lines, const char *format = nullptr);
    int remove(const char *what, const char *where, std::int32_t when);

    /// One line "WHAT WHERE WHEN" per match, or "code N".
    std::string locate(const char *what, const char *where, std::int32_t when,
                       io_request number = IO_LOCATE_PRIMARY);

    /// Position and length of the first match; 0 if there is none.
    std::int64_t position(const char *what, const char *where, std::int32_t when);

    /// The values of the first match, separated by blanks, strings in quotes, in
    /// the order STRI, CHAR, INTR, REAL, DBLE, LOGL; or "code N".
    std::string read(const char *what, const char *where, std::int32_t when, const char *as = "");

    /// The same for a dataset at a position.
    std::string read_at(std::int64_t position, const char *as = "");

    io_header_storage header; ///< of the last request that used one

private:
    io_session session_;
};

/// Arrays of the sizes in `sizes`, after a read that returned 14.
class io_arrays
{
public:
    explicit io_arrays(IO_data &data, std::size_t string_slot);

private:
    std::vector<char> strings_;
    std::vector<char> chars_;
    std::vector<std::int32_t> integers_;
    std::vector<float> reals_;
    std::vector<double> doubles_;
    std::vector<std::uint8_t> logicals_;
};
