// Shows the wait cursor as long as an object of this class exists. For calls that may
// take long, because no events are handled during them.
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

/// Runs a long operation and returns its result.
template <typename Operation>
[[nodiscard]] auto callWaiting(Operation operation)
{
    const WaitCursor wait;
    return operation();
}

} // namespace velEditor
