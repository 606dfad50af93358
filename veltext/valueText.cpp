// Searches a value for characters that a command file does not keep.
#include "veltext/valueText.h"

#include <algorithm>

namespace veltext {

namespace {

constexpr std::size_t none = std::string_view::npos;
constexpr std::string_view blanks = " \t";

std::size_t findControlCharacter(std::string_view value)
{
    const auto found = std::find_if(value.begin(), value.end(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' && c != '\t';
    });
    return found != value.end() ? static_cast<std::size_t>(found - value.begin()) : none;
}

std::size_t findComment(std::string_view value)
{
    std::size_t found = value.find('#');
    while (found != none && found > 0 && value[found - 1] == '\\') {
        found = value.find('#', found + 1);
    }
    return found;
}

std::size_t findFinalBackslash(std::string_view value)
{
    const std::size_t last = value.find_last_not_of(blanks);
    return last != none && value[last] == '\\' ? last : none;
}

std::size_t findLostWhiteSpace(std::string_view value)
{
    char previous = ' ';
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\t' || (value[i] == ' ' && previous == ' ')) {
            return i;
        }
        previous = value[i];
    }
    return value.ends_with(' ') ? value.size() - 1 : none;
}

} // namespace

ValueCheck checkValueText(std::string_view value)
{
    if (const std::size_t i = findControlCharacter(value); i != none) {
        return {ValueFault::ControlCharacter, i};
    }
    if (const std::size_t i = findComment(value); i != none) {
        return {ValueFault::Comment, i};
    }
    if (const std::size_t i = findFinalBackslash(value); i != none) {
        return {ValueFault::FinalBackslash, i};
    }
    if (const std::size_t i = findLostWhiteSpace(value); i != none) {
        return {ValueFault::WhiteSpace, i};
    }
    return {};
}

} // namespace veltext
