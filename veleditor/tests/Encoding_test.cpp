// Tests that typed text is stored in the encoding of the file.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/AddParamDialog.h"
#include "veleditor/src/EditParamDialog.h"

#include <QLineEdit>
#include <QTextEdit>

using namespace velEditor;

class EncodingTest : public EditorTest
{
    Q_OBJECT

private:
    /// Types a value for a parameter and saves.
    void typeAndSave(const char *path, const QString &text);
    /// Types a text that is refused, then one that is accepted.
    template <typename Dialog>
    void typeTwice(Dialog &dialog, const QString &refused, const QString &accepted);

private slots:
    void storesLatin1InALatin1File();
    void storesUtf8InAUtf8File();
    void storesUtf8InAnAsciiFile();
    void takesTheEncodingFromCommentsToo();
    void keepsTheEncodingOfAValue();
    void storesANewParameterInTheEncodingOfTheFile();
    void refusesATextThatTheFileCannotRepresent();
    void refusesANewParameterThatTheFileCannotRepresent();
};

namespace {

const char title[] = "/FLOW:A/Title";

QByteArray flow(const QByteArray &value, const QByteArray &mode = "Steady")
{
    return "FLOW: A\n  Title = " + value + "\n  Run Mode = " + mode + "\nEND\n";
}

QString wide()
{
    return QString::fromUtf8("Größe");
}

QTextEdit &field(QDialog &dialog)
{
    return *dialog.findChild<QTextEdit *>("Value");
}

void type(QDialog &dialog, const QString &text)
{
    field(dialog).selectAll();
    field(dialog).insertPlainText(text);
}

} // namespace

void EncodingTest::typeAndSave(const char *path, const QString &text)
{
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, text);
        pressButton(dialog, "Ok");
    });
    tree().editParam(&row(path));
    QCOMPARE(row(path).value(), text);
    QVERIFY(editor().save(file().toStdString()));
}

template <typename Dialog>
void EncodingTest::typeTwice(Dialog &dialog, const QString &refused, const QString &accepted)
{
    type(dialog, refused);
    answer();
    pressButton(dialog, "Ok");
    QVERIFY(dialog.isVisible());
    QCOMPARE(field(dialog).toPlainText(), refused); // the typed text stays
    type(dialog, accepted);
    pressButton(dialog, "Ok");
}

void EncodingTest::storesLatin1InALatin1File()
{
    open(newFile("latin.vel", flow("l\xE4nger")));
    typeAndSave(title, wide());
    QCOMPARE(contentOf(file()), flow("Gr\xF6\xDF"
                                     "e"));
}

void EncodingTest::storesUtf8InAUtf8File()
{
    open(newFile("utf8.vel", "# \xC3\xA4\n" + flow("old")));
    typeAndSave(title, wide());
    QCOMPARE(contentOf(file()), flow(wide().toUtf8()));
}

void EncodingTest::storesUtf8InAnAsciiFile()
{
    open(newFile("ascii.vel", flow("old")));
    typeAndSave(title, wide());
    QCOMPARE(contentOf(file()), flow(wide().toUtf8()));
}

void EncodingTest::takesTheEncodingFromCommentsToo()
{
    open(newFile("latin.vel", "# \xE4\n" + flow("old")));
    typeAndSave(title, wide());
    QCOMPARE(contentOf(file()), flow(wide().toLatin1()));
}

// A file may have values in both encodings.
void EncodingTest::keepsTheEncodingOfAValue()
{
    open(newFile("both.vel", "# \xE4\n" + flow("\xCE\xBB = 3")));
    typeAndSave(title, QString::fromUtf8("λ = 4"));
    QCOMPARE(contentOf(file()), flow("\xCE\xBB = 4"));
}

void EncodingTest::storesANewParameterInTheEncodingOfTheFile()
{
    open(newFile("latin.vel", "# \xE4\nFLOW: A\n  EXPERT PARAMETERS:\n  END\nEND\n"));
    select("/FLOW:A/EXPERT PARAMETERS");
    onDialog<AddParamDialog>([](AddParamDialog &dialog) {
        dialog.findChild<QLineEdit *>("Name")->setText("note");
        type(dialog, wide());
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(row("/FLOW:A/EXPERT PARAMETERS/note").value(), wide());
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()),
             "FLOW: A\n  EXPERT PARAMETERS:\n    note = " + wide().toLatin1() + "\n  END\nEND\n");
}

void EncodingTest::refusesATextThatTheFileCannotRepresent()
{
    open(newFile("latin.vel", "# \xE4\n" + flow("old")));
    onDialog<EditParamDialog>(
        [&](EditParamDialog &dialog) { typeTwice(dialog, QString::fromUtf8("5 €"), "5 EUR"); });
    tree().editParam(&row(title));
    QCOMPARE(boxes,
             QStringList(QString::fromUtf8(
                 "Warning: Edit Parameter\nThe encoding of this command file is Latin-1, which "
                 "does not have the character \"€\".\nPlease use another character.\n[Ok], "
                 "Escape")));
    QCOMPARE(row(title).value(), QString("5 EUR"));
}

void EncodingTest::refusesANewParameterThatTheFileCannotRepresent()
{
    open(newFile("latin.vel", "# \xE4\nFLOW: A\n  EXPERT PARAMETERS:\n  END\nEND\n"));
    select("/FLOW:A/EXPERT PARAMETERS");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        dialog.findChild<QLineEdit *>("Name")->setText("note");
        typeTwice(dialog, QString::fromUtf8("5 €"), "5 EUR");
    });
    tree().addParameter();
    QCOMPARE(boxes.size(), 1);
    QVERIFY2(boxes[0].contains("Latin-1"), qPrintable(boxes[0]));
    QCOMPARE(row("/FLOW:A/EXPERT PARAMETERS/note").value(), QString("5 EUR"));
}

VEL_EDITOR_TEST(EncodingTest)
#include "Encoding_test.moc"
