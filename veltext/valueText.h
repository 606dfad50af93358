// Checks whether a command file keeps a value as it is.
//
// The database stores any text, but a file does not: the loss would show only when
// the file is read again. So a program checks each value that a user enters, and
// writes its own message.
#pragma once

#include <cstddef>
#include <string_view>

namespace veltext {

/// Why a file does not keep a value.
enum class ValueFault {
    None,             ///< a file keeps the value
    ControlCharacter, ///< a line cannot contain it
    Comment,          ///< a '#' without a backslash before it begins a comment
    FinalBackslash,   ///< it continues the line
    WhiteSpace,       ///< blanks at the ends are lost; a tab or several blanks become one
};

/// The result of a check.
struct ValueCheck
{
    ValueFault fault = ValueFault::None;
    std::size_t position = 0; ///< of the first wrong character, in bytes
};

/// The first mistake of the worst kind, in the order of the kinds above. White
/// space comes last because it does not change the meaning of the value.
[[nodiscard]] ValueCheck checkValueText(std::string_view value);

} // namespace veltext
