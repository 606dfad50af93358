// Texts for the codes with which socket calls fail.
#pragma once

#include <string>

namespace velEditor {

/// The text of a code, such as "connection reset". The code is an `errno` of this
/// system or the number of the same failure on the platform of origin (10014 and
/// up). The text of any other code is "error code %d".
[[nodiscard]] std::string socketErrorText(int code);

} // namespace velEditor
