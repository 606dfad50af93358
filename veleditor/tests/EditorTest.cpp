// Opens the window for a test, answers boxes and reports forgotten dialogs.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/Application.h"
#include "veleditor/src/Text.h"
#include "velparser/api/velparser.h"

#include <QAbstractButton>
#include <QDialog>
#include <QFile>
#include <QMetaMethod>
#include <QProcess>
#include <QTextEdit>
#include <QTreeWidgetItemIterator>

#include <optional>

namespace velEditor {

namespace {

constexpr int watchMilliseconds = 4000;

QString iconText(QMessageBox::Icon icon)
{
    switch (icon) {
    case QMessageBox::Information:
        return QStringLiteral("Information");
    case QMessageBox::Warning:
        return QStringLiteral("Warning");
    case QMessageBox::Critical:
        return QStringLiteral("Critical");
    case QMessageBox::Question:
        return QStringLiteral("Question");
    case QMessageBox::NoIcon:
        break;
    }
    return QStringLiteral("No icon");
}

QString buttonText(const MessageBox &box)
{
    QStringList texts = box.buttons.isEmpty() ? QStringList{QStringLiteral("Ok")} : box.buttons;
    texts[box.defaultButton] = u'[' + texts[box.defaultButton] + u']';
    return texts.join(QLatin1String(" | ")) +
           (box.canEscape ? QStringLiteral(", Escape") : QString());
}

QString boxText(const MessageBox &box)
{
    QString text = iconText(box.icon) + QLatin1String(": ") + box.title + u'\n' + box.text + u'\n';
    if (!box.details.isEmpty()) {
        text += QLatin1String("Details: ") + box.details + u'\n';
    }
    return text + buttonText(box);
}

QString dialogText(const QDialog &dialog)
{
    QString text = dialog.windowTitle();
    for (const QTextEdit *area : dialog.findChildren<QTextEdit *>()) {
        text += u'\n' + area->toPlainText();
    }
    return text;
}

} // namespace

void EditorTest::init()
{
    QVERIFY(folder_.isValid());
    connect(&watch_, &QTimer::timeout, this, &EditorTest::rejectWaitingDialog);
    watch_.start(watchMilliseconds);
    setBoxAnswers([this](const MessageBox &box) {
        boxes.append(boxText(box));
        if (!answers_.isEmpty()) {
            return answers_.takeFirst();
        }
        QTest::qFail(qPrintable(QLatin1String("unexpected box: ") + boxes.last()), __FILE__,
                     __LINE__);
        return -1;
    });
}

// A dialog that is still open at the next check will never be answered.
void EditorTest::rejectWaitingDialog()
{
    auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
    if (dialog != nullptr && dialog == waiting_) {
        QTest::qFail(qPrintable(QLatin1String("nobody answers: ") + dialogText(*dialog)), __FILE__,
                     __LINE__);
        dialog->reject();
    }
    waiting_ = dialog;
}

void EditorTest::cleanup()
{
    watch_.stop();
    editor_.reset();
    setBoxAnswers({});
    setFileNameAnswers({});
    QVERIFY2(answers_.isEmpty(), "a box that was expected did not come");
    QCOMPARE(awaitedDialogs_, 0);
}

QString EditorTest::copyOf(const QString &dataFile)
{
    const QString source =
        qEnvironmentVariable("VEL_SOURCE_DIR") + QLatin1String("/veleditor/tests/data/") + dataFile;
    return newFile(dataFile, contentOf(source));
}

QString EditorTest::newFile(const QString &name, const QByteArray &content)
{
    const QString path = folder_.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
    return path;
}

void EditorTest::runPerl(const QByteArray &code)
{
    const QString script = newFile("code.pl", code);
    int status = 0;
    QCOMPARE(velparser::runPerlScript(script.toStdString(), {}, &status), nullptr);
}

QByteArray EditorTest::contentOf(const QString &file)
{
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly)) {
        qFatal("cannot read %s", qPrintable(file));
    }
    return source.readAll();
}

Editor &EditorTest::open(const QString &file, bool safeMode)
{
    file_ = file;
    editor_ = std::make_unique<Editor>(nullptr, nullptr, toBytes(file), safeMode);
    editor_->setGeometry(100, 100, 800, 600);
    editor_->show();
    QApplication::setActiveWindow(editor_.get());
    static_cast<void>(QTest::qWaitForWindowActive(editor_.get()));
    return *editor_;
}

VELTreeItem &EditorTest::row(const char *path)
{
    for (QTreeWidgetItemIterator i(&tree()); *i != nullptr; ++i) {
        VELTreeItem *item = VELTreeItem::from(*i);
        if (item->path() == path) {
            return *item;
        }
    }
    qFatal("there is no row %s", path);
}

void EditorTest::select(const char *path)
{
    tree().setCurrentItem(&row(path));
}

void EditorTest::doubleClick(const char *path)
{
    VELTreeItem &item = row(path);
    tree().showMatch(item);
    const QPoint place = tree().visualItemRect(&item).center();
    QTest::mouseClick(tree().viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QTest::mouseDClick(tree().viewport(), Qt::LeftButton, Qt::NoModifier, place);
}

void EditorTest::changeSomething()
{
    QCOMPARE(velparser::setStringValue("/FLOW:Analysis/Title", "Second run"), nullptr);
    tree().setModified();
}

void EditorTest::press(const char *keys)
{
    QTest::keySequence(editor_.get(), QKeySequence(QString::fromLatin1(keys)));
}

void pressButton(QWidget &window, const char *name)
{
    auto *button = window.findChild<QAbstractButton *>(QString::fromLatin1(name));
    if (button == nullptr) {
        qFatal("there is no button %s", name);
    }
    QTest::mouseClick(button, Qt::LeftButton);
}

namespace {

bool isTest(const QMetaMethod &method)
{
    static const QByteArrayList others{"init", "cleanup", "initTestCase", "cleanupTestCase"};
    return method.methodType() == QMetaMethod::Slot && method.access() == QMetaMethod::Private &&
           method.parameterCount() == 0 && !others.contains(method.name()) &&
           !method.name().endsWith("_data");
}

int runAllAlone(const QMetaObject &test, const QString &program)
{
    int failed = 0;
    for (int i = 0; i < test.methodCount(); ++i) {
        const QMetaMethod method = test.method(i);
        if (isTest(method) &&
            QProcess::execute(program, {QString::fromLatin1(method.name())}) != 0) {
            ++failed;
        }
    }
    return failed;
}

} // namespace

int runEditorTest(QObject &test, int argc, char **argv, bool withApplication)
{
    if (argc > 1) {
        std::optional<Application> application;
        if (withApplication) {
            application.emplace(argc, argv);
        }
        return QTest::qExec(&test, argc, argv);
    }
    const QCoreApplication application(argc, argv);
    return runAllAlone(*test.metaObject(), QCoreApplication::applicationFilePath());
}

} // namespace velEditor
