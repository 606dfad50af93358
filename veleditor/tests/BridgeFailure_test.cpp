// Tests the window when a call of the database fails that usually fails only without
// memory. Here the calls of the session fail on request.
#include "veleditor/tests/EditorTest.h"

#include "common/error.h"
#include "velparser/api/velBench.h"

#include <QFile>

using namespace velEditor;

class BridgeFailureTest : public EditorTest
{
    Q_OBJECT

private:
    static void failCall(const char *call, const char *message)
    {
        velparser::failCall(velparser::defaultSession(), call, message);
    }

    /// The text of the error that a rebuild of the tree throws.
    QString thrown();

private slots:
    void namesTheStepThatFailed();
    void keepsTheBackupWhenNothingCanBeWritten();
};

QString BridgeFailureTest::thrown()
{
    try {
        tree().buildTree();
    } catch (const error &failure) {
        return QString::fromStdString(failure.message());
    }
    return QString();
}

void BridgeFailureTest::namesTheStepThatFailed()
{
    open(copyOf("duct.vel"));
    failCall("pushPathH", "no room");
    QCOMPARE(thrown(), QString("pushPath : no room"));
    failCall("popPathH", "no way back");
    QCOMPARE(thrown(), QString("popPath : no way back"));
    failCall("popPathH", nullptr);
    QCOMPARE(thrown(), QString());
    QVERIFY(tree().flowItem() != nullptr);
}

void BridgeFailureTest::keepsTheBackupWhenNothingCanBeWritten()
{
    open(copyOf("duct.vel"));
    const QByteArray before = contentOf(file());
    tree().setModified();
    failCall("getFormattedVEL", "memory error");
    answer();
    QVERIFY(!editor().save(file().toStdString()));
    QCOMPARE(boxes, QStringList("Critical: Error Saving File\nUnable to save your modifications "
                                "to\n  " +
                                file() +
                                "\nmemory error\nYour modifications are still in the editor.\n"
                                "Details: The previous version is kept in\n  " +
                                file() + ".bak\n[Ok], Escape"));
    QVERIFY(tree().isModified());
    QVERIFY(!QFile::exists(file()));
    QCOMPARE(contentOf(file() + ".bak"), before);

    failCall("getFormattedVEL", nullptr);
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()), before);
    QCOMPARE(contentOf(file() + ".bak"), before);
}

VEL_EDITOR_TEST(BridgeFailureTest)
#include "BridgeFailure_test.moc"
