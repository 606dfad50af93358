// Paths as texts: the normal form in which every node's path is written.
//
// Normal form:
// - White space around the path is removed.
// - Every run of spaces, tabs, '/' and ':' becomes one character: '/' if the run has one,
//   otherwise ':' if it has one, otherwise a space.
// - A component TYPE:TYPE becomes TYPE (the path of a Singleton).
// - A '/' at the end is removed, unless it is the whole path.
// A text of fewer than two characters only loses the white space around it.
#pragma once

#include <string>
#include <string_view>

/// What happens to a last component TYPE:TYPE.
enum class velLastComponent {
    Reduce, ///< as to every other component
    Keep,   ///< so that the create operations can refuse it
};

/// The normal form of a path. Throws bad_alloc.
[[nodiscard]] std::string velNormalForm(std::string_view path,
                                        velLastComponent last = velLastComponent::Reduce);

/// The absolute form of `path`: a relative path continues `current`, "./" at the start is
/// removed, and ".." removes the component before it.
[[nodiscard]] std::string velAbsolutePath(std::string_view current, std::string_view path);
