// Keeping an interrupt waiting while a file is being changed.
//
// Ended in the middle, a change leaves a temporary file or a lock behind that
// somebody has to find and remove. One that comes meanwhile ends the program
// as soon as the change is complete. Only the calling thread is held: it is the
// only one while files are changed.
#pragma once

#include <csignal>

namespace veltext {

/// Signals that wait; objects may be nested, and the outermost lets them through.
class HeldSignals
{
public:
    /// Holds SIGINT, SIGTERM and SIGHUP back for as long as the object lives.
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals &) = delete;
    HeldSignals &operator=(const HeldSignals &) = delete;

private:
    sigset_t before_;
};

} // namespace veltext
