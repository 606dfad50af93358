// Cuts long lines into pieces that a reader joins again.
#pragma once

#include "velapilt/src/velArray.h"

#include <cstdint>
#include <string_view>

/// Adds `line` to a string array, in pieces of at most `width` characters. All pieces except
/// the last end in '\'. A width of 0 cuts nothing; another width below 3 gives the message
/// "velWrapLine: requested line length too short".
[[nodiscard]] const char *velWrap(std::string_view line, std::int32_t width, velArray *lines);
