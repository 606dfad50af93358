// The value that the database has for a parameter.
#pragma once

#include "velparser/api/velparser.h"

#include <optional>
#include <string>

namespace velEditor {

/// None where there is no such path, or nothing that has a value.
[[nodiscard]] inline std::optional<std::string> storedValue(const std::string &path)
{
    std::optional<std::string> value;
    static_cast<void>(velparser::getStringValue(path.c_str(), &value));
    return value;
}

} // namespace velEditor
