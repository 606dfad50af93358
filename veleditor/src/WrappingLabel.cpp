// Lays out and paints the lines of the label.
#include "veleditor/src/WrappingLabel.h"

#include <QEvent>
#include <QPainter>
#include <QtMath>

namespace velEditor {

WrappingLabel::WrappingLabel(const QString &text, int width, QWidget *parent)
    : QLabel(text, parent), narrowest_(width)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(true); // so that the height depends on the width
    ensurePolished();
    setNarrowest(width);
}

void WrappingLabel::setNarrowest(int width)
{
    narrowest_ = width;
    setMinimumSize(minimumSizeHint());
}

int WrappingLabel::heightForWidth(int width) const
{
    return qCeil(lines(width).boundingRect().height());
}

QSize WrappingLabel::sizeHint() const
{
    return minimumSizeHint();
}

QSize WrappingLabel::minimumSizeHint() const
{
    return {narrowest_, heightForWidth(narrowest_)};
}

void WrappingLabel::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    if (event->type() != QEvent::FontChange) {
        return;
    }
    linesWidth_ = -1;
    setNarrowest(narrowest_);
}

void WrappingLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    const QTextLayout &text = lines(width());
    text.draw(&painter, QPointF(0, (height() - text.boundingRect().height()) / 2));
}

const QTextLayout &WrappingLabel::lines(int width) const
{
    if (linesWidth_ == width) {
        return lines_;
    }
    linesWidth_ = width;
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    lines_.setTextOption(option);
    lines_.setFont(font());
    lines_.setText(text().replace(u'\n', QChar(QChar::LineSeparator)));
    lines_.beginLayout();
    qreal top = 0;
    for (QTextLine line = lines_.createLine(); line.isValid(); line = lines_.createLine()) {
        line.setLineWidth(width);
        line.setPosition(QPointF(0, top));
        top += line.height();
    }
    lines_.endLayout();
    return lines_;
}

} // namespace velEditor
