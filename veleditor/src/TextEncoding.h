// The encoding of a command file, and what it can represent.
//
// Command files do not state their encoding. If all bytes are valid UTF-8, the file is
// UTF-8, otherwise Latin-1. Typed text is stored in the encoding of the file, so that every
// reader of the file shows it as typed.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace velEditor {

enum class TextEncoding { Utf8, Latin1 };

/// Whether all bytes are valid UTF-8: shortest forms only, no surrogates.
[[nodiscard]] bool isUtf8(std::string_view bytes);

/// The encoding of the text of a file; UTF-8 if it is plain ASCII.
[[nodiscard]] TextEncoding encodingOf(std::string_view text);

/// The encoding for a text that replaces `former`: that of `former` unless it is plain
/// ASCII, otherwise that of the file. A file may have values in both encodings.
[[nodiscard]] TextEncoding encodingInPlaceOf(std::string_view former, TextEncoding file);

/// A typed text as bytes.
struct EncodedText
{
    std::string bytes;
    QString refusal; ///< for the user, why the encoding cannot represent it; otherwise empty
};

/// Encodes a text. Refuses a character that the encoding does not have, and a Latin-1
/// text whose bytes would be read as UTF-8, which would be a different text.
[[nodiscard]] EncodedText encode(const QString &text, TextEncoding encoding);

} // namespace velEditor
