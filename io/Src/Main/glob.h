// Patterns for WHAT and WHERE: * ? [set] [^set] [a-z] \c
#pragma once

#include <string_view>

/// Whether the text contains any of "*?[]".
bool glob_has_pattern(std::string_view text);

/// Whether the whole of `text` matches. A pattern without any of those
/// characters is compared as it is. A set that is not closed matches
/// nothing; ']' and '-' directly after the opening (and its caret) are literal, so
/// is '-' at the end; a backslash at the end is literal too.
bool glob_match(std::string_view pattern, std::string_view text);
