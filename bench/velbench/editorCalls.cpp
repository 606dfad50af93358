// Measures the start of the editor. This program starts itself as the editor,
// without a display, and the editor prints when its tree has been painted.
#include "bench/velbench/calls.h"

#include "tools/veltool/support/programPlace.h"
#include "veleditor/src/Startup.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTreeWidget>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace velBench {

namespace {

constexpr int runs = 5;
constexpr const char *shownFormat = "shown %lf %ld";
const char *const program = "/proc/self/exe";

/// Waits for the first painting of a tree that has rows.
class PaintWatcher : public QObject
{
public:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !painting_ && isFilledTree(object->parent())) {
            painting_ = true;
            // This event arrives after the painting.
            QCoreApplication::postEvent(this, new QEvent(QEvent::User));
        }
        return false;
    }

protected:
    void customEvent(QEvent *) override { tell(); }

private:
    static bool isFilledTree(const QObject *object)
    {
        const auto *tree = qobject_cast<const QTreeWidget *>(object);
        return tree != nullptr && tree->topLevelItemCount() > 0;
    }

    static void tell()
    {
        std::printf("\nshown %.9f %lld\n", now(), static_cast<long long>(residentBytes()));
        std::fflush(stdout);
        _exit(0);
    }

    bool painting_ = false;
};

void watchPainting()
{
    static PaintWatcher watcher;
    QCoreApplication::instance()->installEventFilter(&watcher);
}

/// One start: the seconds from before the process exists until the tree is
/// painted.
struct Start
{
    double seconds;
    std::int64_t rss;
};

/// Runs this program as the editor. Returns the end of the pipe that receives its
/// output.
int spawnEditor(const std::string &file)
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        throw Failure("cannot make a pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        execl(program, program, editorChild, file.c_str(), nullptr);
        _exit(127);
    }
    close(ends[1]);
    return ends[0];
}

Start startEditor(const std::string &file)
{
    const double begin = now();
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> in(fdopen(spawnEditor(file), "r"),
                                                              std::fclose);
    std::string said;
    std::array<char, 4096> line{};
    while (in && std::fgets(line.data(), line.size(), in.get()) != nullptr) {
        double shown = 0;
        long rss = 0;
        if (std::sscanf(line.data(), shownFormat, &shown, &rss) == 2) {
            return {shown - begin, rss};
        }
        said += line.data();
    }
    throw Failure("the editor did not show its tree:\n" + said);
}

} // namespace

Result editorOpen(const Arguments &arguments)
{
    const std::string &file = arguments[0];
    Result result{.name = "editor.open",
                  .bytes = fileSize(file),
                  .params = countParameters(file),
                  .seconds = std::numeric_limits<double>::max()};
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("ZOT5ROOT", veltool::programFolder().c_str(), 0);
    setenv("ZOTBUILDID", "velbench", 0);
    for (int run = 0; run < runs; ++run) {
        const Start start = startEditor(file);
        while (waitpid(-1, nullptr, WNOHANG) > 0) {
            continue;
        }
        result.seconds = std::min(result.seconds, start.seconds);
        result.rss = start.rss;
    }
    return result;
}

int runEditorChild(int count, char **words)
{
    qAddPreRoutine(watchPainting);
    return velEditor::runEditor(count, words);
}

} // namespace velBench
