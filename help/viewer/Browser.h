// The page: Markdown in a text browser that never opens anything by itself.
#pragma once

#include <QTextBrowser>

namespace velHelp {

class Browser : public QTextBrowser
{
    Q_OBJECT

public:
    explicit Browser(QWidget *parent = nullptr);

    void showPage(const QString &markdown);

    /// Scrolls to the heading with this text, compared as names are; false
    /// when the page has none.
    bool showSection(const QString &section);

    /// Makes the text larger or, with negative steps, smaller; within limits.
    void zoomBy(int steps);
    void resetZoom();

    /// Goes to the first place of a text, else of its first word that is there,
    /// and marks it; upper and lower case are the same.
    void showText(const QString &text);

    /// Pages are text: whatever they or their links name is not loaded.
    QVariant loadResource(int type, const QUrl &name) override;

protected:
    void wheelEvent(QWheelEvent *event) override;

private:
    void frameTables();

    int zoom_ = 0;
    int turned_ = 0; ///< of a zooming wheel, as its events count; less than a step
};

} // namespace velHelp
