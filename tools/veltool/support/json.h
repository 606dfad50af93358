// Writes JSON for the commands.
//
// Command data may be any bytes, but JSON is UTF-8. In a text that is not valid
// UTF-8, U+FFFD replaces the invalid parts, and a second member, whose name ends in
// "Bytes", has the bytes in hexadecimal.
//
// Objects are written piece by piece, so that a tree with a million parameters, or
// with a hundred thousand levels, needs no memory here.
#pragma once

#include <string>
#include <string_view>

namespace veltool {

/// Whether the text is valid UTF-8; true for an empty text.
[[nodiscard]] bool isValidUtf8(std::string_view text);

/// The text as a JSON string, quoted and escaped.
[[nodiscard]] std::string jsonString(std::string_view text);

/// `"name":"text"`, followed by `,"nameBytes":"6162ff"` if the text is not UTF-8.
[[nodiscard]] std::string jsonMember(std::string_view name, std::string_view text);
/// As above; null gives `"name":null`.
[[nodiscard]] std::string jsonMember(std::string_view name, const char *text);
[[nodiscard]] std::string jsonMember(std::string_view name, std::size_t number);

/// The texts `[`, `,` and `]` before, between and after the elements of an array,
/// with each element on its own line.
class JsonArray
{
public:
    /// The text before the next element.
    [[nodiscard]] std::string_view next();
    /// The text after the last element.
    [[nodiscard]] std::string_view end() const;

private:
    bool empty_ = true;
};

} // namespace veltool
