// Tests the encoding of texts, and which texts are refused because of it.
#include "veleditor/src/Text.h"
#include "veleditor/src/TextEncoding.h"

#include <QTest>

#include <string>

using namespace velEditor;

Q_DECLARE_METATYPE(velEditor::TextEncoding)

class TextEncodingTest : public QObject
{
    Q_OBJECT

private slots:
    void agreesWithWhatIsShown();
    void knowsTheEncodingOfAText_data();
    void knowsTheEncodingOfAText();
    void knowsTheEncodingOfALongText();
    void keepsTheEncodingOfTheFormerValue();
    void encodesInTheEncodingOfTheFile_data();
    void encodesInTheEncodingOfTheFile();
    void refusesWhatTheEncodingLacks_data();
    void refusesWhatTheEncodingLacks();
};

// Checks every text of two bytes, and those of three and four bytes around each limit:
// it counts as UTF-8 exactly if the tree shows it as UTF-8, that is, if encoding the
// shown text gives the same bytes.
void TextEncodingTest::agreesWithWhatIsShown()
{
    const QByteArray borders("\x00\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC"
                             "\xED\xEE\xEF\xF0\xF1\xF3\xF4\xF5\xFF",
                             25);
    const auto check = [](const std::string &bytes) {
        const QByteArray raw = QByteArray::fromStdString(bytes);
        const bool isShown = fromBytes(bytes).toUtf8() == raw;
        QVERIFY2(isUtf8(bytes) == isShown, raw.toHex().constData());
    };
    for (int a = 0; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            check({static_cast<char>(a), static_cast<char>(b)});
        }
    }
    for (const char a : borders) {
        for (const char b : borders) {
            for (const char c : borders) {
                check({a, b, c});
                for (const char d : borders) {
                    check({a, b, c, d});
                }
            }
        }
    }
}

void TextEncodingTest::knowsTheEncodingOfAText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<TextEncoding>("encoding");
    QTest::newRow("empty") << QByteArray() << TextEncoding::Utf8;
    QTest::newRow("ASCII") << QByteArray("FLOW:\nEND\n") << TextEncoding::Utf8;
    QTest::newRow("UTF-8") << QByteArray("# \xC3\xA4\n") << TextEncoding::Utf8;
    QTest::newRow("Latin-1") << QByteArray("# \xE4\n") << TextEncoding::Latin1;
    QTest::newRow("both") << QByteArray("\xC3\xA4 \xE4\n") << TextEncoding::Latin1;
    QTest::newRow("cut off") << QByteArray("\xE2\x82") << TextEncoding::Latin1;
}

void TextEncodingTest::knowsTheEncodingOfAText()
{
    QFETCH(QByteArray, bytes);
    QFETCH(TextEncoding, encoding);
    QVERIFY(encodingOf(bytes.toStdString()) == encoding);
}

void TextEncodingTest::knowsTheEncodingOfALongText()
{
    for (std::size_t place = 65528; place <= 65536; ++place) {
        const std::string before(place, 'x');
        const std::string character("\xF0\x9F\x8C\x80");
        const std::string after(70000, 'y');
        QVERIFY(encodingOf(before + character + after) == TextEncoding::Utf8);
        QVERIFY(encodingOf(before + character.substr(0, 3) + after) == TextEncoding::Latin1);
    }
}

// A file may have values in both encodings; each value keeps its encoding.
void TextEncodingTest::keepsTheEncodingOfTheFormerValue()
{
    for (const TextEncoding file : {TextEncoding::Utf8, TextEncoding::Latin1}) {
        QVERIFY(encodingInPlaceOf("", file) == file);
        QVERIFY(encodingInPlaceOf("abc", file) == file);
        QVERIFY(encodingInPlaceOf("\xC3\xA4", file) == TextEncoding::Utf8);
        QVERIFY(encodingInPlaceOf("\xE4", file) == TextEncoding::Latin1);
    }
}

void TextEncodingTest::encodesInTheEncodingOfTheFile_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<TextEncoding>("encoding");
    QTest::addColumn<QByteArray>("bytes");
    const QString umlaut = QString::fromUtf8("ä");
    QTest::newRow("ASCII") << QString("a") << TextEncoding::Latin1 << QByteArray("a");
    QTest::newRow("Latin-1") << umlaut << TextEncoding::Latin1 << QByteArray("\xE4");
    QTest::newRow("UTF-8") << umlaut << TextEncoding::Utf8 << QByteArray("\xC3\xA4");
    QTest::newRow("beyond Latin-1")
        << QString::fromUtf8("€") << TextEncoding::Utf8 << QByteArray("\xE2\x82\xAC");
}

void TextEncodingTest::encodesInTheEncodingOfTheFile()
{
    QFETCH(QString, text);
    QFETCH(TextEncoding, encoding);
    QFETCH(QByteArray, bytes);
    const EncodedText encoded = encode(text, encoding);
    QCOMPARE(encoded.refusal, QString());
    QCOMPARE(QByteArray::fromStdString(encoded.bytes), bytes);
}

void TextEncodingTest::refusesWhatTheEncodingLacks_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("reason");
    const QString lacks =
        "The encoding of this command file is Latin-1, which does not have the character \"";
    QTest::newRow("one") << QString::fromUtf8("5 €") << lacks + QString::fromUtf8("€\".\n");
    QTest::newRow("two places") << QString::fromUcs4(U"x\U0001D6E5")
                                << lacks + QString::fromUcs4(U"\U0001D6E5\".\n");
    QTest::newRow("read as UTF-8")
        << QString::fromUtf8("Ã¤") << QString::fromUtf8("would be read back as\n\"ä\".\n");
}

void TextEncodingTest::refusesWhatTheEncodingLacks()
{
    QFETCH(QString, text);
    QFETCH(QString, reason);
    const EncodedText encoded = encode(text, TextEncoding::Latin1);
    QVERIFY2(encoded.refusal.contains(reason), qPrintable(encoded.refusal));
    QCOMPARE(encode(text, TextEncoding::Utf8).refusal, QString());
}

QTEST_APPLESS_MAIN(TextEncodingTest)
#include "TextEncoding_test.moc"
