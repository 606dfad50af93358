// The dataset with the command data of a run: what it is called, and which one counts
// where there are several.
//
// The one with the largest WHEN counts, the first of the library's order. Among more than
// IO_COMMANDS_CANDIDATES of them only WHEN 0 counts: a search has room for no more.
#pragma once

#include <cstddef>

inline constexpr const char *IO_COMMANDS_WHAT = "G/COMMANDS";
inline constexpr const char *IO_COMMANDS_WHERE = "EVERY";
inline constexpr std::size_t IO_COMMANDS_CANDIDATES = 20;
