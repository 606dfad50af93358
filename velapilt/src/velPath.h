// Paths as texts: the normal form in which every node's path is written.
//
// Normal form: white space around the path goes; every run of blanks, tabs,
// '/' and ':' becomes one '/' if it holds one, else one ':' if it holds one,
// else one blank; a component TYPE:TYPE becomes TYPE (the path of a
// Singleton); a last '/' goes unless it is alone. A text shorter than two
// characters is only trimmed.
#pragma once

#include <string>
#include <string_view>

/// What becomes of a last component TYPE:TYPE.
enum class velLastComponent {
    Reduce, ///< as every component
    Keep,   ///< so that the create operations can refuse it
};

/// The normal form of a path. Throws bad_alloc.
[[nodiscard]] std::string velNormalForm(std::string_view path,
                                        velLastComponent last = velLastComponent::Reduce);

/// `path` made absolute: relative ones follow `current`, "./" at the
/// start goes, and ".." takes away the component before it.
[[nodiscard]] std::string velAbsolutePath(std::string_view current, std::string_view path);
