// The codes that every function of the library returns, and their texts.
#pragma once

#include <array>
#include <cstddef>

/// Clients know these numbers, so they never change.
enum io_code : int {
    IO_OK = 0,
    IO_CANNOT_OPEN = 1,
    IO_NO_OPEN_FILE = 2,
    IO_NO_FILE = 3,
    IO_DISK_FULL = 4,
    IO_END_OF_FILE = 5,
    IO_PERMISSION = 6,
    IO_CANNOT_CLOSE = 7,
    IO_CANNOT_SEEK = 8,
    IO_CANNOT_TELL = 9,
    IO_READ_ERROR = 10,
    IO_WRITE_ERROR = 11,
    IO_PARSE_ERROR = 12,
    IO_NO_DATASET = 13,
    IO_NO_ROOM = 14,
    IO_BAD_FORMAT = 15,
    IO_MANY_DATASETS = 16,
    IO_NOT_FOUND = 17,
    IO_BAD_STRING = 18,
    IO_NO_ROUTINE = 19,
    IO_BAD_FILE = 20,
    IO_LOCKED = 21,
    IO_UNKNOWN_REQUEST = 22,
    IO_COMPRESSION = 23,
    IO_ABSENT = 24,
    IO_NO_ATTRIBUTE = 25,
    IO_UNKNOWN_ERROR = 26,
    IO_NO_CONVERSION = 27,
    IO_NO_MEMORY = 28,
    IO_COMPRESSED_WRITE = 29,
    IO_NOT_COMPRESSED = 30,
    IO_NO_SWAPPING = 31,
    IO_CODE_COUNT = 32,
};

/// By code. The texts of 13 and 17 differ; clients rely on this.
inline constexpr auto io_code_texts = std::to_array<const char *>({
    "Successful.",
    "Could not open file.",
    "There is no open file for this operation.",
    "File not found.",
    "Disk is full.",
    "Unexpected end-of-file.",
    "Permission denied.",
    "Could not close file.",
    "Could not seek to desired location.",
    "Could not determine location in file.",
    "Error reading from disk.",
    "Error writing to disk.",
    "Error parsing IO structures.",
    "Could not find requested dataset.  File could be invalid/corrupted.",
    "Not enough allocated memory for requested IO operation.",
    "IO dataset has incorrect format.",
    "More than one dataset matching description found.",
    "Could not find requested dataset.  File could be invalid.",
    "IO error read string information.  File could be invalid.",
    "Invalid error reporting routine passed to IO module.",
    "Invalid def/res file.  File could be corrupted.",
    "File is locked.  Remove the lock (lck) file if this shouldn't be the case.",
    "Unknown IO request made",
    "Data compression failed.",
    "File does not exist.",
    "The attribute does not exist.",
    "An unknown error has occurred.",
    "Dataset could not be converted.",
    "Unable to allocate enough memory for the requested operation.",
    "Error writing compressed data.",
    "Data is not compressed.",
    "Byte swapping is not enabled.",
});
static_assert(io_code_texts.size() == IO_CODE_COUNT);

/// The text of a code; for a number that is not a code, the text of 26.
constexpr const char *io_code_text(int code)
{
    bool known = code >= 0 && code < IO_CODE_COUNT;
    return io_code_texts[static_cast<std::size_t>(known ? code : IO_UNKNOWN_ERROR)];
}
