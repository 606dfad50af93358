// The signals that end a program because of a write: SIGPIPE for a pipe or socket
// without a reader, SIGXFSZ for a file that grows beyond its limit. Our programs
// ignore both. So such a write fails like any other, and the data can still be
// saved elsewhere. Programs that our programs start get the default actions.
#pragma once

#include <csignal>

#include <pthread.h>

namespace velEditor {

/// Gives both signals their default actions.
inline void restoreWriteSignals()
{
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
}

/// Makes such writes fail from now on, in this process only. A forked child gets
/// the default actions. `posix_spawn` does not run the fork handlers, so its
/// callers use `SpawnAttributes`, which resets both signals in the child.
inline void ignoreWriteSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    static const int registered = ::pthread_atfork(nullptr, nullptr, restoreWriteSignals);
    static_cast<void>(registered);
}

/// Adds both signals to a set.
inline void addWriteSignals(sigset_t &signals)
{
    sigaddset(&signals, SIGPIPE);
    sigaddset(&signals, SIGXFSZ);
}

} // namespace velEditor
