// Numbers and texts in the body of a record.
//
// A number has 4 or 8 bytes and begins with its lowest byte. A text is its length,
// a number of 4 bytes, and its bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace veltext {

void putNumber(std::string *to, std::uint32_t number);
void putLongNumber(std::string *to, std::uint64_t number);
void putText(std::string *to, std::string_view text);

/// Takes the fields off a body, one after the other. Where the body is too short, a
/// field is 0 or empty, and `isGood` is false from then on.
class FieldReader
{
public:
    explicit FieldReader(std::string_view body) : rest_(body) {}

    [[nodiscard]] unsigned char byte();
    [[nodiscard]] std::uint32_t number();
    [[nodiscard]] std::uint64_t longNumber();
    [[nodiscard]] std::string text();

    [[nodiscard]] bool isGood() const { return isGood_; }

    /// For a caller that finds a field without a meaning.
    void fail() { isGood_ = false; }

    /// Whether all fields were there, and nothing is left.
    [[nodiscard]] bool isAtEnd() const { return isGood_ && rest_.empty(); }

private:
    [[nodiscard]] std::string_view take(std::size_t size);
    [[nodiscard]] std::uint64_t numberOf(std::size_t size);

    std::string_view rest_;
    bool isGood_ = true;
};

} // namespace veltext
