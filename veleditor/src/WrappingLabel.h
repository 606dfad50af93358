// A label for a text with words that may be longer than any line: it breaks the
// lines between words where it can, and inside a word where it must. A label of
// the toolkit cuts such a word off.
#pragma once

#include <QLabel>
#include <QTextLayout>

namespace velEditor {

class WrappingLabel : public QLabel
{
    Q_OBJECT

public:
    /// Shows plain text, `width` pixels wide or wider, and as high as it needs.
    WrappingLabel(const QString &text, int width, QWidget *parent);

    void setNarrowest(int width);

    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    /// The lines of the text at a width; kept until another width is asked for.
    const QTextLayout &lines(int width) const;

    int narrowest_;
    mutable QTextLayout lines_;
    mutable int linesWidth_ = -1; ///< what `lines_` was made for; −1 for nothing
};

} // namespace velEditor
