// The wait cursor, shown while an object of this class lives: around calls of
// the bridge that may take long, since no event is handled during them.
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

/// Calls a long operation of the bridge and gives its message.
inline const char *callWaiting(const char *(*operation)())
{
    const WaitCursor wait;
    return operation();
}

} // namespace velEditor
