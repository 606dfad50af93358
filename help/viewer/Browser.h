// The page of the viewer: a text browser that shows Markdown and never follows a
// link by itself.
#pragma once

#include <QTextBrowser>

namespace velHelp {

class Browser : public QTextBrowser
{
    Q_OBJECT

public:
    explicit Browser(QWidget *parent = nullptr);

    void showPage(const QString &markdown);

    /// Scrolls to the heading with this text, compared like names
    /// (`normalized`); false if the page does not have it.
    bool showSection(const QString &section);

    /// Makes the text larger or, with negative steps, smaller, within limits.
    void zoomBy(int steps);
    void resetZoom();

    /// Finds a text in the page, or else the first of its words that the page
    /// has, and selects it. Case does not matter.
    void showText(const QString &text);

    /// Loads nothing: pages are text only.
    QVariant loadResource(int type, const QUrl &name) override;

protected:
    void wheelEvent(QWheelEvent *event) override;

private:
    void frameTables();

    int zoom_ = 0;
    int turned_ = 0; ///< wheel rotation not yet used for zooming, less than a step
};

} // namespace velHelp
