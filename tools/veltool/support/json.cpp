// Writes JSON strings and members, even for bytes that are not UTF-8.
#include "tools/veltool/support/json.h"

#include <nlohmann/json.hpp>

namespace veltool {

namespace {

using Json = nlohmann::json;

constexpr const char *replacementCharacter = "\xEF\xBF\xBD"; ///< U+FFFD

std::string dump(std::string_view text, Json::error_handler_t onError)
{
    return Json(text).dump(-1, ' ', false, onError);
}

std::string hexadecimal(std::string_view text)
{
    constexpr const char *digits = "0123456789abcdef";
    std::string hex;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        hex += digits[byte >> 4U];
        hex += digits[byte & 15U];
    }
    return hex;
}

} // namespace

bool isValidUtf8(std::string_view text)
{
    try {
        static_cast<void>(dump(text, Json::error_handler_t::strict));
        return true;
    } catch (const Json::type_error &) {
        return false;
    }
}

std::string jsonString(std::string_view text)
{
    return dump(text, Json::error_handler_t::replace);
}

std::string jsonMember(std::string_view name, std::string_view text)
{
    const std::string value = jsonString(text);
    std::string member = jsonString(name) + ':' + value;
    // Only a text with a replacement character can be invalid. Most texts have
    // none.
    if (value.find(replacementCharacter) != std::string::npos && !isValidUtf8(text)) {
        member += ',' + jsonString(std::string(name) + "Bytes") + ":\"" + hexadecimal(text) + '"';
    }
    return member;
}

std::string jsonMember(std::string_view name, const char *text)
{
    return text != nullptr ? jsonMember(name, std::string_view(text)) : jsonString(name) + ":null";
}

std::string jsonMember(std::string_view name, std::size_t number)
{
    return jsonString(name) + ':' + std::to_string(number);
}

std::string_view JsonArray::next()
{
    const bool first = empty_;
    empty_ = false;
    return first ? "[\n" : ",\n";
}

std::string_view JsonArray::end() const
{
    return empty_ ? "[]\n" : "\n]\n";
}

} // namespace veltool
