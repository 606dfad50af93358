// Decodes, encodes and shortens texts.
#include "veleditor/src/Text.h"

#include <QByteArrayView>
#include <QStringDecoder>
#include <QTextDocument>

#include <algorithm>
#include <iterator>

namespace velEditor {

namespace {

/// More than the width of a row, and about a dozen lines of a tool tip.
constexpr int mostCharacters = 1000;

bool isAscii(std::string_view bytes)
{
    return std::none_of(bytes.begin(), bytes.end(),
                        [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

/// The text of UTF-8 bytes; a null string if they are not valid UTF-8.
QString decodeUtf8(std::string_view bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    return decoder.hasError() ? QString() : text;
}

bool fitsLatin1(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= 0xFF; });
}

/// Whether the character at `i` is a surrogate pair, two elements of the text.
bool isPair(const QString &text, qsizetype i)
{
    return i + 1 < text.size() && text[i].isHighSurrogate() && text[i + 1].isLowSurrogate();
}

bool isWhiteSpace(QChar c)
{
    return c == u' ' || (c >= u'\t' && c <= u'\r');
}

// Replaces the separators that a document uses between and inside its paragraphs.
QString withLineBreaks(const QTextDocument &document, QChar lineBreak)
{
    QString text = document.toRawText();
    for (QChar &c : text) {
        switch (c.unicode()) {
        case 0x2028: // line separator
        case 0x2029: // paragraph separator
        case 0xFDD0: // begin and end of a frame
        case 0xFDD1:
        case u'\n':
        case u'\r':
            c = lineBreak;
            break;
        default:
            break;
        }
    }
    return text;
}

} // namespace

QString fromBytes(std::string_view bytes)
{
    const auto size = static_cast<qsizetype>(bytes.size());
    if (isAscii(bytes)) {
        return QString::fromLatin1(bytes.data(), size);
    }
    const QString text = decodeUtf8(bytes);
    return text.isNull() ? QString::fromLatin1(bytes.data(), size) : text;
}

std::string toBytes(const QString &text)
{
    return text.toStdString();
}

std::string toBytesInPlaceOf(const QString &text, std::string_view old)
{
    const bool oldIsLatin1 = !isAscii(old) && decodeUtf8(old).isNull();
    if (oldIsLatin1 && fitsLatin1(text)) {
        return text.toLatin1().toStdString();
    }
    return toBytes(text);
}

QString plainText(const QTextDocument &document)
{
    return withLineBreaks(document, u'\n');
}

QString typedValue(const QTextDocument &document)
{
    const QString line = withLineBreaks(document, u' ');
    const auto first = std::find_if_not(line.begin(), line.end(), isWhiteSpace);
    const auto end = std::find_if_not(line.rbegin(), std::reverse_iterator(first), isWhiteSpace);
    return line.mid(first - line.begin(), end.base() - first);
}

QString shortened(const QString &text)
{
    qsizetype end = 0;
    for (int i = 0; i < mostCharacters && end < text.size(); ++i) {
        end += isPair(text, end) ? 2 : 1;
    }
    return end == text.size() ? text : text.left(end) + QChar(u'\u2026');
}

} // namespace velEditor
