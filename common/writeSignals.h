// The signals that end a program because of a write: to a pipe or socket that
// nobody reads any more (SIGPIPE), or beyond the size that a file may have
// (SIGXFSZ). Our programs ignore them, so that such a write fails like any
// other and the data can still be saved elsewhere. Programs that ours start get
// the default actions back.
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

/// Makes such writes fail from now on, in this process alone: a forked child
/// has the default actions. `posix_spawn` does not fork in this sense; its
/// callers pass `addWriteSignals` as the signals to be set to default.
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
