// Texts for the codes with which socket calls fail.
#pragma once

#include <string>

namespace velEditor {

/// The text of a code, either this system's own (`errno`) or the number that
/// the same failure had where the program comes from (10014 and up):
/// "connection reset". A code without a text reads "error code %d".
[[nodiscard]] std::string socketErrorText(int code);

} // namespace velEditor
