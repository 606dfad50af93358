// A label for a text with very long words: it breaks lines between words or, if a word
// is longer than a line, inside the word. A label of the toolkit cuts such a word off.
#pragma once

#include <QLabel>
#include <QTextLayout>

namespace velEditor {

class WrappingLabel : public QLabel
{
    Q_OBJECT

public:
    /// Shows plain text, at least `width` pixels wide and as high as needed.
    WrappingLabel(const QString &text, int width, QWidget *parent);

    void setNarrowest(int width);

    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    /// The lines of the text at a width; cached for the last width.
    const QTextLayout &lines(int width) const;

    int narrowest_;
    mutable QTextLayout lines_;
    mutable int linesWidth_ = -1; ///< the width of `lines_`; −1 if there are none
};

} // namespace velEditor
