// Tests which requests the viewer finds in bytes, and that it accepts any bytes.
#include "help/viewer/Request.h"

#include <gtest/gtest.h>

#include <random>

namespace velHelp {

namespace {

/// A request as "topic | section", "quit", or "dropped".
std::string requestText(const QByteArray &line)
{
    const auto request = parseRequest(line);
    if (!request) {
        return "dropped";
    }
    if (request->kind == Request::Quit) {
        return "quit";
    }
    return (request->topic + " | " + request->section).toStdString();
}

QByteArray joined(const QList<QByteArray> &lines)
{
    return lines.join('|') + "/" + QByteArray::number(lines.size());
}

} // namespace

TEST(Request, namesATopic)
{
    EXPECT_EQ("Master Contents | ", requestText("ZOT:Master Contents"));
    EXPECT_EQ("Tutorials | First example", requestText("ZOT:Tutorials#First example"));
    EXPECT_EQ(" | ", requestText("ZOT:"));
    EXPECT_EQ(" | alone", requestText("ZOT:#alone"));
    EXPECT_EQ("a | b#c", requestText("ZOT:a#b#c"));
    EXPECT_EQ("Größe | ", requestText("ZOT:Größe"));
}

TEST(Request, namesADocumentByItsFile)
{
    EXPECT_EQ("guide | 3", requestText("OMBRA:/pdf/guide.pdf#3"));
    EXPECT_EQ("passwd | ", requestText("OMBRA:/pdf/../../etc/passwd"));
    EXPECT_EQ("index | top", requestText("DH2:file:/usr/share/index.html#top"));
    EXPECT_EQ(" | ", requestText("DH2:file:"));
}

TEST(Request, quits)
{
    EXPECT_EQ("quit", requestText("QUIT"));
}

TEST(Request, isDroppedOtherwise)
{
    for (const char *line :
         {"", "QUIT ", "quit", "zot:x", "ZOT", "OMBRA:x", "DH2:x", "GET / HTTP/1.1", "ZOT:\x01",
          "ZOT:a\tb", "ZOT:\xff\xfe", "ZOT:\x7f", " ZOT:x"}) {
        EXPECT_EQ("dropped", requestText(line)) << line;
    }
    EXPECT_EQ("dropped", requestText(QByteArray("ZOT:a\0b", 7)));
}

TEST(LineReader, cutsLines)
{
    LineReader reader;
    EXPECT_EQ("one|two/2", joined(reader.feed("one\ntwo\r\nthr")));
    EXPECT_EQ("/0", joined(reader.feed("e")));
    EXPECT_EQ("three|/2", joined(reader.feed("e\n\n")));
}

TEST(LineReader, givesTheSameLinesForAnyPiecesOfBytes)
{
    const QByteArray text = "first\n" + QByteArray(2000, 'x') + "\nsecond\r\n\nlast";
    for (qsizetype step = 1; step <= text.size(); ++step) {
        LineReader reader;
        QList<QByteArray> lines;
        for (qsizetype at = 0; at < text.size(); at += step) {
            lines += reader.feed(text.mid(at, step));
        }
        ASSERT_EQ("first|second|/3", joined(lines)) << step;
    }
}

TEST(LineReader, keepsLinesOfTheGreatestLength)
{
    LineReader reader;
    const QByteArray longest(LineReader::longest, 'x');
    EXPECT_EQ(longest + "/1", joined(reader.feed(longest + "\n")));
    EXPECT_EQ("/0", joined(reader.feed(longest + "x\n")));
    EXPECT_EQ("next/1", joined(reader.feed("next\n")));
}

TEST(LineReader, dropsEndlessLines)
{
    LineReader reader;
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ("/0", joined(reader.feed(QByteArray(10'000, 'x'))));
    }
    EXPECT_EQ("ZOT:ok/1", joined(reader.feed("\nZOT:ok\n")));
}

TEST(LineReader, takesAnyBytes)
{
    std::mt19937 random(7);
    LineReader reader;
    int requests = 0;
    for (int i = 0; i < 2000; ++i) {
        QByteArray bytes(static_cast<qsizetype>(random() % 3000), '\0');
        for (char &byte : bytes) {
            byte = static_cast<char>(random());
        }
        for (const QByteArray &line : reader.feed(bytes)) {
            ASSERT_LE(line.size(), LineReader::longest);
            requests += parseRequest(line).has_value() ? 1 : 0;
        }
    }
    EXPECT_EQ(0, requests);
}

} // namespace velHelp
