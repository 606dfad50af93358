// Tags, widths and limits of the container format; docs/container-format.md
// explains them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

inline constexpr char IO_ESC = '\x1b'; ///< between the fields of records and index lines

inline constexpr std::string_view IO_TAG_INFO = "*INFO";
inline constexpr std::string_view IO_TAG_END_INFO = "*ENDINFO";
inline constexpr std::string_view IO_TAG_DATASET = "*DATASET";
inline constexpr std::string_view IO_TAG_HEADER = "*HEADER";
inline constexpr std::string_view IO_TAG_DATA = "*DATA";
inline constexpr std::string_view IO_TAG_END_DATASET = "*ENDDATASET";
inline constexpr std::string_view IO_TAG_INDEX = "*INDEX";
inline constexpr std::string_view IO_TAG_END_INDEX = "*ENDINDEX";
inline constexpr std::string_view IO_TAG_CRASH = "*CRASH";

inline constexpr std::string_view IO_KEY_WHAT = "WHAT";
inline constexpr std::string_view IO_KEY_WHERE = "WHERE";
inline constexpr std::string_view IO_KEY_WHEN = "WHEN";
inline constexpr std::string_view IO_KEY_ATTRIBUTES = "NUMATTRB";
inline constexpr std::string_view IO_KEY_TYPE = "DATATYPE";
inline constexpr std::string_view IO_KEY_NUMBER = "NUMBER";
inline constexpr std::string_view IO_KEY_BLOCKFACTOR = "BLOCKFACTOR";

inline constexpr std::size_t IO_FORMAT_BYTES = 3; ///< letter, second character, LF
inline constexpr int IO_OFFSET_WIDTH_OLD = 10;    ///< characters of an offset as text
inline constexpr int IO_OFFSET_WIDTH = 20;        ///< the same in new files
inline constexpr std::size_t IO_RECORD_MAX = 80;  ///< characters of a header record
inline constexpr std::size_t IO_TYPE_RECORD_MAX = 256;
inline constexpr std::size_t IO_WHAT_MAX = IO_RECORD_MAX - 5;  ///< without "WHAT" ESC
inline constexpr std::size_t IO_WHERE_MAX = IO_RECORD_MAX - 6; ///< without "WHERE" ESC
inline constexpr std::size_t IO_ATTRIBUTE_MAX = IO_RECORD_MAX;
inline constexpr std::size_t IO_TYPE_MAX = IO_TYPE_RECORD_MAX - 9; ///< without "DATATYPE" ESC
inline constexpr std::int32_t IO_ATTRIBUTES_MAX = 100000;          ///< more are damage
inline constexpr std::size_t IO_STRING_LENGTH = 80; ///< of a STRI that states no length
inline constexpr int IO_MAXENT = 40; ///< entries of a structure; files depend on 41, see the page

inline constexpr std::size_t IO_INDEX_SLOT =
    256; ///< bytes of an index line in memory, NUL included
inline constexpr std::int32_t IO_INDEX_GROWTH =
    10000; ///< usable slots that a table starts with and gains

inline constexpr std::int64_t IO_WIDE_FROM = 0x60000001; ///< data bytes from which U becomes L
inline constexpr std::int32_t IO_COMPRESS_FROM = 100; ///< elements from which arrays are compressed
inline constexpr std::int32_t IO_BLOCKFACTOR = 100000; ///< written instead of 1
inline constexpr std::int64_t IO_STORED = -1; ///< compressed length of data that is not compressed

/// zlib cannot compress better than about 1032 : 1; a header that states more is wrong.
inline constexpr std::int64_t IO_INFLATE_RATIO = 1100;

/// Bytes that the data of a formatted dataset may always have in memory, even if its lines
/// are very short.
inline constexpr std::int64_t IO_ALWAYS_POSSIBLE = 64 * 1024 * 1024;

/// The length of the shortest dataset: tags, and empty records with their counts.
inline constexpr std::int64_t IO_DATASET_BYTES_MIN = 100;

inline constexpr int IO_INTEGER_WIDTH = 10;
inline constexpr int IO_INTEGERS_PER_LINE = 8;
inline constexpr int IO_REAL_WIDTH = 20;
inline constexpr int IO_REALS_PER_LINE = 4;
