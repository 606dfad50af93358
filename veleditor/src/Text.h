// Text between the command data, which is bytes, and the screen.
//
// Command files carry no statement of their encoding. What is valid UTF-8 is
// shown as that, anything else as Latin-1, so that every byte has a character.
// The way back is taken only for what the user typed; everything else is kept
// as the bytes that were read.
#pragma once

#include <QString>

#include <string>
#include <string_view>

class QTextDocument;

namespace velEditor {

/// The characters of bytes from the database, a file name or a message.
[[nodiscard]] QString fromBytes(std::string_view bytes);

/// UTF-8.
[[nodiscard]] std::string toBytes(const QString &text);

/// The bytes of a text that was made from `old`: Latin-1 where the old bytes
/// could only be that and the text has no other characters, else UTF-8.
[[nodiscard]] std::string toBytesInPlaceOf(const QString &text, std::string_view old);

/// The text of a document with its lines ended by line feeds. Unlike the
/// document's own plain text it keeps no-break spaces.
[[nodiscard]] QString plainText(const QTextDocument &document);

/// The same as the value of a parameter: every line break is a blank, and there
/// is no white space at either end. White space is what the database takes for
/// it; a no-break space is not.
[[nodiscard]] QString typedValue(const QTextDocument &document);

/// The first 1,000 characters of a text, which is what a row or a tool tip
/// shows; an ellipsis replaces the rest.
[[nodiscard]] QString shortened(const QString &text);

} // namespace velEditor
