// What a value may be so that a command file gives it back when it is read
// again. The database stores any text; saving is too late to find out.
#pragma once

#include <QString>

#include <string_view>

namespace velEditor {

/// Why a command file could not hold this value, as a sentence for the user;
/// empty when it can.
[[nodiscard]] QString whyFileCannotHold(std::string_view value);

} // namespace velEditor
