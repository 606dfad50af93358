// The parts of a path as a text: the path of the parent and the last component. Paths are
// absolute and in normal form; "/" is the root.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

/// The path of the parent; of the root its own. Throws bad_alloc.
[[nodiscard]] inline std::string velPathOfParent(std::string_view path)
{
    return std::string(path.substr(0, std::max<std::size_t>(path.rfind('/'), 1)));
}

/// The last component; of the root an empty text. Throws bad_alloc.
[[nodiscard]] inline std::string velLastOfPath(std::string_view path)
{
    return std::string(path.substr(path.rfind('/') + 1));
}

/// The path of a child. Throws bad_alloc.
[[nodiscard]] inline std::string velPathOfChild(std::string_view object, std::string_view component)
{
    std::string path(object == "/" ? std::string_view() : object);
    path += '/';
    path += component;
    return path;
}
