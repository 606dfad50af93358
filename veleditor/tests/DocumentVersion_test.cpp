// Which version of its file a document knows: after loading, saving and taking over
// what another program wrote; and which versions a save keeps.
#include "veleditor/src/Document.h"

#include "veleditor/tests/DataText.h"
#include "veltext/history.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

using namespace velEditor;

using Match = FileVersion::Match;

namespace {

const char start[] = "FLOW: Analysis\n"
                     "  Title = First run # comment\n"
                     "END\n";

const char title[] = "/FLOW:Analysis/Title";

} // namespace

class DocumentVersionTest : public QObject
{
    Q_OBJECT

private:
    void open();
    void write(const QByteArray &bytes);
    void setTitle(const char *value);
    /// The bytes of all versions that are kept, the newest first.
    [[nodiscard]] QStringList kept() const;
    [[nodiscard]] std::string file() const { return folder_->filePath("case.vel").toStdString(); }

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<Document> document_;

private slots:
    void init();

    void knowsWhatItLoaded();
    void knowsNothingOfAPipe();
    void knowsWhatItSaved();
    void knowsWhatItOverwrote();
    void knowsTheFormerVersionAfterAFailure();
    void knowsNothingOfAnotherTarget();
    void takesOverAVersionThatTheDataIs();
    void takesOverAVersionThatTheDataIsNot();
    void takesOverTheEncoding();
    void keepsTheVersionThatItLoaded();
    void keepsAVersionThatItHasNotSeen();
    void keepsNothingWhereNothingIs();
    void savesWithoutAPlaceForVersions();
};

void DocumentVersionTest::init()
{
    document_.reset();
    forgetData();
    folder_ = std::make_unique<QTemporaryDir>();
    qputenv("XDG_STATE_HOME", QFile::encodeName(folder_->filePath("state")));
}

void DocumentVersionTest::write(const QByteArray &bytes)
{
    QFile file(folder_->filePath("case.vel"));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write");
    }
}

void DocumentVersionTest::open()
{
    write(start);
    document_ = std::make_unique<Document>(file());
    QCOMPARE(document_->load(), std::nullopt);
}

void DocumentVersionTest::setTitle(const char *value)
{
    QCOMPARE(document_->apply(settingValue(title, value)), std::nullopt);
}

QStringList DocumentVersionTest::kept() const
{
    const veltext::History history(file());
    QStringList versions;
    for (const veltext::Version &version : history.list().versions) {
        versions += QString::fromStdString(history.read(version));
    }
    return versions;
}

void DocumentVersionTest::knowsWhatItLoaded()
{
    open();
    QVERIFY(document_->knownVersion() != nullptr);
    QCOMPARE(document_->knownVersion()->bytes(), std::string(start));
    QCOMPARE(document_->loadedText(), std::string(start));
    QCOMPARE(document_->knownVersion()->compare(file()).match, Match::Same);
}

void DocumentVersionTest::knowsNothingOfAPipe()
{
    QCOMPARE(::mkfifo(file().c_str(), 0600), 0);
    document_ = std::make_unique<Document>(file());
    std::thread writer([this] { write(start); });
    QCOMPARE(document_->load(), std::nullopt);
    writer.join();
    QVERIFY(document_->knownVersion() == nullptr);
    QCOMPARE(document_->loadedText(), std::string());
}

void DocumentVersionTest::knowsWhatItSaved()
{
    open();
    const QSignalSpy known(document_.get(), &Document::versionKnown);
    setTitle("Second run");
    QVERIFY(document_->save(file()).outcome == SaveOutcome::Written);
    QCOMPARE(document_->knownVersion()->bytes(),
             std::string("FLOW: Analysis\n  Title = Second run\nEND\n"));
    QCOMPARE(document_->knownVersion()->compare(file()).match, Match::Same);
    QCOMPARE(document_->loadedText(), std::string(start));
    QCOMPARE(known.count(), 1);
}

// A folder with the name of the .bak: the file is not moved, but overwritten.
void DocumentVersionTest::knowsWhatItOverwrote()
{
    open();
    QCOMPARE(::mkdir((file() + ".bak").c_str(), 0700), 0);
    setTitle("Second run");
    QVERIFY(document_->save(file()).outcome == SaveOutcome::Written);
    QCOMPARE(document_->knownVersion()->compare(file()).match, Match::Same);
}

void DocumentVersionTest::knowsTheFormerVersionAfterAFailure()
{
    open();
    const QSignalSpy known(document_.get(), &Document::versionKnown);
    QCOMPARE(::unlink(file().c_str()), 0);
    QCOMPARE(::mkdir(file().c_str(), 0700), 0);
    QCOMPARE(::mkdir((file() + ".bak").c_str(), 0700), 0);
    QVERIFY(document_->save(file()).outcome != SaveOutcome::Written);
    QCOMPARE(document_->knownVersion()->bytes(), std::string(start));
    QCOMPARE(known.count(), 0);
}

void DocumentVersionTest::knowsNothingOfAnotherTarget()
{
    open();
    setTitle("Second run");
    QVERIFY(document_->save(file() + ".emergency").outcome == SaveOutcome::Written);
    QCOMPARE(document_->knownVersion()->bytes(), std::string(start));
    QCOMPARE(kept(), QStringList());
}

void DocumentVersionTest::takesOverAVersionThatTheDataIs()
{
    open();
    setTitle("Second run");
    const std::uint64_t before = document_->revision();
    write("FLOW: Analysis\nTitle = Second run\nEND\n");
    const QSignalSpy known(document_.get(), &Document::versionKnown);
    document_->takeOver(FileVersion::read(file()), true);
    QCOMPARE(document_->loadedText(), std::string("FLOW: Analysis\nTitle = Second run\nEND\n"));
    QVERIFY(document_->knownVersion()->bytes() == document_->loadedText());
    QVERIFY(!document_->isModified());
    QCOMPARE(document_->revision(), before);
    QCOMPARE(known.count(), 1);
}

// No state that the data had so far is on the disk any more.
void DocumentVersionTest::takesOverAVersionThatTheDataIsNot()
{
    open();
    const std::uint64_t loaded = document_->revision();
    setTitle("Second run");
    write("FLOW: Analysis\nTitle = Third run\nEND\n");
    document_->takeOver(FileVersion::read(file()), false);
    QVERIFY(document_->isModified());
    const std::uint64_t now = document_->revision();
    QCOMPARE(document_->applyBetween(settingValue(title, "First run"), now, loaded), std::nullopt);
    QVERIFY(document_->isModified());
    QCOMPARE(document_->applyBetween(settingValue(title, "Second run"), loaded, now), std::nullopt);
    QVERIFY(document_->isModified());
}

void DocumentVersionTest::takesOverTheEncoding()
{
    open();
    QVERIFY(document_->encoding() == TextEncoding::Utf8);
    write("FLOW: Analysis\n  Title = \xe4\nEND\n");
    document_->takeOver(FileVersion::read(file()), false);
    QVERIFY(document_->encoding() == TextEncoding::Latin1);
}

void DocumentVersionTest::keepsTheVersionThatItLoaded()
{
    open();
    const QSignalSpy reports(document_.get(), &Document::versionKept);
    QVERIFY(document_->save(file()).outcome == SaveOutcome::Written);
    QCOMPARE(kept(), QStringList{start});
    QCOMPARE(reports.count(), 1);
    QCOMPARE(reports[0][0].toBool(), false);
    QCOMPARE(reports[0][1].value<Message>(), std::nullopt);
}

void DocumentVersionTest::keepsAVersionThatItHasNotSeen()
{
    open();
    write("FLOW: Analysis\n  Title = Theirs\nEND\n");
    const QSignalSpy reports(document_.get(), &Document::versionKept);
    QVERIFY(document_->save(file()).outcome == SaveOutcome::Written);
    QVERIFY(document_->save(file()).outcome == SaveOutcome::Written);
    QCOMPARE(kept(), (QStringList{"FLOW: Analysis\n  Title = First run\nEND\n",
                                  "FLOW: Analysis\n  Title = Theirs\nEND\n"}));
    QCOMPARE(reports.count(), 2);
    QCOMPARE(reports[0][0].toBool(), true);
    QCOMPARE(reports[1][0].toBool(), false);
}

void DocumentVersionTest::keepsNothingWhereNothingIs()
{
    open();
    QCOMPARE(::unlink(file().c_str()), 0);
    const QSignalSpy reports(document_.get(), &Document::versionKept);
    QVERIFY(document_->save(file()).outcome == SaveOutcome::Written);
    QCOMPARE(kept(), QStringList());
    QCOMPARE(reports[0][0].toBool(), false);
    QCOMPARE(document_->knownVersion()->compare(file()).match, Match::Same);
}

void DocumentVersionTest::savesWithoutAPlaceForVersions()
{
    open();
    QFile state(folder_->filePath("state"));
    QVERIFY(state.open(QIODevice::WriteOnly));
    write("FLOW: Analysis\n  Title = Theirs\nEND\n");
    const QSignalSpy reports(document_.get(), &Document::versionKept);
    QVERIFY(document_->save(file()).outcome == SaveOutcome::Written);
    QCOMPARE(reports[0][0].toBool(), true);
    QVERIFY(reports[0][1].value<Message>()->find(file()) != std::string::npos);
}

QTEST_GUILESS_MAIN(DocumentVersionTest)
#include "DocumentVersion_test.moc"
