// What a search looks for: a text, perhaps with wildcards.
#pragma once

#include <string>
#include <string_view>

namespace veltool {

/// A text in which `*` stands for any characters and `?` for any one; capital
/// and small letters are the same.
class TextPattern
{
public:
    explicit TextPattern(std::string_view text);

    /// Whether it fits some part of the text. A text always holds itself.
    [[nodiscard]] bool isIn(std::string_view text) const;

    /// Whether it fits the text from end to end.
    [[nodiscard]] bool fits(std::string_view text) const;

private:
    std::string folded_;
    std::string anywhere_; ///< the same between two `*`; empty without wildcards
};

} // namespace veltool
