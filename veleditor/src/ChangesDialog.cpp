// The list of changes, its buttons, and what is on the disk.
#include "veleditor/src/ChangesDialog.h"

#include "veleditor/src/Boxes.h"
#include "veleditor/src/DifferenceList.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/FileVersion.h"
#include "veleditor/src/Revert.h"
#include "veleditor/src/ScreenPlace.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/WaitCursor.h"
#include "veleditor/src/Widgets.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace velEditor {

ChangesDialog::ChangesDialog(QWidget *parent, Document &document, UndoHistory &history,
                             const BaseDifferences &known)
    : QDialog(parent), document_(document), history_(history), known_(known), fromDisk_(document),
      watch_(document.file()), heading_(makeLabel(QString(), this)),
      list_(new DifferenceList("Differences", tr("Changes"), this))
{
    setUpDialog(*this, QStringLiteral("Changes"), tr("Changes"));
    setAttribute(Qt::WA_DeleteOnClose);
    heading_->setObjectName(QStringLiteral("Heading"));
    heading_->setWordWrap(true);
    list_->setValueHeadings(tr("On Disk"), tr("In This Window"));
    list_->setAction(tr("Revert"));
    list_->setEmptyText(tr("No changes"));

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(heading_);
    layout->addWidget(list_);
    addButtons(*layout);
    resize(sizeOnScreen(*this, QSize(880, 420)));

    soon_.setSingleShot(true);
    connect(&soon_, &QTimer::timeout, this, &ChangesDialog::refresh);
    const auto refreshSoon = [this] { soon_.start(0); };
    connect(&known_, &BaseDifferences::differ, this, refreshSoon);
    connect(&fromDisk_, &BaseDifferences::differ, this, refreshSoon);
    connect(&document_, &Document::modifiedMarked, this, refreshSoon);
    connect(&document_, &Document::saved, this, &ChangesDialog::readDisk);
    connect(&watch_, &FileWatch::noticed, this, &ChangesDialog::readDisk);
    watch_.expect(document_.knownVersion());
    readDisk();
    list_->setFocus();
}

void ChangesDialog::addButtons(QVBoxLayout &layout)
{
    auto *row = new QHBoxLayout;
    layout.addLayout(row);
    const auto add = [&](const QString &text, const char *name) {
        QPushButton *button = makeButton(text, name, this);
        button->setAutoDefault(false); // Return presses the button of a row
        row->addWidget(button);
        return button;
    };
    revert_ = add(tr("&Revert Selected"), "RevertSelected");
    revertAll_ = add(tr("Revert &All"), "RevertAll");
    row->addStretch();
    QPushButton *close = add(tr("&Close"), "Close");

    connect(revert_, &QPushButton::clicked, this,
            [this] { revertThese(list_->selectedDifferences()); });
    connect(revertAll_, &QPushButton::clicked, this, &ChangesDialog::revertEverything);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    connect(list_, &DifferenceList::acted, this,
            [this](const veltext::Change &difference) { revertThese({difference}); });
    connect(list_, &DifferenceList::selectionMoved, this,
            [this] { revert_->setEnabled(!list_->selectedDifferences().empty()); });
}

// --- What is listed -------------------------------------------------------------------

/// Compares with what the file has now.
void ChangesDialog::readDisk()
{
    const WaitCursor wait;
    const std::shared_ptr<FileVersion> version = FileVersion::read(document_.file());
    Message refused;
    const QSignalBlocker quiet(watch_); // about what is read here
    if (version == nullptr) {
        watch_.check();
    } else {
        watch_.expect(version);
        refused = fromDisk_.compareWith(version->bytes(), document_.file());
    }
    isDiskReadable_ = version != nullptr && !refused;

    const QString name = fromBytes(document_.file());
    if (isDiskReadable_) {
        heading_->setText(tr("What this window has, compared with the file\n%1").arg(name));
    } else {
        const QString text =
            tr("What this window has, compared with what was loaded or saved last, "
               "because the file cannot be read:\n%1");
        heading_->setText(text.arg(refused ? fromBytes(*refused) : name));
    }
    refresh();
}

const BaseDifferences &ChangesDialog::shown() const
{
    return isDiskReadable_ ? fromDisk_ : known_;
}

void ChangesDialog::refresh()
{
    soon_.stop();
    if (isDiskReadable_ && fromDisk_.isBehind()) {
        readDisk();
        return;
    }
    list_->setDifferences(shown().all());
    revertAll_->setEnabled(!shown().isEmpty());
    revert_->setEnabled(!list_->selectedDifferences().empty());
}

// Another computer may have written to the file without the system's notice.
void ChangesDialog::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        watch_.check();
    }
}

// --- Reverting --------------------------------------------------------------------------

void ChangesDialog::revertThese(const std::vector<veltext::Change> &chosen)
{
    report(callWaiting([&] { return revert(document_, history_, shown(), chosen); }));
}

void ChangesDialog::revertEverything()
{
    report(callWaiting([&] { return revertAll(document_, history_, shown(), tr("Revert All")); }));
}

void ChangesDialog::report(const Message &failure)
{
    if (failure) {
        reportFailure(this, tr("Revert"), fromBytes(*failure));
    }
    refresh();
}

} // namespace velEditor
