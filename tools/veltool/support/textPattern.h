// A search text, which may have wildcards.
#pragma once

#include <string>
#include <string_view>

namespace veltool {

/// A text in which `*` matches any characters and `?` matches one character;
/// upper and lower case are the same.
class TextPattern
{
public:
    explicit TextPattern(std::string_view text);

    /// Whether it matches a part of the text, or all of it.
    [[nodiscard]] bool isIn(std::string_view text) const;

    /// Whether it matches the whole text.
    [[nodiscard]] bool fits(std::string_view text) const;

private:
    std::string folded_;
    std::string anywhere_; ///< `folded_` between two `*`; empty without wildcards
};

} // namespace veltool
