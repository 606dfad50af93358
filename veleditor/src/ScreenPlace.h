// Places windows on the screen.
#pragma once

#include <QMargins>
#include <QRect>

class QWidget;

namespace velEditor {

/// The place nearest to `wanted` where a window and its `frame` are within
/// `available`. Moves the window as little as possible, and makes it smaller only if
/// it is larger than the screen.
[[nodiscard]] QRect placeWithin(QRect wanted, const QRect &available, const QMargins &frame);

/// Shows a window with its contents at `wanted`, or as near to it as the screen
/// allows.
void showOnScreen(QWidget &window, const QRect &wanted);

/// The size nearest to `wanted` at which a window and its frame fit on the screen of
/// `window`.
[[nodiscard]] QSize sizeOnScreen(const QWidget &window, const QSize &wanted);

} // namespace velEditor
