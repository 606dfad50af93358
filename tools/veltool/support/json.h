// JSON as the commands print it.
//
// Command data is bytes; JSON is UTF-8. A text that is not valid UTF-8 is
// printed with U+FFFD in place of its invalid parts, and a second member whose
// name ends in "Bytes" gives its bytes in hexadecimal.
//
// Objects are written piece by piece: a tree of a million parameters, or one
// nested a hundred thousand deep, needs no memory of its own.
#pragma once

#include <string>
#include <string_view>

namespace veltool {

/// Whether every byte belongs to a character; true for an empty text.
[[nodiscard]] bool isValidUtf8(std::string_view text);

/// The text in quotes, escaped.
[[nodiscard]] std::string jsonString(std::string_view text);

/// `"name":"text"`, and `,"nameBytes":"6162ff"` where it is needed.
[[nodiscard]] std::string jsonMember(std::string_view name, std::string_view text);
/// As above; null gives `"name":null`.
[[nodiscard]] std::string jsonMember(std::string_view name, const char *text);
[[nodiscard]] std::string jsonMember(std::string_view name, std::size_t number);

/// The texts `[`, `,` and `]` around and between the elements of an array,
/// each element on a line of its own.
class JsonArray
{
public:
    /// What stands before the next element.
    [[nodiscard]] std::string_view next();
    /// What ends the array.
    [[nodiscard]] std::string_view end() const;

private:
    bool empty_ = true;
};

} // namespace veltool
