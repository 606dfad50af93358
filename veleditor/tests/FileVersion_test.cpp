// A version of a file compared with what the file holds later, whatever its times say.
#include "veleditor/src/FileVersion.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace velEditor;

using Match = FileVersion::Match;

namespace {

/// By this process so far; nothing if the system does not say.
std::optional<qint64> bytesRead()
{
    QFile counts("/proc/self/io");
    if (!counts.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QByteArray line = counts.readLine(); // "rchar: 1234"
    return line.mid(line.indexOf(' ')).trimmed().toLongLong();
}

} // namespace

class FileVersionTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { folder_ = std::make_unique<QTemporaryDir>(); }
    void cleanup() { folder_.reset(); }

    void readsAFile();
    void readsNothingElse();
    void seesOtherBytes();
    void seesOtherBytesOfTheSameSizeAndTime();
    void ignoresATouch();
    void ignoresAnotherFileWithTheSameBytes();
    void seesThatTheFileIsMissing();
    void doesNotWaitForAPipe();
    void seesThatItCannotKnow();
    void rereadsOnlyWhatMayHaveChanged();
    void knowsBytesThatWereWritten();
    void tellsOtherVersionsApart();

private:
    std::string write(const char *name, const QByteArray &bytes);
    void setTime(const std::string &file, std::int64_t seconds);

    std::unique_ptr<QTemporaryDir> folder_;
};

std::string FileVersionTest::write(const char *name, const QByteArray &bytes)
{
    QFile file(folder_->filePath(QString::fromLatin1(name)));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write %s", name);
    }
    return file.fileName().toStdString();
}

void FileVersionTest::setTime(const std::string &file, std::int64_t seconds)
{
    const timespec times[] = {{seconds, 0}, {seconds, 0}};
    QCOMPARE(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
}

void FileVersionTest::readsAFile()
{
    const std::string file = write("case.vel", "Title = First\n");
    const std::shared_ptr<FileVersion> version = FileVersion::read(file);
    QVERIFY(version != nullptr);
    QCOMPARE(version->bytes(), std::string("Title = First\n"));
    QVERIFY(version->stamp().has_value());
    QCOMPARE(version->stamp()->size, std::uint64_t(14));
    QCOMPARE(version->stamp()->links, std::uint64_t(1));
    QCOMPARE(version->compare(file).match, Match::Same);
}

void FileVersionTest::readsNothingElse()
{
    QVERIFY(FileVersion::read(folder_->filePath("none").toStdString()) == nullptr);
    QVERIFY(FileVersion::read(folder_->path().toStdString()) == nullptr);
    QVERIFY(FileVersion::read("/dev/null") == nullptr);
}

void FileVersionTest::seesOtherBytes()
{
    const std::string file = write("case.vel", "Title = First\n");
    const std::shared_ptr<FileVersion> version = FileVersion::read(file);
    write("case.vel", "Title = Second\n");
    QCOMPARE(version->compare(file).match, Match::Other);
    QCOMPARE(version->bytes(), std::string("Title = First\n"));
    write("case.vel", "Title = First\n");
    QCOMPARE(version->compare(file).match, Match::Same);
}

// Two writes may come within one step of the clock.
void FileVersionTest::seesOtherBytesOfTheSameSizeAndTime()
{
    const std::string file = write("case.vel", "Title = 0\n");
    setTime(file, 1'000'000'000);
    const std::shared_ptr<FileVersion> version = FileVersion::read(file);
    for (int i = 1; i < 10; ++i) {
        write("case.vel", "Title = " + QByteArray::number(i) + "\n");
        setTime(file, 1'000'000'000);
        QCOMPARE(version->compare(file).match, Match::Other);
        write("case.vel", "Title = 0\n");
        setTime(file, 1'000'000'000);
        QCOMPARE(version->compare(file).match, Match::Same);
    }
}

void FileVersionTest::ignoresATouch()
{
    const std::string file = write("case.vel", "Title = First\n");
    const std::shared_ptr<FileVersion> version = FileVersion::read(file);
    setTime(file, 1'000'000'000);
    QCOMPARE(version->compare(file).match, Match::Same);
    QCOMPARE(version->stamp()->written, std::int64_t(1'000'000'000'000'000'000));
}

void FileVersionTest::ignoresAnotherFileWithTheSameBytes()
{
    const std::string file = write("case.vel", "Title = First\n");
    const std::shared_ptr<FileVersion> version = FileVersion::read(file);
    const std::uint64_t inode = version->stamp()->inode;
    const std::string other = write("other.vel", "Title = First\n");
    QCOMPARE(::rename(other.c_str(), file.c_str()), 0);
    QCOMPARE(version->compare(file).match, Match::Same);
    QVERIFY(version->stamp()->inode != inode);
}

void FileVersionTest::seesThatTheFileIsMissing()
{
    const std::string file = write("case.vel", "Title = First\n");
    const std::shared_ptr<FileVersion> version = FileVersion::read(file);
    QCOMPARE(version->compare(file + "/below").match, Match::Missing);
    QCOMPARE(::unlink(file.c_str()), 0);
    QCOMPARE(version->compare(file).match, Match::Missing);
    QCOMPARE(::mkdir(file.c_str(), 0700), 0);
    QCOMPARE(version->compare(file).match, Match::Missing);
    QCOMPARE(::rmdir(file.c_str()), 0);
    QCOMPARE(::symlink(file.c_str(), file.c_str()), 0);
    QCOMPARE(version->compare(file).match, Match::Missing);
}

void FileVersionTest::doesNotWaitForAPipe()
{
    const std::string file = write("case.vel", "Title = First\n");
    const std::shared_ptr<FileVersion> version = FileVersion::read(file);
    QCOMPARE(::unlink(file.c_str()), 0);
    QCOMPARE(::mkfifo(file.c_str(), 0600), 0);
    QCOMPARE(version->compare(file).match, Match::Missing);
    QVERIFY(FileVersion::read(file) == nullptr);
}

void FileVersionTest::seesThatItCannotKnow()
{
    FileVersion version("Title = First\n");
    QCOMPARE(version.compare(folder_->path().toStdString() + "/" + std::string(300, 'x')).match,
             Match::Unknown);
}

// The system counts the bytes that a program reads.
void FileVersionTest::rereadsOnlyWhatMayHaveChanged()
{
    const QByteArray bytes(1'000'000, '#');
    const std::string file = write("case.vel", bytes);
    const std::shared_ptr<FileVersion> version = FileVersion::read(file);
    FileVersion other("Title = Other\n");
    if (!bytesRead()) {
        QSKIP("the system does not count them");
    }
    const auto readsNothing = [&] {
        const qint64 before = *bytesRead();
        const bool isRight = version->compare(file).match == Match::Same &&
                             other.compare(file).match == Match::Other;
        return isRight && *bytesRead() - before < bytes.size();
    };
    QTRY_VERIFY_WITH_TIMEOUT(readsNothing(), 30'000);
    QVERIFY(!other.stamp().has_value());
}

void FileVersionTest::knowsBytesThatWereWritten()
{
    const std::string file = write("case.vel", "Title = First\n");
    FileVersion version("Title = First\n");
    QVERIFY(!version.stamp().has_value());
    QCOMPARE(version.compare(file).match, Match::Same);
    QVERIFY(version.stamp().has_value());
}

void FileVersionTest::tellsOtherVersionsApart()
{
    FileVersion version("Title = First\n");
    const auto second = version.compare(write("case.vel", "Title = Second\n"));
    const auto third = version.compare(write("case.vel", "Title = Third\n"));
    QCOMPARE(second.match, Match::Other);
    QCOMPARE(third.match, Match::Other);
    QVERIFY(!(second == third));
    QVERIFY(version.compare(write("case.vel", "Title = Second\n")) == second);
}

QTEST_GUILESS_MAIN(FileVersionTest)

#include "FileVersion_test.moc"
