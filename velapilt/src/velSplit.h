// Lists in values: elements between commas.
//
// A comma inside parentheses does not split. Every piece is trimmed, and the
// one after the last comma always counts: an empty text is one empty element.
#pragma once

#include "velapilt/src/velArray.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Adds the pieces to a string array; `count` is theirs.
[[nodiscard]] const char *splitString(velArray *array, std::string_view text, std::int32_t *count);

/// As splitString, into a list of its own.
[[nodiscard]] const char *splitStringString(std::string_view text, velStringList *list);

/// Each piece as isLogicalValue reads it. If any is not a logical, `message`
/// receives one text with all their messages, which is returned.
[[nodiscard]] const char *
splitLogicalString(std::string_view text, std::vector<std::int32_t> *values, std::string *message);
