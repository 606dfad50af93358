// Lists in values: elements between commas.
//
// A comma inside parentheses does not split. Each element is trimmed. The text
// after the last comma is always an element, so an empty text has one empty
// element.
#pragma once

#include "velapilt/src/velArray.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Adds the elements to a string array; `count` receives their number.
[[nodiscard]] const char *splitString(velArray *array, std::string_view text, std::int32_t *count);

/// Like splitString, but puts the elements into `list`.
[[nodiscard]] const char *splitStringString(std::string_view text, velStringList *list);

/// Reads each element with isLogicalValue. If elements are not logicals,
/// `message` receives one text with the messages of all of them, and the function
/// returns it.
[[nodiscard]] const char *
splitLogicalString(std::string_view text, std::vector<std::int32_t> *values, std::string *message);
