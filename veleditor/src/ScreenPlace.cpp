#include "veleditor/src/ScreenPlace.h"

#include <QScreen>
#include <QStyle>
#include <QWidget>

namespace velEditor {

namespace {

/// The frame that a window manager puts around a window is known only after it
/// is shown: room for a title bar and for a border that can be grasped.
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
