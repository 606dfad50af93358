// Chooses format codes, and converts live ones to deleted marks and back.
#include "io/Src/Main/iofmt.h"

#include "io/Src/Main/container_format.h"
#include "io/Src/Main/io_env.h"

namespace {

constexpr unsigned char little_endian_bit = 0x80;

char with_bit(char digit)
{
    return static_cast<char>(static_cast<unsigned char>(digit) | little_endian_bit);
}

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

bool format_code::binary() const
{
    return letter == 'U' || letter == 'u' || letter == 'L' || letter == 'l';
}

bool format_code::deleted() const
{
    return letter == 'D' || letter == 'd' || letter == 'X' || letter == 'x';
}

bool iofmt_is_letter(char letter)
{
    return letter != '\0' && std::string_view("FDdUuLlXx").find(letter) != std::string_view::npos;
}

format_code iofmt_parse(std::string_view text)
{
    format_code format;
    if (!text.empty() && iofmt_is_letter(text[0])) {
        format.letter = text[0];
    }
    // "no digit" is a space on disk, whatever character was given. F has no
    // digit.
    if (text.size() > 1 && is_digit(text[1]) && !format.formatted()) {
        format.second = text[1];
    }
    return format;
}

int iofmt_make_native(const io_reporter &report, format_code &format)
{
    switch (format.letter) {
    case 'F':
        return IO_OK;
    case 'D':
    case 'd':
        format.letter = 'D';
        return IO_OK;
    case 'L':
    case 'l':
        format.letter = 'l';
        return IO_OK;
    case 'U':
    case 'u':
        format.letter = 'u';
        return IO_OK;
    case 'X':
    case 'x':
        format.letter = 'x';
        return IO_OK;
    default:
        return report.error(IO_BAD_FORMAT, "iofmt_make_native: unrecognised format %c%c",
                            format.letter, format.second);
    }
}

int iofmt_choose(const io_reporter &report, io_env &env, std::string_view asked,
                 std::int64_t data_bytes, format_code &format)
{
    const char *forced = env.variable(io_format_variable);
    if (forced != nullptr && *forced != '\0') {
        format = iofmt_parse(forced);
    } else if (!asked.empty()) {
        // A wrong letter of a client is refused below; a wrong letter in the
        // variable is not.
        format_code wrong = {asked[0], asked.size() > 1 ? asked[1] : ' '};
        format = iofmt_is_letter(asked[0]) ? iofmt_parse(asked) : wrong;
    } else {
        format = {'U', '5'};
    }
    if (data_bytes >= IO_WIDE_FROM && (format.letter == 'U' || format.letter == 'u')) {
        format.letter = 'L';
    }
    return iofmt_make_native(report, format);
}

std::optional<format_code> iofmt_deleted_mark(format_code live)
{
    bool digit = live.has_digit();
    switch (live.letter) {
    case 'F':
        return format_code{'D', 'F'};
    case 'U':
        return format_code{'D', digit ? live.second : 'U'};
    case 'u':
        return format_code{'D', digit ? with_bit(live.second) : 'u'};
    case 'L':
        return format_code{'X', digit ? live.second : 'L'};
    case 'l':
        return format_code{'x', digit ? with_bit(live.second) : 'l'};
    default:
        return std::nullopt;
    }
}

std::vector<format_code> iofmt_restore(format_code mark)
{
    bool narrow = mark.letter == 'D' || mark.letter == 'd';
    char big = narrow ? 'U' : 'L';
    char little = narrow ? 'u' : 'l';
    if (narrow && mark.second == 'F') {
        return {IO_FORMATTED};
    }
    if (mark.second == big || mark.second == little) {
        return {{mark.second, ' '}};
    }
    if (mark.has_digit()) {
        // A digit without the bit after a small x: the letter gives the byte
        // order.
        return {{mark.letter == 'x' ? 'l' : big, mark.second}};
    }
    auto plain = static_cast<char>(static_cast<unsigned char>(mark.second) & ~little_endian_bit);
    if (plain != mark.second && is_digit(plain)) {
        return {{little, plain}};
    }
    if (narrow) {
        return {{'U', ' '}, {'u', ' '}, IO_FORMATTED};
    }
    return {{'L', ' '}, {'l', ' '}};
}
