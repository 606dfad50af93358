// Writes and reads the fields of records.
#include "veltext/fields.h"

namespace veltext {

namespace {

constexpr unsigned bitsOfByte = 8;
constexpr unsigned lowByte = 0xff;

void putBytes(std::string *to, std::uint64_t number, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i) {
        *to += static_cast<char>(number & lowByte);
        number >>= bitsOfByte;
    }
}

} // namespace

void putNumber(std::string *to, std::uint32_t number)
{
    putBytes(to, number, sizeof number);
}

void putLongNumber(std::string *to, std::uint64_t number)
{
    putBytes(to, number, sizeof number);
}

void putText(std::string *to, std::string_view text)
{
    putNumber(to, static_cast<std::uint32_t>(text.size()));
    to->append(text);
}

std::string_view FieldReader::take(std::size_t size)
{
    if (!isGood_ || size > rest_.size()) {
        isGood_ = false;
        return {};
    }
    const std::string_view bytes = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return bytes;
}

std::uint64_t FieldReader::numberOf(std::size_t size)
{
    const std::string_view bytes = take(size);
    std::uint64_t number = 0;
    for (std::size_t i = bytes.size(); i > 0; --i) {
        number = number << bitsOfByte | static_cast<unsigned char>(bytes[i - 1]);
    }
    return number;
}

unsigned char FieldReader::byte()
{
    return static_cast<unsigned char>(numberOf(1));
}

std::uint32_t FieldReader::number()
{
    return static_cast<std::uint32_t>(numberOf(sizeof(std::uint32_t)));
}

std::uint64_t FieldReader::longNumber()
{
    return numberOf(sizeof(std::uint64_t));
}

std::string FieldReader::text()
{
    return std::string(take(number()));
}

} // namespace veltext
