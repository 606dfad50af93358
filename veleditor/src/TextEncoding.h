// The encoding of a command file, and what it can represent.
//
// Command files do not state their encoding. One whose bytes are all valid UTF-8
// is taken for that, any other one for Latin-1. What the user types is stored in
// the encoding of the file, so that every reader of the file shows it as typed.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace velEditor {

enum class TextEncoding { Utf8, Latin1 };

/// Whether all bytes are valid UTF-8: the shortest form, no surrogates.
[[nodiscard]] bool isUtf8(std::string_view bytes);

/// The encoding of the text of a file; UTF-8 for one that is plain ASCII.
[[nodiscard]] TextEncoding encodingOf(std::string_view text);

/// The encoding for a text in the place of `former`: its own, as far as it shows
/// one, else that of the file. A file may hold values in both.
[[nodiscard]] TextEncoding encodingInPlaceOf(std::string_view former, TextEncoding file);

/// A typed text as bytes.
struct EncodedText
{
    std::string bytes;
    QString refusal; ///< why the encoding cannot represent it, for the user; else empty
};

/// Refused is a character that the encoding lacks, and a Latin-1 text whose bytes
/// would be read as UTF-8, which is other text.
[[nodiscard]] EncodedText encode(const QString &text, TextEncoding encoding);

} // namespace velEditor
