// Ten thousand random changes, undos and redos in the window, by its keys and dialogs
// and by its document. Again and again another process loads the text that a save
// would write; its rows, data, paths and findings must be those of this window.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/Application.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/EditParamDialog.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/src/TreeBuilder.h"
#include "veleditor/src/UndoHistory.h"
#include "veleditor/tests/DataText.h"
#include "velparser/api/velparser.h"

#include <QFile>
#include <QProcess>
#include <QTextEdit>
#include <QTreeWidgetItemIterator>

#include <random>
#include <set>
#include <string_view>

using namespace velEditor;

namespace {

constexpr int allSteps = 10000;
constexpr int stepsBetweenTrees = 50;
constexpr int stepsBetweenLoads = 500;

/// A new process loads the file, answers for the paths in a second one, and writes
/// its state to a third.
const char freshArgument[] = "--fresh";

/// The rows below one, those of each object in alphabetical order: a file does not
/// keep the order of objects, and the window shows a new parameter first.
QString rowsText(const VELTreeItem &row, int level = 0)
{
    QStringList children;
    for (int i = 0; i < row.childCount(); ++i) {
        const VELTreeItem &child = *VELTreeItem::from(row.child(i));
        children.append(
            QString(level, u' ') + child.label() + u'|' + child.value().simplified() + u'|' +
            QString::number(child.isEditable()) + QString::number(child.isInExpertSection()) +
            u'|' + QString::fromStdString(child.component()) + u'\n' + rowsText(child, level + 1));
    }
    children.sort();
    return children.join(QString());
}

QString inOrder(const Message &findings)
{
    QStringList lines = QString::fromStdString(findings.value_or("none")).split(u'\n');
    lines.sort();
    return lines.join(u'\n');
}

/// For each path whether it is found, as what, and its value.
QString pathsText(const QStringList &paths)
{
    QString text;
    for (const QString &path : paths) {
        const std::string bytes = path.toStdString();
        std::optional<std::string> value;
        const bool isParameter = velparser::getStringValue(bytes.c_str(), &value) == nullptr;
        text += path + u' ' + QString::number(velparser::isVELLibrary(bytes.c_str())) + u' ' +
                (isParameter ? QString::fromStdString(value.value_or("")).simplified()
                             : QStringLiteral("-")) +
                u'\n';
    }
    return text;
}

/// All that a user or a program can see of the data in a window.
QString stateText(Editor &editor, const QStringList &paths)
{
    QString text = QStringLiteral("Rows\n") + rowsText(*editor.tree().firstItem());
    text += QLatin1String("Data\n") + QString::fromStdString(dump(asSaved(storedData())));
    text += QLatin1String("Paths\n") + pathsText(paths);
    text += QLatin1String("Findings\n") + inOrder(editor.document().validate());
    return text + QLatin1String("\nSelection of rows\n") +
           QString::number(editor.tree().flowItem() != nullptr) +
           QString::number(editor.tree().expertItem() != nullptr) + u'\n';
}

void writeFile(const QString &name, const QByteArray &content)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(name));
    }
}

QByteArray readFile(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Empty if the texts are the same; else the first lines that are not.
QString firstDifference(const QString &text, const QString &expected)
{
    if (text == expected) {
        return {};
    }
    const QStringList lines = text.split(u'\n');
    const QStringList others = expected.split(u'\n');
    qsizetype i = 0;
    while (lines.value(i) == others.value(i)) {
        ++i;
    }
    return QStringLiteral("line %1: \"%2\" instead of \"%3\"")
        .arg(i + 1)
        .arg(lines.value(i), others.value(i));
}

/// What the new process does.
int writeFreshState(char **argv)
{
    int noArguments = 1;
    Application application(noArguments, argv);
    Editor editor(nullptr, nullptr, argv[2], false);
    const QStringList paths = QString::fromUtf8(readFile(argv[3])).split(u'\n');
    writeFile(argv[4], stateText(editor, paths).toUtf8());
    return 0;
}

} // namespace

class UndoRandomTest : public EditorTest
{
    Q_OBJECT

private:
    [[nodiscard]] Document &document() { return editor().document(); }
    void stepAtRandom();
    void changeByDialog();
    void refuseByDialog();
    void deleteByDialog();
    void changeData();
    void changeInGroup();
    void compareWithNewTree();
    void compareWithFreshLoad();
    std::string anyRow(bool isParameter);
    std::size_t below(std::size_t limit) { return static_cast<std::size_t>(random_()) % limit; }

    std::mt19937 random_{7};
    std::set<std::string> seen_; ///< every path that was ever there

private slots:
    void staysWhatAFreshLoadShows();
};

// --- One step -----------------------------------------------------------------------

void UndoRandomTest::stepAtRandom()
{
    const std::size_t kind = below(1000);
    if (kind < 6) {
        changeByDialog();
    } else if (kind < 9) {
        deleteByDialog();
    } else if (kind < 14) {
        if (tree().expertItem() != nullptr) {
            answer();
        }
        press("Ctrl+P");
    } else if (kind < 250) {
        press("Ctrl+Z");
    } else if (kind < 430) {
        press("Ctrl+Y");
    } else if (kind < 480) {
        changeInGroup();
    } else {
        changeData();
    }
}

/// The path of a row, a parameter that can be edited or an object; empty if there is
/// none.
std::string UndoRandomTest::anyRow(bool isParameter)
{
    std::vector<std::string> paths;
    for (QTreeWidgetItemIterator i(&tree()); *i != nullptr; ++i) {
        const VELTreeItem &row = *VELTreeItem::from(*i);
        if (row.hasValue() == isParameter && (!isParameter || row.isEditable())) {
            paths.push_back(row.path());
        }
    }
    return paths.empty() ? std::string() : paths[below(paths.size())];
}

// A value that is not valid comes back in the dialog when its errors are closed.
void UndoRandomTest::changeByDialog()
{
    const std::string path = anyRow(true);
    if (path.empty()) {
        return;
    }
    select(path.c_str());
    const QString value = QStringLiteral("typed %1").arg(qulonglong(below(1000)));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        if (auto *field = dialog.findChild<QTextEdit *>("Value")) {
            field->setPlainText(value);
        }
        pressButton(dialog, "Ok");
    });
    tree().editCurrParameter();
    if (auto *errors = visible<ErrorDialog>()) {
        bool cameBack = false;
        onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
            cameBack = true;
            dialog.reject();
        });
        errors->accept();
        QTRY_VERIFY(cameBack && QApplication::activeModalWidget() == nullptr);
    }
    QApplication::setActiveWindow(&editor()); // this platform does not
}

void UndoRandomTest::deleteByDialog()
{
    const std::string path = anyRow(true);
    if (path.empty()) {
        return;
    }
    select(path.c_str());
    answer();
    press("Ctrl+D");
}

void UndoRandomTest::changeInGroup()
{
    auto *history = editor().findChild<UndoHistory *>();
    const UndoGroup group(*history, QStringLiteral("several"));
    for (std::size_t i = below(4); i > 0; --i) {
        changeData();
    }
}

// Some of these are refused.
void UndoRandomTest::changeData()
{
    const std::string value = "v" + std::to_string(below(1000)) + " [m s^-1]";
    const std::string number = std::to_string(below(6));
    const std::string object = anyRow(false);
    const std::string parameter = anyRow(true);
    Edit edit;
    switch (below(12)) {
    case 0:
    case 1:
        edit = addingParameter(childPath(object, "p " + number), value);
        break;
    case 2:
        edit = addingParameter(childPath(object, "ZONE:z" + number + "/PART/p"), value);
        break;
    case 3:
        edit = addingObject(childPath(object, "DOMAIN:d" + number),
                            "DOMAIN: d" + number +
                                "\nBOUNDARY: b\nKind = Inlet\nEND\nLate = " + value + "\nEND\n");
        break;
    case 4:
        edit = deletingParameter(parameter);
        break;
    case 5:
        edit = deletingObject(object == "/" ? "/FLOW:Absent" : object);
        break;
    case 6:
        edit = addingParameter(childPath(object, "?" + number), value);
        break;
    case 7:
        edit = settingValue(parameter, "Inlet");
        break;
    default:
        edit = settingValue(parameter, value);
    }
    const bool isRefused = document().apply(edit).has_value();
    if (!isRefused && below(12) == 0) {
        QCOMPARE(document().rollBack(), std::nullopt);
    }
}

// --- What must be the same ------------------------------------------------------------

void UndoRandomTest::compareWithNewTree()
{
    const BuiltTree built = TreeBuilder().build();
    QCOMPARE(firstDifference(rowsText(*tree().firstItem()), rowsText(*built.root)), QString());
}

void UndoRandomTest::compareWithFreshLoad()
{
    for (QTreeWidgetItemIterator i(&tree()); *i != nullptr; ++i) {
        seen_.insert(VELTreeItem::from(*i)->path());
    }
    QStringList paths;
    for (const std::string &path : seen_) {
        paths.append(QString::fromStdString(path));
    }
    QByteArray lines;
    for (const std::string &line : writtenLines()) {
        lines += line.c_str() + QByteArray("\n");
    }
    const QString text = newFile("fresh.vel", lines);
    const QString questions = newFile("paths", paths.join(u'\n').toUtf8());
    const QString answers = newFile("state", {});
    QCOMPARE(QProcess::execute(QCoreApplication::applicationFilePath(),
                               {freshArgument, text, questions, answers}),
             0);
    const QString fresh = QString::fromUtf8(contentOf(answers));
    QCOMPARE(firstDifference(stateText(editor(), paths), fresh), QString());
}

void UndoRandomTest::staysWhatAFreshLoadShows()
{
    open(copyOf("duct.vel"));
    for (int step = 1; step <= allSteps && !QTest::currentTestFailed(); ++step) {
        stepAtRandom();
        if (step % stepsBetweenTrees == 0) {
            compareWithNewTree();
        }
        if (step % stepsBetweenLoads == 0) {
            compareWithFreshLoad();
        }
    }
}

int main(int argc, char **argv)
{
    if (argc == 5 && std::string_view(argv[1]) == freshArgument) {
        return writeFreshState(argv);
    }
    UndoRandomTest test;
    return runEditorTest(test, argc, argv, true);
}

#include "UndoRandom_test.moc"
