// Distinguishes UTF-8 from Latin-1, and encodes typed text.
#include "veleditor/src/TextEncoding.h"

#include "veleditor/src/Text.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace velEditor {

namespace {

constexpr char32_t lastLatin1 = 0xFF;

/// The place of the first byte from `i` on that is not ASCII.
std::size_t skipAscii(std::string_view bytes, std::size_t i)
{
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    std::uint64_t word = 0;
    for (; i + sizeof word <= bytes.size(); i += sizeof word) {
        std::memcpy(&word, bytes.data() + i, sizeof word);
        if ((word & highBits) != 0) {
            break;
        }
    }
    while (i < bytes.size() && static_cast<unsigned char>(bytes[i]) < 0x80) {
        ++i;
    }
    return i;
}

/// The bytes that may follow the first byte of a character: how many, and the range
/// of the first of them. The others are 0x80 to 0xBF.
struct Sequence
{
    std::size_t following;
    unsigned char low;
    unsigned char high;
};

/// The bytes that follow `first`; none if no character begins with it.
Sequence sequenceAfter(unsigned char first)
{
    if (first >= 0xC2 && first <= 0xDF) {
        return {1, 0x80, 0xBF};
    }
    if (first >= 0xE0 && first <= 0xEF) {
        const unsigned char low = first == 0xE0 ? 0xA0 : 0x80;
        const unsigned char high = first == 0xED ? 0x9F : 0xBF;
        return {2, low, high};
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const unsigned char low = first == 0xF0 ? 0x90 : 0x80;
        const unsigned char high = first == 0xF4 ? 0x8F : 0xBF;
        return {3, low, high};
    }
    return {0, 0, 0};
}

/// Checks the character at `i`, which is not ASCII, and moves `i` to the next.
bool skipCharacter(std::string_view bytes, std::size_t &i)
{
    const Sequence sequence = sequenceAfter(static_cast<unsigned char>(bytes[i]));
    if (sequence.following == 0 || bytes.size() - i <= sequence.following) {
        return false;
    }
    for (std::size_t k = 1; k <= sequence.following; ++k) {
        const auto byte = static_cast<unsigned char>(bytes[i + k]);
        const bool fits =
            k == 1 ? byte >= sequence.low && byte <= sequence.high : byte >= 0x80 && byte <= 0xBF;
        if (!fits) {
            return false;
        }
    }
    i += sequence.following + 1;
    return true;
}

QString sentence(const char *text)
{
    return QCoreApplication::translate("velEditor::TextEncoding", text);
}

QString lackingCharacter(const QString &text)
{
    const auto characters = text.toUcs4();
    const auto lacking = std::find_if(characters.begin(), characters.end(),
                                      [](char32_t c) { return c > lastLatin1; });
    const char32_t character = lacking != characters.end() ? *lacking : U'?';
    return QString::fromUcs4(&character, 1);
}

QString whyNotLatin1(const QString &text)
{
    return sentence("The encoding of this command file is Latin-1, which does not have the "
                    "character \"") +
           lackingCharacter(text) + sentence("\".\nPlease use another character.");
}

} // namespace

bool isUtf8(std::string_view bytes)
{
    for (std::size_t i = skipAscii(bytes, 0); i < bytes.size(); i = skipAscii(bytes, i)) {
        if (!skipCharacter(bytes, i)) {
            return false;
        }
    }
    return true;
}

TextEncoding encodingOf(std::string_view text)
{
    return isUtf8(text) ? TextEncoding::Utf8 : TextEncoding::Latin1;
}

TextEncoding encodingInPlaceOf(std::string_view former, TextEncoding file)
{
    if (skipAscii(former, 0) == former.size()) {
        return file;
    }
    return encodingOf(former);
}

EncodedText encode(const QString &text, TextEncoding encoding)
{
    if (encoding == TextEncoding::Utf8) {
        return {toBytes(text), {}};
    }
    const bool fits =
        std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= lastLatin1; });
    if (!fits) {
        return {{}, whyNotLatin1(text)};
    }
    std::string bytes = text.toLatin1().toStdString();
    if (fromBytes(bytes) != text) {
        return {{},
                sentence("The encoding of this command file is Latin-1. This value would be "
                         "read back as\n\"") +
                    fromBytes(bytes) + sentence("\".\nPlease change the value.")};
    }
    return {std::move(bytes), {}};
}

} // namespace velEditor
