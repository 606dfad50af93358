// A watched file that is changed, replaced, moved, removed and made again, by itself,
// through links and with its folder.
#include "veleditor/src/FileWatch.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>
#include <random>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace velEditor;

using State = FileWatch::State;

namespace {

/// The longest that the system may take to report a change, in milliseconds.
constexpr int patience = 30'000;

void require(bool succeeded, const std::string &what)
{
    if (!succeeded) {
        qFatal("%s", what.c_str());
    }
}

void write(const std::string &file, const std::string &bytes)
{
    QFile out(QString::fromStdString(file));
    require(out.open(QIODevice::WriteOnly) && out.write(bytes.c_str()) == qint64(bytes.size()),
            "cannot write " + file);
}

void move(const std::string &from, const std::string &to)
{
    require(::rename(from.c_str(), to.c_str()) == 0, "cannot rename " + from);
}

/// As careful programs write.
void replace(const std::string &file, const std::string &bytes)
{
    write(file + ".new", bytes);
    move(file + ".new", file);
}

void link(const std::string &target, const std::string &name)
{
    require(::symlink(target.c_str(), name.c_str()) == 0, "cannot make the link " + name);
}

void makeFolder(const std::string &name)
{
    require(::mkdir(name.c_str(), 0700) == 0, "cannot make the folder " + name);
}

} // namespace

#define AWAIT_STATE(wanted) QTRY_VERIFY_WITH_TIMEOUT(watch_->state() == (wanted), patience)

class FileWatchTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void seesAChange();
    void seesTheChangeBeforeItIsAsked();
    void reportsEachChangeOnce();
    void ignoresATouchAndTheSameBytes();
    void seesThatTheFormerBytesAreBack();
    void seesAReplacement();
    void followsTheReplacement();
    void seesThatTheFileWasRemoved();
    void seesThatTheFileCameBack();
    void seesThatTheFileWasRenamed();
    void doesNotTakeACopyForTheFile();
    void doesNotTakeAnotherNameForTheNewOne();
    void ignoresASave();
    void seesAChangeOfTheSave();
    void seesTwoQuickChanges();
    void seesAChangeOfALinksTarget();
    void seesAnotherTarget();
    void seesALinkBetween();
    void seesThatTheFolderVanished();
    void seesAFileInANewFolder();
    void watchesARelativePath();
    void keepsWhatItKnowsWhenItCannotSee();
    void endsWithTheVersion();
    void agreesWithAModel();

private:
    void watch(const std::string &file);

    std::unique_ptr<QTemporaryDir> folder_;
    std::string file_;
    std::unique_ptr<FileWatch> watch_;
    std::unique_ptr<QSignalSpy> reports_;
};

void FileWatchTest::init()
{
    folder_ = std::make_unique<QTemporaryDir>();
    makeFolder(folder_->path().toStdString() + "/in");
    file_ = folder_->path().toStdString() + "/in/case.vel";
    write(file_, "Title = First\n");
    watch(file_);
}

void FileWatchTest::cleanup()
{
    reports_.reset();
    watch_.reset();
    folder_.reset();
}

void FileWatchTest::watch(const std::string &file)
{
    watch_ = std::make_unique<FileWatch>(file);
    watch_->expect(FileVersion::read(file));
    reports_ = std::make_unique<QSignalSpy>(watch_.get(), &FileWatch::noticed);
}

// --- Changes --------------------------------------------------------------------

void FileWatchTest::seesAChange()
{
    write(file_, "Title = Second\n");
    AWAIT_STATE(State::Changed);
    QCOMPARE(reports_->count(), 1);
    QCOMPARE(reports_->at(0).at(0).value<State>(), State::Changed);
}

// Without any report of the system.
void FileWatchTest::seesTheChangeBeforeItIsAsked()
{
    write(file_, "Title = Second\n");
    QCOMPARE(watch_->state(), State::Same);
    watch_->check();
    QCOMPARE(watch_->state(), State::Changed);
    QCOMPARE(reports_->count(), 1);
}

void FileWatchTest::reportsEachChangeOnce()
{
    write(file_, "Title = Second\n");
    AWAIT_STATE(State::Changed);
    write(file_, "Title = Second\n");
    watch_->check();
    watch_->check();
    QCOMPARE(reports_->count(), 1);
    write(file_, "Title = Third!\n");
    QTRY_COMPARE_WITH_TIMEOUT(reports_->count(), 2, patience);
    QCOMPARE(watch_->state(), State::Changed);
}

void FileWatchTest::ignoresATouchAndTheSameBytes()
{
    require(::utimensat(AT_FDCWD, file_.c_str(), nullptr, 0) == 0, "cannot touch");
    watch_->check();
    write(file_, "Title = First\n");
    watch_->check();
    replace(file_, "Title = First\n");
    watch_->check();
    require(::chmod(file_.c_str(), 0600) == 0, "cannot change the mode");
    watch_->check();
    QCOMPARE(reports_->count(), 0);

    // The next report is that of a change, so none of these was still to come.
    write(file_, "Title = Second\n");
    AWAIT_STATE(State::Changed);
    QCOMPARE(reports_->count(), 1);
}

void FileWatchTest::seesThatTheFormerBytesAreBack()
{
    write(file_, "Title = Second\n");
    AWAIT_STATE(State::Changed);
    write(file_, "Title = First\n");
    AWAIT_STATE(State::Same);
    QCOMPARE(reports_->count(), 2);
}

void FileWatchTest::seesAReplacement()
{
    replace(file_, "Title = Second\n");
    AWAIT_STATE(State::Changed);
}

// The new file is watched, not the one that had the name before, even where that
// lives on under another name.
void FileWatchTest::followsTheReplacement()
{
    require(::link(file_.c_str(), (file_ + ".bak").c_str()) == 0, "cannot link");
    replace(file_, "Title = First\n");
    watch_->check();
    QCOMPARE(reports_->count(), 0);
    write(file_ + ".bak", "Title = Old\n");
    write(file_, "Title = Second\n");
    AWAIT_STATE(State::Changed);
}

// --- Names ----------------------------------------------------------------------

void FileWatchTest::seesThatTheFileWasRemoved()
{
    require(::unlink(file_.c_str()) == 0, "cannot remove");
    AWAIT_STATE(State::Removed);
    QCOMPARE(watch_->newPath(), std::string());
    watch_->check();
    QCOMPARE(reports_->count(), 1);
}

void FileWatchTest::seesThatTheFileCameBack()
{
    require(::unlink(file_.c_str()) == 0, "cannot remove");
    AWAIT_STATE(State::Removed);
    write(file_, "Title = First\n");
    AWAIT_STATE(State::Same);
    require(::unlink(file_.c_str()) == 0, "cannot remove");
    AWAIT_STATE(State::Removed);
    write(file_, "Title = Second\n");
    AWAIT_STATE(State::Changed);
    write(file_, "Title = Third\n");
    QTRY_COMPARE_WITH_TIMEOUT(reports_->count(), 5, patience);
}

void FileWatchTest::seesThatTheFileWasRenamed()
{
    const std::string other = file_ + ".1";
    move(file_, other);
    AWAIT_STATE(State::Moved);
    QCOMPARE(watch_->newPath(), other);
    move(other, file_);
    AWAIT_STATE(State::Same);
    move(file_, folder_->path().toStdString() + "/case.vel");
    AWAIT_STATE(State::Removed);
    QCOMPARE(watch_->newPath(), std::string());
}

void FileWatchTest::doesNotTakeACopyForTheFile()
{
    write(file_ + ".copy", "Title = First\n");
    require(::unlink(file_.c_str()) == 0, "cannot remove");
    AWAIT_STATE(State::Removed);
}

// It was there before.
void FileWatchTest::doesNotTakeAnotherNameForTheNewOne()
{
    require(::link(file_.c_str(), (file_ + ".same").c_str()) == 0, "cannot link");
    watch_->check();
    require(::unlink(file_.c_str()) == 0, "cannot remove");
    AWAIT_STATE(State::Removed);
}

// --- What the editor does itself ------------------------------------------------

void FileWatchTest::ignoresASave()
{
    move(file_, file_ + ".bak");
    write(file_, "Title = Saved\n");
    watch_->expect(std::make_shared<FileVersion>("Title = Saved\n"));
    watch_->check();
    QCOMPARE(reports_->count(), 0);
    write(file_, "Title = Other\n");
    AWAIT_STATE(State::Changed);
    QCOMPARE(reports_->count(), 1);
}

void FileWatchTest::seesAChangeOfTheSave()
{
    write(file_, "Title = Saved\n");
    write(file_, "Title = Other\n");
    watch_->expect(std::make_shared<FileVersion>("Title = Saved\n"));
    AWAIT_STATE(State::Changed);
    watch_->expect(FileVersion::read(file_));
    QCOMPARE(watch_->state(), State::Same);
    QCOMPARE(reports_->count(), 2);
}

void FileWatchTest::seesTwoQuickChanges()
{
    write(file_, "Title = 1\n");
    watch_->check();
    watch_->expect(FileVersion::read(file_));
    write(file_, "Title = 2\n");
    AWAIT_STATE(State::Changed);
    watch_->expect(FileVersion::read(file_));
    write(file_, "Title = 1\n");
    write(file_, "Title = 2\n");
    watch_->check();
    QCOMPARE(watch_->state(), State::Same);
}

// --- Links and folders ----------------------------------------------------------

void FileWatchTest::seesAChangeOfALinksTarget()
{
    const std::string name = folder_->path().toStdString() + "/link.vel";
    link("in/case.vel", name);
    watch(name);
    write(file_, "Title = Second\n");
    AWAIT_STATE(State::Changed);
    replace(file_, "Title = First\n");
    AWAIT_STATE(State::Same);
    require(::unlink(file_.c_str()) == 0, "cannot remove");
    AWAIT_STATE(State::Removed);
    write(file_, "Title = First\n");
    AWAIT_STATE(State::Same);
}

void FileWatchTest::seesAnotherTarget()
{
    const std::string name = folder_->path().toStdString() + "/link.vel";
    link(file_, name);
    watch(name);
    write(file_ + ".2", "Title = Second\n");
    require(::unlink(name.c_str()) == 0, "cannot remove");
    link(file_ + ".2", name);
    AWAIT_STATE(State::Changed);
    write(file_ + ".2", "Title = First\n");
    AWAIT_STATE(State::Same);
}

void FileWatchTest::seesALinkBetween()
{
    const std::string folder = folder_->path().toStdString();
    makeFolder(folder + "/between");
    link("../in/case.vel", folder + "/between/link.vel");
    link("between/link.vel", folder + "/link.vel");
    watch(folder + "/link.vel");
    write(folder + "/other.vel", "Title = Second\n");
    require(::unlink((folder + "/between/link.vel").c_str()) == 0, "cannot remove");
    AWAIT_STATE(State::Removed);
    link("../other.vel", folder + "/between/link.vel");
    AWAIT_STATE(State::Changed);
}

void FileWatchTest::seesThatTheFolderVanished()
{
    const std::string folder = folder_->path().toStdString();
    move(folder + "/in", folder + "/away");
    AWAIT_STATE(State::Removed);
    move(folder + "/away", folder + "/in");
    AWAIT_STATE(State::Same);
    QVERIFY(QDir(QString::fromStdString(folder + "/in")).removeRecursively());
    AWAIT_STATE(State::Removed);
}

void FileWatchTest::seesAFileInANewFolder()
{
    const std::string folder = folder_->path().toStdString();
    QVERIFY(QDir(QString::fromStdString(folder + "/in")).removeRecursively());
    AWAIT_STATE(State::Removed);
    makeFolder(folder + "/in");
    write(file_, "Title = Second\n");
    AWAIT_STATE(State::Changed);
    replace(file_, "Title = First\n");
    AWAIT_STATE(State::Same);
}

void FileWatchTest::watchesARelativePath()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder_->path() + "/in"));
    watch("case.vel");
    QVERIFY(QDir::setCurrent(before));
    write(file_, "Title = Second\n");
    AWAIT_STATE(State::Changed);
}

void FileWatchTest::keepsWhatItKnowsWhenItCannotSee()
{
    watch_ = std::make_unique<FileWatch>(std::string(5000, 'x'));
    watch_->expect(std::make_shared<FileVersion>("Title = First\n"));
    watch_->check();
    QCOMPARE(watch_->state(), State::Same);
}

void FileWatchTest::endsWithTheVersion()
{
    watch_->expect(nullptr);
    write(file_, "Title = Second\n");
    watch_->check();
    QCOMPARE(watch_->state(), State::Same);
    QCOMPARE(reports_->count(), 0);
}

// --- Random changes ---------------------------------------------------------------

// The model is what the file and the editor have; nothing where there is no file. Mostly
// the watch is asked, else the system reports.
void FileWatchTest::agreesWithAModel()
{
    std::mt19937 random(14);
    std::optional<std::string> onDisk = "Title = First\n";
    std::string known = *onDisk;
    for (int step = 0; step < 24; ++step) {
        const std::string text = "Title = " + std::to_string(random() % 3) + "\n";
        switch (random() % 5) {
        case 0:
            write(file_, text);
            onDisk = text;
            break;
        case 1:
            replace(file_, text);
            onDisk = text;
            break;
        case 2:
            ::unlink(file_.c_str());
            onDisk.reset();
            break;
        case 3:
            if (onDisk) {
                known = *onDisk;
                watch_->expect(FileVersion::read(file_));
            }
            break;
        default:
            write(file_, text);
            watch_->expect(std::make_shared<FileVersion>(text));
            onDisk = known = text;
            break;
        }
        if (random() % 4 != 0) {
            watch_->check();
        }
        const State wanted = !onDisk            ? State::Removed
                             : *onDisk == known ? State::Same
                                                : State::Changed;
        AWAIT_STATE(wanted);
    }
}

QTEST_GUILESS_MAIN(FileWatchTest)

#include "FileWatch_test.moc"
