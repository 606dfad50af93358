// What a value may be so that a command file gives it back when it is read
// again. The database stores any text; saving is too late to find out.
//
// A value may end in a back-slash: whoever writes its line puts an empty comment
// after it, ` #`, so that the line does not continue.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace velEditor {

/// Why a command file could not hold this value, as a sentence for the user;
/// empty when it can.
[[nodiscard]] QString whyFileCannotHold(std::string_view value);

/// The line of command text that sets a parameter to such a value.
[[nodiscard]] std::string parameterLine(const std::string &name, const std::string &value);

} // namespace velEditor
