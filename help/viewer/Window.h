// The window of the viewer: a page, and next to it the contents and the search.
//
// It does not own the topics, which must outlive it. GUI thread only.
#pragma once

#include "help/viewer/Topics.h"

#include <QList>
#include <QMainWindow>

#include <functional>
#include <utility>

class QAction;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QPrinter;
class QTabWidget;
class QTreeWidget;
class QTreeWidgetItem;
class QUrl;

namespace velHelp {

class Browser;

class Window : public QMainWindow
{
    Q_OBJECT

public:
    /// Lets the user set up a printer; false if nothing is to be printed.
    using PrinterChoice = std::function<bool(QPrinter &)>;

    explicit Window(const Topics &topics);
    ~Window() override;

    /// Shows a topic. An empty name shows the contents; an unknown name shows a
    /// page that says so and lists similar names. The topic "Search" shows the
    /// search field, too. If the page does not have the section, its beginning
    /// is shown.
    void showTopic(const QString &name, const QString &section);

    /// Shows the window in front of all others, even if it was hidden or minimized.
    void comeForward();

    [[nodiscard]] Browser &page() { return *page_; }

    /// Sets the function that sets up printers, instead of a dialog.
    void setPrinterChoice(PrinterChoice choice) { choosePrinter_ = std::move(choice); }

signals:
    /// The user has closed the window.
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    /// A page that the user has visited; its name may be unknown.
    struct Place
    {
        QString name;
        QString section;
        int scrolled = 0; ///< pixels, when the user left it
    };

    QWidget *makeContents();
    QWidget *makeSearch();
    void makeToolBar();
    QAction *addTool(const QString &text, const char *name, const char *icon, const char *keys,
                     void (Window::*slot)());

    [[nodiscard]] bool isHere(const Place &place) const;
    void display(const Place &place);
    void selectInContents(const Topic *topic);
    [[nodiscard]] QString unknownPage(const QString &name) const;
    void travel(int steps);
    void updateTravel();

    void goBack() { travel(-1); }
    void goForward() { travel(1); }
    void goToContents() { showTopic(QString(), QString()); }
    void enlarge();
    void shrink();
    void restoreSize();
    void print();
    void beginSearch();

    void search(const QString &text);
    void openHit(const QListWidgetItem *item);
    void openLink(const QUrl &link);

    const Topics &topics_;
    QList<Place> places_;
    qsizetype here_ = -1; ///< index into `places_`
    PrinterChoice choosePrinter_;

    Browser *page_ = nullptr;
    QTabWidget *side_ = nullptr;
    QTreeWidget *contents_ = nullptr;
    QLineEdit *searchField_ = nullptr;
    QListWidget *hits_ = nullptr;
    QLabel *hitCount_ = nullptr;
    QAction *back_ = nullptr;
    QAction *forward_ = nullptr;
};

} // namespace velHelp
