// The window of the viewer: a page, and beside it the contents and the search.
//
// It owns nothing of the help but the places the user has been to; the topics
// outlive it. GUI thread only.
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
    /// Sets a printer up as the user wishes; false when nothing is to be printed.
    using PrinterChoice = std::function<bool(QPrinter &)>;

    explicit Window(const Topics &topics);
    ~Window() override;

    /// Shows a topic; an empty name is the contents, an unknown one a page that
    /// says so and offers the nearest. The topic "Search" brings the search
    /// field up as well. A section that the page does not have is its beginning.
    void showTopic(const QString &name, const QString &section);

    /// Brings the window before the user, wherever it was.
    void comeForward();

    [[nodiscard]] Browser &page() { return *page_; }

    /// Has printers set up by a function instead of a dialog.
    void setPrinterChoice(PrinterChoice choice) { choosePrinter_ = std::move(choice); }

signals:
    /// The user has closed the window.
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    /// Where the user has been. Names that no page has are kept as well.
    struct Place
    {
        QString name;
        QString section;
        int scrolled = 0; ///< pixels, when it was left
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
