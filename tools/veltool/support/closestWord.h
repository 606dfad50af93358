// Finds the word that a user probably meant, for suggestions in messages.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace veltool {

/// The known word that is closest to a mistyped one, by the number of letters that
/// are missing, added, wrong or swapped; case does not matter. Of equally close
/// words, the first. Empty if more than a third of the letters differ.
[[nodiscard]] std::string closestWord(std::string_view word, std::span<const std::string> known);

} // namespace veltool
