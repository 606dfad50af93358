// What the viewer is asked for over its connection: lines of bytes that may
// come from anyone on this machine, and so are taken for nothing but the names
// of topics. See docs/help-protocol.md.
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
    QString topic;   ///< may be empty: the contents
    QString section; ///< may be empty: the beginning
};

/// The request in one line, without its end. Nothing for a line that is no
/// command, is not UTF-8 or holds control characters.
[[nodiscard]] std::optional<Request> parseRequest(const QByteArray &line);

/// Cuts bytes into lines. A line beyond `longest` bytes is passed over to its
/// end, without being kept.
class LineReader
{
public:
    static constexpr qsizetype longest = 1024;

    /// The lines that `bytes` complete, without their ends ("\n" or "\r\n").
    [[nodiscard]] QList<QByteArray> feed(const QByteArray &bytes);

private:
    void append(const char *begin, qsizetype size);

    QByteArray line_; ///< what has come of the current line
    bool tooLong_ = false;
};

} // namespace velHelp
