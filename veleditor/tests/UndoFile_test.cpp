// The file with the undo steps of a command file: its bytes, its folder, and what is
// read of a file that is damaged.
#include "veleditor/src/UndoFile.h"

#include "veltext/error.h"
#include "veltext/record.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>

#include <sys/resource.h>

using namespace velEditor;

namespace {

const char text[] = "FLOW: A\n  Title = b\nEND\n";

UndoSteps someSteps()
{
    const Edit first{Edit::Kind::SetValue, "/FLOW:A/Title", "", "a"};
    const Edit second{Edit::Kind::SetValue, "/FLOW:A/Title", "a", "b"};
    Edit deleted{Edit::Kind::DeleteParameter, "/FLOW:A/Note", "\xE4\n%", "", 3};
    deleted.parametersBefore = 2;
    const Edit object{Edit::Kind::AddObject, "/DOMAIN:d", "", "DOMAIN : d\nEND\n", 1, {"x", ""}};
    return {{{{}, {second}}, {QStringLiteral("Größe"), {first, deleted}}},
            {{{}, {object}}, {{}, {deleted}}}};
}

/// Whether `steps` are the first ones of `all`.
bool areFirst(const std::vector<UndoStep> &steps, const std::vector<UndoStep> &all)
{
    return steps.size() <= all.size() && std::equal(steps.begin(), steps.end(), all.begin());
}

/// The bytes at the beginnings of the lines in the example of the document.
QByteArray documentedBytes()
{
    QFile document(qEnvironmentVariable("VEL_SOURCE_DIR") + QLatin1String("/docs/undo.md"));
    if (!document.open(QIODevice::ReadOnly)) {
        qFatal("cannot read the document");
    }
    const QString example = QString::fromUtf8(document.readAll()).section("## An example", 1);
    static const QRegularExpression line(
        QStringLiteral("^    ([0-9a-f]{2}(?: [0-9a-f]{2})*)(?:  |$)"),
        QRegularExpression::MultilineOption);
    QByteArray hex;
    for (auto match = line.globalMatch(example); match.hasNext();) {
        hex += match.next().captured(1).toLatin1();
    }
    return QByteArray::fromHex(hex);
}

} // namespace

class UndoFileTest : public QObject
{
    Q_OBJECT

private:
    [[nodiscard]] QString path(const char *name) const { return folder_->filePath(name); }
    [[nodiscard]] UndoFile file() const { return UndoFile(path("duct.vel").toStdString()); }
    [[nodiscard]] static QString nameOf(const UndoFile &file)
    {
        return QString::fromStdString(file.name());
    }

    std::unique_ptr<QTemporaryDir> folder_;

private slots:
    void init();

    void readsWhatItWrote();
    void readsNothingForAnotherText();
    void hasTheBytesOfTheDocument();
    void readsWhatIsLeftOfACutFile();
    void readsWhatIsLeftOfADamagedFile();
    void readsNothingOfALaterVersion();
    void isForTheUserAlone();
    void isTheSameThroughALink();
    void goesWithTheLastStep();
    void saysWhyItCannotBeWritten();
    void removesWhatKilledProgramsLeft();
    void staysAsItWasOnAFullDisk();
    void saysWhyItCannotBeRead();
};

void UndoFileTest::init()
{
    folder_ = std::make_unique<QTemporaryDir>();
    qputenv("XDG_STATE_HOME", path("state").toUtf8());
}

void UndoFileTest::readsWhatItWrote()
{
    QVERIFY(file().read(text).steps.isEmpty());
    file().write(text, someSteps());
    const KeptUndo kept = file().read(text);
    QVERIFY(kept.steps == someSteps());
    QCOMPARE(kept.fault, "");

    file().write(text, {{}, someSteps().undone});
    QVERIFY(file().read(text).steps == UndoSteps({}, someSteps().undone));
}

void UndoFileTest::readsNothingForAnotherText()
{
    file().write(text, someSteps());
    for (const std::string other : {"", "FLOW: A\n  Title = c\nEND\n", "x"}) {
        const KeptUndo kept = file().read(other);
        QVERIFY(kept.steps.isEmpty());
        QCOMPARE(kept.fault, "");
    }
    QVERIFY(file().read(text).steps == someSteps());
}

void UndoFileTest::hasTheBytesOfTheDocument()
{
    const Edit edit{Edit::Kind::SetValue, "/FLOW:A/Title", "a", "b"};
    const std::string bytes = undoBytes("/home/ada/duct.vel", text, {{{{}, {edit}}}, {}});
    QCOMPARE(documentedBytes().toHex(' '), QByteArray::fromStdString(bytes).toHex(' '));
}

void UndoFileTest::readsWhatIsLeftOfACutFile()
{
    const std::string bytes = undoBytes("/a", text, someSteps());
    const UndoSteps all = someSteps();
    std::size_t most = 0;
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        const KeptUndo kept = undoOf(std::string_view(bytes).substr(0, length), text);
        QVERIFY(areFirst(kept.steps.done, all.done));
        QVERIFY(areFirst(kept.steps.undone, all.undone));
        QVERIFY(!kept.fault.empty());
        const std::size_t count = kept.steps.done.size() + kept.steps.undone.size();
        QVERIFY(count >= most);
        most = count;
    }
    QCOMPARE(most, std::size_t(4));
}

void UndoFileTest::readsWhatIsLeftOfADamagedFile()
{
    const std::string bytes = undoBytes("/a", text, someSteps());
    const UndoSteps all = someSteps();
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        for (const int bit : {0x01, 0x80, 0xff}) {
            std::string damaged = bytes;
            damaged[place] = static_cast<char>(damaged[place] ^ bit);
            const KeptUndo kept = undoOf(damaged, text);
            QVERIFY(areFirst(kept.steps.done, all.done));
            QVERIFY(areFirst(kept.steps.undone, all.undone));
            QVERIFY(!kept.fault.empty());
        }
    }
    const KeptUndo nothing = undoOf("what is this", text);
    QVERIFY(nothing.steps.isEmpty());
    QCOMPARE(nothing.fault, "its beginning is damaged, or from a later version of the program");
}

void UndoFileTest::readsNothingOfALaterVersion()
{
    std::string body(1, '\2');
    body += std::string(3, '\0') + "more";
    const KeptUndo kept = undoOf(veltext::recordOf('U', body), text);
    QVERIFY(kept.steps.isEmpty());
    QVERIFY(!kept.fault.empty());
}

void UndoFileTest::isForTheUserAlone()
{
    file().write(text, someSteps());
    const QFileInfo info(nameOf(file()));
    const auto user = QFile::ReadOwner | QFile::WriteOwner;
    const auto all = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup |
                     QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther |
                     QFile::ExeOther;
    QCOMPARE(info.permissions() & all, user);
    QCOMPARE(QFileInfo(info.path()).permissions() & all, user | QFile::ExeOwner);
    QCOMPARE(info.path(), path("state/veleditor/undo"));
    QVERIFY(info.fileName().startsWith("duct.vel-"));
    QCOMPARE(QDir(info.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

void UndoFileTest::isTheSameThroughALink()
{
    QVERIFY(QDir().mkpath(path("real")));
    QVERIFY(QFile::link(path("real"), path("linked")));
    QCOMPARE(UndoFile(path("linked/x.vel").toStdString()).name(),
             UndoFile(path("real/x.vel").toStdString()).name());
    QVERIFY(UndoFile(path("x.vel").toStdString()).name() !=
            UndoFile(path("real/x.vel").toStdString()).name());
}

void UndoFileTest::goesWithTheLastStep()
{
    file().write(text, {}); // there is none
    file().write(text, someSteps());
    QVERIFY(QFile::exists(nameOf(file())));
    file().write(text, {});
    QVERIFY(!QFile::exists(nameOf(file())));
}

void UndoFileTest::saysWhyItCannotBeWritten()
{
    QFile blocking(path("state"));
    QVERIFY(blocking.open(QIODevice::WriteOnly));
    try {
        file().write(text, someSteps());
        QFAIL("it was written");
    } catch (const veltext::Error &error) {
        QVERIFY2(QByteArray::fromStdString(error.message()).contains("undo"),
                 error.message().c_str());
    }
    qunsetenv("XDG_STATE_HOME");
    const QByteArray home = qgetenv("HOME");
    qunsetenv("HOME");
    try {
        file().write(text, someSteps());
        QFAIL("it was written");
    } catch (const veltext::Error &error) {
        QCOMPARE(error.message(), "neither XDG_STATE_HOME nor HOME names a folder");
    }
    QVERIFY(file().read(text).steps.isEmpty());
    qputenv("HOME", home);
}

void UndoFileTest::removesWhatKilledProgramsLeft()
{
    file().write(text, someSteps());
    const QDir folder = QFileInfo(nameOf(file())).dir();
    for (const int hours : {23, 25}) {
        QFile left(folder.filePath(QStringLiteral(".veltool-%1").arg(hours)));
        QVERIFY(left.open(QIODevice::WriteOnly));
        QVERIFY(left.setFileTime(QDateTime::currentDateTime().addSecs(-3600 * hours),
                                 QFileDevice::FileModificationTime));
    }
    file().write(text, someSteps());
    QCOMPARE(folder.entryList(QDir::Files | QDir::Hidden, QDir::Name),
             QStringList({".veltool-23", QFileInfo(nameOf(file())).fileName()}));
}

void UndoFileTest::staysAsItWasOnAFullDisk()
{
    file().write(text, someSteps());
    struct rlimit former = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &former), 0);
    struct rlimit full = former;
    full.rlim_cur = 100;
    const auto formerAction = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &full), 0);
    std::string failure;
    try {
        file().write(text, {someSteps().done, {}});
    } catch (const veltext::Error &error) {
        failure = error.message();
    }
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &former), 0);
    std::signal(SIGXFSZ, formerAction);
    QVERIFY2(failure.starts_with(file().name()), failure.c_str());
    QVERIFY(file().read(text).steps == someSteps());
    const QDir folder = QFileInfo(nameOf(file())).dir();
    QCOMPARE(folder.entryList(QDir::Files | QDir::Hidden).size(), 1);
}

void UndoFileTest::saysWhyItCannotBeRead()
{
    QVERIFY(QDir().mkpath(nameOf(file()))); // a folder has its name
    try {
        static_cast<void>(file().read(text));
        QFAIL("it was read");
    } catch (const veltext::Error &error) {
        QVERIFY(QByteArray::fromStdString(error.message()).contains("duct.vel"));
    }
}

QTEST_GUILESS_MAIN(UndoFileTest)
#include "UndoFile_test.moc"
