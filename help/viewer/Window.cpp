// Builds the window; shows, finds and prints pages.
#include "help/viewer/Window.h"

#include "help/viewer/Browser.h"

#include <QAction>
#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPrintDialog>
#include <QPrinter>
#include <QScreen>
#include <QScrollBar>
#include <QSplitter>
#include <QStyle>
#include <QTabWidget>
#include <QToolBar>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

namespace velHelp {

namespace {

const QString contentsTopic = QStringLiteral("Master Contents");
const QString searchTopic = QStringLiteral("Search");

constexpr int nameRole = Qt::UserRole;
constexpr int nearestCount = 6;
/// The greatest number of characters of an unknown name that the page repeats.
constexpr int longestName = 100;

bool askForPrinter(QPrinter &printer, QWidget *parent)
{
    QPrintDialog dialog(&printer, parent);
    return dialog.exec() == QDialog::Accepted;
}

template <typename Widget>
Widget *named(Widget *widget, const char *objectName, const QString &accessibleName)
{
    widget->setObjectName(QString::fromLatin1(objectName));
    widget->setAccessibleName(accessibleName);
    return widget;
}

} // namespace

Window::Window(const Topics &topics)
    : topics_(topics),
      choosePrinter_([this](QPrinter &printer) { return askForPrinter(printer, this); })
{
    setObjectName(QStringLiteral("HelpWindow"));
    setWindowTitle(tr("Help"));
    page_ = named(new Browser(this), "Page", tr("Help page"));
    connect(page_, &QTextBrowser::anchorClicked, this, &Window::openLink);

    side_ = named(new QTabWidget(this), "Side", tr("Ways to find a page"));
    side_->addTab(makeContents(), tr("Co&ntents"));
    side_->addTab(makeSearch(), tr("&Search"));

    auto *splitter = new QSplitter(this);
    splitter->addWidget(side_);
    splitter->addWidget(page_);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({260, 640});
    setCentralWidget(splitter);
    makeToolBar();
    const QSize frame(12, 40); // about what a window manager adds
    resize(QSize(940, 680).boundedTo(screen()->availableGeometry().size() - frame));
}

Window::~Window() = default;

QWidget *Window::makeContents()
{
    contents_ = named(new QTreeWidget(this), "Contents", tr("Contents"));
    contents_->setHeaderHidden(true);
    QTreeWidgetItem *chapter = nullptr;
    for (const Topic &topic : topics_.all()) {
        if (topic.chapter.isEmpty()) {
            continue;
        }
        if (chapter == nullptr || chapter->text(0) != topic.chapter) {
            chapter = new QTreeWidgetItem(contents_, {topic.chapter});
        }
        auto *item = new QTreeWidgetItem(chapter, {topic.title});
        item->setData(0, nameRole, topic.name);
    }
    if (contents_->topLevelItemCount() > 0) {
        contents_->topLevelItem(0)->setExpanded(true);
    }
    const auto open = [this](const QTreeWidgetItem *item) {
        if (const QString name = item->data(0, nameRole).toString(); !name.isEmpty()) {
            showTopic(name, QString());
        }
    };
    connect(contents_, &QTreeWidget::itemClicked, this, open);
    connect(contents_, &QTreeWidget::itemActivated, this, open);
    return contents_;
}

QWidget *Window::makeSearch()
{
    auto *panel = new QWidget(this);
    searchField_ = named(new QLineEdit(panel), "SearchField", tr("Words to search for"));
    searchField_->setPlaceholderText(tr("Words to search for"));
    searchField_->setClearButtonEnabled(true);
    hitCount_ = named(new QLabel(panel), "HitCount", tr("Number of pages found"));
    hitCount_->setTextFormat(Qt::PlainText);
    hits_ = named(new QListWidget(panel), "Hits", tr("Pages found"));
    hits_->setWordWrap(true);
    hits_->setAlternatingRowColors(true);
    hits_->setSpacing(3);

    auto *layout = new QVBoxLayout(panel);
    layout->addWidget(searchField_);
    layout->addWidget(hitCount_);
    layout->addWidget(hits_, 1);
    connect(searchField_, &QLineEdit::textChanged, this, &Window::search);
    connect(searchField_, &QLineEdit::returnPressed, this, [this] { openHit(hits_->item(0)); });
    connect(hits_, &QListWidget::itemClicked, this, &Window::openHit);
    connect(hits_, &QListWidget::itemActivated, this, &Window::openHit);
    return panel;
}

QAction *Window::addTool(const QString &text, const char *name, const char *icon, const char *keys,
                         void (Window::*slot)())
{
    auto *action = new QAction(QIcon::fromTheme(QString::fromLatin1(icon)), text, this);
    action->setObjectName(QString::fromLatin1(name));
    action->setShortcut(QKeySequence(QString::fromLatin1(keys)));
    action->setToolTip(text + QLatin1String(" (") + action->shortcut().toString() + u')');
    connect(action, &QAction::triggered, this, slot);
    return action;
}

void Window::makeToolBar()
{
    QToolBar *bar = named(addToolBar(tr("Tools")), "Tools", tr("Tools"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    back_ = addTool(tr("Back"), "Back", "go-previous", "Alt+Left", &Window::goBack);
    forward_ = addTool(tr("Forward"), "Forward", "go-next", "Alt+Right", &Window::goForward);
    bar->addActions({back_, forward_,
                     addTool(tr("Contents"), "Home", "go-home", "Alt+Home", &Window::goToContents),
                     addTool(tr("Search"), "Find", "edit-find", "Ctrl+F", &Window::beginSearch)});
    bar->addSeparator();
    bar->addActions(
        {addTool(tr("Larger"), "ZoomIn", "zoom-in", "Ctrl++", &Window::enlarge),
         addTool(tr("Smaller"), "ZoomOut", "zoom-out", "Ctrl+-", &Window::shrink),
         addTool(tr("Normal Size"), "ZoomReset", "zoom-original", "Ctrl+0", &Window::restoreSize)});
    bar->addSeparator();
    bar->addAction(addTool(tr("Print"), "Print", "document-print", "Ctrl+P", &Window::print));
    updateTravel();
}

void Window::showTopic(const QString &name, const QString &section)
{
    const Place place{name.isEmpty() ? contentsTopic : name, section};
    if (!isHere(place)) {
        if (here_ >= 0) {
            places_[here_].scrolled = page_->verticalScrollBar()->value();
        }
        places_.resize(here_ + 1);
        places_.append(place);
        ++here_;
    }
    display(place);
    if (normalized(name) == normalized(searchTopic)) {
        beginSearch();
    }
}

// A double click requests the same page twice; "Back" counts it once.
bool Window::isHere(const Place &place) const
{
    if (here_ < 0 || places_[here_].section != place.section) {
        return false;
    }
    const Topic *topic = topics_.find(place.name);
    return topic != nullptr ? topic == topics_.find(places_[here_].name)
                            : place.name == places_[here_].name;
}

void Window::display(const Place &place)
{
    const Topic *topic = topics_.find(place.name);
    page_->showPage(topic != nullptr ? topic->text : unknownPage(place.name));
    if (place.scrolled > 0) {
        page_->verticalScrollBar()->setValue(place.scrolled);
    } else if (!place.section.isEmpty()) {
        page_->showSection(place.section);
    }
    setWindowTitle((topic != nullptr ? topic->title : tr("No such page")) + tr(" - Help"));
    selectInContents(topic);
    updateTravel();
}

void Window::selectInContents(const Topic *topic)
{
    contents_->setCurrentItem(nullptr);
    for (QTreeWidgetItemIterator item(contents_); topic != nullptr && *item != nullptr; ++item) {
        if ((*item)->data(0, nameRole).toString() == topic->name) {
            contents_->setCurrentItem(*item);
            return;
        }
    }
}

QString Window::unknownPage(const QString &name) const
{
    QString text = tr("# No such page\n\nThe help has no page with the name “%1”.\n\n")
                       .arg(escaped(name.left(longestName)));
    const QList<const Topic *> nearest = topics_.nearest(name, nearestCount);
    if (nearest.isEmpty()) {
        return text + tr("The help has no pages at all: its folder is missing or empty. "
                         "Install the help again.\n");
    }
    text += tr("These have similar names:\n\n");
    for (const Topic *topic : nearest) {
        text += QStringLiteral("- [%1](%2.md)\n").arg(escaped(topic->title), topic->name);
    }
    return text;
}

void Window::travel(int steps)
{
    places_[here_].scrolled = page_->verticalScrollBar()->value();
    here_ += steps;
    display(places_[here_]);
}

void Window::updateTravel()
{
    back_->setEnabled(here_ > 0);
    forward_->setEnabled(here_ + 1 < places_.size());
}

void Window::enlarge()
{
    page_->zoomBy(1);
}

void Window::shrink()
{
    page_->zoomBy(-1);
}

void Window::restoreSize()
{
    page_->resetZoom();
}

void Window::print()
{
    QPrinter printer;
    printer.setDocName(windowTitle());
    if (choosePrinter_(printer)) {
        page_->print(&printer);
    }
}

void Window::beginSearch()
{
    side_->setCurrentIndex(1);
    searchField_->setFocus();
    searchField_->selectAll();
}

void Window::search(const QString &text)
{
    hits_->clear();
    const QList<Hit> found = topics_.search(text);
    for (const Hit &hit : found) {
        const QString line = hit.excerpt.isEmpty() ? QString() : u'\n' + hit.excerpt;
        auto *item = new QListWidgetItem(hit.topic->title + line, hits_);
        item->setData(nameRole, hit.topic->name);
    }
    const QString count =
        found.size() == 1 ? tr("1 page found") : tr("%1 pages found").arg(found.size());
    hitCount_->setText(text.trimmed().isEmpty() ? QString() : count);
}

void Window::openHit(const QListWidgetItem *item)
{
    if (item == nullptr) {
        return;
    }
    showTopic(item->data(nameRole).toString(), QString());
    page_->showText(searchField_->text());
}

// A page links to another by file name, "expert-parameters.md#adding". A page
// that the build generates also links by "help:" and any name of the page. A link
// within the page has no name.
void Window::openLink(const QUrl &link)
{
    if (!link.host().isEmpty() ||
        (!link.scheme().isEmpty() && link.scheme() != QLatin1String("help"))) {
        return;
    }
    QString name = link.path();
    if (name.endsWith(QLatin1String(".md"))) {
        name.chop(3);
    }
    showTopic(name.isEmpty() ? places_[here_].name : name, link.fragment(QUrl::FullyDecoded));
}

void Window::comeForward()
{
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void Window::closeEvent(QCloseEvent *event)
{
    event->accept();
    emit closed();
}

} // namespace velHelp
