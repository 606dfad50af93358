// The plain text file: numbers in columns, and lines of text. It is not a container.
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

/// Access by its first character: "r" reads; "w" makes or empties the file; "a" adds to its
/// end, and makes it if it is missing.
[[nodiscard]] int iif_open_text(io_env &env, const io_reporter &report, const char *name,
                                const char *access, plain_text &file);
/// 7 with a message if what was written may be lost; the file is closed anyway.
[[nodiscard]] int iif_close_text(plain_text &file);

/// Lines of numbers until the array is full: integers in columns of 10, reals
/// in columns of 20 characters. 10 for a line that has anything else, or more numbers than
/// the array has space for; the array then contains zeros.
[[nodiscard]] int read_text_integers(plain_text &file, IO_data &data);
[[nodiscard]] int read_text_reals(plain_text &file, IO_data &data);

/// Each string as a line, without its trailing blanks.
[[nodiscard]] int write_text(plain_text &file, const IO_data &data);
