// The plain text file: numbers in columns and lines of text, no container.
#pragma once

#include "io/Src/Main/io_records.h"
#include "io/Src/Main/zot_primitives.h"

/// The file, or none.
struct plain_text
{
    zot_io io;
    std::string name;

    bool is_open() const { return static_cast<bool>(io.stream); }
};

/// Access by its first character: "r" to read; "w" makes or empties the file;
/// "a" adds to its end, making it where it is missing.
[[nodiscard]] int iif_open_text(io_env &env, const io_reporter &report, const char *name,
                                const char *access, plain_text &file);
/// 7 with a message if what was written may be lost; the file is closed anyway.
[[nodiscard]] int iif_close_text(plain_text &file);

/// Lines of numbers until the array is full: integers in columns of 10, reals
/// in columns of 20 characters. 10 for a line that holds anything else, or more
/// than the array has room for; the array then holds zeros.
[[nodiscard]] int read_text_integers(plain_text &file, IO_data &data);
[[nodiscard]] int read_text_reals(plain_text &file, IO_data &data);

/// Each string as a line, without its trailing blanks.
[[nodiscard]] int write_text(plain_text &file, const IO_data &data);
