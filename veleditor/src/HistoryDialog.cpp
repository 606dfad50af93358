// The two lists, and how a version is read and restored.
#include "veleditor/src/HistoryDialog.h"

#include "veleditor/src/Boxes.h"
#include "veleditor/src/DataChange.h"
#include "veleditor/src/DifferenceList.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/FileVersion.h"
#include "veleditor/src/ScreenPlace.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/VersionCounts.h"
#include "veleditor/src/WaitCursor.h"
#include "veleditor/src/Widgets.h"
#include "veltext/error.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <utility>

namespace velEditor {

namespace {

/// When a version was replaced, in local time.
QString timeText(const veltext::Version &version, const char *form)
{
    return QDateTime::fromSecsSinceEpoch(version.time).toString(QString::fromLatin1(form));
}

QString sizeText(std::uint64_t size)
{
    return QLocale::c().formattedDataSize(static_cast<qint64>(size), 1, QLocale::DataSizeSIFormat);
}

bool areSame(const veltext::Version &a, const veltext::Version &b)
{
    return a.time == b.time && a.object == b.object && a.program == b.program;
}

} // namespace

HistoryDialog::HistoryDialog(QWidget *parent, Document &document, UndoHistory &history)
    : QDialog(parent), document_(document), undoHistory_(history), history_(document.file()),
      differences_(document), faults_(makeLabel(QString(), this)), list_(new QTreeWidget(this)),
      shown_(new DifferenceList("Differences", tr("Differences from the version"), this))
{
    setUpDialog(*this, QStringLiteral("History"), tr("History"));
    setAttribute(Qt::WA_DeleteOnClose);
    makeVersionList();
    shown_->setValueHeadings(tr("In the Version"), tr("In This Window"));
    faults_->setObjectName(QStringLiteral("Faults"));
    faults_->setWordWrap(true);

    auto *parts = new QSplitter(Qt::Vertical, this);
    parts->setObjectName(QStringLiteral("Parts"));
    parts->setChildrenCollapsible(false);
    parts->addWidget(list_);
    parts->addWidget(shown_);
    auto *layout = new QVBoxLayout(this);
    QLabel *heading = makeLabel(
        tr("Versions that were replaced, of the file\n%1").arg(fromBytes(document.file())), this);
    heading->setObjectName(QStringLiteral("Heading"));
    layout->addWidget(heading);
    layout->addWidget(faults_);
    layout->addWidget(parts, 1);
    addButtons(*layout);
    resize(sizeOnScreen(*this, QSize(820, 540)));

    soon_.setSingleShot(true);
    connect(&soon_, &QTimer::timeout, this, &HistoryDialog::refresh);
    const auto refreshSoon = [this] { soon_.start(0); };
    connect(&differences_, &BaseDifferences::differ, this, refreshSoon);
    connect(&document_, &Document::modifiedMarked, this, refreshSoon);
    connect(&document_, &Document::saved, this, &HistoryDialog::readVersions);
    connect(list_, &QTreeWidget::currentItemChanged, this, &HistoryDialog::showVersion);
    readVersions();
    list_->setFocus();
}

void HistoryDialog::makeVersionList()
{
    list_->setObjectName(QStringLiteral("Versions"));
    list_->setAccessibleName(tr("Versions"));
    list_->setHeaderLabels({tr("Replaced"), tr("Size"), tr("By"), tr("Changes")});
    list_->headerItem()->setToolTip(
        Changes, tr("How many objects and parameters differ in the version after it"));
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setAllColumnsShowFocus(true);
}

void HistoryDialog::addButtons(QVBoxLayout &layout)
{
    auto *row = new QHBoxLayout;
    layout.addLayout(row);
    restore_ = makeButton(tr("&Restore"), "Restore", this);
    row->addWidget(restore_);
    row->addStretch();
    QPushButton *close = makeButton(tr("&Close"), "Close", this);
    row->addWidget(close);
    for (QPushButton *button : {restore_, close}) {
        button->setAutoDefault(false); // Return in a list presses nothing
    }
    connect(restore_, &QPushButton::clicked, this, &HistoryDialog::restore);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
}

// --- The versions -----------------------------------------------------------------------

void HistoryDialog::readVersions()
{
    std::optional<veltext::Version> former;
    if (selected() >= 0) {
        former = versions_[static_cast<std::size_t>(selected())];
    }
    QStringList faults;
    versions_.clear();
    try {
        veltext::VersionList list = history_.list();
        versions_ = std::move(list.versions);
        for (const std::string &fault : list.faults) {
            faults.append(fromBytes(fault));
        }
        if (!faults.isEmpty()) {
            faults.prepend(tr("Part of the history is damaged:"));
        }
    } catch (const veltext::Error &error) {
        faults.append(fromBytes(error.message()));
    }
    faults_->setText(faults.join(u'\n'));
    faults_->setVisible(!faults.isEmpty());
    fillVersions();

    int current = 0;
    for (int i = 0; former && i < list_->topLevelItemCount(); ++i) {
        if (areSame(versions_[static_cast<std::size_t>(i)], *former)) {
            current = i;
        }
    }
    list_->setCurrentItem(list_->topLevelItem(current));
    showVersion();
    count();
}

void HistoryDialog::fillVersions()
{
    const QSignalBlocker quiet(list_);
    list_->clear();
    for (const veltext::Version &version : versions_) {
        auto *row = new QTreeWidgetItem(list_);
        row->setText(Time, timeText(version, "yyyy-MM-dd HH:mm:ss"));
        row->setText(Size, sizeText(version.size));
        row->setText(Program, fromBytes(version.program));
        row->setTextAlignment(Size, Qt::AlignRight | Qt::AlignVCenter);
    }
    for (const int column : {Time, Size, Program, Changes}) {
        list_->resizeColumnToContents(column);
        list_->setColumnWidth(column, list_->columnWidth(column) + 24);
    }
}

void HistoryDialog::count()
{
    delete std::exchange(counts_, nullptr);
    if (versions_.empty()) {
        return;
    }
    std::optional<std::string> current;
    if (const std::shared_ptr<FileVersion> version = FileVersion::read(document_.file())) {
        current = version->bytes();
    }
    counts_ = new VersionCounts(history_, versions_, std::move(current), this);
    connect(counts_, &VersionCounts::counted, this, &HistoryDialog::showCount);
}

void HistoryDialog::showCount(int version, std::optional<std::size_t> changes)
{
    if (QTreeWidgetItem *row = list_->topLevelItem(version)) {
        row->setText(Changes, changes ? QString::number(*changes) : tr("unknown"));
    }
}

int HistoryDialog::selected() const
{
    return list_->currentItem() != nullptr ? list_->indexOfTopLevelItem(list_->currentItem()) : -1;
}

// --- The selected version -----------------------------------------------------------------

/// The bytes of a version. Throws an Error if they are damaged or are not VEL.
std::string HistoryDialog::read(const veltext::Version &version)
{
    std::string bytes = history_.read(version);
    const std::string name =
        document_.file() + " (" + toBytes(timeText(version, "yyyy-MM-dd HH:mm:ss")) + ')';
    if (const Message refused = differences_.compareWith(bytes, name)) {
        throw veltext::Error(*refused);
    }
    return bytes;
}

void HistoryDialog::showVersion()
{
    const WaitCursor wait;
    text_.reset();
    QString empty;
    if (selected() < 0) {
        empty = tr("No version of this file is kept yet.\n"
                   "Each save keeps the version that it replaces.");
    } else {
        try {
            text_ = read(versions_[static_cast<std::size_t>(selected())]);
            empty = tr("This window has the data of this version.");
        } catch (const veltext::Error &error) {
            empty = tr("This version cannot be restored:\n") + fromBytes(error.message());
        }
    }
    shown_->setEmptyText(empty);
    refresh();
}

void HistoryDialog::refresh()
{
    soon_.stop();
    if (text_ && differences_.isBehind()) {
        showVersion();
        return;
    }
    shown_->setDifferences(text_ ? differences_.all() : std::vector<veltext::Change>());
    restore_->setEnabled(text_.has_value() && !differences_.isEmpty());
}

void HistoryDialog::restore()
{
    if (!text_) {
        return;
    }
    const veltext::Version &version = versions_[static_cast<std::size_t>(selected())];
    const QString name = tr("Restore the version of %1").arg(timeText(version, "yyyy-MM-dd HH:mm"));
    const Message failure =
        callWaiting([&] { return changeTo(document_, undoHistory_, *text_, name); });
    if (failure) {
        reportFailure(this, tr("Restore"), fromBytes(*failure));
    }
    refresh();
}

} // namespace velEditor
