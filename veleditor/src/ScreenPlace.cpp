// Computes places and sizes within the screen.
#include "veleditor/src/ScreenPlace.h"

#include <QScreen>
#include <QStyle>
#include <QWidget>

namespace velEditor {

namespace {

/// The estimated frame of a window: a title bar and a border. The real one is known
/// only when the window is shown.
QMargins expectedFrame(const QWidget &window)
{
    constexpr int border = 6;
    const int title = window.style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &window);
    return {border, title + border, border, border};
}

} // namespace

QRect placeWithin(QRect wanted, const QRect &available, const QMargins &frame)
{
    const QRect room = available.marginsRemoved(frame);
    wanted.setSize(wanted.size().boundedTo(room.size()));
    wanted.moveRight(qMin(wanted.right(), room.right()));
    wanted.moveBottom(qMin(wanted.bottom(), room.bottom()));
    wanted.moveLeft(qMax(wanted.left(), room.left()));
    wanted.moveTop(qMax(wanted.top(), room.top()));
    return wanted;
}

void showOnScreen(QWidget &window, const QRect &wanted)
{
    window.setGeometry(
        placeWithin(wanted, window.screen()->availableGeometry(), expectedFrame(window)));
    window.show();
}

QSize sizeOnScreen(const QWidget &window, const QSize &wanted)
{
    const QRect available = window.screen()->availableGeometry();
    return wanted.boundedTo(available.marginsRemoved(expectedFrame(window)).size());
}

} // namespace velEditor
