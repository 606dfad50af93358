// Where a window goes on the screen.
#pragma once

#include <QMargins>
#include <QRect>

class QWidget;

namespace velEditor {

/// The place nearest to `wanted` at which a window and the `frame` around it
/// lie within `available`: moved as little as that takes, and made smaller only
/// if it is larger than the screen.
[[nodiscard]] QRect placeWithin(QRect wanted, const QRect &available, const QMargins &frame);

/// Shows a window at `wanted`, in the coordinates of its contents, or as near to
/// it as the screen allows.
void showOnScreen(QWidget &window, const QRect &wanted);

/// The size nearest to `wanted` that a window with its frame has room for on the
/// screen of `window`.
[[nodiscard]] QSize sizeOnScreen(const QWidget &window, const QSize &wanted);

} // namespace velEditor
