// What the window does when the database fails where only a lack of memory
// would make it. The calls of the bridge that are named here go through this
// file (the linker's --wrap), which lets them fail on request.
#include "veleditor/tests/EditorTest.h"

#include "common/error.h"
#include "velparser/api/velparser.h"

#include <QFile>

// NOLINTBEGIN(bugprone-reserved-identifier): the linker makes these names.
extern "C" {
const char *__real__ZN9velparser9pushPathHEPKc(const char *path);
const char *__real__ZN9velparser8popPathHEv();
const char *__real__ZN9velparser15getFormattedVELEPKciP13velStringList(const char *path,
                                                                       std::int32_t width,
                                                                       velStringList *lines);
const char *__wrap__ZN9velparser9pushPathHEPKc(const char *path);
const char *__wrap__ZN9velparser8popPathHEv();
const char *__wrap__ZN9velparser15getFormattedVELEPKciP13velStringList(const char *path,
                                                                       std::int32_t width,
                                                                       velStringList *lines);
}

namespace {

/// What each call says instead of doing its work; null: it does it.
const char *pushFailure = nullptr;
const char *popFailure = nullptr;
const char *formatFailure = nullptr;

} // namespace

const char *__wrap__ZN9velparser9pushPathHEPKc(const char *path)
{
    return pushFailure != nullptr ? pushFailure : __real__ZN9velparser9pushPathHEPKc(path);
}

const char *__wrap__ZN9velparser8popPathHEv()
{
    return popFailure != nullptr ? popFailure : __real__ZN9velparser8popPathHEv();
}

const char *__wrap__ZN9velparser15getFormattedVELEPKciP13velStringList(const char *path,
                                                                       std::int32_t width,
                                                                       velStringList *lines)
{
    return formatFailure != nullptr
               ? formatFailure
               : __real__ZN9velparser15getFormattedVELEPKciP13velStringList(path, width, lines);
}
// NOLINTEND(bugprone-reserved-identifier)

using namespace velEditor;

class BridgeFailureTest : public EditorTest
{
    Q_OBJECT

private:
    /// What a rebuild of the tree throws.
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
    pushFailure = "no room";
    QCOMPARE(thrown(), QString("pushPath : no room"));
    pushFailure = nullptr;
    popFailure = "no way back";
    QCOMPARE(thrown(), QString("popPath : no way back"));
    popFailure = nullptr;
    QCOMPARE(thrown(), QString());
    QVERIFY(tree().flowItem() != nullptr);
}

void BridgeFailureTest::keepsTheBackupWhenNothingCanBeWritten()
{
    open(copyOf("duct.vel"));
    const QByteArray before = contentOf(file());
    tree().setModified();
    formatFailure = "memory error";
    answer();
    QVERIFY(!editor().save(file().toStdString()));
    QCOMPARE(boxes, QStringList("Critical: Error Saving File\nUnable to save your modifications "
                                "to\n  " +
                                file() +
                                "\nmemory error\nYour modifications are still in the editor.\n"
                                "Remark: The file as it was before is kept in\n  " +
                                file() + ".bak\n[Ok], Escape"));
    QVERIFY(tree().isModified());
    QVERIFY(!QFile::exists(file()));
    QCOMPARE(contentOf(file() + ".bak"), before);

    formatFailure = nullptr;
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()), before);
    QCOMPARE(contentOf(file() + ".bak"), before);
}

VEL_EDITOR_TEST(BridgeFailureTest)
#include "BridgeFailure_test.moc"
