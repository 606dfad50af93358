// The dialog of conflicts, one at a time.
#include "veleditor/src/ConflictDialog.h"

#include "veleditor/src/Boxes.h"
#include "veleditor/src/ScreenPlace.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/Widgets.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

namespace velEditor {

namespace {

/// A path may be longer than the dialog is wide.
QLineEdit *makePathField(QWidget *parent)
{
    auto *field = new QLineEdit(parent);
    field->setObjectName(QStringLiteral("Path"));
    field->setAccessibleName(ConflictDialog::tr("Path"));
    field->setReadOnly(true);
    return field;
}

/// A text that can be read and copied, with a heading.
QTextEdit *addText(QVBoxLayout &layout, const QString &heading, const char *name, QWidget *parent)
{
    QTextEdit *text = makeTextField(name, heading, parent);
    text->setReadOnly(true);
    layout.addWidget(makeLabel(heading, parent));
    layout.addWidget(text);
    return text;
}

/// An item that is not there was deleted on this side, or the other side would not
/// conflict with it.
QString textOf(const std::optional<veltext::MergeItem> &item)
{
    return item ? fromBytes(item->text) : ConflictDialog::tr("(deleted)");
}

} // namespace

ConflictDialog::ConflictDialog(QWidget *parent,
                               const std::vector<veltext::DataMergeStep> &conflicts)
    : QDialog(parent), conflicts_(conflicts), number_(makeLabel(QString(), this)),
      path_(makePathField(this))
{
    setUpDialog(*this, QStringLiteral("Conflict"), tr("Merge"));
    number_->setObjectName(QStringLiteral("Number"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(number_);
    layout->addWidget(path_);
    mine_ = addText(*layout, tr("In this window:"), "Mine", this);
    theirs_ = addText(*layout, tr("On disk:"), "Theirs", this);

    auto *row = new QHBoxLayout;
    layout->addLayout(row);
    const auto add = [&](const QString &text, const char *name) {
        QPushButton *button = makeButton(text, name, this);
        button->setAutoDefault(false); // Return must not choose
        row->addWidget(button);
        return button;
    };
    connect(add(tr("&Keep Mine"), "KeepMine"), &QPushButton::clicked, this,
            [this] { answer(false); });
    connect(add(tr("&Take Theirs"), "TakeTheirs"), &QPushButton::clicked, this,
            [this] { answer(true); });
    row->addStretch();
    connect(add(tr("&Cancel"), "Cancel"), &QPushButton::clicked, this, &QDialog::reject);
    resize(sizeOnScreen(*this, QSize(560, 320)));
    showNext();
}

void ConflictDialog::showNext()
{
    const std::size_t next = takesTheirs_.size();
    const veltext::DataMergeStep &conflict = conflicts_[next];
    number_->setText(tr("%1 of %2").arg(next + 1).arg(conflicts_.size()));
    path_->setText(fromBytes(conflict.path));
    path_->setCursorPosition(0);
    mine_->setPlainText(textOf(conflict.ours));
    theirs_->setPlainText(textOf(conflict.theirs));
}

void ConflictDialog::answer(bool takesTheirs)
{
    takesTheirs_.push_back(takesTheirs);
    if (takesTheirs_.size() == conflicts_.size()) {
        accept();
        return;
    }
    showNext();
}

std::optional<std::vector<bool>>
askAboutConflicts(QWidget *parent, const std::vector<veltext::DataMergeStep> &conflicts)
{
    if (conflicts.empty()) {
        return std::vector<bool>();
    }
    ConflictDialog dialog(parent, conflicts);
    if (run(dialog) != QDialog::Accepted) {
        return std::nullopt;
    }
    return dialog.takesTheirs();
}

} // namespace velEditor
