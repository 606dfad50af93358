// Converts text between the command data, which is bytes, and the screen.
//
// Command files do not state their encoding. Valid UTF-8 is shown as UTF-8, anything
// else as Latin-1, so that every byte has a character. Only typed text is converted
// back; everything else keeps the bytes that were read.
#pragma once

#include <QString>

#include <string>
#include <string_view>

class QTextDocument;

namespace velEditor {

/// The characters of bytes from the database, a file name or a message.
[[nodiscard]] QString fromBytes(std::string_view bytes);

/// The text in UTF-8.
[[nodiscard]] std::string toBytes(const QString &text);

/// The bytes of a text that was made from `old`: Latin-1 if `old` is not valid UTF-8
/// and Latin-1 has all characters of the text, otherwise UTF-8.
[[nodiscard]] std::string toBytesInPlaceOf(const QString &text, std::string_view old);

/// The text of a document, with line feeds between its lines. Unlike the document's
/// toPlainText() it keeps no-break spaces.
[[nodiscard]] QString plainText(const QTextDocument &document);

/// The same as the value of a parameter: line breaks become blanks, and white space at
/// both ends is removed. White space is that of the database; a no-break space is not
/// white space.
[[nodiscard]] QString typedValue(const QTextDocument &document);

/// The first 1,000 characters of a text, for a row or a tool tip; an ellipsis replaces
/// the rest.
[[nodiscard]] QString shortened(const QString &text);

} // namespace velEditor
