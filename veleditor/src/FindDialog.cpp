// The dialog for the text to find, and each step of the search.
#include "veleditor/src/FindDialog.h"

#include "veleditor/src/Boxes.h"
#include "veleditor/src/TreeSearch.h"
#include "veleditor/src/VELTree.h"
#include "veleditor/src/Widgets.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velEditor {

namespace {

QPushButton *plainButton(const QString &text, const char *name, QWidget *parent)
{
    QPushButton *button = makeButton(text, name, parent);
    button->setAutoDefault(false); // the entry handles Return
    return button;
}

} // namespace

FindDialog::FindDialog(VELTree *tree) : QDialog(tree), tree_(tree), entry_(new QLineEdit(this))
{
    setUpDialog(*this, QStringLiteral("Find"), tr("Find"));
    makeSmallDialog(*this);
    setModal(true);

    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(10);
    layout->setContentsMargins(10, 6, 10, 6); // so that all parts fit in the size below
    layout->addWidget(makeLabel(tr("Enter the string to find:"), this));
    entry_->setObjectName(QStringLiteral("Text"));
    entry_->setAccessibleName(tr("Text to find"));
    connect(entry_, &QLineEdit::returnPressed, this, &FindDialog::find);
    layout->addWidget(entry_);
    QPushButton *findButton = plainButton(tr("&Find"), "FindButton", this);
    connect(findButton, &QPushButton::clicked, this, &FindDialog::find);
    QPushButton *close = plainButton(tr("&Close"), "Close", this);
    connect(close, &QPushButton::clicked, this, &QWidget::hide);
    auto *row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(findButton);
    row->addWidget(close);
    layout->addLayout(row);
    resize(300, 125);
}

QString FindDialog::searchText() const
{
    return entry_->text();
}

void FindDialog::setSearchText(const QString &text)
{
    entry_->setText(text);
}

void FindDialog::showForTyping()
{
    entry_->selectAll();
    entry_->setFocus();
    show();
}

void FindDialog::find()
{
    const QString text = searchText();
    VELTreeItem *match = findRow(nextItem_, text);
    if (match == nullptr) {
        reportNotFound(text);
        return;
    }
    tree_->showMatch(*match);
    nextItem_ = rowAfter(*match);
}

void FindDialog::reportNotFound(const QString &text)
{
    nextItem_ = tree_->firstItem();
    inform(this, tr("Not Found"),
           tr("The string \"") + text + tr("\" was not found.\n") +
               tr("The next search will start at the top of the tree.\n"));
}

} // namespace velEditor
