// Reads the value of a parameter from the database.
#pragma once

#include "velparser/api/velparser.h"

#include <optional>
#include <string>

namespace velEditor {

/// None if the path does not exist or does not have a value.
[[nodiscard]] inline std::optional<std::string> storedValue(const std::string &path)
{
    std::optional<std::string> value;
    static_cast<void>(velparser::getStringValue(path.c_str(), &value));
    return value;
}

} // namespace velEditor
