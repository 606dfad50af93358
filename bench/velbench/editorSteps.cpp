// Measures the user's steps in the editor's real window, without a display. A
// measurement ends when all changes in the window have been painted.
#include "bench/velbench/calls.h"

#include "common/error.h"
#include "tools/veltool/support/programPlace.h"
#include "veleditor/src/Application.h"
#include "veleditor/src/Boxes.h"
#include "veleditor/src/EditParamDialog.h"
#include "veleditor/src/Editor.h"
#include "veleditor/src/FindDialog.h"
#include "veleditor/src/VELTree.h"

#include <QScrollBar>
#include <QTextEdit>
#include <QTimer>
#include <QTreeWidgetItemIterator>

#include <cstdlib>
#include <memory>

#include <malloc.h>

namespace velBench {

namespace {

using velEditor::VELTree;
using velEditor::VELTreeItem;

/// The editor's window with a file, and its own application object.
class Window
{
public:
    explicit Window(const std::string &file)
    {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        setenv("ZOT5ROOT", veltool::programFolder().c_str(), 0);
        setenv("ZOTBUILDID", "velbench", 0);
        application_ = std::make_unique<velEditor::Application>(count_, words_);
        velEditor::setBoxAnswers([](const velEditor::MessageBox &) { return 0; });
        try {
            editor_ = std::make_unique<velEditor::Editor>(nullptr, nullptr, file, false);
        } catch (const velEditor::error &failure) {
            throw Failure(failure.message());
        }
        editor_->setGeometry(100, 100, 800, 600);
        editor_->show();
        paint();
    }

    ~Window() { velEditor::setBoxAnswers({}); }

    Window(const Window &) = delete;
    Window &operator=(const Window &) = delete;

    [[nodiscard]] VELTree &tree() { return editor_->tree(); }

    static void paint()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    [[nodiscard]] std::uint64_t rowCount()
    {
        std::uint64_t rows = 0;
        for (QTreeWidgetItemIterator i(&tree()); *i != nullptr; ++i) {
            ++rows;
        }
        return rows;
    }

    /// The last row with a value that can be changed.
    [[nodiscard]] VELTreeItem &editableRow()
    {
        VELTreeItem *last = nullptr;
        for (QTreeWidgetItemIterator i(&tree()); *i != nullptr; ++i) {
            VELTreeItem *row = VELTreeItem::from(*i);
            if (row->hasValue() && row->isEditable()) {
                last = row;
            }
        }
        if (last == nullptr) {
            throw Failure("no value can be changed");
        }
        return *last;
    }

private:
    char name_[9] = "velbench";
    char *words_[2] = {name_, nullptr};
    int count_ = 1;
    std::unique_ptr<velEditor::Application> application_;
    std::unique_ptr<velEditor::Editor> editor_;
};

Result result(const char *name, const std::string &file, std::uint64_t count)
{
    return {.name = name, .bytes = fileSize(file), .params = count};
}

/// Answers the open dialog: keeps the entry of a list, fills a text field.
void answerEdit()
{
    auto *dialog = qobject_cast<velEditor::EditParamDialog *>(QApplication::activeModalWidget());
    if (dialog == nullptr) {
        return;
    }
    if (auto *field = dialog->findChild<QTextEdit *>()) {
        const QString text = field->toPlainText();
        field->selectAll();
        field->insertPlainText(text);
    }
    Window::paint();
    dialog->doOk();
}

/// Bytes in use on the heap of this process.
std::int64_t heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<std::int64_t>(info.uordblks + info.hblkhd);
}

} // namespace

Result editorEdit(const Arguments &arguments)
{
    Window window(arguments[0]);
    VELTreeItem &row = window.editableRow();
    window.tree().showMatch(row);
    Window::paint();
    Result measured = result("editor.edit", arguments[0], 1);
    measured.seconds = bestOf([] {},
                              [&] {
                                  QTimer::singleShot(0, answerEdit);
                                  window.tree().editParam(&row);
                                  Window::paint();
                              });
    return measured;
}

Result editorFind(const Arguments &arguments)
{
    Window window(arguments[0]);
    Result measured = result("editor.find", arguments[0], window.rowCount());
    window.tree().doFind();
    auto *dialog = window.tree().findChild<velEditor::FindDialog *>();
    dialog->setSearchText(QStringLiteral("no row has this text"));
    measured.seconds =
        bestOf([&] { dialog->setNextItem(window.tree().firstItem()); }, [&] { dialog->find(); });
    return measured;
}

Result editorFindNext(const Arguments &arguments)
{
    Window window(arguments[0]);
    window.tree().doFind();
    auto *dialog = window.tree().findChild<velEditor::FindDialog *>();
    VELTreeItem &target = window.editableRow();
    dialog->setSearchText(target.label());
    dialog->hide();
    Window::paint();
    Result measured = result("editor.next", arguments[0], 1);
    measured.seconds = bestOf(
        [&] {
            window.tree().collapseAll();
            window.tree().setCurrentItem(window.tree().firstItem());
            dialog->setNextItem(&target);
            Window::paint();
        },
        [&] {
            window.tree().doFindNext();
            Window::paint();
        });
    return measured;
}

Result editorScroll(const Arguments &arguments)
{
    Window window(arguments[0]);
    window.tree().expandAll();
    Window::paint();
    Result measured = result("editor.scroll", arguments[0], 1);
    QScrollBar &bar = *window.tree().verticalScrollBar();
    measured.seconds = bestOf(
        [&] {
            bar.setValue(bar.maximum() / 2);
            Window::paint();
        },
        [&] {
            bar.triggerAction(QScrollBar::SliderPageStepAdd);
            Window::paint();
        });
    return measured;
}

Result editorMemory(const Arguments &arguments)
{
    Window window(arguments[0]);
    Result measured = result("editor.memory", arguments[0], window.rowCount());
    const auto showAll = [&] {
        window.tree().buildTree();
        window.tree().expandAll();
        Window::paint();
    };
    measured.seconds = bestOf([] {}, showAll);
    window.tree().clear();
    Window::paint();
    const std::int64_t before = heapBytes();
    showAll();
    measured.rss = heapBytes() - before;
    return measured;
}

} // namespace velBench
