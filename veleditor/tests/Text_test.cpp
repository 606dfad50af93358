// Tests bytes and characters, the values that a file can contain, and the search.
#include "veleditor/src/Text.h"
#include "veleditor/src/TreeSearch.h"
#include "veleditor/src/ValueText.h"

#include <QTest>
#include <QTextDocument>

using namespace velEditor;

class TextTest : public QObject
{
    Q_OBJECT

private slots:
    void readsUtf8ElseLatin1_data();
    void readsUtf8ElseLatin1();
    void writesInTheEncodingOfTheOldText_data();
    void writesInTheEncodingOfTheOldText();
    void givesDocumentsAsLines();
    void takesTypedValuesAsOneLine();
    void writesParameterLines();
    void shortensLongTexts();
    void findsCharactersThatAFileCannotContain_data();
    void findsCharactersThatAFileCannotContain();
    void matches_data();
    void matches();
};

void TextTest::readsUtf8ElseLatin1_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("ASCII") << QByteArray("a b") << QString("a b");
    QTest::newRow("UTF-8") << QByteArray("\xC3\xA4\xE2\x82\xAC") << QString::fromUtf8("ä€");
    QTest::newRow("Latin-1") << QByteArray("\xE4\xFF\x80") << QString::fromLatin1("\xE4\xFF\x80");
    QTest::newRow("both") << QByteArray("\xC3\xA4\xE4") << QString::fromLatin1("\xC3\xA4\xE4");
    QTest::newRow("cut off") << QByteArray("a\xE2\x82") << QString::fromLatin1("a\xE2\x82");
    QTest::newRow("overlong") << QByteArray("\xC0\xAF") << QString::fromLatin1("\xC0\xAF");
    QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80") << QString::fromLatin1("\xED\xA0\x80");
    QTest::newRow("byte order mark")
        << QByteArray("\xEF\xBB\xBFx") << QString(QChar(0xFEFF)) + u'x';
}

void TextTest::readsUtf8ElseLatin1()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    QCOMPARE(fromBytes(bytes.toStdString()), text);
}

void TextTest::writesInTheEncodingOfTheOldText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("old");
    QTest::addColumn<QByteArray>("bytes");
    const QString umlaut = QString::fromUtf8("ä");
    const QString euro = QString::fromUtf8("ä€");
    QTest::newRow("ASCII") << umlaut << QByteArray("a") << QByteArray("\xC3\xA4");
    QTest::newRow("UTF-8") << umlaut << QByteArray("\xC3\xB6") << QByteArray("\xC3\xA4");
    QTest::newRow("Latin-1") << umlaut << QByteArray("\xF6") << QByteArray("\xE4");
    QTest::newRow("beyond it") << euro << QByteArray("\xF6") << QByteArray("\xC3\xA4\xE2\x82\xAC");
}

void TextTest::writesInTheEncodingOfTheOldText()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, old);
    QFETCH(QByteArray, bytes);
    QCOMPARE(QByteArray::fromStdString(toBytesInPlaceOf(text, old.toStdString())), bytes);
}

void TextTest::givesDocumentsAsLines()
{
    QTextDocument document;
    document.setPlainText(QString::fromUtf16(u"one\ntwo\u2028three\u00A0four"));
    QCOMPARE(plainText(document), QString::fromUtf16(u"one\ntwo\nthree\u00A0four"));
}

// White space at both ends of a typed value is removed, and line breaks become
// spaces. A no-break space stays.
void TextTest::takesTypedValuesAsOneLine()
{
    const auto value = [](const char16_t *typed) {
        QTextDocument document;
        document.setPlainText(QString::fromUtf16(typed));
        return typedValue(document);
    };
    QCOMPARE(value(u"one\ntwo\u2028three\u00A0four"),
             QString::fromUtf16(u"one two three\u00A0four"));
    QCOMPARE(value(u" \t\v\f\n2.5 [m s^-1]\n \r\n"), QString("2.5 [m s^-1]"));
    QCOMPARE(value(u"\u00A0a\u00A0"), QString::fromUtf16(u"\u00A0a\u00A0"));
    QCOMPARE(value(u" \n "), QString());
    QCOMPARE(value(u""), QString());
    QCOMPARE(value(u"x"), QString("x"));
}

// A row shows the first 1,000 characters of a value.
void TextTest::shortensLongTexts()
{
    const QString ellipsis(QChar(u'\u2026'));
    const QString longest = QString("x").repeated(1000);
    QCOMPARE(shortened("x"), QString("x"));
    QCOMPARE(shortened(longest), longest);
    QCOMPARE(shortened(longest + u'x'), longest + ellipsis);

    // Surrogate pairs count as one character.
    const QString delta = QString::fromUcs4(U"\U0001D6E5");
    QCOMPARE(shortened(longest.chopped(1) + delta), longest.chopped(1) + delta);
    QCOMPARE(shortened(longest.chopped(1) + delta + u'x'), longest.chopped(1) + delta + ellipsis);
    QCOMPARE(shortened(delta.repeated(1000)), delta.repeated(1000));
    QCOMPARE(shortened(delta.repeated(1001)), delta.repeated(1000) + ellipsis);
    const QString half = delta.left(1);
    QCOMPARE(shortened(half.repeated(1001)), half.repeated(1000) + ellipsis);
}

void TextTest::findsCharactersThatAFileCannotContain_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("reason");
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("plain") << QByteArray("0.5 [kg s^-1], \"x\" = \\ y") << QString();
    QTest::newRow("tab") << QByteArray("a\tb") << QString();
    QTest::newRow("above 127") << QByteArray("\x80\xFF") << QString();
    QTest::newRow("escaped") << QByteArray("a \\# b") << QString();
    QTest::newRow("comment") << QByteArray("a # b") << QString("#");
    QTest::newRow("comment first") << QByteArray("#") << QString("#");
    QTest::newRow("comment after an escaped #") << QByteArray("\\##") << QString("#");
    // An empty comment in the file keeps a backslash at the end, unless spaces
    // follow it.
    QTest::newRow("backslash") << QByteArray("a\\") << QString();
    QTest::newRow("only a backslash") << QByteArray("\\") << QString();
    QTest::newRow("backslash and blanks") << QByteArray("a \\ \t") << QString("backslash");
    QTest::newRow("escape character") << QByteArray("a\x1B") << QString("control");
    QTest::newRow("line break") << QByteArray("a\nb") << QString("control");
}

void TextTest::findsCharactersThatAFileCannotContain()
{
    QFETCH(QByteArray, value);
    QFETCH(QString, reason);
    const QString said = whyFileCannotHold(value.toStdString());
    QCOMPARE(said.isEmpty(), reason.isEmpty());
    QVERIFY2(said.contains(reason), qPrintable(said));
}

void TextTest::writesParameterLines()
{
    QCOMPARE(QString::fromStdString(parameterLine("a b", "1, 2")), QString("a b = 1, 2"));
    QCOMPARE(QString::fromStdString(parameterLine("a", "1\\")), QString("a = 1\\ #"));
    QCOMPARE(QString::fromStdString(parameterLine("a", "")), QString("a = "));
}

void TextTest::matches_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("expected");
    QTest::newRow("inside") << "Mass Flow Rate"
                            << "flow" << true;
    QTest::newRow("whole") << "Kind"
                           << "KIND" << true;
    QTest::newRow("at the end") << "a b c"
                                << "B C" << true;
    QTest::newRow("not there") << "Kind"
                               << "kinds" << false;
    QTest::newRow("umlauts") << QString::fromUtf8("GRÖSSE") << QString::fromUtf8("größ").chopped(1)
                             << true;
    // These are effects of the one-pass scan that users rely on.
    QTest::newRow("one character") << "abc"
                                   << "b" << false;
    QTest::newRow("no character") << "abc"
                                  << "" << false;
    QTest::newRow("a partial match in front") << "aab"
                                              << "ab" << false;
    QTest::newRow("a partial match further in front") << "a ab"
                                                      << "ab" << true;
    QTest::newRow("empty text") << ""
                                << "ab" << false;
}

void TextTest::matches()
{
    QFETCH(QString, text);
    QFETCH(QString, pattern);
    QFETCH(bool, expected);
    QCOMPARE(textMatches(text, pattern), expected);
}

QTEST_APPLESS_MAIN(TextTest)
#include "Text_test.moc"
