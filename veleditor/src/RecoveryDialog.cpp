// The dialog with the changes of a journal.
#include "veleditor/src/RecoveryDialog.h"

#include "veleditor/src/DifferenceList.h"
#include "veleditor/src/Widgets.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace velEditor {

namespace {

constexpr QSize usualSize(640, 320);

} // namespace

RecoveryDialog::RecoveryDialog(QWidget *parent, const QString &text,
                               std::vector<veltext::Change> differences)
    : QDialog(parent)
{
    setUpDialog(*this, QStringLiteral("RecoveredChanges"), tr("Changes Before the Crash"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(makeLabel(text, this));
    auto *list = new DifferenceList("Differences", tr("Changes"), this);
    list->setValueHeadings(tr("In This Window"), tr("Before the Crash"));
    list->setEmptyText(tr("No changes"));
    list->setDifferences(std::move(differences));
    layout->addWidget(list, 1);
    auto *row = new QHBoxLayout;
    row->addStretch();
    QPushButton *close = makeButton(tr("&Close"), "Close", this);
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::close);
    row->addWidget(close);
    layout->addLayout(row);
    resize(usualSize);
    list->setFocus();
}

} // namespace velEditor
