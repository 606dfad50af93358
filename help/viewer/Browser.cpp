// Shows, searches and zooms a page.
#include "help/viewer/Browser.h"

#include "help/viewer/Topics.h"

#include <QAbstractTextDocumentLayout>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <QWheelEvent>

#include <algorithm>

namespace velHelp {

namespace {

constexpr qreal pageMargin = 16;
constexpr qreal cellPadding = 4;
constexpr int leastZoom = -6;
constexpr int mostZoom = 20;

} // namespace

Browser::Browser(QWidget *parent) : QTextBrowser(parent)
{
    setOpenLinks(false);
    document()->setDocumentMargin(pageMargin);
}

void Browser::showPage(const QString &markdown)
{
    QTextDocument::MarkdownFeatures dialect(QTextDocument::MarkdownDialectGitHub);
    dialect.setFlag(QTextDocument::MarkdownNoHTML);
    document()->setMarkdown(markdown, dialect);
    frameTables();
    moveCursor(QTextCursor::Start);
    verticalScrollBar()->setValue(0);
}

void Browser::frameTables()
{
    for (QTextFrame *frame : document()->rootFrame()->childFrames()) {
        auto *table = qobject_cast<QTextTable *>(frame);
        if (table == nullptr) {
            continue;
        }
        QTextTableFormat format = table->format();
        format.setBorder(1);
        format.setBorderCollapse(true);
        format.setCellPadding(cellPadding);
        table->setFormat(format);
    }
}

bool Browser::showSection(const QString &section)
{
    const QString wanted = normalized(section);
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() == 0 || normalized(block.text()) != wanted) {
            continue;
        }
        setTextCursor(QTextCursor(block));
        const QRectF place = document()->documentLayout()->blockBoundingRect(block);
        verticalScrollBar()->setValue(static_cast<int>(place.top()));
        return true;
    }
    return false;
}

void Browser::showText(const QString &text)
{
    const QString phrase = text.simplified();
    for (const QString &wanted : QStringList(phrase) + phrase.split(u' ')) {
        moveCursor(QTextCursor::Start);
        if (find(wanted)) {
            return;
        }
    }
}

void Browser::zoomBy(int steps)
{
    const int wanted = std::clamp(zoom_ + steps, leastZoom, mostZoom);
    zoomIn(wanted - zoom_);
    zoom_ = wanted;
}

void Browser::resetZoom()
{
    zoomBy(-zoom_);
}

// The base class would ignore our limits, and `resetZoom` would not notice.
void Browser::wheelEvent(QWheelEvent *event)
{
    if (!event->modifiers().testFlag(Qt::ControlModifier)) {
        QTextBrowser::wheelEvent(event);
        return;
    }
    turned_ += event->angleDelta().y();
    zoomBy(turned_ / QWheelEvent::DefaultDeltasPerStep);
    turned_ %= QWheelEvent::DefaultDeltasPerStep;
    event->accept();
}

QVariant Browser::loadResource(int, const QUrl &)
{
    return {};
}

} // namespace velHelp
