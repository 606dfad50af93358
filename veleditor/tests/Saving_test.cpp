// Tests saving, and closing the window with and without saving.
#include "veleditor/tests/EditorTest.h"
#include "veleditor/tests/FileSizeLimit.h"

#include "veleditor/src/MessageDialog.h"
#include "velparser/api/velparser.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTextEdit>

#include <clocale>
#include <string_view>

using namespace velEditor;

class SavingTest : public EditorTest
{
    Q_OBJECT

private:
    /// Sets a locale with a decimal comma for the process.
    bool takeCommaLocale();
    /// Closes the window; true if it was closed.
    bool closes();

private slots:
    void savesAndKeepsThePreviousFile();
    void savesLinesOf79Columns();
    void savesEveryByteUnchanged();
    void savesTheSameUnderACommaLocale();
    void keepsThePermissionsOfTheFile();
    void replacesAFileMarkedReadOnly();
    void doesNotChangeTheTargetOfALink();
    void savesWithoutABackupIfNoneCanBeMade();
    void savesToAnotherName();
    void asksBeforeSavingErrors();
    void reportsATargetThatCannotBeOpened();
    void reportsATargetThatIsAFolder();
    void reportsAnIncompleteSave();
    void keepsTheBackupThroughFailedSaves();
    void closesAtOnceWithoutChanges();
    void closesByKey();
    void staysOpenWhenTheUserContinues();
    void keepsTheErrorsUntilTheUserHasAnswered();
    void quitsWithoutSaving();
    void savesAndQuits();
    void quitsWhenTheTargetCannotBeOpened();
    void staysOpenWhenTheUserDeclinesToSaveErrors();
    void staysOpenAfterAnIncompleteSave();
};

namespace {

const char ductFormatted[] = "LANGUAGE:\n"
                             "  Version = 2.1\n"
                             "END\n"
                             "FLOW: Analysis\n"
                             "  Title = Second run\n"
                             "  Run Mode = Steady\n"
                             "  EXPERT PARAMETERS:\n"
                             "    max loops = 3\n"
                             "    solver build = 17\n"
                             "  END\n"
                             "  DOMAIN: Duct\n"
                             "    Kind = Fluid\n"
                             "    Location = B1, B2\n"
                             "    Reference Pressure = 1\n"
                             "    Trace Level = 2\n"
                             "    BOUNDARY: in\n"
                             "      Kind = Inlet\n"
                             "      Mass Flow Rate = 0.5\n"
                             "    END\n"
                             "    BOUNDARY: out\n"
                             "      Kind = Outlet\n"
                             "    END\n"
                             "  END\n"
                             "END\n";

} // namespace

bool SavingTest::takeCommaLocale()
{
    QProcess::execute("localedef", {"-i", "de_DE", "-f", "UTF-8", folder() + "/de_DE.UTF-8"});
    qputenv("LOCPATH", folder().toUtf8());
    return std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr &&
           std::string_view(std::localeconv()->decimal_point) == ",";
}

bool SavingTest::closes()
{
    editor().close();
    return !editor().isVisible();
}

void SavingTest::savesAndKeepsThePreviousFile()
{
    open(copyOf("duct.vel"));
    const QByteArray before = contentOf(file());
    changeSomething();
    QCOMPARE(editor().windowTitle(), file() + " - Modified");
    press("Ctrl+S");
    QCOMPARE(contentOf(file()), QByteArray(ductFormatted));
    QCOMPARE(contentOf(file() + ".bak"), before);
    QCOMPARE(editor().windowTitle(), file());
    QVERIFY(!tree().isModified());

    // The next save replaces the backup with the last state.
    editor().doSave();
    QCOMPARE(contentOf(file() + ".bak"), QByteArray(ductFormatted));
}

void SavingTest::savesLinesOf79Columns()
{
    const QByteArray words = QByteArray("words ").repeated(60).trimmed();
    open(newFile("long.vel", "FLOW: A\nTitle = " + words + "\nEND\n"));
    QVERIFY(editor().save(file().toStdString()));
    const QByteArrayList lines = contentOf(file()).split('\n');
    QVERIFY(lines.size() > 5);
    for (const QByteArray &line : lines) {
        QVERIFY(line.size() <= 79);
    }
    QVERIFY(lines[1].endsWith('\\'));
    QVERIFY(lines[2].startsWith("    words"));
}

void SavingTest::savesEveryByteUnchanged()
{
    const QByteArray content = "FLOW: A\n  Title = \xC3\xA4 \xE4 \x80\xFF\tx\n"
                               "  Run Mode = \xF0\x9F\x8C\x80\nEND\n";
    open(newFile("bytes.vel", content));
    QVERIFY(editor().save(file().toStdString()));
    QByteArray expected = content;
    QCOMPARE(contentOf(file()), expected.replace('\t', ' ')); // white space becomes one space
}

void SavingTest::savesTheSameUnderACommaLocale()
{
    if (!takeCommaLocale()) {
        QSKIP("this system can make no locale with a decimal comma");
    }
    open(copyOf("duct.vel"));
    changeSomething();
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()), QByteArray(ductFormatted));
}

void SavingTest::keepsThePermissionsOfTheFile()
{
    open(copyOf("duct.vel"));
    const auto owner = QFile::ReadOwner | QFile::WriteOwner;
    QVERIFY(QFile::setPermissions(file(), owner));
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(QFile::permissions(file()) & (owner | QFile::ReadGroup | QFile::ReadOther), owner);
}

// The folder's permissions decide whether a file can be moved. The file stays
// read-only.
void SavingTest::replacesAFileMarkedReadOnly()
{
    open(copyOf("duct.vel"));
    QVERIFY(QFile::setPermissions(file(), QFile::ReadOwner));
    changeSomething();
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()), QByteArray(ductFormatted));
    const auto owner = QFile::ReadOwner | QFile::WriteOwner;
    QCOMPARE(QFile::permissions(file()) & owner, QFile::Permissions(QFile::ReadOwner));
}

// The link itself is moved, not the file that it points to.
void SavingTest::doesNotChangeTheTargetOfALink()
{
    const QString original = copyOf("duct.vel");
    const QByteArray before = contentOf(original);
    const QString link = folder() + "/link.vel";
    QVERIFY(QFile::link(original, link));
    open(link);
    changeSomething();
    QVERIFY(editor().save(link.toStdString()));
    QCOMPARE(contentOf(link), QByteArray(ductFormatted));
    QCOMPARE(contentOf(original), before);
    QCOMPARE(QFile::symLinkTarget(link + ".bak"), original);
}

// The save continues if the file could not be moved.
void SavingTest::savesWithoutABackupIfNoneCanBeMade()
{
    open(copyOf("duct.vel"));
    QVERIFY(QDir().mkpath(file() + ".bak"));
    changeSomething();
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()), QByteArray(ductFormatted));
    QVERIFY(QFileInfo(file() + ".bak").isDir());
}

void SavingTest::savesToAnotherName()
{
    open(copyOf("duct.vel"));
    const QByteArray before = contentOf(file());
    changeSomething();
    const QString target = folder() + "/copy.vel";
    QVERIFY(editor().save(target.toStdString()));
    QCOMPARE(contentOf(target), QByteArray(ductFormatted));
    // The loaded file becomes the backup.
    QVERIFY(!QFile::exists(file()));
    QCOMPARE(contentOf(target + ".bak"), before);
}

void SavingTest::asksBeforeSavingErrors()
{
    open(copyOf("duct.vel"));
    const QByteArray before = contentOf(file());
    QCOMPARE(velparser::setStringValue("/FLOW:Analysis/DOMAIN:Duct/Kind", "Plasma"), nullptr);
    tree().setModified();

    onDialog<ErrorDialog>([&](ErrorDialog &dialog) {
        QVERIFY(dialog.isModal());
        QVERIFY(dialog.findChild<QTextEdit *>()->toPlainText().contains("[not-allowed]"));
        pressButton(dialog, "No");
    });
    QVERIFY(!editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()), before);
    QVERIFY(!QFile::exists(file() + ".bak"));
    QVERIFY(tree().isModified());

    onDialog<ErrorDialog>([](ErrorDialog &dialog) { dialog.close(); });
    QVERIFY(!editor().save(file().toStdString()));
    QVERIFY(!QFile::exists(file() + ".bak"));

    onDialog<ErrorDialog>([](ErrorDialog &dialog) { pressButton(dialog, "Yes"); });
    QVERIFY(editor().save(file().toStdString()));
    QVERIFY(contentOf(file()).contains("Kind = Plasma"));
    QCOMPARE(contentOf(file() + ".bak"), before);
    QVERIFY(!tree().isModified());
}

void SavingTest::reportsATargetThatCannotBeOpened()
{
    open(copyOf("duct.vel"));
    changeSomething();
    const QString target = folder() + "/absent/duct.vel";
    answer();
    QVERIFY(editor().save(target.toStdString())); // it counts as saved
    QCOMPARE(boxes,
             QStringList("Critical: Error Saving File\nUnable to save your modifications to\n  " +
                         target +
                         "\nThis may be due to the OMBRA ZOT-Solver run having "
                         "completed.\n[Ok], Escape"));
    QCOMPARE(editor().windowTitle(), file() + " - Modified");
}

// The previous file has already been moved, and the box says where it is.
void SavingTest::reportsATargetThatIsAFolder()
{
    open(copyOf("duct.vel"));
    const QByteArray before = contentOf(file());
    changeSomething();
    const QString target = folder() + "/taken";
    QVERIFY(QDir().mkpath(target));
    answer();
    QVERIFY(editor().save(target.toStdString()));
    QCOMPARE(boxes,
             QStringList("Critical: Error Saving File\nUnable to save your modifications to\n  " +
                         target +
                         "\nThis may be due to the OMBRA ZOT-Solver run having completed.\n"
                         "Details: The previous version is kept in\n  " +
                         target + ".bak\n[Ok], Escape"));
    QCOMPARE(contentOf(target + ".bak"), before);
    QVERIFY(tree().isModified());
}

void SavingTest::reportsAnIncompleteSave()
{
    open(copyOf("duct.vel"));
    const QByteArray before = contentOf(file());
    changeSomething();
    answer();
    {
        const FileSizeLimit limit(100);
        QVERIFY(!editor().save(file().toStdString()));
    }
    QCOMPARE(boxes,
             QStringList("Critical: Error Saving File\nUnable to save your modifications to\n  " +
                         file() +
                         "\nFile too large\nYour modifications are still in the editor.\n"
                         "Details: The previous version is kept in\n  " +
                         file() + ".bak\n[Ok], Escape"));
    QCOMPARE(contentOf(file() + ".bak"), before);
    QVERIFY(tree().isModified());
}

void SavingTest::keepsTheBackupThroughFailedSaves()
{
    open(copyOf("duct.vel"));
    const QByteArray before = contentOf(file());
    changeSomething();
    {
        const FileSizeLimit limit(100);
        for (int i = 0; i < 2; ++i) {
            answer();
            QVERIFY(!editor().save(file().toStdString()));
        }
    }
    QCOMPARE(contentOf(file() + ".bak"), before);
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()), QByteArray(ductFormatted));
    QCOMPARE(contentOf(file() + ".bak"), before);
}

void SavingTest::closesAtOnceWithoutChanges()
{
    open(copyOf("duct.vel"));
    QVERIFY(closes());
    QVERIFY(boxes.isEmpty());
}

void SavingTest::closesByKey()
{
    open(copyOf("duct.vel"));
    press("Ctrl+Q");
    QVERIFY(!editor().isVisible());
}

void SavingTest::staysOpenWhenTheUserContinues()
{
    open(copyOf("duct.vel"));
    changeSomething();
    for (const int button : {2, -1}) {
        answer(button);
        QVERIFY(!closes());
    }
    QCOMPARE(boxes.first(),
             QString("Warning: Unsaved Changes\nYou have made changes that have not been "
                     "saved.\nWould you like to:\n[&Save and Quit] | &Quit Without "
                     "Saving | &Continue Working"));
    QVERIFY(tree().isModified());
}

// Exit closes all windows, in any order.
void SavingTest::keepsTheErrorsUntilTheUserHasAnswered()
{
    open(newFile("bad.vel", "FLOW: A\nDOMAIN: D\nEND\nEND\n"));
    for (int i = 0; i < 12; ++i) {
        editor().validateData();
    }
    tree().setModified();
    const auto visibleLists = [this] {
        qsizetype count = 0;
        for (const auto *list : editor().findChildren<ErrorDialog *>()) {
            count += list->isVisible() ? 1 : 0;
        }
        return count;
    };
    QCOMPARE(visibleLists(), 12);
    for (int i = 0; i < 3; ++i) {
        answer(2);
        editor().findChild<QAction *>("Exit")->trigger();
        QVERIFY(editor().isVisible());
        QCOMPARE(visibleLists(), 12);
    }
    answer(1);
    editor().findChild<QAction *>("Exit")->trigger();
    QVERIFY(!editor().isVisible());
    QCOMPARE(visibleLists(), 0);
}

void SavingTest::quitsWithoutSaving()
{
    open(copyOf("duct.vel"));
    const QByteArray before = contentOf(file());
    changeSomething();
    answer(1);
    QVERIFY(closes());
    QCOMPARE(boxes.size(), 1);
    QCOMPARE(contentOf(file()), before);
    QVERIFY(!QFile::exists(file() + ".bak"));
}

void SavingTest::savesAndQuits()
{
    open(copyOf("duct.vel"));
    changeSomething();
    answer(0);
    QVERIFY(closes());
    QCOMPARE(contentOf(file()), QByteArray(ductFormatted));
}

// A target that cannot be opened counts as saved, after its box.
void SavingTest::quitsWhenTheTargetCannotBeOpened()
{
    QVERIFY(QDir().mkpath(folder() + "/run"));
    open(newFile("run/duct.vel", "FLOW: Analysis\nTitle = First run\nEND\n"));
    QVERIFY(QDir(folder() + "/run").removeRecursively());
    changeSomething();
    answer(0);
    answer();
    QVERIFY(closes());
    QCOMPARE(boxes.size(), 2);
    QVERIFY2(boxes.last().startsWith("Critical: Error Saving File\n"), qPrintable(boxes.last()));
}

void SavingTest::staysOpenWhenTheUserDeclinesToSaveErrors()
{
    open(newFile("bad.vel", "FLOW: A\nDOMAIN: D\nEND\nEND\n"));
    tree().setModified();
    answer(0);
    onDialog<ErrorDialog>([](ErrorDialog &dialog) { pressButton(dialog, "No"); });
    QVERIFY(!closes());
    QVERIFY(!QFile::exists(file() + ".bak"));
}

void SavingTest::staysOpenAfterAnIncompleteSave()
{
    open(copyOf("duct.vel"));
    changeSomething();
    answer(0);
    answer();
    const FileSizeLimit limit(100);
    QVERIFY(!closes());
    QVERIFY(tree().isModified());
}

VEL_EDITOR_TEST(SavingTest)
#include "Saving_test.moc"
