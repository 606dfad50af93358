// The wait cursor, shown while an object of this class lives: around calls that may
// take long, since no event is handled during them.
#pragma once

#include <QApplication>
#include <QCursor>

namespace velEditor {

class WaitCursor
{
public:
    WaitCursor() { QApplication::setOverrideCursor(QCursor(Qt::WaitCursor)); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }

    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;
};

/// Runs a long operation and gives its result.
template <typename Operation>
[[nodiscard]] auto callWaiting(Operation operation)
{
    const WaitCursor wait;
    return operation();
}

} // namespace velEditor
