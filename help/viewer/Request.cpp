// Parses the lines that the viewer receives.
#include "help/viewer/Request.h"

#include <QStringDecoder>

#include <algorithm>

namespace velHelp {

namespace {

/// The text of bytes that are UTF-8 without control characters.
std::optional<QString> decode(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(bytes);
    const bool isPlain = std::all_of(text.begin(), text.end(),
                                     [](QChar c) { return c.category() != QChar::Other_Control; });
    if (decoder.hasError() || !isPlain) {
        return std::nullopt;
    }
    return text;
}

Request showing(const QString &target)
{
    const qsizetype mark = target.indexOf(u'#');
    if (mark < 0) {
        return {Request::Show, target.trimmed(), QString()};
    }
    return {Request::Show, target.left(mark).trimmed(), target.mid(mark + 1).trimmed()};
}

/// A request for a document names its file; the topic is the name of that file.
Request showingDocument(const QString &target)
{
    Request request = showing(target);
    request.topic = request.topic.section(u'/', -1);
    const qsizetype extension = request.topic.lastIndexOf(u'.');
    if (extension > 0) {
        request.topic.truncate(extension);
    }
    return request;
}

} // namespace

std::optional<Request> parseRequest(const QByteArray &line)
{
    const std::optional<QString> text = decode(line);
    if (!text) {
        return std::nullopt;
    }
    if (*text == QLatin1String("QUIT")) {
        return Request{Request::Quit, QString(), QString()};
    }

    const QLatin1String regular("ZOT:");
    if (text->startsWith(regular)) {
        return showing(text->mid(regular.size()));
    }
    for (const QLatin1String document :
         {QLatin1String("OMBRA:/pdf/"), QLatin1String("DH2:file:")}) {
        if (text->startsWith(document)) {
            return showingDocument(text->mid(document.size()));
        }
    }
    return std::nullopt;
}

void LineReader::append(const char *begin, qsizetype size)
{
    tooLong_ = tooLong_ || line_.size() + size > longest;
    if (tooLong_) {
        line_.clear();
    } else {
        line_.append(begin, size);
    }
}

QList<QByteArray> LineReader::feed(const QByteArray &bytes)
{
    QList<QByteArray> lines;
    qsizetype begin = 0;
    for (qsizetype end = bytes.indexOf('\n'); end >= 0; end = bytes.indexOf('\n', begin)) {
        append(bytes.constData() + begin, end - begin);
        if (line_.endsWith('\r')) {
            line_.chop(1);
        }
        if (!tooLong_) {
            lines.append(line_);
        }
        line_.clear();
        tooLong_ = false;
        begin = end + 1;
    }
    append(bytes.constData() + begin, bytes.size() - begin);
    return lines;
}

} // namespace velHelp
