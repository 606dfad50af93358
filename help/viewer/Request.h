// The requests that the viewer receives, as lines of bytes. They may come from any
// program on this computer, so they are used only as names of topics. See
// docs/help-protocol.md.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace velHelp {

struct Request
{
    enum Kind { Show, Quit };
    Kind kind = Show;
    QString topic;   ///< empty: the contents
    QString section; ///< empty: the beginning of the page
};

/// The request in one line, without its line end. Nothing if the line is not a
/// command, is not UTF-8 or contains control characters.
[[nodiscard]] std::optional<Request> parseRequest(const QByteArray &line);

/// Splits bytes into lines. A line of more than `longest` bytes is skipped and
/// not stored.
class LineReader
{
public:
    static constexpr qsizetype longest = 1024;

    /// The lines that `bytes` complete, without their ends ("\n" or "\r\n").
    [[nodiscard]] QList<QByteArray> feed(const QByteArray &bytes);

private:
    void append(const char *begin, qsizetype size);

    QByteArray line_; ///< the part of the current line received so far
    bool tooLong_ = false;
};

} // namespace velHelp
