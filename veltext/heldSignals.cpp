// Blocks the signals that end a program, and unblocks them again.
#include "veltext/heldSignals.h"

namespace veltext {

HeldSignals::HeldSignals()
{
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, SIGINT);
    sigaddset(&held, SIGTERM);
    sigaddset(&held, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &held, &before_);
}

HeldSignals::~HeldSignals()
{
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

} // namespace veltext
