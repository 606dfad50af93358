// The one entry point of the library: every request of a client passes here.
//
// There are no handles: the library keeps one primary file, one secondary file
// (the target of copies) and one plain text file, and a request names by its
// number which one it acts on. It is used by one thread.
//
// A client gets a code (io_codes.h); each step that failed has sent its message to the error
// routine. There is no message for code 14 of a locate or a read with arrays that are too
// small: it is not a failure, but the answer to the question which sizes are needed.
//
// To read a dataset: IO_OPEN_PRIMARY, IO_LOCATE_PRIMARY, IO_READ_LOCATED_DS with
// null arrays for the sizes, IO_READ_LOCATED_DS again, IO_CLOSE_PRIMARY.
#pragma once

#include "io/Src/Main/io_records.h"
#include "io/Src/Main/io_report.h"

/// The requests of a client. Clients send these numbers, so they never change.
enum io_request : std::uint32_t {
    IO_OPEN_PRIMARY = 0,       ///< `filename`, to read
    IO_CLOSE_PRIMARY = 1,      ///< writes index and size if anything changed
    IO_OPEN_PRIMARY_WRITE = 2, ///< `filename`, to read and write; made if missing
    IO_OPEN_SECONDARY = 3,     ///< likewise
    IO_CLOSE_SECONDARY = 4,
    IO_WRITE_PRIMARY_DS = 5, ///< header and arrays
    IO_WRITE_SECONDARY_DS = 6,
    IO_LOCATE_PRIMARY = 7, ///< WHAT, WHERE (patterns allowed), WHEN (negative: all)
    IO_LOCATE_SECONDARY = 8,
    IO_DELETE_PRIMARY_DS = 9, ///< all that match, as in locating

    /// The dataset at offsets[0] as the header's type ("": as stored); sets the
    /// header's count.
    IO_READ_LOCATED_DS = 10,

    /// The header of the dataset at offsets[0]. 14 if there are more attributes
    /// than slots; their number is set. The data can then be read by IO_READ_DATA.
    IO_READ_HEADER = 11,

    /// Begins a dataset; offsets[0] becomes its position. IO_WRITE_DATA and IO_END_DATASET
    /// must follow; if the file is closed or anything else is written into it before, the
    /// dataset is dropped.
    IO_WRITE_HEADER = 12,
    IO_READ_DATA = 13,   ///< the data of the last header that was read, as stored; once
    IO_WRITE_DATA = 14,  ///< the data of the dataset that was begun
    IO_END_DATASET = 15, ///< completes the dataset that was begun

    /// To the secondary file. With a pattern or a negative WHEN: every match.
    /// Otherwise the dataset at offsets[0], under the header's name; if offsets[0] is 0, the
    /// datasets with exactly this name.
    IO_COPY_DATASET = 16,
    IO_COPY_ALLVALID_DS = 17,

    /// One block of the dataset at offsets[0]. The header's count is the number of the block,
    /// from 0, and becomes the number of its elements (0 after the last block). The header's
    /// block factor is the number of elements in each block; 1 or less means that of the
    /// dataset, or 100000 if it states none. It becomes the number that was used.
    IO_READ_BLOCK = 18,
    IO_COPY_WHEN0_DS = 19,
    IO_COPY_DS_COMPRESS_WHEN = 20, ///< those with the header's WHEN
    IO_OPEN_TEXT = 39,             ///< `filename`, `access`
    IO_READ_COMPRESSED = 43, ///< as IO_READ_LOCATED_DS without conversion; 30 if not compressed
    IO_WRITE_COMPRESSED =
        44, ///< as IO_WRITE_PRIMARY_DS; 30 for a format or type that is not compressed
    IO_READ_INTEGERS = 45, ///< from the text file, until the array is full
    IO_READ_REALS = 46,
    IO_WRITE_TEXT = 48, ///< each string as a line
    IO_CLOSE_TEXT = 51,
};

/// Performs a request on the library's own set of files. For a null routine it only returns
/// 19. It never throws.
[[nodiscard]] int iocntc(std::uint32_t request, io_error_routine routine, IO_header *header,
                         IO_data *data);
