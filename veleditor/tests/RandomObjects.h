// Random command text with few names, so that two texts have many items in common.
#pragma once

#include <random>
#include <string>

namespace velEditor {

/// Objects with parameters and objects, at most `deepest` levels.
[[nodiscard]] std::string randomObjects(std::mt19937 &random, int deepest);

} // namespace velEditor
