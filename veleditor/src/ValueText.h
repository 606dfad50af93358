// Checks whether a value can be saved in a command file and read back unchanged. The
// database stores any text, and at the time of saving it is too late to refuse one.
//
// A value may end in a backslash: the writer of its line adds an empty comment, ` #`,
// so that the line does not continue.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace velEditor {

/// Why a command file cannot contain this value, as a text for the user; empty if it
/// can.
[[nodiscard]] QString whyFileCannotHold(std::string_view value);

/// The line of command text that sets a parameter to a value.
[[nodiscard]] std::string parameterLine(const std::string &name, const std::string &value);

} // namespace velEditor
