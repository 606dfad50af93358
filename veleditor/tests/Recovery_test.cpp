// The journal of unsaved changes in the window: what is on the disk after each change,
// what the next start offers, and that a kill loses at most the change in progress.
#include "veleditor/tests/EditorTest.h"
#include "veleditor/tests/FileSizeLimit.h"

#include "veleditor/src/DataChange.h"
#include "veleditor/src/DifferenceList.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/NoticeBar.h"
#include "veleditor/src/RecoveryDialog.h"
#include "veleditor/src/UndoHistory.h"
#include "velparser/api/velparser.h"
#include "veltext/journalFile.h"
#include "veltext/openMark.h"
#include "veltext/readFile.h"
#include "veltext/recovery.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <optional>
#include <set>

#include <sys/stat.h>
#include <unistd.h>

using namespace velEditor;

namespace {

const char title[] = "/FLOW:Analysis/Title";

/// How many sessions are killed. More take longer and find more.
int killCount()
{
    bool isNumber = false;
    const int count = qEnvironmentVariableIntValue("VEL_KILLS", &isNumber);
    return isNumber ? count : 4;
}

// --- The scripted session -------------------------------------------------------------

constexpr int undoEvery = 5;
constexpr int addEvery = 3;

/// The data that the session changes, as a model of it.
struct SessionData
{
    std::string title = "First run";
    std::set<int> added;

    bool operator==(const SessionData &) const = default;
};

std::string textOf(const SessionData &data)
{
    std::string text = data.title;
    for (const int number : data.added) {
        text += ' ' + std::to_string(number);
    }
    return text;
}

std::string addedPath(int number)
{
    return "/FLOW:Analysis/EXTRA:n" + std::to_string(number);
}

bool isUndo(int number)
{
    return number % undoEvery == undoEvery - 1;
}

/// Makes change `number` of the session.
void change(Editor &editor, int number)
{
    const std::string text = std::to_string(number);
    Message failure;
    if (isUndo(number)) {
        failure = editor.history().undo();
    } else if (number % addEvery == 0) {
        failure = editor.document().apply(
            addingObject(addedPath(number), "EXTRA : n" + text + "\nx = 1\nEND\n"));
    } else {
        failure = editor.document().apply(settingValue(title, "Run " + text));
    }
    if (failure) {
        qFatal("%s", failure->c_str());
    }
}

SessionData dataAfter(int count)
{
    std::vector<SessionData> done{SessionData()};
    for (int number = 0; number < count; ++number) {
        if (isUndo(number)) {
            done.pop_back();
            continue;
        }
        SessionData next = done.back();
        if (number % addEvery == 0) {
            next.added.insert(number);
        } else {
            next.title = "Run " + std::to_string(number);
        }
        done.push_back(next);
    }
    return done.back();
}

SessionData dataIn(const std::string &bytes)
{
    const veltext::CommandText text(bytes);
    SessionData data{text.value(title).value_or(""), {}};
    for (int number = 0; number < 100000; number += addEvery) {
        if (text.value(addedPath(number) + "/x")) {
            data.added.insert(number);
        } else if (number > 3000) {
            break;
        }
    }
    return data;
}

/// How many changes a session says that it has made.
int changesIn(const QByteArray &output)
{
    const QList<QByteArray> lines = output.left(output.lastIndexOf('\n')).split('\n');
    return lines.constLast().toInt(); // 0 for a line of the test's own
}

} // namespace

class RecoveryTest : public EditorTest
{
    Q_OBJECT

private:
    /// Opens a copy of duct.vel, with a state folder of the test's own.
    void start(bool safeMode = false);
    void makeCase();
    [[nodiscard]] QStringList journals() const;
    [[nodiscard]] std::string name() const { return case_.toStdString(); }
    /// What the journal of the open window leads to; the base without a journal.
    [[nodiscard]] std::string inJournal() const;
    void set(const char *path, const char *value);
    [[nodiscard]] std::string value(const char *path);
    /// A journal that a crash has left, which sets these values one after the other.
    void leaveJournal(const std::vector<std::pair<const char *, const char *>> &values,
                      std::int64_t time, bool isSafe = false) const;
    void choose(const char *name);
    [[nodiscard]] QString notice() { return editor().notice().text(); }
    void killOneSession(int number);

    QString case_;
    std::string base_;

private slots:
    void session();

    void keepsEachChange();
    void countsWhatTheUserSees();
    void writesAGroupAndItsUndo();
    void keepsDataThatNoEditHasChanged();
    void endsWithASave();
    void endsWhenNothingIsWanted();
    void hasNoJournalOfAPipe();
    void offersWhatIsLeft();
    void discardsWhatIsNotWanted();
    void showsWhatRestoreWouldChange();
    void mergesWhenTheFileHasChanged();
    void keepsTheJournalUntilTheSave();
    void offersOneJournalAfterTheOther();
    void removesWhatHasNothingNew();
    void reportsDamage();
    void restoresInSafeModeOnlyWhatWasDoneInIt();
    void saysWhoElseHasTheFileOpen();
    void saysOnceThatItCannotKeepChanges();
    void goesOnWhenThereIsRoomAgain();
    void losesAtMostTheChangeInProgress();
};

void RecoveryTest::makeCase()
{
    qputenv("XDG_STATE_HOME", (folder() + QLatin1String("/state")).toUtf8());
    if (case_.isEmpty()) {
        case_ = copyOf(QStringLiteral("duct.vel"));
        base_ = contentOf(case_).toStdString();
    }
}

void RecoveryTest::start(bool safeMode)
{
    makeCase();
    open(case_, safeMode);
}

QStringList RecoveryTest::journals() const
{
    return QDir(folder() + QLatin1String("/state/veleditor/journal"))
        .entryList(QDir::Files | QDir::Hidden);
}

std::string RecoveryTest::inJournal() const
{
    const auto found = veltext::journalsInUse(veltext::journalFolder(), name());
    return found.empty() ? base_ : veltext::recover(found[0], base_, "duct.vel").bytes;
}

void RecoveryTest::set(const char *path, const char *value)
{
    QCOMPARE(editor().document().apply(settingValue(path, value)), std::nullopt);
}

std::string RecoveryTest::value(const char *path)
{
    return editor().document().data().value(path).value_or("");
}

void RecoveryTest::leaveJournal(const std::vector<std::pair<const char *, const char *>> &values,
                                std::int64_t time, bool isSafe) const
{
    std::optional<veltext::JournalWriter> writer;
    std::uint32_t steps = 0;
    for (const auto &[path, value] : values) {
        const veltext::JournalChange next{time, ++steps, settingValue(path, value)};
        if (writer) {
            writer->append(next);
        } else {
            writer.emplace(veltext::journalFolder(), veltext::newHead(name(), base_, isSafe), base_,
                           next);
        }
    }
}

void RecoveryTest::choose(const char *name)
{
    pressButton(editor().notice(), name);
}

// Does nothing unless a test has started this process for it.
void RecoveryTest::session()
{
    const QString file = qEnvironmentVariable("VEL_SESSION_FILE");
    if (file.isEmpty()) {
        return;
    }
    open(file);
    for (int number = 0; number < 2000; ++number) {
        change(editor(), number);
        std::printf("%d\n", number + 1);
        std::fflush(stdout);
        QApplication::processEvents();
    }
}

void RecoveryTest::keepsEachChange()
{
    start();
    QCOMPARE(journals(), QStringList());
    QCOMPARE(notice(), QString());
    set(title, "Second run");
    QCOMPARE(journals().size(), 1);
    const QString path =
        folder() + QLatin1String("/state/veleditor/journal/") + journals().constFirst();
    struct stat status = {};
    QCOMPARE(stat(qPrintable(path), &status), 0);
    QCOMPARE(status.st_mode & 0777, 0600U);
    QCOMPARE(stat(veltext::journalFolder().c_str(), &status), 0);
    QCOMPARE(status.st_mode & 0777, 0700U);
    QCOMPARE(dataIn(inJournal()).title, std::string("Second run"));

    set(title, "Second run"); // changes nothing
    const qint64 size = QFile(path).size();
    set(title, "Third run");
    QVERIFY(QFile(path).size() > size);
    QCOMPARE(dataIn(inJournal()).title, std::string("Third run"));
    press("Ctrl+Z");
    QCOMPARE(dataIn(inJournal()).title, std::string("Second run"));
    press("Ctrl+Z"); // as on the disk
    QCOMPARE(journals(), QStringList());
    press("Ctrl+Y");
    QCOMPARE(dataIn(inJournal()).title, std::string("Second run"));
}

void RecoveryTest::countsWhatTheUserSees()
{
    start();
    const auto steps = [this] {
        return veltext::journalsInUse(veltext::journalFolder(), name())[0].changes.back().steps;
    };
    set(title, "2");
    set(title, "3");
    set(title, "4");
    QCOMPARE(steps(), 3U);
    press("Ctrl+Z");
    QCOMPARE(steps(), 2U);
    press("Ctrl+Y");
    QCOMPARE(steps(), 3U);
    QVERIFY(editor().save(name()));
    // Two steps back and another one: 3 differ from what is on the disk.
    press("Ctrl+Z");
    press("Ctrl+Z");
    QCOMPARE(steps(), 2U);
    set(title, "5");
    QCOMPARE(steps(), 3U);
}

void RecoveryTest::writesAGroupAndItsUndo()
{
    start();
    QCOMPARE(changeTo(editor().document(), editor().history(),
                      "FLOW: Analysis\nTitle = a\nRun Mode = b\nEND\nDOMAIN: new\nEND\n",
                      QStringLiteral("Group")),
             std::nullopt);
    const auto inUse = veltext::journalsInUse(veltext::journalFolder(), name());
    QVERIFY(inUse[0].changes.size() > 2);
    QCOMPARE(inUse[0].changes.back().steps, 1U);
    QCOMPARE(dataIn(inJournal()).title, std::string("a"));
    set(title, "b");
    press("Ctrl+Z");
    QCOMPARE(dataIn(inJournal()).title, std::string("a"));
    press("Ctrl+Z");
    QCOMPARE(journals(), QStringList());
}

void RecoveryTest::keepsDataThatNoEditHasChanged()
{
    start();
    QVERIFY(velparser::setStringValue(title, "By an upgrade") == nullptr);
    editor().document().setModified();
    set("/FLOW:Analysis/DOMAIN:Duct/Kind", "Solid");
    const veltext::CommandText text(inJournal());
    QCOMPARE(text.value(title), std::optional<std::string>("By an upgrade"));
    QCOMPARE(text.value("/FLOW:Analysis/DOMAIN:Duct/Kind"), std::optional<std::string>("Solid"));
    set(title, "After it");
    QVERIFY(velparser::setStringValue(title, "Again") == nullptr);
    editor().document().setModified();
    set("/FLOW:Analysis/DOMAIN:Duct/Kind", "Fluid");
    QCOMPARE(dataIn(inJournal()).title, std::string("Again"));
    const auto inUse = veltext::journalsInUse(veltext::journalFolder(), name());
    QCOMPARE(inUse[0].changes.size(), 3U);
    QVERIFY(inUse[0].faults.empty());
}

void RecoveryTest::endsWithASave()
{
    start();
    set(title, "Second run");
    QVERIFY(editor().save(name() + ".emergency"));
    QCOMPARE(journals().size(), 1);
    QVERIFY(editor().save(name()));
    QCOMPARE(journals(), QStringList());
    // The saved text is the next base.
    base_ = contentOf(case_).toStdString();
    set(title, "Third run");
    const auto inUse = veltext::journalsInUse(veltext::journalFolder(), name());
    QCOMPARE(inUse[0].base, std::optional<std::string>(base_));
    QCOMPARE(dataIn(inJournal()).title, std::string("Third run"));
}

void RecoveryTest::endsWhenNothingIsWanted()
{
    start();
    QDir state(folder() + QLatin1String("/state/veleditor"));
    QCOMPARE(QDir(state.filePath(QStringLiteral("open"))).entryList(QDir::Files).size(), 1);
    set(title, "Second run");
    answer(1); // Quit Without Saving
    QVERIFY(editor().close());
    QCOMPARE(journals(), QStringList());
    QCOMPARE(QDir(state.filePath(QStringLiteral("open"))).entryList(QDir::Files).size(), 0);
}

void RecoveryTest::hasNoJournalOfAPipe()
{
    makeCase();
    const QString pipe = folder() + QLatin1String("/pipe");
    QCOMPARE(mkfifo(qPrintable(pipe), 0600), 0);
    std::unique_ptr<QThread> writer(QThread::create([&] {
        QFile file(pipe);
        if (file.open(QIODevice::WriteOnly)) {
            file.write(QByteArray::fromStdString(base_));
        }
    }));
    writer->start();
    open(pipe);
    writer->wait();
    set(title, "Second run");
    QCOMPARE(journals(), QStringList());
    QCOMPARE(notice(), QString());
}

// --- The next start -----------------------------------------------------------------------

void RecoveryTest::offersWhatIsLeft()
{
    makeCase();
    const QDateTime now = QDateTime::currentDateTime();
    leaveJournal({{title, "Second run"}, {title, "Third run"}}, now.toSecsSinceEpoch());
    start();
    QCOMPARE(
        notice(),
        QStringLiteral("Unsaved changes of %1 (2)").arg(now.toString(QStringLiteral("HH:mm"))));
    QCOMPARE(value(title), std::string("First run"));
    choose("Restore");
    QCOMPARE(value(title), std::string("Third run"));
    QVERIFY(!editor().notice().isNeeded());
    QVERIFY(editor().document().isModified());
    QCOMPARE(editor().history().undoText(), QStringLiteral("Restore Unsaved Changes"));
    QCOMPARE(dataIn(inJournal()).title, std::string("Third run"));
    press("Ctrl+Z"); // one step
    QCOMPARE(value(title), std::string("First run"));
    QVERIFY(!editor().document().isModified());
}

void RecoveryTest::discardsWhatIsNotWanted()
{
    makeCase();
    leaveJournal({{title, "Second run"}}, 0);
    start();
    QCOMPARE(notice(), QStringLiteral("Unsaved changes of %1 (1)")
                           .arg(QDateTime::fromSecsSinceEpoch(0).toString(
                               QStringLiteral("yyyy-MM-dd HH:mm"))));
    choose("Discard");
    QCOMPARE(journals(), QStringList());
    QVERIFY(!editor().notice().isNeeded());
    QCOMPARE(value(title), std::string("First run"));
}

void RecoveryTest::showsWhatRestoreWouldChange()
{
    makeCase();
    leaveJournal({{title, "Second run"}, {title, "Third run"}}, 0);
    start();
    choose("Show");
    QVERIFY(editor().notice().isNeeded());
    const auto &list = *shown<RecoveryDialog>().findChild<DifferenceList *>();
    QCOMPARE(list.differences(), (std::vector<veltext::Change>{{veltext::DifferenceKind::Changed,
                                                                title, "First run", "Third run"}}));
    QVERIFY(!shown<RecoveryDialog>().isModal());
    pressButton(shown<RecoveryDialog>(), "Close");
    QCOMPARE(value(title), std::string("First run"));
    QCOMPARE(journals().size(), 1);
}

void RecoveryTest::mergesWhenTheFileHasChanged()
{
    makeCase();
    leaveJournal({{title, "Second run"}, {"/FLOW:Analysis/DOMAIN:Duct/Kind", "Solid"}}, 0);
    newFile(QStringLiteral("duct.vel"),
            QByteArray::fromStdString(base_).replace("First run", "By hand"));
    start();
    QVERIFY(notice().endsWith(QLatin1String("(2); the file has changed since")));
    choose("Restore");
    QCOMPARE(value(title), std::string("By hand"));
    QCOMPARE(value("/FLOW:Analysis/DOMAIN:Duct/Kind"), std::string("Solid"));
    const auto &list = *shown<RecoveryDialog>().findChild<DifferenceList *>();
    QCOMPARE(list.differences(), (std::vector<veltext::Change>{{veltext::DifferenceKind::Changed,
                                                                title, "By hand", "Second run"}}));
    shown<RecoveryDialog>().close();
}

void RecoveryTest::keepsTheJournalUntilTheSave()
{
    makeCase();
    leaveJournal({{title, "Second run"}}, 0);
    start();
    choose("Restore");
    QCOMPARE(journals().size(), 2); // that of the crash, and that of this session
    QVERIFY(editor().save(name()));
    QCOMPARE(journals(), QStringList());
}

void RecoveryTest::offersOneJournalAfterTheOther()
{
    makeCase();
    leaveJournal({{title, "Second run"}}, 100);
    leaveJournal({{title, "Second run"}, {title, "Third run"}}, 300);
    leaveJournal({{"/FLOW:Analysis/DOMAIN:Duct/Kind", "Solid"}}, 200);
    start();
    QVERIFY(notice().endsWith(QLatin1String("(2)")));
    choose("Discard");
    choose("Restore");
    QCOMPARE(value("/FLOW:Analysis/DOMAIN:Duct/Kind"), std::string("Solid"));
    QCOMPARE(value(title), std::string("First run"));
    choose("Restore");
    QCOMPARE(value(title), std::string("Second run"));
    QVERIFY(!editor().notice().isNeeded());
    QVERIFY(editor().save(name()));
    QCOMPARE(journals(), QStringList());
}

void RecoveryTest::removesWhatHasNothingNew()
{
    makeCase();
    leaveJournal({{title, "Second run"}, {title, "First run"}}, 0);
    start();
    QVERIFY(!editor().notice().isNeeded());
    QCOMPARE(journals(), QStringList());
}

void RecoveryTest::reportsDamage()
{
    makeCase();
    leaveJournal({{title, "Second run"}, {title, "Third run"}}, 0);
    QFile file(QString::fromStdString(veltext::journalFolder()) + u'/' + journals().constFirst());
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.seek(file.size() - 6);
    file.write("?");
    file.close();
    start();
    QVERIFY(notice().endsWith(QLatin1String("(1); a part of them is damaged")));
    choose("Restore");
    QCOMPARE(value(title), std::string("Second run"));
    shown<RecoveryDialog>().close();
}

void RecoveryTest::restoresInSafeModeOnlyWhatWasDoneInIt()
{
    makeCase();
    leaveJournal({{title, "Second run"}}, 200, false);
    leaveJournal({{title, "Third run"}}, 100, true);
    start(true);
    QVERIFY(notice().endsWith(QLatin1String("; they cannot be restored in safe mode")));
    QVERIFY(editor().notice().findChild<QWidget *>(QStringLiteral("Restore")) == nullptr);
    choose("Discard");
    choose("Restore");
    QCOMPARE(value(title), std::string("Third run"));
    QCOMPARE(veltext::journalsInUse(veltext::journalFolder(), name()).back().head.isSafe, true);
}

void RecoveryTest::saysWhoElseHasTheFileOpen()
{
    makeCase();
    std::optional<veltext::OpenMark> mark(name());
    const veltext::FileUser user = veltext::OpenMark::usersOf(name()).at(0);
    QCOMPARE(user.process, static_cast<std::uint32_t>(getpid()));
    start();
    QCOMPARE(notice(), QStringLiteral("duct.vel is open in another editor (process %1 on %2)")
                           .arg(user.process)
                           .arg(QString::fromStdString(user.host)));
    QCOMPARE(veltext::OpenMark::usersOf(name()).size(), 2U);
    mark.reset();
    QCOMPARE(veltext::OpenMark::usersOf(name()).size(), 1U);
    QVERIFY(editor().close());
    QCOMPARE(veltext::OpenMark::usersOf(name()).size(), 0U);
}

// --- A state folder that cannot be used ---------------------------------------------------

void RecoveryTest::saysOnceThatItCannotKeepChanges()
{
    makeCase();
    newFile(QStringLiteral("state"), "not a folder");
    start();
    QVERIFY(!editor().notice().isNeeded());
    set(title, "Second run");
    QVERIFY2(notice().startsWith(QLatin1String("Your unsaved changes would be lost in a crash: ")),
             qPrintable(notice()));
    choose("Close");
    set(title, "Third run");
    QVERIFY(!editor().notice().isNeeded());
    QVERIFY(editor().save(name()));
}

void RecoveryTest::goesOnWhenThereIsRoomAgain()
{
    start();
    set(title, "Second run");
    const QString path =
        folder() + QLatin1String("/state/veleditor/journal/") + journals().constFirst();
    {
        const FileSizeLimit full(static_cast<rlim_t>(QFile(path).size() + 20));
        set(title, "Third run");
        QVERIFY(editor().notice().isNeeded());
        QCOMPARE(dataIn(inJournal()).title, std::string("Second run"));
        set(title, "Fourth run");
        set(title, "Fifth run");
    }
    choose("Close");
    for (const char *text : {"6", "7", "8", "9"}) {
        set(title, text);
    }
    QCOMPARE(dataIn(inJournal()).title, std::string("9"));
    QVERIFY(!editor().notice().isNeeded());
    const auto inUse = veltext::journalsInUse(veltext::journalFolder(), name());
    QVERIFY(inUse[0].faults.empty());
}

// --- Kills ----------------------------------------------------------------------------------

void RecoveryTest::killOneSession(int number)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("VEL_SESSION_FILE"), case_);
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("session")});
    QByteArray output;
    const int wanted = QRandomGenerator::global()->bounded(40);
    while (changesIn(output) < wanted && process.waitForReadyRead()) {
        output += process.readAllStandardOutput();
    }
    QThread::usleep(QRandomGenerator::global()->bounded(3000U));
    process.kill(); // SIGKILL
    process.waitForFinished();
    output += process.readAllStandardOutput();
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);

    const int done = changesIn(output);
    QVERIFY2(done >= wanted, output.constData());
    std::vector<std::string> faults;
    std::vector<veltext::LeftJournal> left =
        veltext::leftJournals(veltext::journalFolder(), name(), &faults);
    QVERIFY(faults.empty());
    const SessionData found =
        left.empty() ? SessionData()
                     : dataIn(veltext::recover(left[0].journal, base_, "duct.vel").bytes);
    QVERIFY2(found == dataAfter(done) || found == dataAfter(done + 1),
             qPrintable(QStringLiteral("session %1: killed after %2 changes, found %3")
                            .arg(number)
                            .arg(done)
                            .arg(QString::fromStdString(textOf(found)))));
    if (!left.empty()) {
        left[0].file.remove();
    }
}

void RecoveryTest::losesAtMostTheChangeInProgress()
{
    makeCase();
    for (int number = 0; number < killCount() && !QTest::currentTestFailed(); ++number) {
        killOneSession(number);
    }
}

VEL_EDITOR_TEST(RecoveryTest)
#include "Recovery_test.moc"
