// Tests that no save destroys the only copy of the data: if the file cannot be
// moved to its .bak, if it is not a regular file, or if the disk is full.
#include "veleditor/tests/EditorTest.h"
#include "veleditor/tests/FileSizeLimit.h"

#include "velparser/api/velparser.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace velEditor;

namespace {

int syncedFiles = 0;
int syncedFolders = 0;

/// Switches to a user without rights; the destructor switches back. Only for
/// root.
class OtherUser
{
public:
    OtherUser() { static_cast<void>(seteuid(nobody)); }
    ~OtherUser() { static_cast<void>(seteuid(0)); }

    /// Whether the user can reach and read a file or folder.
    [[nodiscard]] static bool mayUse(const QString &name)
    {
        return faccessat(AT_FDCWD, qPrintable(name), R_OK, AT_EACCESS) == 0;
    }

    static constexpr uid_t nobody = 65534;
};

} // namespace

extern "C" {
int __real_fsync(int descriptor); // NOLINT: the linker's names

int __wrap_fsync(int descriptor) // NOLINT
{
    struct stat status = {};
    fstat(descriptor, &status);
    ++(S_ISDIR(status.st_mode) ? syncedFolders : syncedFiles);
    return __real_fsync(descriptor);
}
}

class SafeSaveTest : public EditorTest
{
    Q_OBJECT

public:
    SafeSaveTest() { qputenv("XDG_STATE_HOME", QFile::encodeName(folder() + "/state")); }

private:
    /// Opens duct.vel with a change, and a folder that the .bak cannot replace.
    void openWithoutRoomForABackup();
    /// The box about a failed save, with the system's reason.
    [[nodiscard]] QString failureBox(const QString &reason, const QString &details) const;
    /// Files in the folder that a save should not leave.
    [[nodiscard]] QStringList leftOver() const;

    QByteArray before_;
    static constexpr rlim_t tooSmall = 100; ///< bytes, less than a save writes

private slots:
    void keepsTheFileIfThereIsNoRoomForACopy();
    void restoresTheFileWhenWritingItFails();
    void savesInAFolderThatCannotBeWrittenTo();
    void neverMovesADevice();
    void keepsTheNewTextIfADeviceRefusesIt();
    void writesToADeviceThatAcceptsIt();
    void doesNotWaitForTheReaderOfAPipe();
    void keepsTheDataUnderASecondNameOfTheFile();
    void keepsTheTargetOfALinkToTheBackup();
    void keepsThePreviousDataOfAnotherTarget();
    void syncsFileAndFolder();
    void syncsTheCopyFirst();
};

void SafeSaveTest::openWithoutRoomForABackup()
{
    open(copyOf("duct.vel"));
    before_ = contentOf(file());
    QVERIFY(QDir().mkpath(file() + ".bak"));
    changeSomething();
}

QString SafeSaveTest::failureBox(const QString &reason, const QString &details) const
{
    return "Critical: Error Saving File\nUnable to save your modifications to\n  " + file() + '\n' +
           reason + "\nYour modifications are still in the editor.\nDetails: " + details +
           "\n[Ok], Escape";
}

QStringList SafeSaveTest::leftOver() const
{
    return QDir(folder()).entryList({"*.kept-*"}) +
           QDir(folder() + "/state/veleditor/saved").entryList(QDir::Files);
}

// If there is no room for a copy of the file or for the new text, the save
// reports this and changes nothing.
void SafeSaveTest::keepsTheFileIfThereIsNoRoomForACopy()
{
    openWithoutRoomForABackup();
    answer();
    {
        const FileSizeLimit limit(tooSmall);
        QVERIFY(!editor().save(file().toStdString()));
    }
    QCOMPARE(boxes, QStringList(failureBox("File too large", "The file itself has not changed.")));
    QCOMPARE(contentOf(file()), before_);
    QVERIFY(tree().isModified());
    QCOMPARE(leftOver(), QStringList());

    QVERIFY(editor().save(file().toStdString()));
    QVERIFY(contentOf(file()).contains("Second run"));
    QCOMPARE(leftOver(), QStringList());
}

void SafeSaveTest::restoresTheFileWhenWritingItFails()
{
    open(newFile("short.vel", "FLOW: Analysis\nTitle = x\nEND\n"));
    before_ = contentOf(file());
    QVERIFY(QDir().mkpath(file() + ".bak"));
    const std::string longer(200, 'x');
    QCOMPARE(velparser::setStringValue("/FLOW:Analysis/Title", longer.c_str()), nullptr);
    answer();
    {
        const FileSizeLimit limit(static_cast<rlim_t>(before_.size()));
        QVERIFY(!editor().save(file().toStdString()));
    }
    QCOMPARE(boxes, QStringList(failureBox("File too large", "The file itself has not changed.")));
    QCOMPARE(contentOf(file()), before_);
    QCOMPARE(leftOver(), QStringList());
}

// The save does not check whether the file could be moved. The copy is then in the
// user's folder until the file is complete.
void SafeSaveTest::savesInAFolderThatCannotBeWrittenTo()
{
    if (geteuid() != 0) {
        QSKIP("only root can become somebody else");
    }
    open(copyOf("duct.vel"));
    changeSomething();
    QVERIFY(QDir().mkpath(folder() + "/state/veleditor"));
    for (const QString &name : {file(), folder() + "/state", folder() + "/state/veleditor"}) {
        QCOMPARE(chown(qPrintable(name), OtherUser::nobody, 0), 0);
    }
    QCOMPARE(chmod(qPrintable(folder()), 0755), 0);
    {
        const OtherUser user;
        if (!user.mayUse(file()) || !user.mayUse(qEnvironmentVariable("ZOT5_VEL_PARSER"))) {
            QSKIP("somebody else may not use the folders of this test");
        }
        QVERIFY(editor().save(file().toStdString()));
    }
    QVERIFY(contentOf(file()).contains("Second run"));
    QVERIFY(!QFile::exists(file() + ".bak"));
    QCOMPARE(leftOver(), QStringList());
}

void SafeSaveTest::neverMovesADevice()
{
    open(copyOf("duct.vel"));
    changeSomething();
    QVERIFY(QFile::remove(file()));
    QCOMPARE(mkfifo(qPrintable(file()), 0600), 0);
    answer();
    QVERIFY(editor().save(file().toStdString())); // without a reader, the pipe cannot be opened
    QCOMPARE(boxes.size(), 1);
    QVERIFY2(boxes[0].contains("\nThis may be due to the OMBRA ZOT-Solver run having completed."),
             qPrintable(boxes[0]));
    struct stat status = {};
    QCOMPARE(stat(qPrintable(file()), &status), 0);
    QVERIFY(S_ISFIFO(status.st_mode));
    QVERIFY(!QFile::exists(file() + ".bak"));
    QVERIFY(tree().isModified());
}

void SafeSaveTest::keepsTheNewTextIfADeviceRefusesIt()
{
    open(copyOf("duct.vel"));
    changeSomething();
    QVERIFY(QFile::remove(file()));
    QVERIFY(QFile::link("/dev/full", file()));
    answer();
    QVERIFY(!editor().save(file().toStdString()));
    const QStringList kept = leftOver();
    QCOMPARE(kept.size(), 1);
    const QString name = folder() + '/' + kept[0];
    QCOMPARE(boxes, QStringList(failureBox("No space left on device",
                                           "Your modifications are kept in\n  " + name)));
    QVERIFY(contentOf(name).startsWith("LANGUAGE:\n"));
    QVERIFY(contentOf(name).endsWith("END\n"));
    QVERIFY(contentOf(name).contains("Second run"));
    QCOMPARE(QFile::symLinkTarget(file()), QString("/dev/full"));
    QVERIFY(!QFileInfo::exists(file() + ".bak"));
    QVERIFY(tree().isModified());
}

void SafeSaveTest::writesToADeviceThatAcceptsIt()
{
    open(copyOf("duct.vel"));
    changeSomething();
    QVERIFY(QFile::remove(file()));
    QVERIFY(QFile::link("/dev/null", file()));
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(QFile::symLinkTarget(file()), QString("/dev/null"));
    struct stat status = {};
    QCOMPARE(stat("/dev/null", &status), 0);
    QVERIFY(S_ISCHR(status.st_mode));
    QCOMPARE(static_cast<int>(status.st_mode & 0777), 0666);
    QCOMPARE(leftOver(), QStringList());
}

void SafeSaveTest::doesNotWaitForTheReaderOfAPipe()
{
    open(copyOf("duct.vel"));
    changeSomething();
    QVERIFY(QFile::remove(file()));
    QCOMPARE(mkfifo(qPrintable(file()), 0600), 0);
    const int reader = ::open(qPrintable(file()), O_RDONLY | O_NONBLOCK);
    QVERIFY(reader >= 0);
    QVERIFY(editor().save(file().toStdString()));
    QByteArray text(65536, '\0');
    text.resize(static_cast<int>(::read(reader, text.data(), 65536)));
    ::close(reader);
    QVERIFY(text.startsWith("LANGUAGE:\n"));
    QVERIFY(text.contains("Second run"));
    QVERIFY(!tree().isModified());
}

// Moving between two names of one file does nothing. Writing would then change
// both.
void SafeSaveTest::keepsTheDataUnderASecondNameOfTheFile()
{
    open(copyOf("duct.vel"));
    before_ = contentOf(file());
    QCOMPARE(link(qPrintable(file()), qPrintable(file() + ".bak")), 0);
    changeSomething();
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file() + ".bak"), before_);
    QVERIFY(contentOf(file()).contains("Second run"));
}

// The link would replace the data that it points to.
void SafeSaveTest::keepsTheTargetOfALinkToTheBackup()
{
    const QString link = folder() + "/link.vel";
    QVERIFY(QFile::rename(copyOf("duct.vel"), link + ".bak"));
    before_ = contentOf(link + ".bak");
    QVERIFY(QFile::link(link + ".bak", link));
    open(link);
    changeSomething();
    answer();
    {
        const FileSizeLimit limit(tooSmall);
        QVERIFY(!editor().save(file().toStdString()));
    }
    QCOMPARE(contentOf(file()), before_);
    QVERIFY(editor().save(file().toStdString()));
    QVERIFY(contentOf(file()).contains("Second run"));
}

// A file that already has the name of the emergency copy is not lost either.
void SafeSaveTest::keepsThePreviousDataOfAnotherTarget()
{
    open(copyOf("duct.vel"));
    before_ = contentOf(file());
    const QString target = newFile("other.vel", QByteArray(50, 'x'));
    changeSomething();
    answer();
    {
        const FileSizeLimit limit(tooSmall);
        QVERIFY(!editor().save(target.toStdString()));
    }
    QCOMPARE(contentOf(target), QByteArray(50, 'x'));
    QCOMPARE(contentOf(target + ".bak"), before_);
    QVERIFY2(boxes[0].contains("The previous version is kept in\n  " + target + ".bak"),
             qPrintable(boxes[0]));
    QCOMPARE(leftOver(), QStringList());
}

void SafeSaveTest::syncsFileAndFolder()
{
    open(copyOf("duct.vel"));
    QVERIFY(QDir(folder()).mkpath("state/veleditor"));
    newFile("state/veleditor/history", ""); // no history, which is synced too
    changeSomething();
    syncedFiles = syncedFolders = 0;
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(syncedFiles, 1);
    QCOMPARE(syncedFolders, 1);
}

void SafeSaveTest::syncsTheCopyFirst()
{
    openWithoutRoomForABackup();
    QVERIFY(QDir(folder()).mkpath("state/veleditor"));
    newFile("state/veleditor/history", "");
    syncedFiles = syncedFolders = 0;
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(syncedFiles, 2);
    QCOMPARE(syncedFolders, 2);
}

VEL_EDITOR_TEST(SafeSaveTest)
#include "SafeSave_test.moc"
