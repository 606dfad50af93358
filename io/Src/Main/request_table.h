// What each request of iocntc() needs from its client, and its name in messages.
#pragma once

#include "io/Src/Main/iocntc.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// What iocntc() checks before it performs a request.
struct request_traits
{
    io_request request;
    const char *name;
    bool header = true;   ///< a complete IO_header
    bool offsets = false; ///< the offset array of IO_data; a pair of them unless it locates
    bool locates = false; ///< the string and integer arrays too; it says itself how large
};

/// Every request, by its number.
inline constexpr auto request_table = std::to_array<request_traits>({
    {.request = IO_OPEN_PRIMARY, .name = "IO_OPEN_PRIMARY", .header = false},
    {.request = IO_CLOSE_PRIMARY, .name = "IO_CLOSE_PRIMARY", .header = false},
    {.request = IO_OPEN_PRIMARY_WRITE, .name = "IO_OPEN_PRIMARY_WRITE", .header = false},
    {.request = IO_OPEN_SECONDARY, .name = "IO_OPEN_SECONDARY", .header = false},
    {.request = IO_CLOSE_SECONDARY, .name = "IO_CLOSE_SECONDARY", .header = false},
    {.request = IO_WRITE_PRIMARY_DS, .name = "IO_WRITE_PRIMARY_DS"},
    {.request = IO_WRITE_SECONDARY_DS, .name = "IO_WRITE_SECONDARY_DS"},
    {.request = IO_LOCATE_PRIMARY, .name = "IO_LOCATE_PRIMARY", .offsets = true, .locates = true},
    {.request = IO_LOCATE_SECONDARY,
     .name = "IO_LOCATE_SECONDARY",
     .offsets = true,
     .locates = true},
    {.request = IO_DELETE_PRIMARY_DS, .name = "IO_DELETE_PRIMARY_DS"},
    {.request = IO_READ_LOCATED_DS, .name = "IO_READ_LOCATED_DS", .offsets = true},
    {.request = IO_READ_HEADER, .name = "IO_READ_HEADER", .offsets = true},
    {.request = IO_WRITE_HEADER, .name = "IO_WRITE_HEADER", .offsets = true},
    {.request = IO_READ_DATA, .name = "IO_READ_DATA", .header = false},
    {.request = IO_WRITE_DATA, .name = "IO_WRITE_DATA", .header = false},
    {.request = IO_END_DATASET, .name = "IO_END_DATASET", .header = false},
    {.request = IO_COPY_DATASET, .name = "IO_COPY_DATASET", .offsets = true},
    {.request = IO_COPY_ALLVALID_DS, .name = "IO_COPY_ALLVALID_DS", .header = false},
    {.request = IO_READ_BLOCK, .name = "IO_READ_BLOCK", .offsets = true},
    {.request = IO_COPY_WHEN0_DS, .name = "IO_COPY_WHEN0_DS"},
    {.request = IO_COPY_DS_COMPRESS_WHEN, .name = "IO_COPY_DS_COMPRESS_WHEN"},
    {.request = IO_OPEN_TEXT, .name = "IO_OPEN_TEXT", .header = false},
    {.request = IO_READ_COMPRESSED, .name = "IO_READ_COMPRESSED", .offsets = true},
    {.request = IO_WRITE_COMPRESSED, .name = "IO_WRITE_COMPRESSED", .offsets = true},
    {.request = IO_READ_INTEGERS, .name = "IO_READ_INTEGERS", .header = false},
    {.request = IO_READ_REALS, .name = "IO_READ_REALS", .header = false},
    {.request = IO_WRITE_TEXT, .name = "IO_WRITE_TEXT", .header = false},
    {.request = IO_CLOSE_TEXT, .name = "IO_CLOSE_TEXT", .header = false},
});

/// An unknown request is refused only after its header was checked.
inline constexpr request_traits unknown_request = {.request = {}, .name = "an unknown request"};

/// Where the table has each number, one more than the place; 0 for a number that it
/// does not have.
inline constexpr auto request_places = [] {
    std::array<std::uint8_t, 64> places = {};
    for (std::size_t i = 0; i < request_table.size(); i++) {
        places.at(request_table[i].request) = static_cast<std::uint8_t>(i + 1);
    }
    return places;
}();

/// What a request needs; unknown_request for a number that is not in the table.
[[nodiscard]] constexpr const request_traits &traits_of(io_request request)
{
    std::size_t place = request < request_places.size() ? request_places[request] : 0;
    return place == 0 ? unknown_request : request_table[place - 1];
}
