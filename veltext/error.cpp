// Composes error messages from a place and a sentence, or the system's text.
#include "veltext/error.h"

#include <system_error>

namespace veltext {

Error::Error(const std::string &file, std::size_t line, const std::string &sentence)
    : velEditor::error(placeText(file, line) + sentence), sentence_(sentence), line_(line)
{
}

std::string placeText(const std::string &file, std::size_t line)
{
    return file + (line ? ':' + std::to_string(line) : "") + ": ";
}

std::string findingPlace(std::string_view file, std::size_t line)
{
    return std::string(file) + ':' + std::to_string(line) + ": ";
}

void require(const char *message, const std::string &where)
{
    if (message != nullptr) {
        throw where.empty() ? Error(message) : Error(where, 0, message);
    }
}

Error systemError(const std::string &what, int error)
{
    return {what, 0, std::generic_category().message(error)};
}

} // namespace veltext
