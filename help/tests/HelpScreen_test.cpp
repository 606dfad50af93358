// Tests what the client shows on the screen: warning boxes and the wait cursor.
#include "help/HelpScreen.h"

#include "common/error.h"
#include "help/JavaHelpServer.h"

#include <QApplication>
#include <QCursor>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <csignal>

#include <unistd.h>

using namespace velEditor;

namespace {

constexpr int ordinary = -1;

/// The shape of the override cursor, `ordinary` if there is none.
int cursorShape()
{
    const QCursor *cursor = QApplication::overrideCursor();
    return cursor != nullptr ? cursor->shape() : ordinary;
}

volatile std::sig_atomic_t shapeAtAlarm = ordinary;

// The signal arrives while the program sleeps between two connection attempts.
void lookAtCursor(int)
{
    shapeAtAlarm = cursorShape();
}

/// A client that fails to send.
class LosingServer : public JavaHelpServer
{
public:
    LosingServer() : JavaHelpServer("DEFEditor") {}

    void send(const std::string &) override
    {
        shape = cursorShape();
        throw error("lost");
    }

    int shape = ordinary;
};

} // namespace

class HelpScreenTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir folder_;

private slots:
    void init();
    void warnsInABox();
    void waitsWhileTheViewerStarts();
    void waitsWhileACommandIsSent();
};

void HelpScreenTest::init()
{
    QDir(folder_.path()).mkpath("doc/zot");
    QDir(folder_.path()).mkpath("HelpViewer");
    QFile::link(HELP_TEST_DOUBLE, folder_.filePath("HelpViewer/OMBRAHelpViewer.exe"));
    qputenv("ZOT_HELP_DIR", QFile::encodeName(folder_.filePath("doc/zot")));
    for (const char *variable :
         {"KOA_TEST_HELP_DIR", "ZOT5MONO", "HELP_DOUBLE", "HELP_DOUBLE_LOG"}) {
        qunsetenv(variable);
    }
}

void HelpScreenTest::warnsInABox()
{
    QStringList seen;
    QTimer user;
    user.setSingleShot(true);
    connect(&user, &QTimer::timeout, this, [&seen] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (box == nullptr) {
            return;
        }
        seen << box->windowTitle() << box->text() << (box->parent() == nullptr ? "alone" : "child");
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->textFormat(), Qt::PlainText);
        box->accept();
    });
    user.start(0);
    showHelpWarning("Warning", "It says '<b>no</b>'");
    QCOMPARE(seen, QStringList({"Warning", "It says '<b>no</b>'", "alone"}));
}

void HelpScreenTest::waitsWhileTheViewerStarts()
{
    qputenv("HELP_DOUBLE", "say 1\n"); // nobody listens there; the attempts take four seconds
    JavaHelpServer server("DEFEditor");
    int shapeAtWarning = Qt::BitmapCursor;
    server.setWarning(
        [&](const std::string &, const std::string &) { shapeAtWarning = cursorShape(); });
    const auto before = std::signal(SIGALRM, lookAtCursor);
    ::alarm(2);
    server.showHelp("One", "", JavaHelpServer::RegularHelp);
    std::signal(SIGALRM, before);
    QCOMPARE(int(shapeAtAlarm), int(Qt::WaitCursor));
    QCOMPARE(shapeAtWarning, ordinary);
    QCOMPARE(cursorShape(), ordinary);
}

void HelpScreenTest::waitsWhileACommandIsSent()
{
    LosingServer server;
    QStringList seen;
    server.setWarning([&](const std::string &title, const std::string &text) {
        seen << QString::fromStdString(title) << QString::fromStdString(text)
             << QString::number(cursorShape());
    });
    server.showHelp("One", "", JavaHelpServer::RegularHelp);
    QCOMPARE(server.shape, int(Qt::WaitCursor));
    QCOMPARE(seen, QStringList({"Warning", "lost", QString::number(ordinary)}));
    QVERIFY(!server.isConnected());
}

QTEST_MAIN(HelpScreenTest)
#include "HelpScreen_test.moc"
