// What a value may be so that a command file gives it back as it was.
//
// The database stores any text; once a file has been written it is too late to
// find out. Whoever takes a value from a user therefore asks here first, and
// words the refusal itself.
#pragma once

#include <cstddef>
#include <string_view>

namespace veltext {

/// Why a file would not give a value back.
enum class ValueFault {
    None,             ///< a file gives the value back
    ControlCharacter, ///< a line cannot hold it
    Remark,           ///< a '#' without a back-slash before it begins a remark
    FinalBackslash,   ///< would continue the line
    WhiteSpace,       ///< outer blanks go, a tab or several blanks become one blank
};

/// The result of a check.
struct ValueCheck
{
    ValueFault fault = ValueFault::None;
    std::size_t position = 0; ///< of the first character with that fault, in bytes
};

/// The first fault of the worst kind: the order is that of the kinds above, of
/// which white space alone leaves the value what it means.
[[nodiscard]] ValueCheck checkValueText(std::string_view value);

} // namespace veltext
