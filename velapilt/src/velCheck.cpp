// What a type, a name and a value may be made of.
#include "velapilt/src/velCheck_p.h"

#include "velapilt/src/velError_p.h"

#include <cstring>

namespace {

bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isWordCharacter(char c)
{
    // memchr, not strchr: a NUL is not a word character
    return isLetter(c) || (c >= '0' && c <= '9') || std::memchr("\t .[]_{|}", c, 9) != nullptr;
}

int lengthOf(std::string_view text)
{
    return static_cast<int>(text.size());
}

/// The rule common to types and names.
const char *checkWord(velHandle *handle, const char *what, std::string_view word)
{
    if (word.empty() || !(isLetter(word[0]) || word[0] == '_' || word[0] == '%')) {
        return velSetError(handle,
                           "invalid %s \"%.*s\": leading character must be alphabetic or '_'", what,
                           lengthOf(word), word.data());
    }
    for (const char c : word.substr(1)) {
        if (!isWordCharacter(c)) {
            return velSetError(handle, "invalid %s \"%.*s\": contains invalid character '%c'", what,
                               lengthOf(word), word.data(), c);
        }
    }
    return nullptr;
}

} // namespace

const char *velCheckType(velHandle *handle, std::string_view type)
{
    return type.empty() ? "invalid object type: must be non-empty."
                        : checkWord(handle, "object type", type);
}

const char *velCheckObjectName(velHandle *handle, std::string_view name)
{
    return checkWord(handle, "object name", name);
}

const char *velCheckParamName(velHandle *handle, std::string_view name)
{
    return name.empty() ? "invalid parameter name: must be non-empty."
                        : checkWord(handle, "parameter name", name);
}

const char *velCheckValue(velHandle *handle, std::string_view value)
{
    for (const char c : value) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 32 && c != '\t') {
            return velSetError(handle,
                               "invalid parameter value \"%.*s\": control character number %d is "
                               "not allowed.",
                               lengthOf(value), value.data(), code);
        }
    }
    return nullptr;
}
