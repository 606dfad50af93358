// Random changes, undos, redos and saves in many windows, one after the other on the same
// file and each in a process of its own, compared with a model of what undo does.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/Application.h"
#include "veleditor/src/DataChange.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/UndoHistory.h"
#include "veleditor/tests/DataText.h"

#include <QAction>
#include <QDialog>
#include <QProcess>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string_view>
#include <vector>

using namespace velEditor;

namespace {

constexpr int sessions = 25;
constexpr int stepsInASession = 12;

/// A new process plays a session on a file with random numbers from a seed, and prints
/// what it did.
const char sessionArgument[] = "--session";

/// What one window does.
class Session
{
public:
    Session(Editor &editor, unsigned seed) : editor_(editor), random_(seed) {}

    void play()
    {
        print("open");
        for (unsigned i = below(2 * stepsInASession); i > 0; --i) {
            undo();
        }
        for (int step = 0; step < stepsInASession; ++step) {
            playStep();
        }
        const bool isSaved = below(2) == 0;
        setBoxAnswers([isSaved](const MessageBox &) { return isSaved ? 0 : 1; });
        const bool isModified = document().isModified();
        editor_.close();
        print(isModified && !isSaved ? "discard" : "close");
    }

private:
    [[nodiscard]] Document &document() { return editor_.document(); }
    unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

    /// A line: what was done, what can be done, and the data.
    void print(const char *action)
    {
        const UndoHistory &history = editor_.history();
        std::string data = dump(asSaved(storedData()));
        std::replace(data.begin(), data.end(), '\n', ';');
        std::printf("%s|%d%d%d|%s\n", action, history.canUndo() ? 1 : 0, history.canRedo() ? 1 : 0,
                    document().isModified() ? 1 : 0, data.c_str());
    }

    void undo()
    {
        editor_.findChild<QAction *>("Undo")->trigger();
        print("undo");
    }

    void playStep()
    {
        switch (below(10)) {
        case 0:
        case 1:
            undo();
            return;
        case 2:
        case 3:
            editor_.findChild<QAction *>("Redo")->trigger();
            print("redo");
            return;
        case 4:
            editor_.save(document().file());
            print("save");
            return;
        default:
            break;
        }
        const std::uint64_t before = document().revision();
        edit();
        print(document().revision() == before ? "nothing" : "edit");
    }

    void edit()
    {
        const unsigned kind = below(6);
        if (kind == 0) {
            const UndoGroup group(editor_.history(), QStringLiteral("Several"));
            for (unsigned i = below(4); i > 0; --i) {
                editOne();
            }
        } else if (kind == 1) {
            std::string text; // of the data now, without its last object
            for (const std::string &line : writtenLines()) {
                text += line + "\n";
            }
            text = text.substr(0, text.rfind("\nEND\n") + 5) + "NOTES: n" +
                   std::to_string(below(4)) + "\n  b = 1\n  a = 2\n  Author = me\nEND\n";
            static_cast<void>(
                changeTo(document(), editor_.history(), text, QStringLiteral("Paste")));
        } else {
            editOne();
        }
    }

    // Each edit changes something: a refused one would leave the mark of a change.
    void editOne()
    {
        const CommandData &data = document().data();
        const std::string number = std::to_string(below(2));
        const std::string room = "/FLOW:Analysis/ROOM:r" + number;
        const std::string object = below(3) == 0 ? "/FLOW:Analysis" : room;
        const std::string parameter = object + "/p " + std::to_string(below(6));
        const std::string value = "v  " + std::to_string(random_());
        const unsigned kind = below(8);
        Edit edit = addingParameter(parameter, value);
        if (kind > 4 && data.value(parameter)) {
            edit = deletingParameter(parameter);
        } else if (kind == 1 && data.has(room)) {
            edit = deletingObject(room);
        } else if (kind == 2) {
            std::string block = "ROOM: r" + number + "\nPART: p\nEND\n";
            for (const char name : {'5', '4', '3', '2', '1', '0'}) { // a save puts PART last
                block += std::string("p ") + name + " = " + value + "\n";
            }
            edit = addingObject(room, block + "END\n");
        } else if (kind == 3 && data.value(parameter)) {
            edit = settingValue(parameter, value);
        }
        static_cast<void>(document().apply(edit));
    }

    Editor &editor_;
    std::mt19937 random_;
};

int playSession(char **argv)
{
    int noArguments = 1;
    Application application(noArguments, argv);
    QTimer answers; // findings before a save
    QObject::connect(&answers, &QTimer::timeout, &answers, [] {
        if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
            dialog->accept();
        }
    });
    answers.start(1);
    setBoxAnswers([](const MessageBox &) { return 0; });
    Editor editor(nullptr, nullptr, argv[2], false);
    editor.show();
    Session(editor, static_cast<unsigned>(std::stoul(argv[3]))).play();
    return 0;
}

/// The states of the data, and those in which the window and the disk are.
struct Chain
{
    static constexpr std::size_t gone = std::string::npos;

    std::vector<QString> states;
    std::size_t current = 0;
    std::size_t onDisk = 0;
};

/// What a user expects of undo over all sessions.
class Model
{
public:
    /// What is wrong with a line of a session; empty if nothing is.
    QString follow(const QString &line)
    {
        const QStringList fields = line.split(u'|');
        const QString action = fields.value(0);
        const QString &data = fields.value(2);
        act(action, data);
        if (data != chain_.states[chain_.current]) {
            return QStringLiteral("other data: ") + data + QStringLiteral(" instead of ") +
                   chain_.states[chain_.current];
        }
        const QString flags = QString::number(chain_.current > 0) +
                              QString::number(chain_.current + 1 < chain_.states.size()) +
                              QString::number(chain_.current != chain_.onDisk);
        if (action != QLatin1String("discard") && fields.value(1) != flags) {
            return fields.value(1) + QStringLiteral(" instead of ") + flags;
        }
        return {};
    }

    /// How often a window has undone what an earlier one did.
    [[nodiscard]] int earlierUndone() const { return earlierUndone_; }

private:
    void act(const QString &action, const QString &data)
    {
        if (action == QLatin1String("open")) {
            open(data);
        } else if (action == QLatin1String("edit")) {
            edit(data);
        } else if (action == QLatin1String("undo") && chain_.current > 0) {
            --chain_.current;
            earlierUndone_ += chain_.current < atOpen_ ? 1 : 0;
        } else if (action == QLatin1String("redo") && chain_.current + 1 < chain_.states.size()) {
            ++chain_.current;
        } else if (action == QLatin1String("save") || action == QLatin1String("close")) {
            chain_.onDisk = chain_.current;
            kept_ = chain_;
        }
    }

    /// The window begins in the state on the disk.
    void open(const QString &data)
    {
        if (chain_.states.empty()) {
            chain_.states.push_back(data);
            kept_ = chain_;
            return;
        }
        if (chain_.onDisk == Chain::gone) {
            chain_ = kept_;
        }
        chain_.current = chain_.onDisk;
        atOpen_ = chain_.current;
        kept_ = chain_;
    }

    void edit(const QString &data)
    {
        if (chain_.onDisk != Chain::gone && chain_.onDisk > chain_.current) {
            chain_.onDisk = Chain::gone;
        }
        chain_.states.resize(chain_.current + 1);
        chain_.states.push_back(data);
        ++chain_.current;
    }

    Chain chain_;
    Chain kept_; ///< as at the last save
    std::size_t atOpen_ = 0;
    int earlierUndone_ = 0;
};

} // namespace

class UndoSessionsTest : public EditorTest
{
    Q_OBJECT

private slots:
    void goesOnInEachWindow();
};

void UndoSessionsTest::goesOnInEachWindow()
{
    qputenv("XDG_STATE_HOME", (folder() + "/state").toUtf8());
    const QString file = copyOf("duct.vel");
    Model model;
    for (int session = 1; session <= sessions; ++session) {
        QProcess window;
        window.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        window.start(QCoreApplication::applicationFilePath(),
                     {sessionArgument, file, QString::number(session)});
        QVERIFY(window.waitForFinished());
        QCOMPARE(window.exitCode(), 0);
        const QStringList lines = QString::fromUtf8(window.readAllStandardOutput()).split(u'\n');
        QVERIFY(lines.size() >= stepsInASession + 3);
        for (const QString &line : lines.mid(0, lines.size() - 1)) {
            const QString fault = model.follow(line);
            QVERIFY2(fault.isEmpty(),
                     qPrintable(QString("session %1, %2: %3").arg(session).arg(line, fault)));
        }
    }
    QVERIFY2(model.earlierUndone() > 20, qPrintable(QString::number(model.earlierUndone())));
}

int main(int argc, char **argv)
{
    if (argc == 4 && std::string_view(argv[1]) == sessionArgument) {
        return playSession(argv);
    }
    UndoSessionsTest test;
    return runEditorTest(test, argc, argv, true);
}

#include "UndoSessions_test.moc"
